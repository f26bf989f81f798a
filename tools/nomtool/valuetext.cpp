// Bytes as hexadecimal digits, and back: "deAD" is read as the two bytes that are shown as "de ad".
// A digit without its partner, or anything else than digits and blanks, is no value.
#include "valuetext.h"

#include "rowscanner.h"

#include <algorithm>

namespace nomtool {

std::optional<std::string> bytesFromHex(std::string_view digits) {
  std::string bytes;
  while (!digits.empty()) {
    if (digits.front() == ' ') {
      digits.remove_prefix(1);
      continue;
    }
    unsigned value = 0;
    const std::string_view pair = digits.substr(0, 2);
    const auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
    if (pair.size() != 2 || error != std::errc() || end != pair.data() + 2) return std::nullopt;
    bytes += static_cast<char>(value);
    digits.remove_prefix(2);
  }
  return bytes;
}

std::string hexOf(const void* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto* const byte = static_cast<const unsigned char*>(bytes);
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) text += ' ';
    text += kDigits[byte[i] >> 4];
    text += kDigits[byte[i] & 15];
  }
  return text;
}

std::string counted(std::uint64_t count, const char* thing) {
  return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u;
  }));
}

void printColumns(const std::vector<std::vector<std::string>>& rows, std::ostream& out) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& cells : rows) {
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::max(widths[i], widthOf(cells[i]));
    }
  }
  for (const auto& cells : rows) {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (!cells[i].empty()) {
        out << std::string(blanks, ' ') << cells[i];
        blanks = 0;
      }
      blanks += widths[i] - widthOf(cells[i]) + 2;
    }
    out << '\n';
  }
}

std::optional<char> delimiterByte(std::string_view text) {
  if (text == "\\t" || text == "tab") return '\t';
  if (text.size() != 1 || !isDelimiter(text.front())) return std::nullopt;
  return text.front();
}

}  // namespace nomtool
