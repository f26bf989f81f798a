// Dates around the world: every day of 2024, a leap year, is written as each locale of the system
// does, in its short, long and full pattern, and read back with the reader of the locale's dates. A
// locale has 366 days that come back, or something in its pattern that the reader does not know:
//
//   locale          short  long  full
//   es_CL             366     0     0
//     long   1 de enero de 2024  stops at offset 2, before de enero de 2024
//     full   lunes, 1 de enero de 2024  stops at offset 9, before de enero de 2024
#include "commands.h"

#include "nomos/intl.h"
#include "nomos/locale.h"
#include "nomos/localedate.h"
#include "sys/datetime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kFirstDay = 2460311;  // 1 January 2024
constexpr std::uint32_t kDays = 366;
constexpr unsigned kRoom = 512;

constexpr unsigned kStyles = 3;
constexpr std::array<const char*, kStyles> kStyleNames = {"short", "long", "full"};

// The days of the year in one style of a locale.
struct Style {
  bool isWritten = false;  // the system has the style
  unsigned daysRead = 0;   // of those that came back
  std::string text;        // the first that did not, in UTF-8
  std::string reason;

  bool isWhole() const { return isWritten && daysRead == kDays; }
};

struct Locale {
  std::string name;
  std::array<Style, kStyles> styles;
};

// What nomos writes is in the code page or in UTF-8.
std::string inUtf8(std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  std::uint32_t count = 0;
  if (intlStringUTF8VerifyCountchars(reinterpret_cast<const unsigned char*>(text.data()), length,
                                     count) == 0) {
    return std::string(text);
  }
  std::string converted(4 * text.size(), '\0');
  std::uint32_t stored = 0;
  intlConvertString(IntlFormat::CodePage, text.data(), length, IntlFormat::Utf8, converted.data(),
                    static_cast<std::uint32_t>(converted.size()), stored, count);
  converted.resize(stored);
  return converted;
}

// The part of a text from a place on. The reader goes by bytes: the character that it stands in
// counts as a whole.
std::string restOf(const std::string& text, std::size_t place) {
  const bool isUtf8 = inUtf8(text) == text;
  while (isUtf8 && place > 0 && (text[place] & 0xC0) == 0x80) --place;
  return inUtf8(text.substr(place));
}

// Why a text was not read as the date that was written.
std::string reasonOf(const std::string& text, std::uint32_t written, std::uint32_t read) {
  char other[64];
  if (read != 0xFFFFFFFF) {
    return std::string("is read as ") + formatDateYMD(read, other, sizeof other);
  }
  for (std::size_t size = text.size(); size-- > 1;) {
    if (extractDateForCurrentLocale(text.substr(0, size).c_str()) == written) {
      return "is the date but for the end, " + restOf(text, size);
    }
  }
  const std::size_t stop = findTimeStampStop(text.c_str(), true);
  if (stop >= text.size()) return "is read to its end, but is no date";
  return "stops at offset " + std::to_string(stop) + ", before " + restOf(text, stop);
}

// REQUIRES: the locale is the thread's.
Style readYear(unsigned locale, unsigned style) {
  Style result;
  char text[kRoom];
  for (std::uint32_t date = kFirstDay; date < kFirstDay + kDays; ++date) {
    if (!nosFormatLocaleDate(locale, static_cast<NosDateStyle>(style), date, text, sizeof text)) {
      return result;
    }
    result.isWritten = true;
    const std::uint32_t read = extractDateForCurrentLocale(text);
    result.daysRead += read == date;
    if (read != date && result.text.empty()) {
      result.text = inUtf8(text);
      result.reason = reasonOf(text, date, read);
    }
  }
  return result;
}

// All locales, or the one with a name.
std::vector<Locale> readWorld(const std::string& only) {
  std::vector<Locale> locales;
  const unsigned before = nosGetThreadLocale();
  const unsigned wanted = only.empty() ? 0 : nosFindLocale(only.c_str());
  char name[128];
  for (unsigned index = 0; nosGetLocaleName(index, name, sizeof name); ++index) {
    const unsigned identifier = nosFindLocale(name);
    if (identifier == 0 || (!only.empty() && identifier != wanted)) continue;
    nosSetThreadLocale(identifier);
    Locale& locale = locales.emplace_back();
    locale.name = name;
    for (unsigned style = 0; style < kStyles; ++style) {
      locale.styles[style] = readYear(identifier, style);
    }
  }
  nosSetThreadLocale(before);
  return locales;
}

using Totals = std::array<unsigned, kStyles>;

Json rowOf(const Locale& locale) {
  Json row = {{"locale", locale.name}};
  Json failures = Json::array();
  for (unsigned style = 0; style < kStyles; ++style) {
    const Style& result = locale.styles[style];
    row[kStyleNames[style]] = result.isWritten ? Json(result.daysRead) : Json();
    if (!result.isWritten || result.isWhole()) continue;
    failures.push_back(
        {{"style", kStyleNames[style]}, {"text", result.text}, {"reason", result.reason}});
  }
  row["failures"] = failures;
  return row;
}

void printJson(const std::vector<Locale>& locales, const Totals& totals, std::ostream& out) {
  Json all = {{"count", locales.size()}};
  for (unsigned style = 0; style < kStyles; ++style) all[kStyleNames[style]] = totals[style];
  all["locales"] = Json::array();
  for (const Locale& locale : locales) all["locales"].push_back(rowOf(locale));
  out << all.dump(2) << '\n';
}

void printTable(const std::vector<Locale>& locales, const Totals& totals, std::ostream& out) {
  constexpr int kNameWidth = 15;
  out << std::left << std::setw(kNameWidth) << "locale"
      << "  short  long  full\n";
  for (const Locale& locale : locales) {
    out << std::left << std::setw(kNameWidth) << locale.name << std::right;
    for (unsigned style = 0; style < kStyles; ++style) {
      const Style& result = locale.styles[style];
      out << std::setw(style == 0 ? 7 : 6)
          << (result.isWritten ? std::to_string(result.daysRead) : "-");
    }
    out << '\n';
    for (unsigned style = 0; style < kStyles; ++style) {
      const Style& result = locale.styles[style];
      if (!result.isWritten || result.isWhole()) continue;
      out << "  " << std::left << std::setw(5) << kStyleNames[style] << "  " << result.text << "  "
          << result.reason << '\n';
    }
  }
  out << "locales in all " << locales.size() << ": come back whole " << totals[0] << " short, "
      << totals[1] << " long, " << totals[2] << " full\n";
}

}  // namespace

int worldCommand(const DateOptions& options, std::ostream& out, std::ostream& err) {
  const std::vector<Locale> locales = readWorld(options.locale);
  if (locales.empty()) {
    err << "nomtool: there is no such locale in the system's list\n";
    return kExitUsage;
  }
  Totals totals{};
  for (const Locale& locale : locales) {
    for (unsigned style = 0; style < kStyles; ++style) {
      totals[style] += locale.styles[style].isWhole();
    }
  }
  options.json ? printJson(locales, totals, out) : printTable(locales, totals, out);
  return kExitDone;
}

}  // namespace nomtool
