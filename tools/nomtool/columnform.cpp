// Numbers and dates are read strictly, then written again and compared, so that what is stored is
// what comes back.
#include "columnform.h"

#include "valuetext.h"

#include "nomos/calendar.h"

#include "sys/datetime.h"
#include "sys/decimals.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace nomtool {
namespace {

constexpr std::size_t kDateLength = 10;     // 2024-01-05
constexpr std::size_t kSecondsLength = 19;  // and 10:30:00 behind a blank or T
constexpr std::size_t kMillisLength = 23;   // and .250
constexpr std::uint32_t kMillisOfDay = 86'400'000;
constexpr std::size_t kLongestNumber = 40;

constexpr ColumnForms bitOf(ColumnForm form) {
  return 1u << static_cast<unsigned>(form);
}

bool isTimeStamp(ColumnForm form) {
  return form >= ColumnForm::kTimeStamp && form <= ColumnForm::kTimeStampMillisT;
}

template <class T>
ValueBytes bytesOf(const T& value) {
  static_assert(sizeof value <= sizeof ValueBytes::room);
  ValueBytes bytes;
  std::memcpy(bytes.room, &value, sizeof value);
  bytes.length = sizeof value;
  return bytes;
}

template <class T>
T valueFrom(std::string_view bytes) {
  T value{};
  std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
  return value;
}

void appendDigits(std::string& text, std::uint32_t value, unsigned count) {
  const std::size_t end = text.size() + count;
  text.resize(end);
  for (unsigned i = 1; i <= count; ++i, value /= 10) {
    text[end - i] = static_cast<char>('0' + value % 10);
  }
}

// Digits alone, no sign and no blank.
std::optional<std::uint32_t> digits(std::string_view text) {
  std::uint32_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<std::uint32_t>(c - '0');
  }
  return value;
}

// 2024-01-05; whether there is such a day is seen when it is written again.
std::optional<std::uint32_t> dayOf(std::string_view text) {
  const auto year = digits(text.substr(0, 4));
  const auto month = digits(text.substr(5, 2));
  const auto day = digits(text.substr(8, 2));
  if (!year || !month || !day || *year == 0 || *month - 1 > 11 || *day - 1 > 30) {
    return std::nullopt;
  }
  return nosDskDateFromGregorian(static_cast<int>(*day), static_cast<int>(*month),
                                 static_cast<int>(*year));
}

// 10:30:00 or 10:30:00.250
std::optional<std::uint32_t> millisOf(std::string_view text) {
  const auto hours = digits(text.substr(0, 2));
  const auto minutes = digits(text.substr(3, 2));
  const auto seconds = digits(text.substr(6, 2));
  const auto millis = text.size() > 9 ? digits(text.substr(9)) : 0;
  if (!hours || !minutes || !seconds || !millis || *hours > 23 || *minutes > 59 || *seconds > 59) {
    return std::nullopt;
  }
  return ((*hours * 60 + *minutes) * 60 + *seconds) * 1000 + *millis;
}

// The text of a number of class T with its NUL, which the flat functions read.
struct NumberText {
  char text[kLongestNumber + 1];
  explicit NumberText(std::string_view field) {
    *std::copy_n(field.begin(), std::min(field.size(), kLongestNumber), text) = '\0';
  }
};

ColumnForm formOfTime(std::string_view field) {
  if (field.size() == kDateLength) {
    return field[4] == '/' ? ColumnForm::kDateSlash : ColumnForm::kDate;
  }
  const bool hasMillis = field.size() == kMillisLength;
  if (field[kDateLength] == 'T') {
    return hasMillis ? ColumnForm::kTimeStampMillisT : ColumnForm::kTimeStampT;
  }
  return hasMillis ? ColumnForm::kTimeStampMillis : ColumnForm::kTimeStamp;
}

