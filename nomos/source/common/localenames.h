// The names of a locale's days or months, ready to be found at the start of a text. A name is kept
// as characters without case: "MAI", "Mai" and "mai" are one. A text is read twice, as characters
// of the code page and as UTF-8, and the longer match counts: "M\xE4rz" in Windows-1252 and
// "M\xC3\xA4rz" are both the third month in German.
#ifndef NOMOS_SOURCE_COMMON_LOCALENAMES_H
#define NOMOS_SOURCE_COMMON_LOCALENAMES_H

#include "codepages.h"
#include "platform.h"

#include <string>
#include <utility>
#include <vector>

namespace nomos {

class LocaleNames {
 public:
  // Both throw std::bad_alloc. After complete, which follows the last add, any thread may match.
  void add(const platform::LocaleDescription::Text& name, int number);
  void complete();

  // The number of the longest name at the start of text, its bytes in length; -1 and 0 for none. Of
  // equal names the first that was added counts.
  int match(const char* text, const IndexedCodePage& codePage, unsigned& length) const noexcept;

 private:
  struct Name {
    std::u32string folded;
    int number;
  };
  struct Prefix;

  char32_t _fold(char32_t character) const noexcept;
  const Name* _find(const Prefix& prefix) const noexcept;

  std::vector<Name> _names;  // the longest first
  // The characters beyond ASCII that names have in any case, each with its folded form, in order.
  std::vector<std::pair<char32_t, char32_t>> _folds;
};

}  // namespace nomos

#endif  // NOMOS_SOURCE_COMMON_LOCALENAMES_H
