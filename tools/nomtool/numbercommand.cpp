// Byte counts: 1.5M is 1048576, which is 1M again, of 7 digits. What the library has to say of a
// text is a line of its log, on the error stream; the value is then its best reading.
#include "commands.h"
#include "storednumber.h"

#include "sys/messages.h"
#include "sys/textutil.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

// The texts of a row, each filled up at its left to the width that its column needs.
void printTable(const Json& list, std::ostream& out) {
  constexpr const char* kHeadings[] = {"text", "value", "metric", "digits"};
  const auto cell = [](const Json& row, const char* heading) {
    const Json& value = row[heading];
    return value.is_string() ? oneLine(value.get<std::string>()) : value.dump();
  };
  std::string header;
  std::vector<std::string> lines(list.size());
  for (const char* heading : kHeadings) {
    std::size_t width = std::string_view(heading).size();
    for (const Json& row : list) width = std::max(width, cell(row, heading).size());
    const auto add = [&](std::string& line, const std::string& text) {
      if (!line.empty()) line += "  ";
      line += std::string(width - text.size(), ' ') + text;
    };
    add(header, heading);
    for (std::size_t i = 0; i < lines.size(); ++i) add(lines[i], cell(list[i], heading));
  }
  out << header << '\n';
  for (const std::string& line : lines) out << line << '\n';
}

}  // namespace

int numberCommand(const NumberOptions& options, std::ostream& out, std::ostream& err) {
  Json list = Json::array();
  int exit = kExitDone;
  for (const std::string& argument : options.numbers) {
    const std::string text(trimmed(argument));
    std::uint64_t value = 0;
    const int status = stringToUInteger64(text.c_str(), value);
    if (status != kNoError) {
      exit = kExitRefused;
      err << inQuotes(text) << ": taken as " << value << ": " << messageText(status) << '\n';
    }
    char metric[32];
    uInteger64ToMetricString(value, metric, sizeof metric);
    list.push_back({{"text", text},
                    {"value", value},
                    {"metric", metric},
                    {"digits", getDigitsIn(value)},
                    {"status", status}});
  }
  if (options.json) {
    out << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  } else {
    printTable(list, out);
  }
  return exit;
}

}  // namespace nomtool
