// Strings: lengths around the inline room and the maximum, sources inside of the string itself,
// and the promise that a failed operation changes nothing.

#include "nomos/korastring.h"

#include "nomos/exception.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>

namespace {

using Chars = KoraString<char>;

Chars chars(const std::string& text, std::uint32_t maximum = kKoraNoMaximum) {
  return Chars(text.data(), static_cast<std::uint32_t>(text.size()), maximum);
}

KoraUtf8String utf8(std::string text, std::uint32_t characters = 0,
                    std::uint32_t maximum = kKoraNoMaximum) {
  auto* const bytes = reinterpret_cast<unsigned char*>(text.data());
  const auto length = static_cast<std::uint32_t>(text.size());
  return KoraUtf8String({bytes, length, characters, 0}, maximum);
}

// The text of a string whose NUL is where it must be.
std::string textOf(const KoraBytes& string) {
  const auto* const text = static_cast<const char*>(string.bytes());
  EXPECT_EQ(text[string.length()], '\0');
  return std::string(text, string.length());
}

// The number that an operation throws; 0 when it throws none.
template <class Operation>
int thrownBy(Operation operation) {
  try {
    operation();
  } catch (const NomException& exception) {
    return exception.number();
  }
  return 0;
}

TEST(KoraString, FollowsAModelAcrossTheLengthsOfEveryHome) {
  std::string letters;
  for (unsigned i = 0; i < 5001; ++i) letters += static_cast<char>('a' + i % 23);
  const std::uint32_t lengths[] = {0, 1, 7, 8, 23, 24, 31, 32, 62, 63, 64, 65, 128, 5000};
  for (const std::uint32_t from : lengths) {
    for (const std::uint32_t to : lengths) {
      SCOPED_TRACE(testing::Message() << from << " to " << to);
      const std::string start = letters.substr(0, from), piece = letters.substr(1, to);
      Chars held = chars(start);
      KoraInlineString local(start.data(), from);
      for (Chars* const string : {&held, static_cast<Chars*>(&local)}) {
        string->append(piece.data(), to);
        EXPECT_EQ(textOf(*string), start + piece);
        string->resize(from);
        string->resize(to);
        EXPECT_EQ(textOf(*string), (start + std::string(to, '\0')).substr(0, to));
        string->set(piece.data(), to);
        string->append(string->data() + to / 2, to - to / 2);  // its own text
        EXPECT_EQ(textOf(*string), piece + piece.substr(to / 2));
        string->set(string->data() + 1, to / 2);
        EXPECT_EQ(textOf(*string), letters.substr(2, to / 2));
      }
      EXPECT_TRUE(held == local && held != chars(textOf(held) + 'x'));
    }
  }
}

TEST(KoraString, StaysAsItWasOverItsMaximumAndWithoutMemory) {
  const std::string longer(300, 'n');
  Chars text = chars("abc", 9);
  KoraString<unsigned char> binary(reinterpret_cast<const unsigned char*>("abc"), 3, 9);
  KoraUtf8String utf = utf8("abc", 0, 9);
  Chars held = chars("abc");
  KoraInlineString local("abc", 3);
  KoraUtf8String unlimited = utf8("abc");
  const std::tuple<KoraBytes*, std::uint32_t, int> rows[] = {
      {&text, 10, 1035},  {&binary, 10, 1091}, {&utf, 10, 1124},
      {&held, 300, 1448}, {&local, 300, 1448}, {&unlimited, 300, 1448}};
  for (const auto& [string, length, expected] : rows) {
    for (unsigned operation = 0; operation < 5; ++operation) {
      nosFailAllocation(1);
      const int thrown = thrownBy([&, &target = *string, &size = length] {
        if (operation == 0) target.setBytes(longer.data(), size);
        if (operation == 1) target.appendBytes(longer.data(), size - 3);
        if (operation == 2) target.resizeBytes(size);
        if (operation == 3) target.appendBytes(longer.data(), size == 10 ? 0xFFFFFFFF : size);
        if (operation == 4) target.extendBytes(size - 3);
      });
      nosFailAllocation(0);
      EXPECT_EQ(thrown, expected) << operation;
      EXPECT_EQ(textOf(*string), "abc") << operation;
    }
    string->appendBytes("defghi", 6);
    EXPECT_EQ(textOf(*string), "abcdefghi") << "up to the maximum";
  }
  EXPECT_EQ(thrownBy([] { chars("abc", 2); }), 1035);
}

TEST(KoraString, MovesWithoutMemoryAndReturnsAll) {
  const std::uint64_t before = nosAllocatedBlocks();
  {
    Chars first = chars(std::string(100, 'f'));
    nosFailAllocation(1);
    Chars second(std::move(first));
    Chars third;
    third = std::move(second);
    Chars& itself = third;
    third = std::move(itself);
    nosFailAllocation(0);
    EXPECT_EQ(textOf(first) + textOf(second) + textOf(third), std::string(100, 'f'));
    Chars limited = chars("ab", 50);
    EXPECT_EQ(thrownBy([&] { limited = std::move(third); }), 1035);
    EXPECT_EQ(textOf(limited) + textOf(third), "ab" + std::string(100, 'f'));
    EXPECT_EQ(Chars(limited).maximum(), 50u);
  }
  // Short texts lie in the object: neither a copy nor what is moved out may point into it.
  KoraInlineString local(std::string(63, 'i').data(), 63);
  EXPECT_EQ(nosAllocatedBlocks(), before);
  Chars copy(local);
  Chars moved(static_cast<Chars&&>(local));
  EXPECT_EQ(textOf(local), "");
  local.set(std::string(64, 'h').data(), 64);
  EXPECT_EQ(nosAllocatedBlocks(), before + 3);
  EXPECT_EQ(textOf(copy) + textOf(moved), std::string(126, 'i'));
  KoraInlineString twin(local);
  twin.append("s", 1);
  EXPECT_EQ(textOf(local) + 's', textOf(twin));
}

TEST(KoraUtf8String, CountsWhatNobodyCountedAndThroughChanges) {
  const std::tuple<const char*, std::uint32_t, std::uint32_t> rows[] = {
      {"", 0, 0},
      {"na\xC3\xAFve", 0, 5},
      {"\xE2\x82\xAC\xF0\x9F\x98\x80", 0, 2},
      {"ab\xFF", 0, 2},
      {"counted", 3, 3}};
  for (const auto& [text, counted, count] : rows) {
    EXPECT_EQ(utf8(text, counted).characters(), count) << text;
  }
  KoraUtf8String string = utf8("\xC3\xA9t\xC3\xA9");  // "ete" with accents: 5 bytes, 3 characters
  string.append(string.data(), string.length());
  KoraUtf8String copy(string);
  EXPECT_EQ(copy.characters(), 6u);
  copy.resize(4);  // cuts the second accented letter
  EXPECT_EQ(copy.characters(), 2u);
  copy = std::move(string);
  EXPECT_EQ(copy.characters(), 6u);
  EXPECT_EQ(string.characters(), 0u);
  // Memory of a caller cannot be taken over, so that a move copies, and may fail.
  std::uint32_t memory[8];
  string.useMemory(memory, sizeof memory);
  string.append(copy.data(), copy.length(), 6);
  nosFailAllocation(1);
  EXPECT_EQ(thrownBy([&] { KoraUtf8String(std::move(string)); }), 1448);
  nosFailAllocation(0);
  EXPECT_EQ(textOf(string), textOf(copy));
  EXPECT_EQ(string.characters(), 6u);
}

}  // namespace
