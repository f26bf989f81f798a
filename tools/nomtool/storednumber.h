// The way of a number between text and the stored form: syntax check, storing, text, and the
// message texts for what is refused on the way.
#ifndef NOMTOOL_STOREDNUMBER_H
#define NOMTOOL_STOREDNUMBER_H

#include "sys/decimals.h"

#include <string>
#include <string_view>

namespace nomtool {

enum class NumberSyntax {
  kNumber,    // an optional sign, digits with at most one point, at least one digit: -1.5 .5 5.
  kExponent,  // such a number with an exponent, which decimals do not take: 1e5
  kNone,
};

// The text without the blanks and tabs around it.
std::string_view trimmed(std::string_view text);

// Blanks around a number do not count.
NumberSyntax numberSyntax(std::string_view text);

struct StoredNumber {
  int status;         // 0, or why the text is refused: 1002 no number, 1422 does not fit
  bool exact;         // whether the stored value is that of the text
  DskDecimal stored;  // empty zero for a refused text
};

// Stores the number that a text shows.
StoredNumber storeNumber(std::string_view text);

// All digits of the value.
std::string decimalText(const DskDecimal& value);
std::string decimalText(const Decimal& value);
// The value rounded to `places` decimal places.
std::string decimalText(const Decimal& value, unsigned places);

// "Invalid parameter value (1002)"; behind that of a missing library also who tells more.
std::string messageText(int number);

// The text fit for one line: control characters become '?' and what is beyond 60 characters "...".
std::string oneLine(std::string_view text);

// The same in double quotes.
std::string inQuotes(std::string_view text);

}  // namespace nomtool

#endif  // NOMTOOL_STOREDNUMBER_H
