// The exports that copy texts and bytes, and the messages of GEOS, at every size and with answers
// that GEOS itself does not give on demand.

#include "freshlibrary.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace nomutil::geometry;

char thirty[] = "POLYGON ((0 0, 1 0, 1 1, 0 0))";

class Texts : public nomtest::StandInLibrary {
 protected:
  // What a call leaves in a buffer of the size, '#' where nothing is written and '|' for NUL; its
  // status; and the entries it called, with '!' for a wrong block or context of the release.
  template <class Call>
  std::tuple<std::string, int, std::string> filled(std::uint32_t size, Call call) {
    std::vector<char> buffer(size, '#');
    std::string entries;
    prepare(thirty);
    const int status = call(buffer.data());
    std::replace(buffer.begin(), buffer.end(), '\0', '|');
    for (unsigned i = 0; i < standIn->count; ++i) {
      const auto& [entry, arguments] = standIn->calls[i];
      const bool isRelease = std::string("GEOSFree_r") == entry;
      const bool isRight = arguments[0] == bitsOf(context) && arguments[1] == bitsOf(thirty);
      entries += std::string(entry) + (isRelease && !isRight ? "! " : " ");
    }
    return {{buffer.begin(), buffer.end()}, status, entries};
  }

  const Context context = reinterpret_cast<Context>(0x1000);
};

TEST_F(Texts, FillABufferOfAnySize) {
  const std::string text(thirty);
  const std::pair<std::uint32_t, std::string> rows[] = {
      {0, ""},          {1, "|"},           {10, "POLYGON (|"}, {30, text.substr(0, 29) + "|"},
      {31, text + "|"}, {34, text + "|##|"}};
  for (const auto& [size, expected] : rows) {
    EXPECT_EQ(filled(size, [room = size](char* to) { return GEOS_GetVersion(to, room); }),
              std::tuple(expected, 0, "GEOSversion "));
    EXPECT_EQ(filled(size, [this, room = size](
                               char* to) { return GEOS_GeometryType(context, nullptr, to, room); }),
              std::tuple(expected, 0, "GEOSGeomType_r GEOSFree_r "));
    std::uint32_t needed = size;
    EXPECT_EQ(filled(size,
                     [&](char* to) {
                       return GEOS_WKTWriterWrite(context, nullptr, nullptr, to, &needed);
                     }),
              std::tuple(expected, size < 31 ? 126 : 0, "GEOSWKTWriter_write_r GEOSFree_r "));
    EXPECT_EQ(needed, std::max(size, 31u));
  }
}

TEST_F(Texts, AsImagesAreCopiedWholeOrNotAtAll) {
  const std::string call = "GEOSWKBWriter_write_r ", release = "GEOSFree_r ";
  const std::tuple<std::size_t, std::uint32_t, int, const char*, std::string> rows[] = {
      {4, 4, 0, "POLY", call + release},
      {4, 6, 0, "POLY##", call + release},
      {4, 3, 126, "###", call},
      {4, 0, 126, "", call},
      {0, 0, 0, "", call + release}};
  for (const auto& [length, size, status, buffer, calls] : rows) {
    standIn->length = length;
    std::uint32_t needed = size;
    EXPECT_EQ(filled(size,
                     [&](char* to) {
                       return GEOS_WKBWriterWrite(context, nullptr, nullptr,
                                                  reinterpret_cast<unsigned char*>(to), &needed);
                     }),
              std::tuple(buffer, status, calls));
    EXPECT_EQ(needed, length);
  }
}

TEST_F(Texts, ThatGeosDoesNotGiveAre1345) {
  char buffer[4] = "abc";
  std::uint32_t size = 4;
  prepare(nullptr);
  EXPECT_EQ(GEOS_GeometryType(context, nullptr, buffer, 4), 1345);
  EXPECT_EQ(GEOS_WKTWriterWrite(context, nullptr, nullptr, buffer, &size), 1345);
  EXPECT_EQ(GEOS_WKBWriterWrite(context, nullptr, nullptr, nullptr, &size), 1345);
  EXPECT_EQ(std::tuple(std::string(buffer), size, standIn->count), std::tuple("abc", 4u, 3u));
}

