// The reader of dates with English names: "25 Dec 2023", "December 25, 2023", "2023-12-25" and
// "23:12:25" are all 25 December 2023. Any characters but letters and digits separate the items.

#include "readers.h"
#include "words.h"

#include "nomos/localedate.h"
#include "nomos/marchday.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace nomutil::datetime {
namespace {

// The first three letters of a month tell it from the others, and so does what is left of them,
// taken as a number, when they are divided by 31.
struct MonthKey {
  std::uint32_t letters;  // in lower case
  int month;
};
constexpr std::size_t kSlots = 31;
constexpr std::uint32_t keyOf(const char* word) {
  return lowered(word[0]) << 16 | lowered(word[1]) << 8 | lowered(word[2]);
}
constexpr std::array<MonthKey, kSlots> kMonthKeys = [] {
  std::array<MonthKey, kSlots> keys{};
  for (int month = 1; month <= 12; ++month) {
    const std::uint32_t letters = keyOf(kMonthNames[static_cast<std::size_t>(month)]);
    keys[letters % kSlots] = {letters, month};
  }
  return keys;
}();
static_assert(std::count_if(kMonthKeys.begin(), kMonthKeys.end(),
                            [](const MonthKey& key) { return key.month != 0; }) == 12);

// Takes a word, and gives the month that has it for its name or for its abbreviation of three
// letters, in any case; 0 for any other word, and for none.
int takeMonthName(TextCursor& at) {
  const char* const text = at.text();
  if (isOf(text[0], kLetter) && isOf(text[1], kLetter) && isOf(text[2], kLetter)) {
    const std::uint32_t letters = keyOf(text);
    const MonthKey& key = kMonthKeys[letters % kSlots];
    if (key.letters == letters) {
      const char* const name = kMonthNames[static_cast<std::size_t>(key.month)];
      std::size_t length = 3;
      // The NUL of the name ends it at the latest: no character becomes one in lower case.
      while (lowered(text[length]) == static_cast<std::uint8_t>(name[length])) ++length;
      if ((length == 3 || name[length] == '\0') && !isLetter(text[length])) {
        at.step(length);
        return key.month;
      }
    }
  }
  at.takeWord();
  return 0;
}

// The digit, or more than 9 for any other character.
inline std::uint32_t digitOf(char c) {
  return static_cast<std::uint8_t>(c) - std::uint32_t{'0'};
}

// 2023-12-25, the form that programs write: each character is known, and nothing is looked for. The
// first that is not there, the NUL at the latest, ends it.
inline bool takeIsoDate(TextCursor& at, int& day, int& month, int& year) {
  const char* const text = at.text();
  std::uint32_t number[10];
  for (std::size_t i = 0; i < 10; ++i) {
    number[i] = digitOf(text[i]);
    const bool isThere = i == 4 || i == 7 ? text[i] == '-' : number[i] <= 9;
    if (!isThere) return false;
  }
  if (digitOf(text[10]) <= 9) return false;
  year = static_cast<int>(number[0] * 1000 + number[1] * 100 + number[2] * 10 + number[3]);
  month = static_cast<int>(number[5] * 10 + number[6]);
  day = static_cast<int>(number[8] * 10 + number[9]);
  at.step(10);
  return true;
}

}  // namespace

Reading readEnglishDate(TextCursor at) {
  int day = 0;
  int isoMonth = 0;
  int year = 0;
  if (takeIsoDate(at, day, isoMonth, year)) {
    return {nomos::joinDayNumber(day, isoMonth, year), at};
  }
  if (at.isAtEnd()) return {0, at};
  at.skipWhiteSpace();
  const Number first = at.takeItem();
  const bool isYearFirst = first.length > 1 && (first.length == 4 || at.next() == ':');

  // Separators may stand in front of a month's name too, but not of a number.
  at.skipSeparators();
  Number month;
  if (first.length != 0) month = at.takeItem();
  if (month.length == 0) month.value = takeMonthName(at);
  if (month.length == 0 && month.value == 0) return {kInvalid, at};

  Number second = first;
  if (first.length == 0) {
    at.skipSeparators();
    second = at.takeItem();
    if (second.length == 0) return {kInvalid, at};
  }

  at.skipSeparators();
  const Number last = at.takeItem();
  if (last.length == 0) return {kInvalid, at};

  day = static_cast<int>(isYearFirst ? last.value : second.value);
  year = static_cast<int>(isYearFirst ? second.value : last.value);
  if ((isYearFirst ? second.length : last.length) < 3) year = nosGetYearGivenYY(year);
  return {nomos::joinDayNumber(day, static_cast<int>(month.value), year), at};
}

}  // namespace nomutil::datetime
