// UTF-8 as plain text, in pieces that end where a character ends: a last one that is not whole goes
// before the next piece.
#include "commands.h"
#include "transfer.h"

#include "nomos/intl.h"
#include "sys/messages.h"
#include "sys/textutil.h"

#include <algorithm>
#include <vector>

namespace nomtool {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 18;

// The bytes of a character that its first one announces; 1 for one that announces nothing.
std::size_t announcedLength(unsigned char first) {
  return first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
}

// The bytes at the end that begin a character and do not end it.
std::size_t cutLength(const std::vector<unsigned char>& bytes, std::size_t size) {
  for (std::size_t length = 1; length <= std::min<std::size_t>(3, size); ++length) {
    const unsigned char byte = bytes[size - length];
    if ((byte & 0xC0u) == 0x80) continue;
    return announcedLength(byte) > length ? length : 0;
  }
  return 0;
}

// Where the first malformed character of a text begins.
std::size_t faultIn(const std::vector<unsigned char>& bytes, std::size_t size) {
  std::uint32_t characters = 0;
  intlStringUTF8VerifyCountchars(bytes.data(), static_cast<std::uint32_t>(size), characters);
  std::size_t at = 0;
  for (; characters > 0; --characters) at += announcedLength(bytes[at]);
  return at;
}

const char* faultText(int status) {
  return status == kInvalidParameterValue ? "malformed UTF-8" : "no room";
}

void plain(Transfer& transfer, int options) {
  std::vector<unsigned char> bytes(kPiece);
  KoraString<char> text;
  std::uint64_t offset = 0;
  std::size_t kept = 0;
  for (bool atEnd = false; !atEnd;) {
    const std::size_t size = kept + transfer.read(bytes.data() + kept, kPiece - kept);
    atEnd = size < kPiece;
    kept = atEnd ? 0 : cutLength(bytes, size);
    const std::size_t whole = size - kept;
    const StringUtf8Info source{bytes.data(), static_cast<std::uint32_t>(whole), 0, 0};
    const int status = stringUtf8AsPlainText(source, options, text);
    if (status != 0) transfer.check(status, offset + faultIn(bytes, whole), faultText(status));
    transfer.write({text.data(), text.length()});
    text.clear();
    offset += whole;
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(whole), kept, bytes.begin());
  }
}

}  // namespace

int plainCommand(const PlainOptions& options, std::ostream& out, std::ostream& err) {
  return runTransfer("plain", options.streams, out, err, [&](Transfer& transfer) {
    plain(transfer, options.markup ? kPlainTextMarkup : 0);
  });
}

}  // namespace nomtool
