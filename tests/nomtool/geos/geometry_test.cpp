// Geometries of known measures through the command line, with the GEOS of the system.
#include "commandline.h"

#include "support/recorder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace nomtool {
namespace {

const std::string kRefused = "Spatial library error (1345)\n";

std::pair<int, std::string> geometry(std::vector<std::string> arguments) {
  const nomtest::Recorder quiet;
  std::ostringstream out, err;
  arguments.insert(arguments.begin(), "geometry");
  const int status = run(std::move(arguments), out, err);
  return {status, out.str() + err.str()};
}

TEST(Geometry, CombinesTwo) {
  const std::string box = "POLYGON ((0 0, 2 0, 2 1, 0 1, 0 0))";
  const std::string half = "POLYGON ((1 0, 2 0, 2 1, 1 1, 1 0))";
  struct {
    std::string left, operation, right, result;
  } rows[] = {
      {box, "distance", "POINT (5 5)", "5\n"},
      {box, "contains", half, "yes\n"},
      {half, "contains", box, "no\n"},
      {half, "within", box, "yes\n"},
      {box, "disjoint", half, "no\n"},
      {box, "intersects", half, "yes\n"},
      {"POINT (0 0.5)", "touches", box, "yes\n"},
      {"LINESTRING (-1 0.5, 3 0.5)", "crosses", box, "yes\n"},
      {box, "overlaps", "POLYGON ((1 0, 3 0, 3 1, 1 1, 1 0))", "yes\n"},
      {box, "equals", "POLYGON ((2 1, 0 1, 0 0, 2 0, 2 1))", "yes\n"},
      {"LINESTRING (0 0, 3 1)", "intersection", "LINESTRING (0 1, 3 0)", "POINT (1.5 0.5)\n"},
      {"LINESTRING (0 0, 100 0)", "difference",
       "POLYGON ((10.25 -1, 100 -1, 100 1, 10.25 1, 10.25 -1))", "LINESTRING (0 0, 10.25 0)\n"},
      {"POINT (1 1)", "union", "POINT (1 1)", "POINT (1 1)\n"},
      {"POINT (1 1)", "symdifference", "POINT (1 1)", "POINT EMPTY\n"},
  };
  for (const auto& [left, operation, right, result] : rows) {
    EXPECT_EQ(geometry({left, operation, right}), std::pair(0, result)) << left << operation;
  }
  EXPECT_EQ(geometry({box, "distance", "POINT (2 2)", "--json"}).second,
            "{\n  \"distance\": 1.0\n}\n");
}

TEST(Geometry, TellsOfOne) {
  const std::string plate =
      "POLYGON ((0 0, 5 0, 5 2, 0 2, 0 0), (2.5 0.5, 2.5 1.5, 4.5 1.5, 4.5 0.5, 2.5 0.5))";
  const std::string facts =
      "type         Polygon\nvalid        yes\nsimple       yes\nempty        no\n"
      "dimensions   2\nordinates    2\nparts        1\ncoordinates  10\narea         8\nlength     "
      "  20\n"
      "envelope     POLYGON ((0 0, 5 0, 5 2, 0 2, 0 0))\ncentroid     POINT (2.25 1)\n"
      "text         ";
  EXPECT_EQ(geometry({plate}), std::pair(0, facts + plate + "\n"));
  EXPECT_NE(geometry({"POINT Z (1 2 3)"}).second.find("ordinates    3\n"), std::string::npos);
  const std::string bow = geometry({"POLYGON ((0 0, 1 1, 1 0, 0 1, 0 0))"}).second;
  EXPECT_NE(bow.find("valid        no\nreason       Self-intersection"), bow.npos) << bow;
}

TEST(Geometry, RefusesWhatIsNone) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"POINT"}, {"POINT (1 2)", "union", "POINT ("}}) {
    const auto [status, text] = geometry(words);
    EXPECT_EQ(status, 1) << text;
    EXPECT_NE(text.find("ParseException"), text.npos) << text;
    EXPECT_TRUE(text.ends_with(kRefused)) << text;
  }
  EXPECT_EQ(geometry({"POINT (1 2)", "plus", "POINT (1 2)"}).first, 2);
  EXPECT_EQ(geometry({"POINT (1 2)", "union"}).first, 2);
}

}  // namespace
}  // namespace nomtool
