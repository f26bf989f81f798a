// The texts of status numbers, as the library gives them: 1002 is "Invalid parameter value". A
// number is taken signed or unsigned, and one without a text is refused.
#include "commands.h"
#include "storednumber.h"

#include "sys/messages.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

// The status number, signed or unsigned, that a text shows.
std::optional<std::int64_t> statusNumber(std::string_view text) {
  text = trimmed(text);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() ||
      number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::uint32_t>::max()) {
    return std::nullopt;
  }
  return number;
}

}  // namespace

int messageCommand(const MessageOptions& options, std::ostream& out, std::ostream& err) {
  Json list = Json::array();
  int exit = kExitDone;
  for (const std::string& argument : options.numbers) {
    const std::optional<std::int64_t> number = statusNumber(argument);
    if (!number) {
      err << "nomtool: " << inQuotes(argument) << " is no status number\n";
      return kExitUsage;
    }
    char text[1024];
    const int status = nomGetMessageText(static_cast<unsigned>(*number), text, sizeof text);
    if (status != kNoError) {
      exit = kExitRefused;
      err << text << '\n';
    } else if (!options.json) {
      out << *number << "  " << text << '\n';
    }
    list.push_back({{"number", *number}, {"status", status}, {"text", text}});
  }
  if (options.json) out << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  return exit;
}

}  // namespace nomtool
