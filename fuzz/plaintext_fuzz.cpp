// Any bytes as a UTF-8 text that becomes plain. Laws: it succeeds where the text is well formed;
// the result has printable characters, and without markup TAB, LF and CR, alone; it is the results
// of the characters one by one.
// Input: the options, then the text.
#include "nomos/intl.h"
#include "sys/textutil.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

int convert(const unsigned char* text, std::size_t size, int options, std::string& plain) {
  KoraString<char> target;
  const StringUtf8Info source{const_cast<unsigned char*>(text), static_cast<std::uint32_t>(size), 0,
                              0};
  const int status = stringUtf8AsPlainText(source, options, target);
  plain.append(target.data(), target.length());
  return status;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int options = *data++;
  --size;
  std::string plain, pieces;
  std::uint32_t count;
  const int status = convert(data, size, options, plain);
  require(status == intlStringUTF8VerifyCountchars(data, static_cast<std::uint32_t>(size), count));
  for (const char character : plain) {
    const bool isBlank = character == '\t' || character == '\n' || character == '\r';
    require((character >= 32 && character <= 126) ||
            (isBlank && (options & kPlainTextMarkup) == 0));
  }
  if (status != 0) return 0;
  for (std::size_t begin = 0, end; begin < size; begin = end) {
    for (end = begin + 1; end < size && (data[end] & 0xC0) == 0x80;) ++end;
    require(convert(data + begin, end - begin, options, pieces) == 0);
  }
  require(pieces == plain);
  return 0;
}
