// All exports: the entry that each calls, with which arguments, and what it makes of each answer.
// The library that stands in for GEOS gives the answers.

#include "freshlibrary.h"
#include "nomos/lasterror.h"

#include <cctype>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using nomtest::StandInLibrary;

constexpr int kUntouched = 0x7E;

// What was given to an export, and what came of it.
struct Outcome {
  std::vector<std::uint64_t> given;
  std::uint64_t result = 0;
  int cell = kUntouched;  // behind the last pointer, where the export may store
};

// Calls an export with an argument of its own at each place.
template <class Result, class... Arguments>
Outcome callDistinct(Result (*function)(Arguments...)) {
  Outcome outcome;
  const auto next = [&outcome](auto value) {
    using T = decltype(value);
    const std::uint64_t number = outcome.given.size() + 1;
    if constexpr (std::is_same_v<T, int*> || std::is_same_v<T, std::uint32_t*> ||
                  std::is_same_v<T, std::uint8_t*>) {
      value = reinterpret_cast<T>(&outcome.cell);
    } else if constexpr (std::is_pointer_v<T>) {
      value = reinterpret_cast<T>(number << 12);
    } else {
      value = static_cast<T>(static_cast<double>(number) + 0.5);
    }
    std::memcpy(&outcome.given.emplace_back(), &value, sizeof value);
    return value;
  };
  // Braces, so that the arguments are made in their order.
  const std::tuple<Arguments...> arguments{next(Arguments{})...};
  const Result result = std::apply(function, arguments);
  std::memcpy(&outcome.result, &result, sizeof result);
  return outcome;
}

struct Row {
  std::string convention, entry;
  Outcome (*call)();
};

