// The outlines of the world's countries through the exports and through GEOS itself, side by side.

#include "geometry/freshlibrary.h"
#include "support/threads.h"

#include <geos_c.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using View = const GEOSGeometry*;

struct Country {
  std::string name, outline;
  GEOSGeometry* geometry;
};

// A context with readers and writers, and the countries read in it.
class Countries {
 public:
  explicit Countries(GeometryMessageHandler handler = nullptr) : c(GEOS_Init(handler, handler)) {
    std::ifstream file(NOMUTIL_SOURCE_DIR "/examples/data/countries-110m.tsv");
    for (std::string line; std::getline(file, line);) {
      const std::size_t tab = line.find('\t');
      const std::string outline = line.substr(tab + 1);
      all.push_back({line.substr(0, tab), outline, read(outline.c_str())});
    }
  }
  ~Countries() {
    for (const Country& each : all) GEOS_Destroy(c, each.geometry);
    const int failures = GEOS_WKTReaderDestroy(c, reader) | GEOS_WKTWriterDestroy(c, writer) |
                         GEOS_WKBReaderDestroy(c, imageReader) |
                         GEOS_WKBWriterDestroy(c, imageWriter) | GEOS_Finish(c);
    EXPECT_EQ(failures, 0);
  }

  GEOSGeometry* read(const char* text) { return GEOS_WKTReaderRead(c, reader, text, &status); }

  View operator[](const std::string& name) const {
    return std::find_if(all.begin(), all.end(), [&](auto& each) { return each.name == name; })
        ->geometry;
  }

  const GEOSContextHandle_t c;
  std::uint32_t status = 7;
  GEOSWKTReader* const reader = GEOS_WKTReaderCreate(c, &status);
  GEOSWKTWriter* const writer = GEOS_WKTWriterCreate(c, &status);
  GEOSWKBReader* const imageReader = GEOS_WKBReaderCreate(c, &status);
  GEOSWKBWriter* const imageWriter = GEOS_WKBWriterCreate(c, &status);
  std::vector<Country> all;
};

class World : public nomtest::FreshLibrary {
 protected:
  // The text of a geometry in GEOS's own words.
  std::string textOf(View geometry) {
    if (geometry == nullptr) return "none";
    char* const text = GEOSWKTWriter_write_r(c, world.writer, geometry);
    std::string copy = text;
    GEOSFree_r(c, text);
    return copy;
  }
  std::string taken(GEOSGeometry* geometry) {
    std::string text = textOf(geometry);
    GEOSGeom_destroy_r(c, geometry);
    return text;
  }

  Countries world;
  const GEOSContextHandle_t c = world.c;
  std::uint32_t status = 7;
};

TEST_F(World, IsReadCheckedMeasuredAndWritten) {
  ASSERT_EQ(world.all.size(), 177u);
  GEOSWKTReader* const reader = GEOSWKTReader_create_r(c);
  int coordinates = 0;
  std::string invalid;
  double area = 0;
  for (const auto& [name, outline, g] : world.all) {
    GEOSGeometry* const direct = GEOSWKTReader_read_r(c, reader, outline.c_str());
    ASSERT_EQ(GEOSEqualsExact_r(c, g, direct, 0), 1) << name;
    std::uint8_t isValid = 7;
    EXPECT_EQ(GEOS_IsValid(c, g, &isValid), 0);
    if (isValid == 0) invalid += name + ", ";

    int count = 0, rings = 0;
    EXPECT_EQ(GEOS_GetNumCoordinates(c, g, &count), 0);
    coordinates += count;
    const int theirRings = GEOSGetNumInteriorRings_r(c, direct);
    EXPECT_EQ(GEOS_GetNumInteriorRings(c, g, &rings), theirRings < 0 ? 1345 : 0);
    EXPECT_EQ(rings, theirRings) << name;

    double ours = 0, theirs = 0;
    EXPECT_EQ(GEOS_Length(c, g, &ours), 0);
    GEOSLength_r(c, direct, &theirs);
    EXPECT_EQ(ours, theirs);
    EXPECT_EQ(GEOS_Area(c, g, &ours), 0);
    area += ours;

    const std::string text = textOf(direct);
    std::vector<char> buffer(text.size() + 1);
    auto size = static_cast<std::uint32_t>(text.size());
    EXPECT_EQ(GEOS_WKTWriterWrite(c, world.writer, g, buffer.data(), &size), 126);
    EXPECT_EQ(GEOS_WKTWriterWrite(c, world.writer, g, buffer.data(), &size), 0);
    EXPECT_EQ(buffer.data(), text);

    std::size_t length = 0;
    unsigned char* const image = GEOSWKBWriter_write_r(c, world.imageWriter, direct, &length);
    std::vector<unsigned char> bytes(length);
    size = static_cast<std::uint32_t>(length);
    EXPECT_EQ(GEOS_WKBWriterWrite(c, world.imageWriter, g, bytes.data(), &size), 0);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), image, image + length)) << name;
    const auto readImage = [&](std::size_t byteCount) {
      return GEOS_WKBReaderRead(c, world.imageReader, bytes.data(), byteCount, &status);
    };
    EXPECT_EQ(taken(readImage(length)), text);
    EXPECT_EQ(std::tuple(readImage(length - 1), status), std::tuple(nullptr, 1345u));
    GEOSFree_r(c, image);
    GEOSGeom_destroy_r(c, direct);
  }
  // Counted and summed (the shoelace formula) from the lines of the file by a script.
  EXPECT_EQ(coordinates, 10587);
  EXPECT_EQ(invalid, "Fiji, Sudan, Russia, North Korea, Antarctica, ") << "as GEOS tells why";
  EXPECT_NEAR(area, 18475.297025, 1e-6);
  GEOSWKTReader_destroy_r(c, reader);
}

