// The formats of parameters and the tables of the type system, as the library gives them: a row for
// each format, then a square over ten types for assignment and for each operation. A Timestamp
// minus a Timestamp is an Interval.
#include "commands.h"

#include "sys/params.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kMostFormats = 256;
constexpr std::array kTypes = {
    DSKDECIMAL, DSKREAL, DSKINTEGER64, DSKINTEGER,           DSKBYTE,
    DSKDATE,    DSKTIME, DSKTIMESTAMP, DSKTIMESTAMPINTERVAL, DSKTIMESTAMPOFFSET};
constexpr std::array kOperations = {"add",
                                    "subtract",
                                    "multiply",
                                    "divide",
                                    "divide integrally",
                                    "numeric operation 5",
                                    "numeric operation 6"};

// The display name of a type, without what is plain beside the others; "-" for none.
std::string nameOf(unsigned type) {
  if (type == DSKTIMESTAMPINTERVAL) return "Interval";
  if (type == DSKTIMESTAMPOFFSET) return "Offset";
  return type == 0 ? "-" : getParamFormatName(static_cast<PFormat>(type));
}

// A square over the ten types: a heading row, and a row for each type on the left.
template <class Cell>
void printSquare(std::ostream& out, const std::string& title, Cell cell) {
  constexpr std::size_t kWidth = 11;
  const auto printRow = [&out](const std::string& head, auto cellOf) {
    std::string line = head;
    line.resize(std::max<std::size_t>(line.size(), 19), ' ');
    for (const PFormat right : kTypes) {
      std::string text = cellOf(right);
      text.resize(kWidth, ' ');
      line += text;
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  };
  out << '\n';
  printRow(title, [](PFormat right) { return nameOf(right); });
  for (const PFormat left : kTypes) {
    printRow(nameOf(left), [&](PFormat right) { return std::string(cell(left, right)); });
  }
}

std::string assignmentCell(PFormat target, PFormat source) {
  return CheckAssignmentCompatibility(target, source) ? "yes" : "-";
}

std::uint8_t resultOf(std::size_t operation, PFormat left, PFormat right) {
  return LookupArithmeticOperationResultType(static_cast<ArithmeticOperation>(operation), left,
                                             right);
}

PFormat mapped(unsigned typeNumber) {
  PFormat format{};
  mapTypeNumberToPFormat(static_cast<int>(typeNumber), &format);
  return format;
}

void printText(std::ostream& out) {
  out << "number  enumerator            name               kept as   bytes  short  as type "
         "number\n";
  for (unsigned number = 0; number < kMostFormats; ++number) {
    const ParamFormatInfo* const format = findParamFormat(number);
    if (format == nullptr) continue;
    out << std::right << std::setw(6) << number << "  " << std::left << std::setw(20)
        << format->enumerator << "  " << std::setw(17) << format->displayName << "  "
        << std::setw(8) << format->family << std::right << std::setw(7) << format->valueSize << "  "
        << std::left << std::setw(5) << (format->fitsShortParam ? "yes" : "no") << "  "
        << mapped(number) << '\n';
  }
  printSquare(out, "target := source", assignmentCell);
  for (std::size_t i = 0; i < kOperations.size(); ++i) {
    printSquare(out, kOperations[i],
                [i](PFormat left, PFormat right) { return nameOf(resultOf(i, left, right)); });
  }
}

void printJson(std::ostream& out) {
  Json formats = Json::array();
  for (unsigned number = 0; number < kMostFormats; ++number) {
    const ParamFormatInfo* const format = findParamFormat(number);
    if (format == nullptr) continue;
    formats.push_back({{"number", number},
                       {"enumerator", format->enumerator},
                       {"name", format->displayName},
                       {"family", format->family},
                       {"bytes", format->valueSize},
                       {"fitsShortParam", format->fitsShortParam},
                       {"asTypeNumber", mapped(number)}});
  }
  Json assignment = Json::array();
  Json results = Json::array();
  for (const PFormat left : kTypes) {
    for (const PFormat right : kTypes) {
      if (CheckAssignmentCompatibility(left, right)) {
        assignment.push_back({{"target", left}, {"source", right}});
      }
      for (std::size_t i = 0; i < kOperations.size(); ++i) {
        if (const unsigned result = resultOf(i, left, right); result != 0) {
          results.push_back(
              {{"operation", i}, {"left", left}, {"right", right}, {"result", result}});
        }
      }
    }
  }
  out << Json{{"formats", formats}, {"assignment", assignment}, {"arithmetic", results}}.dump(2)
      << '\n';
}

}  // namespace

int formatsCommand(const FormatsOptions& options, std::ostream& out, std::ostream&) {
  options.json ? printJson(out) : printText(out);
  return kExitDone;
}

}  // namespace nomtool
