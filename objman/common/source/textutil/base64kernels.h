// The inner loops of base64, one set for each kind of processor. All sets give the same results;
// the fastest that the processor can run is chosen once. A sextet is one character's value, 0 to
// 63; four of them make a group of three bytes.
#ifndef NOMUTIL_TEXTUTIL_BASE64KERNELS_H
#define NOMUTIL_TEXTUTIL_BASE64KERNELS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace nomutil::textutil {

inline constexpr char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The sextet of each byte of a text; kNoSextet, whose high bit no sextet has, for any other byte.
inline constexpr std::uint8_t kNoSextet = 0x80;
inline constexpr std::array<std::uint8_t, 256> kSextets = [] {
  std::array<std::uint8_t, 256> sextets{};
  sextets.fill(kNoSextet);
  for (std::uint8_t i = 0; i < 64; ++i) sextets[static_cast<std::uint8_t>(kAlphabet[i])] = i;
  return sextets;
}();

// A full line: 57 bytes as 76 characters. With its CR LF it takes 78.
inline constexpr std::size_t kLineBytes = 57;
inline constexpr std::size_t kLineCharacters = 76;
inline constexpr std::size_t kLineSize = kLineCharacters + 2;

// Elements that filter may write, and pack may read, behind the last sextet that counts.
inline constexpr std::size_t kSextetSlack = 64;

struct Progress {
  std::size_t read;     // characters
  std::size_t written;  // bytes
};

struct Base64Kernels {
  const char* name;
  bool (*isUsable)();

  // Groups of 3 bytes as 4 characters each, and lines as kLineSize characters each.
  void (*encode)(const std::uint8_t* bytes, std::size_t groups, char* text);
  void (*encodeLines)(const std::uint8_t* bytes, std::size_t lines, char* text);

  // Decodes groups from the front of a text as long as it is clean, perhaps with CR and LF between
  // them, and stops where a group may start: at the latest before the first group that is not
  // clean. REQUIRES: bytes has room for one byte of each character.
  Progress (*decode)(const char* text, std::size_t length, std::uint8_t* bytes);

  // Keeps the sextets of the characters that have one; returns how many.
  // REQUIRES: sextets has room for length + kSextetSlack.
  std::size_t (*filter)(const char* text, std::size_t length, std::uint8_t* sextets);

  // Groups of 4 sextets as 3 bytes each. REQUIRES: bytes has room for one byte of each sextet.
  void (*pack)(const std::uint8_t* sextets, std::size_t groups, std::uint8_t* bytes);
};

extern const Base64Kernels kPortableBase64;
extern const Base64Kernels kAvx2Base64;
extern const Base64Kernels kAvx512Base64;

// Every set, the fastest first; the last one runs anywhere.
std::span<const Base64Kernels* const> allBase64Kernels();

// Decodes leniently with one set, as base64DecodeWithLength does with the chosen one.
// REQUIRES: text is not null; bytes has room for length bytes.
int decodeBase64(const Base64Kernels& with, const char* text, std::size_t length,
                 std::uint8_t* bytes, std::uint32_t& byteCount);

inline bool isLineEnd(const char* text) {
  return text[0] == '\r' && text[1] == '\n';
}
inline bool isLineBreak(char character) {
  return character == '\n' || character == '\r';
}
inline void putLineEnd(char* text) {
  text[0] = '\r';
  text[1] = '\n';
}

inline void encodeGroup(const std::uint8_t* bytes, char* text) {
  text[0] = kAlphabet[bytes[0] >> 2];
  text[1] = kAlphabet[(bytes[0] & 3) << 4 | bytes[1] >> 4];
  text[2] = kAlphabet[(bytes[1] & 15) << 2 | bytes[2] >> 6];
  text[3] = kAlphabet[bytes[2] & 63];
}

inline void packGroup(const std::uint8_t* sextets, std::uint8_t* bytes) {
  bytes[0] = static_cast<std::uint8_t>(sextets[0] << 2 | sextets[1] >> 4);
  bytes[1] = static_cast<std::uint8_t>(sextets[1] << 4 | sextets[2] >> 2);
  bytes[2] = static_cast<std::uint8_t>(sextets[2] << 6 | sextets[3]);
}

// The groups from text[progress.read] on, and the CR and LF between them, up to the first group
// that is not clean.
inline void decodeGroups(const char* text, std::size_t length, std::uint8_t* bytes,
                         Progress& progress) {
  for (; length - progress.read >= 4; progress.read += 4, progress.written += 3) {
    while (isLineBreak(text[progress.read]) && length - progress.read > 4) ++progress.read;
    const char* const at = text + progress.read;
    std::uint8_t sextets[4], all = 0;
    for (int i = 0; i < 4; ++i) {
      sextets[i] = kSextets[static_cast<std::uint8_t>(at[i])];
      all |= sextets[i];
    }
    if (all >= kNoSextet) return;
    packGroup(sextets, bytes + progress.written);
  }
}

}  // namespace nomutil::textutil

#endif  // NOMUTIL_TEXTUTIL_BASE64KERNELS_H
