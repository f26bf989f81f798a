// The grammar, line by line:
//
//   line     blanks (comment | message)? LF        the last line may lack its LF
//   comment  "//" anything | "/*" anything         ends with its line, whatever it holds
//   message  sign? digits anything '"' text '"' anything
//   blank    space, tab, LF, VT, FF, CR; the CR of a line end lies behind the text
//
// The text lies between the first and the last double quote; without digits the number is 0.
#include "messagefile.h"

#include <limits>

namespace nomutil::messages {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

// The decimal integer at the start of a text, clamped to its type.
std::int32_t parseNumber(std::string_view text) {
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  const std::int64_t limit = negative ? kLargest + 1 : kLargest;
  std::int64_t number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') break;
    number = number * 10 + (digit - '0');
    if (number > limit) number = limit;
  }
  return static_cast<std::int32_t>(negative ? -number : number);
}

// What stands between the first and the last double quote; empty when there are not two.
std::string_view quotedText(std::string_view line) {
  const std::size_t first = line.find('"');
  const std::size_t last = line.rfind('"');
  if (first == last) return {};
  return line.substr(first + 1, last - first - 1);
}

}  // namespace

bool MessageFileReader::next(MessageLine& line) noexcept {
  while (!_rest.empty()) {
    std::string_view content = _rest.substr(0, _rest.find('\n'));
    _rest.remove_prefix(content.size() < _rest.size() ? content.size() + 1 : content.size());

    // Texts are handed out as C strings, so a NUL ends what counts of its line.
    content = content.substr(0, content.find('\0'));
    const std::size_t start = content.find_first_not_of(kBlanks);
    if (start == content.npos) continue;
    content.remove_prefix(start);
    if (content.starts_with("//") || content.starts_with("/*")) continue;

    line = {parseNumber(content), quotedText(content)};
    return true;
  }
  return false;
}

}  // namespace nomutil::messages
