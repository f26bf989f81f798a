// Laws that hold for a text of any length in any storage: what is copied out and in again is the
// same, and a cut copy is the beginning of the whole one.

#include "exactparam.h"

using namespace nomtest;

namespace {

struct Family {
  std::vector<unsigned> formats;
  int tooLong;
};
const Family kFamilies[] = {{{1, 2, 14, 25}, 1035}, {{11, 33, 34}, 1091}, {{51, 54}, 1124}};

constexpr unsigned kLengths[] = {0, 1, 2, 3, 22, 23, 24, 63, 64, 65, 255, 256, 257, 510, 511};

// A text with letters of one byte and of two.
std::string textOf(std::size_t length) {
  return std::string(length / 2, '~') + std::string(length % 2, 'x');
}

// What a copy out gives: the text, with the NUL of a string.
std::string copiedOut(const Param& source) {
  char target[600] = "";
  unsigned bytes = 0, characters = 0;
  std::fill_n(target, 600, '#');
  EXPECT_EQ(paramcpy(target, source, 600, bytes, characters), 0);
  return std::string(target, bytes + (target[bytes] == '\0' ? 1u : 0u));
}

TEST(ParamLaw, AValueSurvivesEveryKindOfStorage) {
  for (const Family& family : kFamilies) {
    for (const unsigned length : kLengths) {
      for (unsigned i = 0; i < 16; ++i) {
        if (i / 4 >= family.formats.size() || i % 4 >= family.formats.size()) continue;
        const unsigned from = family.formats[i / 4], to = family.formats[i % 4];
        SCOPED_TRACE(testing::Message() << length << " from " << from << " to " << to);
        const Param source(from, length == 0 ? "_" : textOf(length));
        const std::string out = copiedOut(source);
        EXPECT_EQ(wordOf(out), length == 0 && out.empty()
                                   ? "_"
                                   : textOf(length) + (family.tooLong == 1035 ? "|" : ""));
        // The room of a block for characters is one less than its memory.
        const Param target(to, std::string(length + 1, '#')),
            second(to, std::string(length + 1, '#'));
        const void* const data = out.data();
        EXPECT_EQ(paramcpy(target, data, length), 0);
        EXPECT_EQ(copiedOut(target), out);
        Buffer buffer(std::string(length + (to > 50 ? 8 : 0), '#'));
        EXPECT_EQ(paramcpy(buffer.get(), source) | paramcpy(second, buffer.get()), 0);
        EXPECT_EQ(copiedOut(second), out);
      }
    }
  }
}

TEST(ParamLaw, ACutCopyIsTheBeginningOfTheWhole) {
  for (const auto& [formats, tooLong] : kFamilies) {
    for (const unsigned format : formats) {
      for (const unsigned offset : {0u, 7u}) {
        for (const unsigned length : {0u, 1u, 2u, 9u, 70u}) {
          const Param source(format, length == 0 ? "_" : textOf(length), offset);
          const bool isString = tooLong == 1035, isBlock = format == 14;
          const std::vector<char> text = bytesOf(textOf(length) + (isString ? "|" : ""));
          std::string whole(isBlock || format == 34 ? offset : 0, '#');
          whole.append(text.begin(), text.end());
          for (unsigned size = 0; size <= whole.size() + 2; ++size) {
            SCOPED_TRACE(testing::Message() << size << " of " << format << " " << whole.size());
            // The last byte of a cut string is a NUL, but a block with room for nothing else has
            // none.
            const bool isBare = isBlock && size == 1, isCut = isBare || size < whole.size();
            std::string expected = isBare ? "#" : (whole + "##").substr(0, size);
            if (isCut && isString && !isBare && size != 0) expected.back() = '\0';
            std::vector<char> target(size, '#');
            EXPECT_EQ(paramcpyTruncate(target.data(), source, size), isCut ? tooLong : 0);
            EXPECT_EQ(std::string(target.begin(), target.end()), expected);
          }
        }
      }
    }
  }
}

}  // namespace