// Neighbours meet. Russia's outline, which is not valid, makes GEOS give up on many a pair: the one
// failure of a predicate that it gives on demand.
TEST_F(World, KnowsTheNeighboursOfEveryCountry) {
  std::map<std::string, std::string> neighbours;
  std::set<int> statuses;
  for (const Country& left : world.all) {
    for (const Country& right : world.all) {
      std::uint8_t meets = 7;
      const int ours = GEOS_Intersects(c, left.geometry, right.geometry, &meets);
      const char theirs = GEOSIntersects_r(c, left.geometry, right.geometry);
      ASSERT_EQ(std::pair(ours, int{meets}), std::pair(theirs == 2 ? 1345 : 0, int{theirs == 1}))
          << left.name << ", " << right.name;
      statuses.insert(ours);
      if (meets == 1 && &left != &right) neighbours[left.name] += right.name + ", ";
    }
  }
  EXPECT_EQ(statuses, (std::set{0, 1345}));
  EXPECT_EQ(neighbours["Switzerland"], "France, Austria, Germany, Italy, ");
  EXPECT_EQ(neighbours["Lesotho"], "South Africa, ");
  EXPECT_EQ(neighbours["New Zealand"], "");
}

TEST_F(World, UnitesAContinent) {
  std::vector<GEOSGeometry*> outlines;
  double sum = 0, area = 0;
  GEOSGeometry* united = world.read("POLYGON EMPTY");
  for (const char* name : {"Argentina", "Bolivia", "Brazil", "Chile", "Colombia", "Ecuador",
                           "Guyana", "Paraguay", "Peru", "Suriname", "Uruguay", "Venezuela"}) {
    int parts = 0;
    EXPECT_EQ(GEOS_GetNumGeometries(c, world[name], &parts), 0);
    for (int i = 0; i < parts; ++i) {
      outlines.push_back(GEOSGeom_clone_r(c, GEOS_GetGeometryN(c, world[name], i, &status)));
    }
    EXPECT_EQ(GEOS_Area(c, world[name], &area), 0);
    sum += area;
    GEOSGeometry* const former = std::exchange(united, GEOS_Union(c, united, world[name], &status));
    EXPECT_EQ(textOf(united), taken(GEOSUnion_r(c, former, world[name])));
    GEOS_Destroy(c, former);
  }
  GEOSGeometry* const list =
      GEOS_CreateCollection(c, 6, outlines.data(), static_cast<unsigned>(outlines.size()), &status);
  GEOSGeometry* const atOnce = GEOS_UnionCascaded(c, list, &status);
  EXPECT_EQ(textOf(atOnce), taken(GEOSUnionCascaded_r(c, list)));
  EXPECT_EQ(GEOSEquals_r(c, united, atOnce), 1) << "in any order";
  EXPECT_EQ(GEOS_Area(c, united, &area), 0);
  EXPECT_NEAR(area, sum, 1e-6) << "countries do not overlap";
  for (GEOSGeometry* each : {list, atOnce, united}) EXPECT_EQ(GEOS_Destroy(c, each), 0);
}