#define ROW(convention, name, entry, result, arguments) \
  {#name, {#convention, #entry, [] { return callDistinct(&name); }}},
const std::map<std::string, Row> kRows = {NOMUTIL_GEOMETRY_ENTRIES(ROW)};
#undef ROW

using Missing = nomtest::FreshLibrary;

TEST_F(Missing, EntriesGive1008AndOneLineForEachCall) {
  ASSERT_EQ(kRows.size(), 77u);
  nosDenyLibrary("geos_c");
  for (int round = 0; round < 2; ++round) {
    for (const auto& [name, row] : kRows) {
      nosSetLastError(0);
      const Outcome outcome = row.call();
      const bool givesObject = row.convention == "Object" || name == "GEOS_WKTReaderRead";
      EXPECT_EQ(outcome.result, givesObject || name == "GEOS_Init" ? 0u : 1008u) << name;
      EXPECT_EQ(outcome.cell, givesObject ? 1008 : kUntouched) << name;
      EXPECT_EQ(nosGetLastError(), 1008u) << name;
      EXPECT_EQ(lines(), "GEOS_C: Unable to get address of '" + row.entry +
                             "' in 'geos_c', O/S Error 126.\n");
    }
  }
}

// An entry is named like its export, but for the case, underscores and "_r"; or as it stands here.
TEST(Entries, BearTheNamesOfGeos) {
  const std::map<std::string, std::string> renamed = {
      {"GEOS_GetVersion", "GEOSversion"},
      {"GEOS_Init", "initGEOS_r"},
      {"GEOS_Finish", "finishGEOS_r"},
      {"GEOS_Destroy", "GEOSGeom_destroy_r"},
      {"GEOS_GeometryType", "GEOSGeomType_r"},
      {"GEOS_GetDimensions", "GEOSGeom_getDimensions_r"},
      {"GEOS_GetCoordinateDimensions", "GEOSGeom_getCoordinateDimension_r"},
      {"GEOS_GetCoordSequence", "GEOSGeom_getCoordSeq_r"},
      {"GEOS_BufferSingleSided", "GEOSSingleSidedBuffer_r"}};
  const auto bare = [](const std::string& name) {
    std::string letters;
    for (const char c : name) {
      if (c != '_') letters += static_cast<char>(std::tolower(c));
    }
    return letters;
  };
  for (const auto& [name, row] : kRows) {
    const std::string made = name.starts_with("GEOS_Create") ? "GEOSGeom" + name.substr(5) : name;
    const auto found = renamed.find(name);
    EXPECT_EQ(bare(row.entry), bare(found != renamed.end() ? found->second : made + "_r"));
  }
}

// Each convention with its exports, and answers with the status that each becomes, and behind a
// colon what the export stores.
const std::pair<const char*, const char*> kConventions[] = {
    {"GEOS_GetSRID GEOS_GetDimensions GEOS_GetCoordinateDimensions", "7=0:7 0=0:0 -1=0:-1"},
    {"GEOS_GetNumGeometries GEOS_GetNumInteriorRings GEOS_GetNumCoordinates",
     "7=0:7 0=0:0 -1=1345:-1"},
    {"GEOS_Area GEOS_Length GEOS_Distance GEOS_CoordSeq_GetSize GEOS_CoordSeq_GetX "
     "GEOS_CoordSeq_GetY GEOS_CoordSeq_GetZ GEOS_CoordSeq_GetOrdinate GEOS_CoordSeq_SetX "
     "GEOS_CoordSeq_SetY GEOS_CoordSeq_SetZ GEOS_CoordSeq_SetOrdinate GEOS_CoordSeq_GetDimensions",
     "1=0 2=0 -1=0 0=1345"},
    {"GEOS_Normalize", "0=0 1=1345 -1=1345"},
    {"GEOS_HasZ GEOS_IsEmpty GEOS_IsSimple GEOS_IsRing GEOS_IsValid GEOS_Contains GEOS_Within "
     "GEOS_Disjoint GEOS_Intersects GEOS_Touches GEOS_Crosses GEOS_Overlaps GEOS_Equals "
     "GEOS_EqualsExact",
     "0=0:0 1=0:1 2=1345:0 3=1345:0 -1=1345:0"},
    {"GEOS_WKTReaderCreate GEOS_WKTWriterCreate GEOS_WKBReaderCreate GEOS_WKBWriterCreate "
     "GEOS_WKBReaderRead GEOS_Envelope GEOS_ConvexHull GEOS_Boundary "
     "GEOS_UnionCascaded GEOS_PointOnSurface GEOS_GetCentroid GEOS_Intersection GEOS_Difference "
     "GEOS_SymDifference GEOS_Union GEOS_GetGeometryN GEOS_GetInteriorRingN GEOS_GetExteriorRing "
     "GEOS_GetCoordSequence GEOS_CoordSeq_Create GEOS_CreatePoint GEOS_CreateLineString "
     "GEOS_CreateLinearRing GEOS_CreatePolygon GEOS_CreateCollection GEOS_Buffer "
     "GEOS_BufferWithStyle GEOS_BufferSingleSided",
     "74565=74565:0 0=0:1345"},  // the object, and the status behind the colon
    {"GEOS_Finish GEOS_WKTReaderDestroy GEOS_WKTWriterDestroy GEOS_WKBReaderDestroy "
     "GEOS_WKBWriterDestroy GEOS_Free GEOS_Destroy GEOS_CoordSeq_Destroy GEOS_SetSRID",
     "0=0"},
};

TEST_F(StandInLibrary, ExportsPassTheirArgumentsOnAndTranslateTheAnswer) {
  std::size_t checked = 0;
  for (const auto& [names, answers] : kConventions) {
    std::istringstream nameWords(names);
    for (std::string name; nameWords >> name; ++checked) {
      const Row& row = kRows.at(name);
      std::istringstream answerWords(answers);
      for (std::string word; answerWords >> word;) {
        prepare(std::stoll(word));
        const Outcome outcome = row.call();
        std::string seen = std::to_string(standIn->answer) + "=" + std::to_string(outcome.result);
        if (word.find(':') != word.npos) seen += ":" + std::to_string(outcome.cell);
        EXPECT_EQ(seen, word) << name;
        ASSERT_EQ(standIn->count, 1u) << name;
        const StandIn::Call& call = standIn->calls[0];
        EXPECT_EQ(call.entry, row.entry);
        const std::size_t added = word.find(':') != word.npos ? 1 : 0;
        for (std::size_t i = 0; i < outcome.given.size() - added; ++i) {
          EXPECT_EQ(call.arguments[i], outcome.given[i]) << name << ", argument " << i;
        }
      }
    }
  }
  EXPECT_EQ(checked, 71u) << "six have tests of their own";
  EXPECT_EQ(lines() + broken(), "");
}

TEST(GeometryPage, ShowsEveryRowOfTheTable) {
  std::ifstream file(NOMUTIL_SOURCE_DIR "/docs/geometry.md");
  std::string page, rows;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("| `GEOS_")) page += line + '\n';
  }
#define ROW(convention, name, entry, result, arguments) \
  rows += "| `" #name "` | `" #entry #arguments "` | `" #result "` | " #convention " |\n";
  NOMUTIL_GEOMETRY_ENTRIES(ROW)
#undef ROW
  EXPECT_EQ(page, rows);
}

}  // namespace
