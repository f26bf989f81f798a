// A date in every form: a day number, the date and time of the clock, or those that a text says in
// English or in the words of a locale. 2460315 is 5 January 2024, a Friday: text "05 January 2024",
// literal "2024:01:05", fixed "2024/01/05". Behind the clock's date and that of a text stands the
// time too, and by itself with its milliseconds. A text that is refused shows where:
//
//   25/12/2023 10:60
//                   ^
//   the reader stops at offset 16: Invalid parameter value (1002)
#include "commands.h"
#include "markedtext.h"
#include "storednumber.h"
#include "valuetext.h"

#include "nomos/locale.h"
#include "nomos/localedate.h"
#include "sys/datetime.h"
#include "sys/messages.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

// Another locale of the thread for a while.
class ThreadLocale {
 public:
  explicit ThreadLocale(unsigned locale) { nosSetThreadLocale(locale); }
  ~ThreadLocale() { nosSetThreadLocale(_before); }

  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;

 private:
  const unsigned _before = nosGetThreadLocale();
};

// Reads a text in English, or as the thread's locale has it; what refuses it goes to err.
bool readText(const std::string& text, bool inLocale, DskTimeStamp& stamp, std::ostream& err) {
  const char* const start = text.c_str();
  inLocale ? extractDateTimeForCurrentLocale(start, stamp) : extractTimeStamp(start, stamp);
  if (stamp.date != kInvalid && stamp.time != kInvalid) return true;
  const std::size_t stop = findTimeStampStop(start, inLocale);
  err << marked(text, stop) << "the reader stops at offset " << stop << ": "
      << messageText(kInvalidParameterValue) << '\n';
  return false;
}

// 0 for a locale that the system does not know.
unsigned localeOf(const std::string& nameOrNumber) {
  const auto number = numberOf<unsigned>(nameOrNumber);
  if (!number) return nosFindLocale(nameOrNumber.c_str());
  const ThreadLocale hold(*number);
  const bool isKnown =
      nosGetThreadLocale() == *number && LocaleDataStore::ThreadLocale() != nullptr;
  return isKnown ? *number : 0;
}

Json formsOf(const DskTimeStamp& stamp, bool hasTime) {
  char text[64];
  Json forms = {{"date", stamp.date}, {"time", stamp.time}};
  forms["text"] = hasTime ? formatTimeStamp(stamp, text, sizeof text)
                          : formatDate(stamp.date, text, sizeof text);
  hasTime ? literalFormatTimeStamp(stamp, text, sizeof text)
          : literalFormatDate(stamp.date, text, sizeof text);
  forms["literal"] = text;
  forms["fixed"] = formatDateYMD(stamp.date, text, sizeof text);
  if (hasTime) forms["elapsed"] = formatElapsedTime(stamp.time, text, sizeof text);
  forms["day"] = getDateDayName(stamp.date);
  return forms;
}

}  // namespace

int dateCommand(const DateOptions& options, std::ostream& out, std::ostream& err) {
  const bool inLocale = !options.locale.empty();
  const unsigned locale = inLocale ? localeOf(options.locale) : nosGetThreadLocale();
  if (inLocale && locale == 0) {
    err << "nomtool: " << inQuotes(options.locale) << " is no locale of this system\n";
    return kExitUsage;
  }
  const ThreadLocale hold(locale);

  DskTimeStamp stamp{};
  bool hasTime = true;
  if (options.date == "now") {
    getCurrentDateTime(&stamp);
  } else if (const auto number = numberOf<std::uint32_t>(options.date); number) {
    stamp.date = *number;
    hasTime = false;
  } else if (!readText(options.date, inLocale, stamp, err)) {
    return kExitRefused;
  }

  const Json forms = formsOf(stamp, hasTime);
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
