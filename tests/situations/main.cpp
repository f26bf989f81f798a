// The status of each call that needs an optional library, with and without it.
//   situations [zlib] [geos] [locales]    the libraries that are there
// prints a line for each call that gives something else, and how many calls there were. The exit
// status is 1 when a call does.
#include "nomos/intl.h"
#include "nomos/lasterror.h"
#include "nomos/locale.h"
#include "nomos/testhooks.h"

#include "sys/compress.h"
#include "sys/datetime.h"
#include "sys/geometry.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// A call, and what it gives with the library and without it. The rows of a table run in order.
struct Row {
  const char* call;
  long long with, without;
  long long (*run)();
};
#define ROW(with, without, ...)                                                     \
  {                                                                                 \
#__VA_ARGS__, with, without, [] { return static_cast<long long>(__VA_ARGS__); } \
  }

// ---- zlib ----

// A parameter that holds bytes.
struct Held {
  DskParam parameter;
  Held() { paramCreateKoraBinary(&parameter, nullptr, 0, kKoraNoMaximum, 2); }
  ~Held() { paramDeleteKoraBinary(&parameter); }
  std::string bytes() {
    unsigned char* data = nullptr;
    std::uint32_t length = 0;
    DerefBinary(&parameter, &data, &length);
    return {data, data + length};
  }
};
Held compressed, expanded, untouched;

unsigned char bytes[] = "aaaa";
// Python: b"\x09" + zlib.compress(b"aaaa")
unsigned char block[] = "\x09\x78\x9c\x4b\x4c\x4c\x4c\x04\x00\x03\xce\x01\x85";
unsigned char retired[] = "\x0A";
unsigned char unknown[] = "\x0B";
unsigned char room[64];
unsigned size = sizeof room;

// The first use of zlib, whatever went before.
void anew() {
  ZLibDesc::processWide().allowLibReload();
  size = sizeof room;
}

int compress(int method, Held& target) {
  return doAltCompress(false, bytes, 4, method, &target.parameter);
}

template <std::size_t count>
int uncompress(unsigned char (&from)[count], Held& target) {
  return doAltUncompress(false, from, count - 1, &target.parameter);
}

unsigned crc32() {
  unsigned length = 9, start = 0xFFFFFFFF;
  char digits[] = "123456789";
  return ~compute_CRC32(digits, &length, &start);
}

const Row kZlibRows[] = {
    ROW(0xCBF43926, 0xCBF43926, crc32()),
    ROW(1002, 1002, compress('q', untouched)),
    ROW(1002, 1002, uncompress(unknown, untouched)),
    ROW(1112, 1112, uncompress(retired, untouched)),
    ROW(1112, 1112, doCompress(false, bytes, 4, &untouched.parameter)),
    ROW(1112, 1112, doUncompress(false, block, 13, &untouched.parameter, &size)),
    ROW(0, 0, untouched.bytes().size()),
    ROW(1112, 1112, compress('P', untouched)),
    ROW(1, 1, untouched.bytes() == "\x0A"),
    ROW(0, 1006, doZlibInit()),
    ROW(0, 1006, nosGetLastError()),
    ROW(0, 0, doZlibInit()),
    ROW(0, 1006, (anew(), compress(kCompressZlib, compressed))),
    ROW(1, 0, !compressed.bytes().empty()),
    ROW(0, 1409, compress(kCompressZlib, compressed)),
    ROW(1, 0, compressed.bytes().size() > 1),
    ROW(9, 9, compressed.bytes().front()),
    ROW(0, 1006, (anew(), uncompress(block, expanded))),
    ROW(0, 1410, uncompress(block, expanded)),
    ROW(1, 0, expanded.bytes() == "aaaaaaaa"),
    ROW(0, 1006, (anew(), doZlibCompress(room, &size, bytes, 4, 6))),
    ROW(0, -1, (size = sizeof room, doZlibCompress(room, &size, bytes, 4, 6))),
    ROW(12, sizeof room, size),
    ROW(0, 1006, (anew(), doZlibUncompress(room, &size, block + 1, 12))),
    ROW(0, -1, (size = sizeof room, doZlibUncompress(room, &size, block + 1, 12))),
    ROW(4, sizeof room, size),
    ROW(0, 1008, (nosSetLastError(0), ZLibDesc::processWide().zlibVersion(), nosGetLastError())),
};

// ---- GEOS ----

GEOSContextHandle_t context;
GEOSWKTReader* reader;
GEOSWKTWriter* writer;
GEOSGeometry *area, *point, *made;
GEOSCoordSequence* sequence;
std::uint32_t status;
std::uint8_t answer;
int number = -1;
double measure;
char text[64];
std::uint32_t textSize;

