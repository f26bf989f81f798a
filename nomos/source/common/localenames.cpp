// Names are folded by a character's lower-case form of its upper-case form, so that the dotless i
// of "Kas\u0131m" is the I of "KASIM", and the final sigma any other.

#include "localenames.h"

#include <algorithm>
#include <cstdint>

namespace nomos {
namespace {

constexpr char32_t kDottedCapitalI = 0x130;
constexpr char32_t kDotlessI = 0x131;

char32_t asciiLower(char32_t character) {
  return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
}

// An unpaired surrogate stays what it is, and matches nothing.
char32_t nextCharacter(const char16_t*& text) {
  const char32_t unit = *text++;
  if (unit < 0xD800 || unit > 0xDBFF || *text < 0xDC00 || *text > 0xDFFF) return unit;
  return 0x10000 + ((unit - 0xD800) << 10) + (char32_t{*text++} - 0xDC00);
}

// One character of UTF-8 in a text that ends with NUL, its bytes in length; 0 for a malformed one.
// A surrogate or a number above 10FFFF is in no name.
char32_t decodeUtf8(const unsigned char* text, unsigned& length) {
  const unsigned lead = *text;
  length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length == 1) return lead;
  static constexpr char32_t kSmallest[] = {0x80, 0x800, 0x10000};
  if (lead < 0xC2 || lead > 0xF4) return 0;
  char32_t character = lead & (0x7Fu >> length);
  for (unsigned i = 1; i < length; ++i) {
    if ((text[i] & 0xC0) != 0x80) return 0;
    character = character << 6 | (text[i] & 0x3Fu);
  }
  return character >= kSmallest[length - 2] ? character : 0;
}

}  // namespace

// The folded start of a text, and where each of its characters ends.
struct LocaleNames::Prefix {
  unsigned size = 0;
  char32_t characters[platform::LocaleDescription::kRoom];
  std::uint8_t ends[platform::LocaleDescription::kRoom];
};

void LocaleNames::add(const platform::LocaleDescription::Text& name, int number) {
  std::u32string folded;
  for (const char16_t* next = name; *next != 0;) {
    const char32_t character = nextCharacter(next);
    const char32_t upper = platform::upperCase(character);
    // Not every system has the capital of the dotless i.
    const char32_t lower = character == kDotlessI ? U'i' : platform::lowerCase(upper);
    folded += lower;
    for (const char32_t form : {character, upper, lower}) {
      if (form >= 0x80) _folds.emplace_back(form, lower);
    }
    if (lower == 'i') _folds.emplace_back(kDottedCapitalI, lower);
  }
  if (!folded.empty()) _names.push_back({std::move(folded), number});
}

void LocaleNames::complete() {
  std::stable_sort(_names.begin(), _names.end(), [](const Name& left, const Name& right) {
    return left.folded.size() > right.folded.size();
  });
  std::sort(_folds.begin(), _folds.end());
  _folds.erase(std::unique(_folds.begin(), _folds.end()), _folds.end());
}

char32_t LocaleNames::_fold(char32_t character) const noexcept {
  if (character < 0x80) return asciiLower(character);
  const auto found = std::lower_bound(_folds.begin(), _folds.end(), character,
                                      [](const std::pair<char32_t, char32_t>& fold,
                                         char32_t wanted) { return fold.first < wanted; });
  return found != _folds.end() && found->first == character ? found->second : character;
}

const LocaleNames::Name* LocaleNames::_find(const Prefix& prefix) const noexcept {
  for (const Name& name : _names) {
    const std::size_t size = name.folded.size();
    if (size <= prefix.size &&
        std::equal(name.folded.begin(), name.folded.end(), prefix.characters)) {
      return &name;
    }
  }
  return nullptr;
}

int LocaleNames::match(const char* text, const IndexedCodePage& codePage,
                       unsigned& length) const noexcept {
  length = 0;
  if (_names.empty()) return -1;
  const std::size_t longest = _names.front().folded.size();
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  int number = -1;
  for (const bool isUtf8 : {false, true}) {
    Prefix prefix;
    bool isAscii = true;
    for (unsigned at = 0; prefix.size < longest && bytes[at] != 0; ++prefix.size) {
      unsigned used = 1;
      const char32_t character =
          isUtf8 ? decodeUtf8(bytes + at, used) : char32_t{codePage.character[bytes[at]]};
      if (character == 0) break;
      isAscii = isAscii && bytes[at] < 0x80;
      at += used;
      prefix.characters[prefix.size] = _fold(character);
      prefix.ends[prefix.size] = static_cast<std::uint8_t>(at);
    }
    const Name* const name = _find(prefix);
    if (name != nullptr && prefix.ends[name->folded.size() - 1] > length) {
      number = name->number;
      length = prefix.ends[name->folded.size() - 1];
    }
    if (isAscii) break;  // both readings are the same
  }
  return number;
}

}  // namespace nomos
