// What GEOS tells of one geometry, and what it makes of two. POLYGON ((0 0, 2 0, 2 1, 0 1, 0 0))
// has the area 2, the length 6 and the centroid POINT (1 0.5); its distance to POINT (5 1) is 3.
#include "commands.h"
#include "storednumber.h"

#include "nomos/dlldesc.h"
#include "nomos/intl.h"
#include "sys/geometry.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;
using View = const GEOSGeometry*;

// The handlers of GEOS get no context: what it said last on this thread.
thread_local std::string lastMessage;

void keepMessage(const char* text) {
  lastMessage = text;
}

using Predicate = int (*)(GEOSContextHandle_t, View, View, std::uint8_t*);
using Construction = GEOSGeometry* (*)(GEOSContextHandle_t, View, View, std::uint32_t*);

constexpr struct {
  std::string_view name;
  Predicate ask;
} kPredicates[] = {{"contains", GEOS_Contains}, {"within", GEOS_Within},
                   {"disjoint", GEOS_Disjoint}, {"intersects", GEOS_Intersects},
                   {"touches", GEOS_Touches},   {"crosses", GEOS_Crosses},
                   {"overlaps", GEOS_Overlaps}, {"equals", GEOS_Equals}};

constexpr struct {
  std::string_view name;
  Construction make;
} kConstructions[] = {{"intersection", GEOS_Intersection},
                      {"difference", GEOS_Difference},
                      {"symdifference", GEOS_SymDifference},
                      {"union", GEOS_Union}};

constexpr std::string_view kDistance = "distance";

template <class Rows>
auto rowOf(const Rows& rows, std::string_view name) {
  return std::find_if(std::begin(rows), std::end(rows),
                      [name](const auto& row) { return row.name == name; });
}

bool isOperation(std::string_view name) {
  return name == kDistance || rowOf(kPredicates, name) != std::end(kPredicates) ||
         rowOf(kConstructions, name) != std::end(kConstructions);
}

// GEOS writes 16 places before version 3.12: the zeros behind the last digit that counts go.
std::string withoutPadding(std::string_view text) {
  std::string all;
  bool isFraction = false;
  for (const char character : text) {
    const bool isDigit = character >= '0' && character <= '9';
    if (isFraction && !isDigit) {
      all.resize(all.find_last_not_of('0') + 1);
      if (all.back() == '.') all.pop_back();
    }
    isFraction = character == '.' || (isFraction && isDigit);
    all += character;
  }
  return all;
}

// One context with its reader and writer, and the geometries read; ends with all of them.
class Geos {
 public:
  explicit Geos(std::ostream& err) : _err(err), _context(GEOS_Init(keepMessage, keepMessage)) {
    if (_context == nullptr) return;
    std::uint32_t status = 0;
    _reader = GEOS_WKTReaderCreate(_context, &status);
    _writer = GEOS_WKTWriterCreate(_context, &status);
  }
  ~Geos() {
    if (_reader != nullptr) GEOS_WKTReaderDestroy(_context, _reader);
    if (_writer != nullptr) GEOS_WKTWriterDestroy(_context, _writer);
    if (_context != nullptr) GEOS_Finish(_context);
  }
  Geos(const Geos&) = delete;
  Geos& operator=(const Geos&) = delete;

  bool isReady() const { return _reader != nullptr && _writer != nullptr; }

  GEOSContextHandle_t context() const { return _context; }

  // Null, with the reason on the error stream, for a text that is none.
  GEOSGeometry* read(const std::string& text) {
    std::uint32_t status = 0;
    GEOSGeometry* const geometry = GEOS_WKTReaderRead(_context, _reader, text.c_str(), &status);
    if (geometry == nullptr) {
      _err << inQuotes(text) << ": " << oneLine(lastMessage) << ": "
           << messageText(static_cast<int>(status)) << '\n';
    }
    return geometry;
  }

  // The text of a geometry; empty when GEOS gives none.
  std::string write(View geometry) const {
    std::string text(256, '\0');
    auto size = static_cast<std::uint32_t>(text.size());
    int status = GEOS_WKTWriterWrite(_context, _writer, geometry, text.data(), &size);
    if (status == kBufferSizeTooSmall) {
      text.resize(size);
      status = GEOS_WKTWriterWrite(_context, _writer, geometry, text.data(), &size);
    }
    return status == kNoError ? withoutPadding(text.c_str()) : std::string();
  }

  // The text of a geometry that GEOS made, which is released, or null.
  Json taken(GEOSGeometry* geometry) const {
    if (geometry == nullptr) return nullptr;
    Json text = write(geometry);
    GEOS_Destroy(_context, geometry);
    return text;
  }

 private:
  std::ostream& _err;
  GEOSContextHandle_t _context;
  GEOSWKTReader* _reader = nullptr;
  GEOSWKTWriter* _writer = nullptr;
};

