// base64: "Man" is "TWFu", "M" is "TQ==". Encoding goes line by line through the inner loops;
// decoding takes clean runs in one step and sorts the rest: what is no sextet is skipped, and the
// sextets that remain, up to the first '=', are the text.

#include "base64kernels.h"

#include "nomos/heap.h"
#include "sys/messages.h"
#include "sys/textutil.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace nomutil::textutil {

std::span<const Base64Kernels* const> allBase64Kernels() {
  static constexpr const Base64Kernels* kAll[] = {&kAvx512Base64, &kAvx2Base64, &kPortableBase64};
  return kAll;
}

namespace {

constexpr char kSource[] = "objman/common/source/textutil";

const Base64Kernels& kernels() {
  static const Base64Kernels& chosen = **std::ranges::find_if(
      allBase64Kernels(), [](const Base64Kernels* each) { return each->isUsable(); });
  return chosen;
}

// The characters that are sorted before the next look for a clean run.
constexpr std::size_t kPart = 1024;

template <class T>
T* allocate(std::uint64_t byteCount) {
  return static_cast<T*>(XHeap::library().allocate(byteCount));
}

// What follows the last full line, 1 to 57 bytes of it or, without lines, everything.
void encodeRest(const std::uint8_t* bytes, std::size_t length, char* text) {
  const std::size_t groups = length / 3;
  kernels().encode(bytes, groups, text);
  const std::size_t left = length % 3;
  if (left == 0) return;
  text += 4 * groups;
  const std::uint8_t last[3] = {bytes[3 * groups],
                                left == 2 ? bytes[3 * groups + 1] : std::uint8_t{}, 0};
  encodeGroup(last, text);
  text[3] = '=';
  if (left == 1) text[2] = '=';
}

}  // namespace

int decodeBase64(const Base64Kernels& with, const char* text, std::size_t length,
                 std::uint8_t* bytes, std::uint32_t& byteCount) {
  const char* const end = text + length;
  std::uint8_t* to = bytes;
  std::uint8_t sextets[kPart + kSextetSlack];
  std::size_t kept;
  do {
    const Progress clean = with.decode(text, static_cast<std::size_t>(end - text), to);
    text += clean.read;
    to += clean.written;
    kept = 0;
    if (text == end) break;

    // The next part is sorted, and on to the end of its last group.
    const std::size_t part = std::min(kPart, static_cast<std::size_t>(end - text));
    const void* const pad = std::memchr(text, '=', part);
    const char* const partEnd = pad == nullptr ? text + part : static_cast<const char*>(pad);
    kept = with.filter(text, static_cast<std::size_t>(partEnd - text), sextets);
    for (text = partEnd; kept % 4 != 0 && text != end && *text != '='; ++text) {
      sextets[kept] = kSextets[static_cast<std::uint8_t>(*text)];
      if (sextets[kept] < kNoSextet) ++kept;
    }
    with.pack(sextets, kept / 4, to);
    to += kept / 4 * 3;
  } while (text != end && *text != '=');

  const std::size_t left = kept % 4;
  if (left != 0) {
    // One sextet would need three.
    const std::size_t padding = text == end ? 0 : end - text > 1 && text[1] == '=' ? 2 : 1;
    if (padding < 4 - left) return kBase64DecodingFailed;
    std::uint8_t last[4] = {}, group[3];
    std::copy_n(sextets + kept - left, left, last);
    packGroup(last, group);
    to = std::copy_n(group, left - 1, to);
  }
  byteCount = static_cast<std::uint32_t>(to - bytes);
  return kNoError;
}

}  // namespace nomutil::textutil

using namespace nomutil::textutil;

int base64Encode(const std::uint8_t* bytes, std::uint32_t byteCount, char*& text,
                 std::uint32_t& length, bool suppressLineBreaks) {
  text = nullptr;
  length = 0;
  NOMUTIL_REQUIRE(kSource, bytes != nullptr || byteCount == 0);
  if (bytes == nullptr) byteCount = 0;
  // A line ends where another one follows.
  const std::uint64_t lines =
      suppressLineBreaks || byteCount == 0 ? 0 : (byteCount - 1) / kLineBytes;
  const std::uint64_t characters = (std::uint64_t{byteCount} + 2) / 3 * 4 + 2 * lines;
  if (characters > std::numeric_limits<std::uint32_t>::max()) return kNoRoom;
  const std::uint64_t room =
      std::uint64_t{byteCount} * 4 / 3 + 3 + (suppressLineBreaks ? 0 : byteCount / 24 + 2) + 1;
  char* const block = allocate<char>(room);
  if (block == nullptr) return kNoRoom;
  if (lines != 0) kernels().encodeLines(bytes, lines, block);
  encodeRest(bytes + lines * kLineBytes, byteCount - lines * kLineBytes, block + lines * kLineSize);
  block[characters] = '\0';
  text = block;
  length = static_cast<std::uint32_t>(characters);
  return kNoError;
}

int base64DecodeWithLength(const char* text, std::uint32_t length, std::uint8_t*& bytes,
                           std::uint32_t& byteCount) {
  bytes = nullptr;
  NOMUTIL_REQUIRE(kSource, text != nullptr || length == 0);
  if (text == nullptr || length == 0) {
    byteCount = 0;
    return kNoError;
  }
  bytes = allocate<std::uint8_t>(length);
  if (bytes == nullptr) return kNoRoom;
  return decodeBase64(kernels(), text, length, bytes, byteCount);
}

int base64Decode(const char* text, std::uint8_t*& bytes, std::uint32_t& byteCount) {
  const std::size_t length = text == nullptr ? 0 : std::strlen(text);
  if (length > std::numeric_limits<std::uint32_t>::max()) {
    bytes = nullptr;
    return kNoRoom;
  }
  return base64DecodeWithLength(text, static_cast<std::uint32_t>(length), bytes, byteCount);
}

void base64Free(char*& text) {
  XHeap::library().release(text);
  text = nullptr;
}

void base64Free(std::uint8_t*& bytes) {
  XHeap::library().release(bytes);
  bytes = nullptr;
}
