// A day number, or the date and time of the clock, in every form. 2460315 is 5 January 2024, a
// Friday: text "05 January 2024", literal "2024:01:05", fixed "2024/01/05". The time of the clock
// stands in the text and the literal form too, and by itself with its milliseconds.
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/datetime.h"
#include "sys/messages.h"

#include <nlohmann/json.hpp>

namespace nomtool {

int dateCommand(const DateOptions& options, std::ostream& out, std::ostream& err) {
  DskTimeStamp stamp{};
  const bool isNow = options.date == "now";
  if (isNow) {
    getCurrentDateTime(&stamp);
  } else if (const auto number = numberOf<std::uint32_t>(options.date); number) {
    stamp.date = *number;
  } else {
    err << inQuotes(options.date) << ": " << messageText(kInvalidParameterValue) << '\n';
    return kExitRefused;
  }

  char text[64];
  nlohmann::ordered_json forms = {{"date", stamp.date}, {"time", stamp.time}};
  forms["text"] =
      isNow ? formatTimeStamp(stamp, text, sizeof text) : formatDate(stamp.date, text, sizeof text);
  isNow ? literalFormatTimeStamp(stamp, text, sizeof text)
        : literalFormatDate(stamp.date, text, sizeof text);
  forms["literal"] = text;
  forms["fixed"] = formatDateYMD(stamp.date, text, sizeof text);
  if (isNow) forms["elapsed"] = formatElapsedTime(stamp.time, text, sizeof text);
  forms["day"] = getDateDayName(stamp.date);
  if (options.json) {
    out << forms.dump(2) << '\n';
    return kExitDone;
  }
  for (const auto& [name, value] : forms.items()) {
    out << name << std::string(9 - name.size(), ' ')
        << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
