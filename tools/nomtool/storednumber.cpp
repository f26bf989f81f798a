// The text constructor of decimals takes any text (12abc is 12, abc is 0) and at most 100 digits,
// so a text is checked here before it is handed on; and what was stored is compared with the text.
#include "storednumber.h"

#include "sys/messages.h"

#include <algorithm>

namespace nomtool {
namespace {

constexpr std::size_t kMostDigits = 100;  // that the text constructor reads
constexpr std::size_t kMostShown = 60;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t countDigits(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isDigit));
}

void skipSign(std::string_view& text) {
  if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
}

// Removes the digits at the start of text and returns their number.
std::size_t skipDigits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  const auto count = static_cast<std::size_t>(end - text.begin());
  text.remove_prefix(count);
  return count;
}

// A negative value that outgrows the limbs while scales are aligned does not say so, a positive one
// does; and a stored value has the sign of its text.
Decimal absolute(const Decimal& value) {
  return value.isneg() ? -value : value;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

NumberSyntax numberSyntax(std::string_view text) {
  text = trimmed(text);
  skipSign(text);
  std::size_t digits = skipDigits(text);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    digits += skipDigits(text);
  }
  if (digits == 0) return NumberSyntax::kNone;
  if (text.empty()) return NumberSyntax::kNumber;
  if (text.front() != 'e' && text.front() != 'E') return NumberSyntax::kNone;
  text.remove_prefix(1);
  skipSign(text);
  return skipDigits(text) > 0 && text.empty() ? NumberSyntax::kExponent : NumberSyntax::kNone;
}

StoredNumber storeNumber(std::string_view text) {
  StoredNumber number{};
  if (numberSyntax(text) != NumberSyntax::kNumber) {
    number.status = kInvalidParameterValue;
    return number;
  }
  const std::string digits(trimmed(text));
  if (countDigits(digits) > kMostDigits || !nomDecimalFromString(digits.c_str(), &number.stored)) {
    number.status = kDecimalOverflow;
    return number;
  }
  number.exact = absolute(Decimal(number.stored)) == absolute(Decimal(digits.c_str()));
  return number;
}

std::string decimalText(const DskDecimal& value) {
  return decimalText(Decimal(value));
}

std::string decimalText(const Decimal& value) {
  return decimalText(value, value.getScaleFactor());
}

std::string decimalText(const Decimal& value, unsigned places) {
  char buffer[128];
  return value.decimalToString(buffer, sizeof buffer, places);
}

std::string messageText(int number) {
  char buffer[512];
  nomGetMessageText(static_cast<unsigned>(number), buffer, sizeof buffer);
  const char* const where = number == kLibraryNotFound ? "; see nomtool doctor" : "";
  return std::string(buffer) + " (" + std::to_string(number) + ")" + where;
}

std::string oneLine(std::string_view text) {
  std::string line;
  std::size_t characters = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    // A byte 10xxxxxx goes on with the UTF-8 character before it.
    if ((byte & 0xC0u) != 0x80u && ++characters > kMostShown) return line + "...";
    line += byte < 0x20 || byte == 0x7F ? '?' : c;
  }
  return line;
}

std::string inQuotes(std::string_view text) {
  return '"' + oneLine(text) + '"';
}

}  // namespace nomtool
