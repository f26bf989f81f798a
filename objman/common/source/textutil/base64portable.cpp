// The inner loops of base64 for any processor: a group at a time, a table for the characters.

#include "base64kernels.h"

namespace nomutil::textutil {
namespace {

bool isUsable() {
  return true;
}

void encode(const std::uint8_t* bytes, std::size_t groups, char* text) {
  for (; groups > 0; --groups, bytes += 3, text += 4) encodeGroup(bytes, text);
}

void encodeLines(const std::uint8_t* bytes, std::size_t lines, char* text) {
  for (; lines > 0; --lines, bytes += kLineBytes, text += kLineSize) {
    encode(bytes, kLineBytes / 3, text);
    putLineEnd(text + kLineCharacters);
  }
}

Progress decode(const char* text, std::size_t length, std::uint8_t* bytes) {
  Progress progress{0, 0};
  decodeGroups(text, length, bytes, progress);
  return progress;
}

// Every character is written, and the next one over it if it has no sextet: no branch to guess.
std::size_t filter(const char* text, std::size_t length, std::uint8_t* sextets) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < length; ++i) {
    sextets[kept] = kSextets[static_cast<std::uint8_t>(text[i])];
    kept += sextets[kept] < kNoSextet ? 1 : 0;
  }
  return kept;
}

void pack(const std::uint8_t* sextets, std::size_t groups, std::uint8_t* bytes) {
  for (; groups > 0; --groups, sextets += 4, bytes += 3) packGroup(sextets, bytes);
}

}  // namespace

constinit const Base64Kernels kPortableBase64 = {"portable", isUsable, encode, encodeLines,
                                                 decode,     filter,   pack};

}  // namespace nomutil::textutil