Json answerOf(int (*ask)(GEOSContextHandle_t, View, std::uint8_t*), GEOSContextHandle_t context,
              View geometry) {
  std::uint8_t answer = 0;
  return ask(context, geometry, &answer) == kNoError ? Json(answer == 1) : Json();
}

template <class Number>
Json numberOf(int (*ask)(GEOSContextHandle_t, View, Number*), GEOSContextHandle_t context,
              View geometry) {
  Number number = 0;
  return ask(context, geometry, &number) == kNoError ? Json(number) : Json();
}

// What GEOS cannot tell of the geometry is null.
Json describe(const Geos& geos, View g) {
  const GEOSContextHandle_t context = geos.context();
  std::uint32_t status = 0;
  char type[32] = "";
  GEOS_GeometryType(context, g, type, sizeof type);
  lastMessage.clear();
  Json facts = {{"type", type}, {"valid", answerOf(GEOS_IsValid, context, g)}};
  if (facts["valid"] != true) facts["reason"] = lastMessage;
  facts["simple"] = answerOf(GEOS_IsSimple, context, g);
  facts["empty"] = answerOf(GEOS_IsEmpty, context, g);
  facts["dimensions"] = numberOf(GEOS_GetDimensions, context, g);
  facts["ordinates"] = numberOf(GEOS_GetCoordinateDimensions, context, g);
  facts["parts"] = numberOf(GEOS_GetNumGeometries, context, g);
  facts["coordinates"] = numberOf(GEOS_GetNumCoordinates, context, g);
  facts["area"] = numberOf(GEOS_Area, context, g);
  facts["length"] = numberOf(GEOS_Length, context, g);
  facts["envelope"] = geos.taken(GEOS_Envelope(context, g, &status));
  facts["centroid"] = geos.taken(GEOS_GetCentroid(context, g, &status));
  facts["text"] = geos.write(g);
  return facts;
}

// Null when GEOS fails.
Json combine(const Geos& geos, View left, std::string_view operation, View right) {
  const GEOSContextHandle_t context = geos.context();
  if (const auto row = rowOf(kPredicates, operation); row != std::end(kPredicates)) {
    std::uint8_t answer = 0;
    const int status = row->ask(context, left, right, &answer);
    return status == kNoError ? Json(answer == 1) : Json();
  }
  if (const auto row = rowOf(kConstructions, operation); row != std::end(kConstructions)) {
    std::uint32_t status = 0;
    return geos.taken(row->make(context, left, right, &status));
  }
  double distance = 0;
  const int status = GEOS_Distance(context, left, right, &distance);
  return status == kNoError ? Json(distance) : Json();
}

// A value for people: reals in fixed notation, null as "unknown".
std::string shown(const Json& value) {
  if (value.is_null()) return "unknown";
  if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_number_float()) return value.dump();
  char text[400];
  return std::string(text, intlDoubleToStringFixed(text, sizeof text, value.get<double>(), 0));
}

void print(const Json& facts, bool json, std::ostream& out) {
  if (json) {
    out << facts.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    return;
  }
  for (const auto& [name, value] : facts.items()) {
    out << name << std::string(13 - name.size(), ' ') << shown(value) << '\n';
  }
}

}  // namespace

int geometryCommand(const GeometryOptions& options, std::ostream& out, std::ostream& err) {
  const bool isPair = !options.operation.empty();
  if (isPair && !isOperation(options.operation)) {
    err << "nomtool: " << inQuotes(options.operation) << " is no operation; see --help\n";
    return kExitUsage;
  }
  DllDesc library("geos_c");
  if (const int status = library.load(); status != kNoError) {
    err << "GEOS: " << messageText(status) << '\n';
    return kExitRefused;
  }
  Geos geos(err);
  if (!geos.isReady()) {
    err << "GEOS: " << messageText(kEntryPointNotInLibrary) << '\n';
    return kExitRefused;
  }
  GEOSGeometry* const left = geos.read(options.left);
  GEOSGeometry* const right = isPair ? geos.read(options.right) : nullptr;
  int exit = kExitRefused;
  if (left != nullptr && !isPair) {
    print(describe(geos, left), options.json, out);
    exit = kExitDone;
  } else if (left != nullptr && right != nullptr) {
    const Json result = combine(geos, left, options.operation, right);
    if (result.is_null()) {
      err << oneLine(lastMessage) << ": " << messageText(kSpatialLibraryError) << '\n';
    } else {
      exit = kExitDone;
      if (options.json) print({{options.operation, result}}, true, out);
      if (!options.json) out << shown(result) << '\n';
    }
  }
  for (GEOSGeometry* each : {left, right}) {
    if (each != nullptr) GEOS_Destroy(geos.context(), each);
  }
  return exit;
}

}  // namespace nomtool