// Whether the text of a decimal is that of one that can be stored: bytes from outside may hold more
// digits.
bool isStorable(const char* text) {
  constexpr std::size_t kSureLength = 23;
  if (std::strlen(text) <= kSureLength) return true;
  DskDecimal stored{};
  char again[64];
  return nomDecimalFromString(text, &stored) &&
         nomDecimalToString(&stored, again, sizeof again, stored.scaleFactor) &&
         std::strcmp(text, again) == 0;
}

bool comesBack(ColumnForm form, std::string_view field) {
  const ValueBytes value = valueOf(form, field);
  std::string text;
  return appendValue(text, form, {reinterpret_cast<const char*>(value.room), value.length}) &&
         text == field;
}

// Whether the field is a number as decimals are written: -12.50, not +1, 1., .5 or 1e3.
bool isNumber(std::string_view field) {
  if (field.size() > kLongestNumber) return false;
  if (field.front() == '-') field.remove_prefix(1);
  const std::size_t point = std::min(field.find('.'), field.size());
  const auto areDigits = [](std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  return areDigits(field.substr(0, point)) &&
         (point == field.size() || areDigits(field.substr(point + 1)));
}

// Well-formed UTF-8: no bytes that are too many, no surrogates, nothing beyond 10FFFF.
bool isUtf8(std::string_view text) {
  std::size_t i = 0;
  const auto byte = [&](std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
  };
  while (i < text.size()) {
    const unsigned lead = byte(i++);
    if (lead < 0x80) continue;
    const int count = std::countl_one(static_cast<unsigned char>(lead));
    const unsigned second = byte(i);
    const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (lead < 0xC2 || lead > 0xF4 || second < least || second > most) return false;
    for (int j = 1; j < count; ++j) {
      if ((byte(i++) & 0xC0) != 0x80) return false;
    }
  }
  return true;
}

ColumnForms fixedFormsOf(std::string_view field) {
  if (field == "true" || field == "false") return bitOf(ColumnForm::kBoolean);
  if (isNumber(field)) {
    ColumnForms forms = 0;
    for (const ColumnForm form : {ColumnForm::kInteger, ColumnForm::kDecimal}) {
      if (comesBack(form, field)) forms |= bitOf(form);
    }
    return forms;
  }
  const std::size_t size = field.size();
  if (size != kDateLength && size != kSecondsLength && size != kMillisLength) return 0;
  const ColumnForm form = formOfTime(field);
  return comesBack(form, field) ? bitOf(form) : 0;
}

}  // namespace

ColumnForms formsOf(std::string_view field, ColumnForms wanted) {
  constexpr ColumnForms kText = bitOf(ColumnForm::kText);
  constexpr ColumnForms kFixed = kText - 1;
  ColumnForms forms = bitOf(ColumnForm::kBytes);
  if ((wanted & kFixed) != 0) forms |= fixedFormsOf(field);
  if ((wanted & kText) != 0 && isUtf8(field)) forms |= kText;
  return forms & wanted;
}

ColumnForm firstForm(ColumnForms forms) {
  return forms == kAllForms ? ColumnForm::kText : static_cast<ColumnForm>(std::countr_zero(forms));
}

PFormat formatOf(ColumnForm form) {
  constexpr std::array<PFormat, kColumnFormCount> kFormats = {
      DSKBOOLEAN,   DSKINTEGER64, DSKDECIMAL,         DSKDATE,  DSKDATE, DSKTIMESTAMP, DSKTIMESTAMP,
      DSKTIMESTAMP, DSKTIMESTAMP, DSKSTRINGUTF8BLOCK, DSKBINARY};
  return kFormats[static_cast<unsigned>(form)];
}

const char* nameOf(ColumnForm form) {
  constexpr std::array<const char*, kColumnFormCount> kNames = {
      "boolean",   "integer",   "decimal",   "date", "date", "timestamp",
      "timestamp", "timestamp", "timestamp", "text", "bytes"};
  return kNames[static_cast<unsigned>(form)];
}

