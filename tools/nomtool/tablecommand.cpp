// Opens the file, and prints its figures as an aligned table or as JSON. In the table numbers stand
// with their points below each other, and widths count characters, not bytes, of UTF-8. What was
// refused goes to the error stream, and makes the exit status 1.
#include "commands.h"
#include "storednumber.h"
#include "tablefigures.h"
#include "valuetext.h"

#include "sys/messages.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

// Places that the table shows of a mean, beyond those of the sum.
constexpr unsigned kMeanPlaces = 4;

constexpr std::array kHeadings = {"column",   "count",   "missing", "refused",
                                  "smallest", "largest", "sum",     "mean"};
using Cells = std::array<std::string, kHeadings.size()>;
using Widths = std::array<std::size_t, kHeadings.size()>;

std::size_t pointOf(const std::string& text) {
  return std::min(text.find('.'), text.size());
}

Cells cellsOf(const Column& column) {
  Cells cells = {oneLine(column.name),
                 std::to_string(column.count),
                 std::to_string(column.missing),
                 std::to_string(column.refused),
                 "-",
                 "-",
                 "-",
                 "-"};
  if (column.count > 0) {
    const Decimal mean = column.mean();
    const unsigned places =
        std::min<unsigned>(mean.getScaleFactor(), column.sum.getScaleFactor() + kMeanPlaces);
    cells[4] = decimalText(column.smallest);
    cells[5] = decimalText(column.largest);
    cells[6] = decimalText(column.sum);
    cells[7] = decimalText(mean, places);
  }
  return cells;
}

// Brings the points of one column of numbers below each other.
void alignPoints(std::vector<Cells>& rows, std::size_t index) {
  std::size_t fraction = 0;
  for (const Cells& cells : rows) {
    fraction = std::max(fraction, cells[index].size() - pointOf(cells[index]));
  }
  for (Cells& cells : rows) {
    cells[index].append(fraction - (cells[index].size() - pointOf(cells[index])), ' ');
  }
}

void printRow(std::ostream& out, const Cells& cells, const Widths& widths) {
  std::string line = cells[0] + std::string(widths[0] - widthOf(cells[0]), ' ');
  for (std::size_t i = 1; i < cells.size(); ++i) {
    line += std::string(2 + widths[i] - cells[i].size(), ' ') + cells[i];
  }
  out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
}

void printFigures(const Table& table, std::ostream& out) {
  std::vector<Cells> rows;
  for (const Column& column : table.columns) {
    if (column.isNumeric) rows.push_back(cellsOf(column));
  }
  if (rows.empty()) return;
  for (std::size_t i = 1; i < kHeadings.size(); ++i) alignPoints(rows, i);

  Cells headings;
  std::copy(kHeadings.begin(), kHeadings.end(), headings.begin());
  rows.insert(rows.begin(), headings);
  Widths widths{};
  for (const Cells& cells : rows) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      widths[i] = std::max(widths[i], widthOf(cells[i]));
    }
  }
  for (const Cells& cells : rows) printRow(out, cells, widths);
}

void printTable(const Table& table, const TableOptions& options, std::ostream& out) {
  const auto numeric = std::count_if(table.columns.begin(), table.columns.end(),
                                     [](const Column& column) { return column.isNumeric; });
  out << options.file << ": " << table.rows << " rows";
  if (table.refusedRows > 0) out << " (" << table.refusedRows << " refused)";
  out << ", " << table.columns.size() << " columns, " << numeric << " of them numeric; "
      << table.carried << " values came through parameters\n";
  printFigures(table, out);

  const char* separator = "without figures: ";
  for (const Column& column : table.columns) {
    if (column.isNumeric) continue;
    out << separator << oneLine(column.name);
    if (column.numbers > 0) out << " (numbers in it: " << column.numbers << ')';
    separator = ", ";
  }
  if (static_cast<std::size_t>(numeric) < table.columns.size()) out << '\n';
}

void printJson(const Table& table, const TableOptions& options, std::ostream& out) {
  Json root = {
      {"file", options.file},     {"rows", table.rows},       {"refusedRows", table.refusedRows},
      {"carried", table.carried}, {"columns", Json::array()}, {"withoutFigures", Json::array()}};
  for (const Column& column : table.columns) {
    if (!column.isNumeric) {
      root["withoutFigures"].push_back({{"name", column.name}, {"numbers", column.numbers}});
      continue;
    }
    Json entry = {{"name", column.name},
                  {"count", column.count},
                  {"missing", column.missing},
                  {"refused", column.refused},
                  {"rounded", column.rounded}};
    if (column.count > 0) {
      entry["smallest"] = decimalText(column.smallest);
      entry["largest"] = decimalText(column.largest);
      entry["sum"] = decimalText(column.sum);
      entry["mean"] = decimalText(column.mean());
    }
    root["columns"].push_back(std::move(entry));
  }
  out << root.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void printSummary(const Table& table, const TableOptions& options, std::ostream& err) {
  std::uint64_t refused = 0;
  std::uint64_t rounded = 0;
  for (const Column& column : table.columns) {
    refused += column.refused;
    rounded += column.rounded;
  }
  err << options.file << ": refused rows: " << table.refusedRows << ", refused fields: " << refused
      << ", rounded fields: " << rounded << '\n';
}

}  // namespace

int tableCommand(const TableOptions& options, std::ostream& out, std::ostream& err) {
  const std::optional<char> delimiter = delimiterByte(options.delimiter);
  if (!delimiter) {
    err << "nomtool: " << inQuotes(options.delimiter) << " cannot be a delimiter\n";
    return kExitUsage;
  }
  std::ifstream input(options.file, std::ios::binary);
  if (!input) {
    err << options.file << ": " << messageText(kRequestedFileNotFound) << '\n';
    return kExitUsage;
  }
  try {
    const Table table = readTable({input, options.file, *delimiter, options.columns, err});
    options.json ? printJson(table, options, out) : printTable(table, options, out);
    if (table.isComplete) return kExitDone;
    printSummary(table, options, err);
    return kExitRefused;
  } catch (const std::ios_base::failure& failure) {
    err << options.file << ": " << failure.what() << '\n';
  } catch (const std::invalid_argument& wrong) {
    err << options.file << ": " << wrong.what() << '\n';
  }
  return kExitUsage;
}

}  // namespace nomtool
