// A text with a mark under the place where it is wrong.
#ifndef NOMTOOL_MARKEDTEXT_H
#define NOMTOOL_MARKEDTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace nomtool {

// The text on one line, and below it a caret under the character at that byte. Control characters
// become '?', and of a long text the part around the byte is shown. offset may be that of the end.
std::string marked(std::string_view text, std::size_t offset);

}  // namespace nomtool

#endif  // NOMTOOL_MARKEDTEXT_H