// A square with a square hole in 3 dimensions, made of coordinates: GEOS takes over what it is
// given, also when it refuses it.
TEST_F(World, IsMadeOfCoordinates) {
  const auto ringOf = [this](double low, double high) {
    GEOSCoordSequence* const sequence = GEOS_CoordSeq_Create(c, 5, 3, &status);
    const double corners[5][2] = {{low, low}, {high, low}, {high, high}, {low, high}, {low, low}};
    for (unsigned i = 0; i < 5; ++i) {
      EXPECT_EQ(GEOS_CoordSeq_SetX(c, sequence, i, corners[i][0]), 0);
      EXPECT_EQ(GEOS_CoordSeq_SetY(c, sequence, i, corners[i][1]), 0);
      EXPECT_EQ(GEOS_CoordSeq_SetOrdinate(c, sequence, i, 2, 7), 0);
    }
    return GEOS_CreateLinearRing(c, sequence, &status);
  };
  GEOSGeometry* hole = ringOf(1, 2);
  GEOSGeometry* const polygon = GEOS_CreatePolygon(c, ringOf(0, 9), &hole, 1, &status);
  GEOSGeometry* const read = world.read(
      "POLYGON Z ((0 0 7, 9 0 7, 9 9 7, 0 9 7, 0 0 7), "
      "(1 1 7, 2 1 7, 2 2 7, 1 2 7, 1 1 7))");
  GEOSGeometry* const line = world.read("LINESTRING (0 0, 9 0, 9 9, 4 1)");
  EXPECT_EQ(GEOSEqualsExact_r(c, polygon, read, 0), 1);
  // Arguments of one type side by side, which the compiler does not tell apart.
  EXPECT_EQ(taken(GEOS_BufferWithStyle(c, line, 0.25, 3, 2, 3, 2.5, &status)),
            taken(GEOSBufferWithStyle_r(c, line, 0.25, 3, 2, 3, 2.5)));
  EXPECT_EQ(taken(GEOS_BufferSingleSided(c, line, 0.25, 3, 2, 2.5, 1, &status)),
            taken(GEOSSingleSidedBuffer_r(c, line, 0.25, 3, 2, 2.5, 1)));
  EXPECT_EQ(GEOS_Normalize(c, polygon), 0);
  EXPECT_EQ(GEOSEqualsExact_r(c, polygon, read, 0), 0) << "normal order is clockwise";

  GEOSCoordSequence* const one = GEOS_CoordSeq_Create(c, 1, 2, &status);
  EXPECT_EQ(GEOS_CreateLineString(c, one, &status), nullptr) << "a line has two ends";
  EXPECT_EQ(status, 1345u);
  EXPECT_EQ(GEOS_CoordSeq_Destroy(c, GEOS_CoordSeq_Create(c, 9, 2, &status)), 0);
  for (GEOSGeometry* each : {polygon, read, line}) EXPECT_EQ(GEOS_Destroy(c, each), 0);
}

std::string heard;

TEST_F(World, TellsItsReasons) {
  Countries another([](const char* text) { heard += text; });
  lines();
  EXPECT_EQ(world.read("POLYGON ((0 0, 1 1))"), nullptr);
  EXPECT_NE(heard, "") << "the handlers are those of every context";
  EXPECT_EQ(lines(), "NOM_GEOS [ERROR]: " + heard + "\n");
}

std::atomic<int> messages{0};

class EightThreads : public nomtest::FreshLibrary {};

// From the first look-up of every entry on, with a context each.
TEST_F(EightThreads, MeasureTheWorldAlikeAndShareTheHandlers) {
  constexpr int kThreads = 8;
  std::vector<double> sums(kThreads);
  nomtest::inThreads(kThreads, [&](unsigned thread) {
    Countries world([](const char*) { messages.fetch_add(1, std::memory_order_relaxed); });
    for (const auto& [name, outline, geometry] : world.all) {
      GEOSGeometry* const hull = GEOS_ConvexHull(world.c, geometry, &world.status);
      double area = 0, distance = 0;
      EXPECT_EQ(GEOS_Area(world.c, hull, &area), 0);
      EXPECT_EQ(GEOS_Distance(world.c, geometry, world["Fiji"], &distance), 0);
      EXPECT_EQ(GEOS_Destroy(world.c, hull), 0);
      sums[thread] += area + distance;
    }
    EXPECT_EQ(world.read("POINT"), nullptr);
  });
  EXPECT_EQ(sums, std::vector<double>(kThreads, sums[0]));
  EXPECT_EQ(messages, kThreads);
}

}  // namespace
