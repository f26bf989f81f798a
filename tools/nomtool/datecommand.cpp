// A day number, or the time of the clock, in every form.
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/datetime.h"
#include "sys/messages.h"

#include <nlohmann/json.hpp>

namespace nomtool {

int dateCommand(const DateOptions& options, std::ostream& out, std::ostream& err) {
  DskTimeStamp stamp{};
  if (options.date == "now") {
    getCurrentDateTime(&stamp);
  } else if (const auto number = numberOf<std::uint32_t>(options.date); number) {
    stamp.date = *number;
  } else {
    err << inQuotes(options.date) << ": " << messageText(kInvalidParameterValue) << '\n';
    return kExitRefused;
  }

  char text[64];
  nlohmann::ordered_json forms = {{"date", stamp.date}, {"time", stamp.time}};
  forms["text"] = options.date == "now" ? formatTimeStamp(stamp, text, sizeof text)
                                        : formatDate(stamp.date, text, sizeof text);
  literalFormatDate(stamp.date, text, sizeof text);
  forms["literal"] = text;
  forms["fixed"] = formatDateYMD(stamp.date, text, sizeof text);
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