TEST_F(Texts, StayWithGeosWithoutItsRelease) {
  nosDenyEntry("GEOSFree_r");
  char buffer[4];
  std::uint32_t size = 4;
  prepare(thirty);
  EXPECT_EQ(GEOS_GeometryType(context, nullptr, buffer, 4), 1008);
  EXPECT_STREQ(buffer, "POL");
  EXPECT_EQ(GEOS_WKTWriterWrite(context, nullptr, nullptr, buffer, &size), 126);
  const std::string line =
      "GEOS_C: Unable to get address of 'GEOSFree_r' in 'geos_c', O/S Error 127.\n";
  EXPECT_EQ(lines(), line + line);
  nosDenyEntry("GEOSGeomType_r");
  EXPECT_EQ(GEOS_GeometryType(context, nullptr, buffer, 4), 0) << "a found entry stays found";
}

TEST_F(Texts, AreReadFromACopyOfAnyLength) {
  std::uint32_t status;
  for (const std::size_t length : {0u, 1u, 253u, 254u, 255u, 256u, 599u}) {
    const std::uint64_t before = nosAllocatedBlocks();
    const std::string text(length, 'x');
    prepare(thirty);
    std::memset(standIn->text, '#', sizeof standIn->text - 1);
    status = 7;
    EXPECT_EQ(bitsOf(GEOS_WKTReaderRead(context, nullptr, text.c_str(), &status)), bitsOf(thirty));
    EXPECT_EQ(std::tuple(status, standIn->text), std::tuple(0u, text));
    EXPECT_NE(standIn->calls[0].arguments[2], bitsOf(text.c_str())) << "no copy";
    nosFailAllocation(1);
    GEOS_WKTReaderRead(context, nullptr, text.c_str(), &status);
    EXPECT_EQ(status, length < 255 ? 0u : 1448u) << length;
    nosFailAllocation(0);
    EXPECT_EQ(nosAllocatedBlocks(), before);
  }
  prepare(nullptr);
  for (const char* text : {static_cast<const char*>(nullptr), "POINT"}) {
    status = 7;
    EXPECT_EQ(GEOS_WKTReaderRead(context, nullptr, text, &status), nullptr);
    EXPECT_EQ(status, 1345u);
  }
  EXPECT_EQ(standIn->count, 1u) << "GEOS sees no null text";
}

TEST_F(Texts, AndResultsWithoutAPlaceAreReported) {
  prepare(thirty);
  EXPECT_EQ(GEOS_WKTWriterWrite(context, nullptr, nullptr, nullptr, nullptr), 126);
  EXPECT_EQ(GEOS_WKBWriterWrite(context, nullptr, nullptr, nullptr, nullptr), 126);
  EXPECT_EQ(standIn->count, 0u);
  EXPECT_EQ(broken(), "size != nullptr");
  EXPECT_NE(GEOS_WKTReaderRead(context, nullptr, "", nullptr), nullptr);
  EXPECT_EQ(broken(), "status != nullptr");
  EXPECT_NE(GEOS_Envelope(context, nullptr, nullptr), nullptr);
  prepare(2);
  EXPECT_EQ(GEOS_IsEmpty(context, nullptr, nullptr), 1345);
  EXPECT_EQ(GEOS_GetSRID(context, nullptr, nullptr), 0);
  prepare(nullptr);
  EXPECT_EQ(GEOS_Envelope(context, nullptr, nullptr), nullptr);
  EXPECT_EQ(broken(), "the last argument is not null");
}

std::string heard;

TEST_F(Texts, OfMessagesGoToTheLastHandlersAndTheLog) {
  const auto first = [](const char* text) { heard += std::string("1:") + text + ";"; };
  const auto second = [](const char* text) { heard += std::string("2:") + text + ";"; };
  const std::string cut(255, 'x');
  struct {
    GeometryMessageHandler notice, error;
    std::string heard;
  } rows[] = {{first, second, "1:%n at 5;2:" + cut + ";"}, {nullptr, first, "1:" + cut + ";"}};
  for (const auto& [notice, error, expected] : rows) {
    prepare(thirty);
    EXPECT_EQ(bitsOf(GEOS_Init(notice, error)), bitsOf(thirty));
    const auto* const handlers = standIn->calls[0].arguments;
    heard.clear();
    reinterpret_cast<EntryMessageHandler>(handlers[0])("%s at %d", "%n", 5);
    reinterpret_cast<EntryMessageHandler>(handlers[1])("%s", std::string(300, 'x').c_str());
    EXPECT_EQ(heard, expected);
    EXPECT_EQ(lines(), "i NOM_GEOS [NOTICE]: %n at 5\nNOM_GEOS [ERROR]: " + cut + "\n");
  }
}

}  // namespace