const Row kGeometryRows[] = {
    ROW(0, 1008, GEOS_GetVersion(text, sizeof text)),
    ROW(0, 1008, (context = GEOS_Init(nullptr, nullptr)) != nullptr ? 0 : nosGetLastError()),
    ROW(0, 1008, (reader = GEOS_WKTReaderCreate(context, &status), status)),
    ROW(0, 1008, (writer = GEOS_WKTWriterCreate(context, &status), status)),
    ROW(0, 1008,
        (area = GEOS_WKTReaderRead(context, reader, "POLYGON((0 0,4 0,4 3,0 0))", &status),
         status)),
    ROW(0, 1008, (point = GEOS_WKTReaderRead(context, reader, "POINT(3 1)", &status), status)),
    ROW(1345, 1008, (GEOS_WKTReaderRead(context, reader, "POLYGON((0", &status), status)),
    ROW(1345, 1008, (GEOS_WKTReaderRead(context, reader, nullptr, &status), status)),
    ROW(0, 1008, GEOS_GetDimensions(context, area, &number)),
    ROW(0, 1008, GEOS_GetNumCoordinates(context, area, &number)),
    ROW(4, -1, number),
    ROW(1345, 1008, GEOS_GetNumInteriorRings(context, point, &number)),
    ROW(0, 1008, GEOS_Area(context, area, &measure)),
    ROW(6, 0, measure),
    ROW(0, 1008, GEOS_Contains(context, area, point, &answer)),
    ROW(1, 0, answer),
    ROW(0, 1008, GEOS_Normalize(context, point)),
    ROW(0, 1008, GEOS_SetSRID(context, area, 4326)),
    ROW(0, 1008, GEOS_GetSRID(context, area, &number)),
    ROW(4326, -1, number),
    ROW(0, 1008, (made = GEOS_Union(context, area, point, &status), status)),
    ROW(0, 1008, GEOS_GeometryType(context, made, text, sizeof text)),
    ROW(0, 0, std::strcmp(text, context != nullptr ? "Polygon" : "")),
    ROW(0, 1008, GEOS_Destroy(context, made)),
    ROW(0, 1008, (made = GEOS_Buffer(context, point, 1, 8, &status), status)),
    ROW(0, 1008, GEOS_Destroy(context, made)),
    ROW(126, 1008, (textSize = 3, GEOS_WKTWriterWrite(context, writer, point, text, &textSize))),
    ROW(0, 1008, (textSize = 64, GEOS_WKTWriterWrite(context, writer, point, text, &textSize))),
    ROW(0, 1008, (sequence = GEOS_CoordSeq_Create(context, 2, 2, &status), status)),
    ROW(0, 1008, GEOS_CoordSeq_SetX(context, sequence, 1, 2.5)),
    ROW(0, 1008, GEOS_CoordSeq_Destroy(context, sequence)),
    ROW(0, 1008, GEOS_Destroy(context, area)),
    ROW(0, 1008, GEOS_Destroy(context, point)),
    ROW(0, 1008, GEOS_WKTWriterDestroy(context, writer)),
    ROW(0, 1008, GEOS_WKTReaderDestroy(context, reader)),
    ROW(0, 1008, GEOS_Finish(context)),
};

// ---- Locales and code pages ----

constexpr unsigned kGerman = 1031;
constexpr unsigned kEnglish = 1033;

// The number of a text's UTF-8 bytes, the text being one character of the code page.
long long utf8Of(unsigned char character) {
  unsigned char utf8[4] = {};
  std::uint32_t count = 0, characters = 0;
  const int result = intlConvertString(IntlFormat::CodePage, &character, 1, IntlFormat::Utf8, utf8,
                                       sizeof utf8, count, characters);
  return result != 0 ? -result : count == 2 ? utf8[0] << 8 | utf8[1] : utf8[0];
}

long long dateIn(unsigned locale, const char* date) {
  nosSetThreadLocale(locale);
  return extractDateForCurrentLocale(date);
}

const Row kLocaleRows[] = {
    ROW(2460315, 2460315, dateIn(kEnglish, "Friday, January 5, 2024")),
    ROW(2460315, 0xFFFFFFFF, dateIn(kGerman, "Freitag, 5. Januar 2024")),
    // The character 9C is U+0153 in Windows-1252 and U+015B in Windows-1250.
    ROW(0xC593, 0xC593, utf8Of(0x9C)),
    ROW(1, 0, nosSetCodePage(1250)),
    ROW(0xC59B, 0xC593, utf8Of(0x9C)),
    // A3 is a letter there and the pound sign here.
    ROW(1, 0, nosIsCharAlpha(0xA3)),
    ROW(0, 0, nosSetCodePage(0) ? 0 : 1),
    ROW(0, 0, nosIsCharAlpha(0xA3)),
};

int faults = 0;

template <std::size_t count>
void check(const Row (&rows)[count], bool isThere) {
  for (const Row& row : rows) {
    const long long expected = isThere ? row.with : row.without;
    const long long given = row.run();
    if (given == expected) continue;
    ++faults;
    std::printf("%lld instead of %lld: %s\n", given, expected, row.call);
  }
  std::printf("%u calls, %s\n", static_cast<unsigned>(count), isThere ? "with" : "without");
}

}  // namespace

int main(int argc, char** argv) {
  // Each missing library is also told in the log.
  nosSetLogSink([](void*, NosLogLevel, const char*) {}, nullptr);
  const auto isThere = [&](const char* library) {
    return std::any_of(argv + 1, argv + argc,
                       [&](const char* name) { return std::strcmp(name, library) == 0; });
  };
  check(kZlibRows, isThere("zlib"));
  check(kGeometryRows, isThere("geos"));
  check(kLocaleRows, isThere("locales"));
  return faults == 0 ? 0 : 1;
}
