// What the calls that need an optional library answer, on one line: two compressions, a context of
// GEOS and a reader's status, a date in German.
//   zlib 0 0; GEOS 1 0; locale 2460315
#include "nomos/locale.h"
#include "nomos/testhooks.h"

#include "sys/compress.h"
#include "sys/datetime.h"
#include "sys/geometry.h"

#include <cstdio>

int main() {
  // Each missing library is also told in the log.
  nosSetLogSink([](void*, NosLogLevel, const char*) {}, nullptr);

  DskParam block;
  paramCreateKoraBinary(&block, nullptr, 0, 0xFFFFFFFF, 2);
  const auto* const bytes = reinterpret_cast<const unsigned char*>("aaaa");
  const int first = doAltCompress(false, bytes, 4, kCompressZlib, &block);
  const int second = doAltCompress(false, bytes, 4, kCompressZlib, &block);
  paramDeleteKoraBinary(&block);

  GEOSContextHandle_t context = GEOS_Init(nullptr, nullptr);
  std::uint32_t status = 0;
  GEOSWKTReader* const reader = GEOS_WKTReaderCreate(context, &status);
  if (reader != nullptr) GEOS_WKTReaderDestroy(context, reader);
  const bool hasContext = context != nullptr;
  if (hasContext) GEOS_Finish(context);

  constexpr unsigned kGerman = 1031;
  nosSetThreadLocale(kGerman);
  std::printf("zlib %d %d; GEOS %d %u; locale %u\n", first, second, hasContext ? 1 : 0, status,
              extractDateForCurrentLocale("Freitag, 5. Januar 2024"));
}
