// zlib's one-shot functions through the process-wide loader, and the interface before this one.

#include "nomos/lasterror.h"
#include "sys/compress.h"
#include "sys/messages.h"

namespace {

constexpr char kSource[] = "objman/common/source/compress";

}  // namespace

int doZlibInit() {
  return ZLibDesc::processWide().isProcLoaded() ? kNoError : static_cast<int>(nosGetLastError());
}

int doZlibCompress(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                   unsigned sourceLength, int level) {
  NOMUTIL_REQUIRE(kSource, destLength != nullptr);
  if (destLength == nullptr) return kInvalidParameterValue;
  if (const int status = doZlibInit(); status != kNoError) return status;
  return ZLibDesc::processWide().compress2(dest, destLength, source, sourceLength, level);
}

int doZlibUncompress(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                     unsigned sourceLength) {
  NOMUTIL_REQUIRE(kSource, destLength != nullptr);
  if (destLength == nullptr) return kInvalidParameterValue;
  if (const int status = doZlibInit(); status != kNoError) return status;
  return ZLibDesc::processWide().uncompress(dest, destLength, source, sourceLength);
}

int doCompress(bool, const unsigned char*, unsigned, DskParam*) {
  return kFeatureDeprecated;
}

int doUncompress(bool, unsigned char*, unsigned, DskParam*, unsigned*) {
  return kFeatureDeprecated;
}