ValueBytes valueOf(ColumnForm form, std::string_view field) {
  if (!isFixed(form)) {
    ValueBytes bytes;
    bytes.text = field.data() != nullptr ? field : std::string_view("");
    bytes.length = static_cast<std::uint32_t>(field.size());
    return bytes;
  }
  switch (form) {
    case ColumnForm::kBoolean:
      return bytesOf(static_cast<std::uint8_t>(field == "true"));
    case ColumnForm::kInteger:
      return bytesOf(numberOf<std::int64_t>(field).value_or(0));
    case ColumnForm::kDecimal: {
      DskDecimal decimal{};
      nomDecimalFromString(NumberText(field).text, &decimal);
      return bytesOf(decimal);
    }
    default:
      break;
  }
  const std::uint32_t day = dayOf(field).value_or(0);
  if (!isTimeStamp(form)) return bytesOf(day);
  const DskTimeStamp stamp{day, millisOf(field.substr(kDateLength + 1)).value_or(kMillisOfDay)};
  return bytesOf(stamp);
}

bool appendValue(std::string& text, ColumnForm form, std::string_view bytes) {
  char buffer[64];
  switch (form) {
    case ColumnForm::kBoolean:
      text += valueFrom<std::uint8_t>(bytes) != 0 ? "true" : "false";
      return true;
    case ColumnForm::kInteger:
      text.append(
          buffer,
          std::to_chars(buffer, buffer + sizeof buffer, valueFrom<std::int64_t>(bytes)).ptr);
      return true;
    case ColumnForm::kDecimal: {
      const auto value = valueFrom<DskDecimal>(bytes);
      if (!nomDecimalToString(&value, buffer, sizeof buffer, value.scaleFactor)) return false;
      if (!isStorable(buffer)) return false;
      text += buffer;
      return true;
    }
    case ColumnForm::kText:
    case ColumnForm::kBytes:
      text += bytes;
      return true;
    default:
      break;
  }
  const auto stamp = valueFrom<DskTimeStamp>(bytes);
  const char* const date = formatDateYMD(stamp.date, buffer, sizeof buffer);
  if (std::strlen(date) != kDateLength) return false;
  const std::size_t begin = text.size();
  text += date;
  if (form != ColumnForm::kDateSlash) text[begin + 4] = text[begin + 7] = '-';
  if (!isTimeStamp(form)) return true;
  const bool hasMillis = form >= ColumnForm::kTimeStampMillis;
  if (stamp.time >= kMillisOfDay || (!hasMillis && stamp.time % 1'000 != 0)) return false;
  const bool hasT = form == ColumnForm::kTimeStampT || form == ColumnForm::kTimeStampMillisT;
  text += hasT ? 'T' : ' ';
  appendDigits(text, stamp.time / 3'600'000, 2);
  text += ':';
  appendDigits(text, stamp.time / 60'000 % 60, 2);
  text += ':';
  appendDigits(text, stamp.time / 1'000 % 60, 2);
  if (hasMillis) {
    text += '.';
    appendDigits(text, stamp.time % 1'000, 3);
  }
  return true;
}

int compareValues(ColumnForm form, std::string_view left, std::string_view right) {
  const auto order = [](const auto& a, const auto& b) { return a < b ? -1 : a > b ? 1 : 0; };
  switch (form) {
    case ColumnForm::kBoolean:
      return order(valueFrom<std::uint8_t>(left), valueFrom<std::uint8_t>(right));
    case ColumnForm::kInteger:
      return order(valueFrom<std::int64_t>(left), valueFrom<std::int64_t>(right));
    case ColumnForm::kDecimal: {
      const auto a = valueFrom<DskDecimal>(left);
      const auto b = valueFrom<DskDecimal>(right);
      return nomDecimalCompare(&a, &b);
    }
    case ColumnForm::kText:
    case ColumnForm::kBytes:
      return order(left.compare(right), 0);
    default: {
      const auto a = valueFrom<DskTimeStamp>(left);
      const auto b = valueFrom<DskTimeStamp>(right);
      return a.date != b.date ? order(a.date, b.date) : order(a.time, b.time);
    }
  }
}

}  // namespace nomtool
