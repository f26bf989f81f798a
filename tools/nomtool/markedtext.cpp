// The mark stands in a column of characters, while places are counted in bytes of UTF-8: a byte
// 10xxxxxx goes on with the character before it.
#include "markedtext.h"

#include <algorithm>

namespace nomtool {
namespace {

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string marked(std::string_view text, std::size_t offset) {
  constexpr std::size_t kBefore = 50, kAfter = 20;
  std::size_t first = offset > kBefore ? offset - kBefore : 0;
  std::size_t last = std::min(text.size(), offset + kAfter);
  while (first > 0 && isContinuation(text[first])) --first;
  while (last < text.size() && isContinuation(text[last])) ++last;

  std::string line = first > 0 ? "..." : "";
  std::size_t column = line.size();
  for (std::size_t i = first; i < last; ++i) {
    const auto code = static_cast<unsigned char>(text[i]);
    line += code < 32 || code == 127 ? '?' : text[i];
    column += i < offset && !isContinuation(text[i]);
  }
  if (last < text.size()) line += "...";
  return line + '\n' + std::string(column, ' ') + "^\n";
}

}  // namespace nomtool
