// base64 in pieces. Encoding takes whole lines, which join as the lines of one text do. Decoding
// takes whole groups and keeps the characters of the last one, at most three, for the next piece:
// what is skipped is not kept, however long it is.
#include "commands.h"
#include "transfer.h"

#include "sys/messages.h"
#include "sys/textutil.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace nomtool {
namespace {

constexpr std::size_t kLineBytes = 57;  // a line of 76 characters
constexpr std::size_t kEncodePiece = 16384 * kLineBytes;
constexpr std::size_t kDecodePiece = std::size_t{1} << 20;

// What the library gave, until the scope ends.
template <class T>
struct Block {
  ~Block() { base64Free(data); }
  T* data = nullptr;
  std::uint32_t size = 0;
  std::string_view bytes() const { return {reinterpret_cast<const char*>(data), size}; }
};

void encode(Transfer& transfer, bool oneLine) {
  std::vector<std::uint8_t> piece(kEncodePiece);
  for (;;) {
    const std::uint64_t offset = transfer.offset();
    const std::size_t count = transfer.read(piece.data(), piece.size());
    if (count == 0) return;
    Block<char> text;
    const auto byteCount = static_cast<std::uint32_t>(count);
    const int status = base64Encode(piece.data(), byteCount, text.data, text.size, oneLine);
    transfer.check(status == kNoRoom ? kMemoryAllocationFailed : status, offset, "no room");
    if (offset != 0 && !oneLine) transfer.write("\r\n");
    transfer.write(text.bytes());
  }
}

bool isSextet(char c) {
  const char letter = static_cast<char>(c | 0x20);
  return (letter >= 'a' && letter <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

class Decoder {
 public:
  explicit Decoder(Transfer& transfer) : _transfer(transfer), _piece(kDecodePiece) {}

  void run() {
    const char* pad = nullptr;
    while (pad == nullptr && fill()) {
      const char* const begin = _piece.data();
      pad = static_cast<const char*>(std::memchr(begin, '=', _count));
      takeGroups(begin, pad == nullptr ? begin + _count : pad);
    }
    if (pad != nullptr) takePadding(pad);
    decode(_rest.data(), _rest.size(), _restOffset);
  }

 private:
  bool fill() {
    _offset = _transfer.offset();
    _count = _transfer.read(_piece.data(), _piece.size());
    return _count != 0;
  }

  void decode(const char* text, std::size_t length, std::uint64_t offset) {
    Block<std::uint8_t> block;
    const int status =
        base64DecodeWithLength(text, static_cast<std::uint32_t>(length), block.data, block.size);
    _transfer.check(status == kNoRoom ? kMemoryAllocationFailed : status, offset,
                    status == kNoRoom ? "no room" : "the last group is not padded as it should be");
    _transfer.write(block.bytes());
  }

  // Decodes the groups that end in a piece without padding, and keeps the others' characters.
  void takeGroups(const char* begin, const char* end) {
    for (; !_rest.empty() && begin != end; ++begin) {
      if (isSextet(*begin)) _rest += *begin;
      if (_rest.size() < 4) continue;
      decode(_rest.data(), _rest.size(), _restOffset);
      _rest.clear();
    }
    const auto sextets = static_cast<std::size_t>(std::count_if(begin, end, isSextet));
    const char* groupsEnd = end;
    while (_rest.size() < sextets % 4) {
      if (isSextet(*--groupsEnd)) _rest.insert(_rest.begin(), *groupsEnd);
    }
    if (groupsEnd != end) _restOffset = _offset + offsetInPiece(groupsEnd);
    decode(begin, static_cast<std::size_t>(groupsEnd - begin), _offset + offsetInPiece(begin));
  }

  // Behind the last characters stands the first '=', and the second one if it follows at once.
  void takePadding(const char* pad) {
    char next = '\0';
    if (pad + 1 != _piece.data() + _count) {
      next = pad[1];
    } else {
      _transfer.read(&next, 1);
    }
    _rest += '=';
    if (next == '=') _rest += '=';
  }

  std::uint64_t offsetInPiece(const char* at) const {
    return static_cast<std::uint64_t>(at - _piece.data());
  }

  Transfer& _transfer;
  std::vector<char> _piece;
  std::size_t _count = 0;
  std::uint64_t _offset = 0;  // of the piece
  std::string _rest;
  std::uint64_t _restOffset = 0;
};

}  // namespace

int base64Command(const Base64Options& options, std::ostream& out, std::ostream& err) {
  return runTransfer("base64", options.streams, out, err, [&](Transfer& transfer) {
    if (options.decode) {
      Decoder(transfer).run();
    } else {
      encode(transfer, options.oneLine);
    }
  });
}

}  // namespace nomtool
