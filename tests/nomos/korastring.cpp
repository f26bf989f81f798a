// Strings: lengths around the inline room and the maximum, sources inside of the string itself,
// and the promise that a failed operation changes nothing.

#include "nomos/korastring.h"

#include "nomos/exception.h"
#include "nomos/heap.h"
#include "nomos/status.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <utility>

namespace {

using Chars = KoraString<char>;
using Bytes = KoraString<unsigned char>;

Chars chars(const std::string& text, std::uint32_t maximum = kKoraNoMaximum) {
  return Chars(text.data(), static_cast<std::uint32_t>(text.size()), maximum);
}

StringUtf8Info utf8(const char* text, std::uint32_t characters = 0) {
  static unsigned char bytes[256];
  const auto length = static_cast<std::uint32_t>(std::strlen(text));
  std::memcpy(bytes, text, length);
  return {bytes, length, characters, kKoraNoMaximum};
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

TEST(KoraString, KeepsItsTextAtEveryLengthInEveryHome) {
  for (const std::uint32_t length :
       {0u, 1u, 7u, 8u, 15u, 23u, 24u, 62u, 63u, 64u, 65u, 128u, 5000u}) {
    const std::string text(length, 'x');
    Chars held = chars(text);
    KoraInlineString local(text.data(), length);
    Chars grown;
    for (std::uint32_t i = 0; i < length; ++i) grown.append("x", 1);
    held.append("yz", 2);
    local.append("yz", 2);
    EXPECT_EQ(textOf(held), text + "yz") << length;
    EXPECT_EQ(textOf(local), text + "yz") << length;
    EXPECT_EQ(textOf(grown), text) << length;
    EXPECT_TRUE(held == local);
    EXPECT_FALSE(held == grown);
  }
}

TEST(KoraString, FollowsAModelThroughRandomOperations) {
  std::mt19937 random(20);
  for (unsigned round = 0; round < 200; ++round) {
    Chars held;
    KoraInlineString local;
    std::string model;
    for (unsigned step = 0; step < 30; ++step) {
      const std::string piece(random() % 70, static_cast<char>('a' + step % 26));
      const auto length = static_cast<std::uint32_t>(piece.size());
      for (Chars* const string : {&held, static_cast<Chars*>(&local)}) {
        switch (step % 3) {
          case 0:
            string->append(piece.data(), length);
            break;
          case 1:
            string->resize(length);
            break;
          default:
            string->set(piece.data(), length);
            break;
        }
      }
      if (step % 3 == 0) {
        model += piece;
      } else if (step % 3 == 1) {
        model.resize(length);
      } else {
        model = piece;
      }
      ASSERT_EQ(textOf(held), model) << round << ' ' << step;
      ASSERT_EQ(textOf(local), model) << round << ' ' << step;
    }
  }
}

TEST(KoraString, TakesItsOwnTextAsSource) {
  for (const std::string& start :
       {std::string("ab"), std::string(63, 'q'), std::string(200, 'r')}) {
    Chars held = chars(start);
    KoraInlineString local(start.data(), static_cast<std::uint32_t>(start.size()));
    for (Chars* const string : {&held, static_cast<Chars*>(&local)}) {
      std::string model = start;
      for (unsigned i = 0; i < 3; ++i) {
        string->append(string->data() + 1, string->length() - 1);
        model += model.substr(1);
        ASSERT_EQ(textOf(*string), model);
      }
      string->set(string->data() + 1, string->length() - 1);
      EXPECT_EQ(textOf(*string), model.substr(1));
      const Chars& same = *string;
      *string = same;
      EXPECT_EQ(textOf(*string), model.substr(1));
    }
  }
}

TEST(KoraString, RefusesWhatExceedsItsMaximumUnchanged) {
  Chars text = chars("abcdefgh", 9);
  Bytes binary(reinterpret_cast<const unsigned char*>("abcdefgh"), 8, 9);
  KoraUtf8String utf(utf8("abcdefgh"), 9);
  const auto* const bytes = reinterpret_cast<const unsigned char*>("0123456789");
  const struct {
    KoraBytes& string;
    int expected;
  } rows[] = {{text, kNosStringTooLong}, {binary, kNosBinaryTooLong}, {utf, kNosStringUtf8TooLong}};
  for (const auto& [string, expected] : rows) {
    KoraBytes& target = string;
    EXPECT_EQ(thrownBy([&] { target.appendBytes(bytes, 2); }), expected);
    EXPECT_EQ(thrownBy([&] { target.setBytes(bytes, 10); }), expected);
    EXPECT_EQ(thrownBy([&] { target.resizeBytes(10); }), expected);
    EXPECT_EQ(thrownBy([&] { target.appendBytes(bytes, 0xFFFFFFFF); }), expected);
    EXPECT_EQ(textOf(target), "abcdefgh");
    EXPECT_EQ(thrownBy([&] { target.appendBytes(bytes, 1); }), 0);
    EXPECT_EQ(textOf(target), "abcdefgh0");
  }
  EXPECT_EQ(utf.characters(), 8u);
  EXPECT_EQ(thrownBy([] { chars("abc", 2); }), kNosStringTooLong);
  EXPECT_EQ(kNosStringTooLong, 1035);
  EXPECT_EQ(kNosBinaryTooLong, 1091);
  EXPECT_EQ(kNosStringUtf8TooLong, 1124);
}

TEST(KoraString, StaysAsItWasWhenTheHeapIsExhausted) {
  const std::string longer(300, 'n');
  Chars held = chars("held");
  KoraInlineString local("held", 4);
  KoraUtf8String utf(utf8("held"));
  for (KoraBytes* const string : {static_cast<KoraBytes*>(&held), static_cast<KoraBytes*>(&local),
                                  static_cast<KoraBytes*>(&utf)}) {
    for (unsigned operation = 0; operation < 3; ++operation) {
      nosFailAllocation(1);
      EXPECT_EQ(thrownBy([&] {
                  if (operation == 0) string->setBytes(longer.data(), 300);
                  if (operation == 1) string->appendBytes(longer.data(), 300);
                  if (operation == 2) string->resizeBytes(300);
                }),
                3018);
      nosFailAllocation(0);
      EXPECT_EQ(textOf(*string), "held") << operation;
    }
  }
  nosFailAllocation(1);
  EXPECT_EQ(thrownBy([&] { Chars copy(held); }), 3018);
  nosFailAllocation(0);
}

TEST(KoraString, ReturnsAllMemoryAndMovesWithoutAny) {
  const std::uint64_t before = nosAllocatedBlocks();
  {
    Chars first = chars(std::string(100, 'f'));
    const void* const text = first.bytes();
    nosFailAllocation(1);
    Chars second(std::move(first));
    Chars third = chars("");
    third = std::move(second);
    nosFailAllocation(0);
    EXPECT_EQ(third.bytes(), text);
    EXPECT_EQ(textOf(first) + textOf(second), "");
    first.append("again", 5);
    EXPECT_EQ(textOf(first), "again");
    Chars limited = chars("ab", 50);
    EXPECT_EQ(thrownBy([&] { limited = std::move(third); }), kNosStringTooLong);
    EXPECT_EQ(textOf(limited) + textOf(third), "ab" + std::string(100, 'f'));
    EXPECT_EQ(Chars(limited).maximum(), 50u);
  }
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

TEST(KoraInlineString, UsesTheHeapFromSixtyFourCharactersOn) {
  const std::uint64_t before = nosAllocatedBlocks();
  KoraInlineString local(std::string(63, 'i').data(), 63);
  EXPECT_EQ(nosAllocatedBlocks(), before);
  {
    // Neither a copy nor what is moved out may point into the object.
    Chars copy(local);
    Chars moved(static_cast<Chars&&>(local));
    EXPECT_EQ(nosAllocatedBlocks(), before + 2);
    EXPECT_EQ(textOf(local), "");
    local.set("other", 5);
    EXPECT_EQ(textOf(copy), std::string(63, 'i'));
    EXPECT_TRUE(moved == copy);
    copy = local;
    KoraInlineString twin(local);
    twin.append("s", 1);
    EXPECT_EQ(textOf(copy) + textOf(twin), "otherothers");
  }
  local.set(std::string(64, 'h').data(), 64);
  EXPECT_EQ(nosAllocatedBlocks(), before + 1);
}

TEST(KoraUtf8String, CountsWhatNobodyCounted) {
  const struct {
    const char* text;
    std::uint32_t given;
    std::uint32_t characters;
  } rows[] = {
      {"", 0, 0},
      {"na\xC3\xAFve", 0, 5},
      {"\xE2\x82\xAC\xF0\x9F\x98\x80", 0, 2},
      {"\xE2\x82\xAC", 1, 1},
      {"ab\xFFzz", 0, 2},  // up to the malformed byte
  };
  for (const auto& row : rows) {
    KoraUtf8String string(utf8(row.text, row.given));
    EXPECT_EQ(string.characters(), row.characters) << row.text;
    EXPECT_EQ(textOf(string), row.text);
    string.clear();
    EXPECT_EQ(string.characters() + string.length(), 0u);
  }
}

TEST(KoraUtf8String, KeepsTheCountThroughChanges) {
  KoraUtf8String string(utf8("\xC3\xA9t\xC3\xA9"));  // "ete" with accents: 5 bytes, 3 characters
  string.append(reinterpret_cast<const unsigned char*>("\xE2\x82\xAC!!!!"), 7);
  EXPECT_EQ(string.characters(), 8u);
  string.append(string.data(), string.length());
  EXPECT_EQ(string.characters(), 16u);
  KoraUtf8String copy(string);
  copy.resize(4);  // cuts the second accented letter
  EXPECT_EQ(copy.characters(), 2u);
  const KoraUtf8String moved(std::move(string));
  EXPECT_EQ(moved.characters(), 16u);
  EXPECT_EQ(string.characters(), 0u);
  copy = moved;
  EXPECT_EQ(copy.characters(), 16u);
  EXPECT_TRUE(copy == moved);
}

TEST(KoraUtf8String, IsReleasedThroughItsBase) {
  const std::uint64_t before = nosAllocatedBlocks();
  void* const place = XHeap::library().allocate(sizeof(KoraUtf8String));
  KoraBytes* const held = new (place) KoraUtf8String(utf8("held by the heap, as a parameter does"));
  EXPECT_EQ(nosAllocatedBlocks(), before + 2);
  held->~KoraBytes();
  XHeap::library().release(place);
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

}  // namespace
