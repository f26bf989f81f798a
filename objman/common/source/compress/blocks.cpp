// Compressed blocks: a header byte and a zlib stream (docs/formats/compressedblock.md). 09 is what
// is written: method 1, characters of one byte; 0A was the retired method.

#include "limit.h"
#include "stream.h"
#include "target.h"

#include "sys/compress.h"
#include "sys/messages.h"

#include <cstdint>

namespace nomutil::compress {
namespace {

constexpr char kSource[] = "objman/common/source/compress";

enum Method : unsigned { kMethodZlib = 1, kMethodRetired = 2 };

constexpr unsigned kLeastFirst = 1;  // the order of wider characters; any other is most first

struct Header {
  unsigned method;
  unsigned width;
  unsigned order;

  explicit Header(unsigned char byte)
      : method(byte % 8u), width(byte / 8u % 8u), order(byte / 64u) {}
};

constexpr unsigned char kHeaderZlib = 9;
constexpr unsigned char kHeaderRetired = 10;

// A held binary of our own.
class Temporary {
 public:
  Temporary() { paramCreateKoraBinary(_parameter, nullptr, 0, kKoraNoMaximum, kUsage); }
  ~Temporary() { paramDeleteKoraBinary(_parameter); }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  DskParam* parameter() { return _parameter; }

 private:
  static constexpr PUsage kUsage = 2;
  ShortDskParam _parameter;
};

// Replaces the text of the target by the low byte of each character.
int narrowInto(const Target& target, const unsigned char* characters, std::uint32_t byteCount,
               const Header& header) {
  const std::uint32_t count = byteCount / header.width;
  std::uint32_t held;
  if (const int status = target.getLength(held); status != kNoError) return status;
  if (held < count) {
    if (const int status = target.setLength(count); status != kNoError) return status;
  }
  unsigned char* text;
  if (const int status = target.getText(text); status != kNoError) return status;
  if (text == nullptr && count != 0) return kMemoryAllocationFailed;
  const std::uint32_t low = header.order == kLeastFirst ? 0 : header.width - 1;
  for (std::uint32_t i = 0; i < count; ++i) {
    text[i] = characters[std::size_t{i} * header.width + low];
  }
  return target.setLength(count);
}

int inflateNarrowed(const Target& target, const Header& header, const unsigned char* stream,
                    unsigned length) {
  if (header.width != 1 && header.width != 2 && header.width != 4) return kInvalidParameterValue;
  Temporary temporary;
  const Target wide(temporary.parameter(), false);
  if (const int status = inflateInto(wide, stream, length, uncompressLimit()); status != kNoError) {
    return status;
  }
  unsigned char* characters;
  std::uint32_t byteCount;
  if (const int status = DerefBinary(temporary.parameter(), &characters, &byteCount);
      status != kNoError) {
    return status;
  }
  if (characters == nullptr) return kMemoryAllocationFailed;
  return narrowInto(target, characters, byteCount, header);
}

}  // namespace
}  // namespace nomutil::compress

using namespace nomutil::compress;

int doAltCompress(bool, const unsigned char* source, unsigned length, int method,
                  DskParam* parameter) {
  NOMUTIL_REQUIRE(kSource, source != nullptr || length == 0);
  if (source == nullptr) length = 0;
  const Target target(parameter, false);
  const int letter = method % kCompressLevelUnit;
  if (letter == kCompressRetired) {
    const int status = target.append(&kHeaderRetired, 1);
    return status != kNoError ? status : kFeatureDeprecated;
  }
  if (letter != kCompressZlib) return kInvalidParameterValue;
  if (const int status = doZlibInit(); status != kNoError) return status;
  if (const int status = target.append(&kHeaderZlib, 1); status != kNoError) return status;
  return deflateInto(target, source, length, method / kCompressLevelUnit);
}

int doAltUncompress(bool isString, unsigned char* block, unsigned length, DskParam* parameter) {
  NOMUTIL_REQUIRE(kSource, block != nullptr || length == 0);
  if (block == nullptr || length == 0) return kInvalidParameterValue;
  const Header header(block[0]);
  if (header.method == kMethodRetired) return kFeatureDeprecated;
  if (header.method != kMethodZlib) return kInvalidParameterValue;
  if (const int status = doZlibInit(); status != kNoError) return status;
  const Target target(parameter, isString);
  // The stream alone, so that nothing is read behind a block that was cut short.
  if (isString && (header.width != 1 || header.order != 0)) {
    return inflateNarrowed(target, header, block + 1, length - 1);
  }
  return inflateInto(target, block + 1, length - 1, uncompressLimit());
}
