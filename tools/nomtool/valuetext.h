// Values as the commands take them from the command line, and bytes as they show them.
#ifndef NOMTOOL_VALUETEXT_H
#define NOMTOOL_VALUETEXT_H

#include <charconv>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {

// The whole text as a number of type T; a real may have an exponent, an integer another base.
template <class T, class... Base>
std::optional<T> numberOf(std::string_view text, Base... base) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base...);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// "de ad" as two bytes; blanks between pairs do not count.
std::optional<std::string> bytesFromHex(std::string_view digits);

// Two digits and a blank for each byte, without the last blank.
std::string hexOf(const void* bytes, std::size_t count);

// "1 row", "2 rows".
std::string counted(std::uint64_t count, const char* thing);

// Characters of a UTF-8 text, counted by the bytes that begin one.
std::size_t widthOf(std::string_view text);

// Rows of cells, at least one and all of one length, each column as wide as its widest cell.
// Nothing stands behind the last cell of a row that is not empty.
void printColumns(const std::vector<std::vector<std::string>>& rows, std::ostream& out);

// The byte that an argument names as a delimiter, "tab" and "\\t" too, if it can lie between
// fields.
std::optional<char> delimiterByte(std::string_view text);

}  // namespace nomtool

#endif  // NOMTOOL_VALUETEXT_H
