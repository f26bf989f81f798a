// Copies out of parameters and into them, their lengths and places. Targets are blocks of the heap
// that hold '#' where nothing was written; a word of a table leaves out a target that is as it was.

#include "exactparam.h"

#include <functional>

using namespace nomtest;

namespace {

using ParamCopyOut = Checked;
using ParamCopyIn = Checked;
using ParamOperation = Checked;

// A text with letters of one byte and of two.
std::string textOf(std::size_t length) {
  return length == 0 ? "_" : std::string(length / 2, '~') + std::string(length % 2, 'x');
}

// A copy into rooms of every size: to memory whole or not at all, or its beginning with the NUL of
// a string; to a buffer, whose header stays, whole without a NUL but with the lengths of UTF-8.
void checkCopies(unsigned format, unsigned length, unsigned offset) {
  const int tooLong = tooLongOf(format);
  const Param source(format, textOf(length) + "@" + std::to_string(offset));
  const bool isString = tooLong == 1035, isUtf8 = tooLong == 1124;
  const std::vector<char> text = bytesOf(textOf(length));
  const std::uint32_t characters = isUtf8 ? (length + 1) / 2 : length;
  std::string whole(isAmong(format, {14, 34}) ? offset : 0, '#'), carried = whole;
  whole.append(text.begin(), text.end());
  if (isUtf8) carried = std::string{char(length), 0, 0, 0, char(characters), 0, 0, 0};
  carried.append(text.begin(), text.end());
  unsigned bytesLength = 0, charactersLength = 0;
  unsigned char* place = nullptr;
  EXPECT_EQ(paramBytesLen(source, &bytesLength) | paramBytesPtr(source, &place), 0);
  EXPECT_EQ(bytesLength, whole.size());
  EXPECT_TRUE(std::equal(text.begin(), text.end(), reinterpret_cast<char*>(place)));
  if (isString) whole += '\0';
  for (unsigned size = 0; size <= whole.size() + 10; ++size) {
    SCOPED_TRACE(testing::Message() << size << " of " << format << " " << whole.size());
    // The last byte of a cut string is a NUL, but a block with room for nothing else has none.
    const bool isBare = format == 14 && size == 1, isCut = isBare || size < whole.size();
    const std::string nothing(size, '#'), all = whole + std::string(10, '#');
    std::string beginning = isBare ? "#" : all.substr(0, size);
    if (isCut && isString && !isBare && size != 0) beginning.back() = '\0';
    std::vector<char> target(size, '#'), cut(size, '#');
    bytesLength = charactersLength = 77;
    const int status = size < whole.size() ? tooLong : 0;
    EXPECT_EQ(paramcpy(target.data(), source, size, bytesLength, charactersLength), status);
    EXPECT_EQ(bytesLength * 1000 + charactersLength, length * 1000 + characters);
    EXPECT_EQ(std::string(target.begin(), target.end()), status ? nothing : all.substr(0, size));
    EXPECT_EQ(paramcpyTruncate(cut.data(), source, size), isCut ? tooLong : 0);
    EXPECT_EQ(std::string(cut.begin(), cut.end()), beginning);
    Buffer buffer(nothing);
    std::string expected(buffer.bytes.begin(), buffer.bytes.end());
    if (size >= carried.size()) expected.replace(72, carried.size(), carried);
    EXPECT_EQ(paramcpy(buffer.get(), source), size < carried.size() ? tooLong : 0);
    EXPECT_EQ(std::string(buffer.bytes.begin(), buffer.bytes.end()), expected);
  }
}
TEST_F(ParamCopyOut, GivesTheWholeOrItsBeginningOrNothing) {
  for (const unsigned format : kTexts) {
    for (const unsigned length : {0u, 1u, 2u, 9u, 70u}) {
      for (const unsigned offset : {0u, 7u}) checkCopies(format, length, offset);
    }
  }
}

std::string result(int status, const std::vector<char>& target) {
  const std::string word = wordOf(target);
  const bool isTouched = word.find_first_not_of("#_") != std::string::npos;
  return std::to_string(status) + (isTouched ? ":" + word : "");
}

// The columns: format, value, size of the target; the copy with its two lengths, what is cut, and
// what goes into a buffer.
TEST_F(ParamCopyOut, TakesEveryOffsetAndCharactersAndNulls) {
  const auto check = [this](const Row& row) {
    const Param source(numberOf(row[0]), row[1]);
    const std::uint32_t size = numberOf(row[2]);
    std::vector<char> target(size, '#'), cut(size, '#');
    Buffer buffer(std::string(size, '#'));
    unsigned bytes = 77, characters = 77;
    const int status = paramcpy(target.data(), source, size, bytes, characters);
    const int cutStatus = paramcpyTruncate(cut.data(), source, size);
    const int bufferStatus = paramcpy(buffer.get(), source);
    EXPECT_EQ(lines(), row[0] == "6" ? "paramcpy: invalid parameter type (6)\n" : "");
    return std::to_string(bytes) + "/" + std::to_string(characters) + "=" + result(status, target) +
           "," + result(cutStatus, cut) + "," + std::to_string(bufferStatus);
  };
  expectRows(4, check, R"(
      6 a 2 1/1=0:a|,0:a|,1000      6 a 1 1/1=1035,1035,1000    6 a 0 1/1=1035,1035,1000
      6 a 3 1/1=0:a|#,0:a|#,1000    36 _ 0 0/0=0,0,0            36 _ 3 0/0=0,0,0
      14 x{17}@4294967280 16 17/17=1035,1035:#{15}|,1035
      34 x{17}@4294967280 16 17/17=1091,1091,1091
      2 x{512} 513 512/512=0:x{512}|,0:x{512}|,0)");
}

TEST_F(ParamCopyOut, ReplacesStringsUpToTheirMaximum) {
  const auto check = [](auto string, std::initializer_list<unsigned> formats) {
    for (const unsigned format : formats) {
      EXPECT_EQ(paramcpy(string, Param(format, "abc@5")), 0);
      EXPECT_EQ(paramcpy(string, Param(format, "abcde")), tooLongOf(format));
      EXPECT_EQ(wordOf(std::string(string.data(), string.data() + string.length())), "abc");
      EXPECT_EQ(paramcpy(string, Param(36)), 0);
      EXPECT_EQ(string.length(), 0u);
    }
  };
  check(KoraString<char>("", 0, 4), {1, 2, 14, 25});
  check(KoraString<unsigned char>(nullptr, 0, 4), {11, 33, 34});
  const Param own(25, "abcdef");
  auto& string = *static_cast<KoraString<char>*>(own.held());
  EXPECT_EQ(paramcpy(string, own), 0);
  EXPECT_EQ(own.word(), "abcdef");
  EXPECT_EQ(paramcpy(string, Param(6, "abc")), 0);
  EXPECT_EQ(own.word(), "a");
}

// What a copy out gives: the text, with the NUL of a string.
std::string copiedOut(const Param& source) {
  std::string target(600, '#');
  unsigned bytes = 0, characters = 0;
  EXPECT_EQ(paramcpy(target.data(), source, 600, bytes, characters), 0);
  return target.substr(0, bytes + (target[bytes] == '\0' ? 1u : 0u));
}

TEST_F(ParamCopyIn, RestoresWhatWasCopiedOutOfEveryKindOfStorage) {
  for (const unsigned from : kTexts) {
    for (const unsigned to : kTexts) {
      if (tooLongOf(from) != tooLongOf(to)) continue;
      for (const unsigned length :
           {0u, 1u, 2u, 22u, 23u, 24u, 63u, 64u, 255u, 256u, 257u, 510u, 511u}) {
        SCOPED_TRACE(testing::Message() << length << " from " << from << " to " << to);
        const Param source(from, textOf(length));
        const std::string out = copiedOut(source), room(length + 1, '#');
        // The room of a block for characters is one less than its memory.
        const Param target(to, room), second(to, room);
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

// The columns: from 'm'emory, 'c'haracters or a 'b'uffer; target format, its text, whose last byte
// is behind the capacity of a block of characters, source, length; the status, and where there is a
// change the format, the value and the memory. Memory is said to have 3 characters. What of the
// record does not belong to the value stays 0xCC, in a block its padding too.
TEST_F(ParamCopyIn, FillsWhatTheTargetIs) {
  nosSetCodePage(1252);
  const auto check = [this](const Row& row) {
    const std::uint32_t format = numberOf(row[1]), length = numberOf(row[4]);
    const Param target(format, row[2]);
    const bool isBlock = isAmong(format, {14, 34});
    auto block = target->getValue<DskStringBlock>();
    block.capacity -= 1;
    block.length = 77;
    if (format == 14) target->setValue(block);
    const std::vector<char> source = bytesOf(row[3]);
    const void* const bytes = source.data();
    Buffer buffer(row[3] == "_" ? "" : row[3]);
    auto* const record = reinterpret_cast<char*>(target.get());
    const bool hasPadding = isAmong(format, {14, 34, 51});
    if (hasPadding) std::fill_n(record + 28, 4, '\xCC');
    const std::string before = target.snapshot();
    const int status = row[0] == "c"   ? paramcpy(target, source.data(), length)
                       : row[0] == "b" ? paramcpy(target, buffer.get())
                                       : paramcpy(target, bytes, length, 3);
    EXPECT_EQ(lines() != "", status == 1000);
    if (target.snapshot() == before) return std::to_string(status);
    const auto after = target->getValue<StringUtf8Info>();
    EXPECT_TRUE(!isBlock || (after.byteLength == 0 && target->header.more == 0));
    EXPECT_TRUE(!isAmong(format, {1, 2, 4, 11, 51}) || target->header.more == 5);
    EXPECT_TRUE(!hasPadding || std::count(record + 28, record + 40, '\xCC') == 12);
    EXPECT_TRUE(!Param::isInline(format) || std::count(record + 10, record + 12, '\xCC') == 2);
    EXPECT_TRUE(format != 51 || (after.charLength == 3 && after.maximum == 4));
    return std::to_string(status) + ":" + std::to_string(target.format()) + ":" + target.word() +
           (isAmong(format, {1, 14, 34, 51}) ? ":" + wordOf(target.memory) : "");
  };
  expectRows(6, check, R"(
      m 1 #{8} abcdef| 3  0:1:abcdef:abcdef|#|   b 1 #{8} abc 3     0:1:abc:abc|####|
      m 1 ### _ 0         0:1:_:|##|             m 2 x x{512} 512   0:2:x{512}
      m 2 x x{513} 513    1035                   b 2 x x{512} 512   0:2:x{512}
      b 2 x x{513} 513    1035                   m 4 _ _ 4294967295 0:4:-1
      b 4 _ abc 3         0:4:3                  m 5 _ abc 3        0:33:abc
      c 5 _ abc 3         0:25:abc               b 5 _ abc 3        1000
      m 11 x x{512} 512   0:11:x{512}            m 11 x x{513} 513  1091
      b 11 x x{511} 511   0:11:x{511}            b 11 x x{512} 512  1091
      c 14 #{6} abc 3     0:14:abc:abc|##        m 14 ### abc 3     1035
      b 14 #{6}@5 abcde 5 0:14:_:|#####          c 14 #{9}@2 abcde 5 0:14:cde:cde|#####
      m 14 #{9}@6 abcde 5 1035                   b 34 #{9}@6 abcde 5 1091
      m 34 ## abc 3       1091                   c 34 #{5}@2 abcde 5 0:34:cde:cde##
      m 51 #### abc 3     0:51:abc:abc#          b 51 #### 4|||3|||ab~ 0 0:51:ab~:ab~
      c 51 #### abc 3     1000                   b 51 #### ^^^^3|||ab~ 0 1124
      b 51 #### 5|||3|||ab~ 0 1124               m 54 x ab~ 4       0:54:ab~/3
      c 54 x ^b^ 3        0:54:~b~/3             c 54 x _ 0         0:54:_/0
      c 54 x ^{63} 63     0:54:~{63}/63          c 54 x ^{64} 64    0:54:~{64}/64
      b 54 x 4|||3|||ab~ 0 0:54:ab~/3            b 54 x 5|||3|||ab~ 0 1124
      b 54 x 4||| 0       1124                   m 54 x abcd 4      0:54:abcd/3
      m 14 #{5}@2 abcde 5 1035                   m 34 ####@2 abcde 5 1091)");
  nosSetCodePage(0);
  Buffer none("");
  const Param target(25, "a");
  for (const std::uint32_t length : {0u, 21u}) {
    none.get()->length = length;
    EXPECT_EQ(paramcpy(none.get(), Param(25, "a")), 1035);
    EXPECT_EQ(paramcpy(none.get(), Param(51, "_")), 1124);
    EXPECT_EQ(paramcpy(Param(51, "a"), none.get()), 1124);
    EXPECT_EQ(paramcpy(target, none.get()), 0);
    EXPECT_EQ(target.word(), "_");
  }
}

TEST_F(ParamCopyIn, TakesTheHeapForLongTextsAloneAndGivesItBack) {
  for (const std::uint32_t length : {63u, 64u}) {
    const Param target(54, std::string(400, 'x'));
    nosFailAllocation(1);
    const int status = paramcpy(target, std::string(length, 'y').c_str(), length);
    nosFailAllocation(0);
    EXPECT_EQ(status, length == 63 ? 0 : 1448);
    EXPECT_EQ(target.word().front(), length == 63 ? 'y' : 'x');
  }
  const Param small(54, "abcd", 4);
  EXPECT_EQ(paramcpy(small, std::string(64, 'z').c_str(), 64), 1124);
  EXPECT_EQ(small.word(), "abcd/4");
}

// An operation on a parameter, the formats that it handles, and the codes that it sends to the
// data handler of each.
struct Operation {
  std::string log, handled, codes;
  std::function<int(DskParam*)> run;
};

TEST_F(ParamOperation, RefusesOtherFormatsAndPassesFailuresOnWithoutATrace) {
  char memory[32];
  unsigned byteLength = 0, charLength = 0, length = 0;
  unsigned char* place = nullptr;
  KoraString<char> characters;
  KoraString<unsigned char> bytes;
  Buffer room(std::string(32, '#')), content(std::string(8, '|'));
  // What the operations write, but the two lengths that a copy out sets before it asks for the
  // text.
  const auto outputs = [&] {
    return std::string(memory, 32) + std::to_string(length) + (place == nullptr ? "-" : "+") +
           wordOf(room.bytes) + characters.data() + std::to_string(bytes.length());
  };
  const void* const source = "abc";
  const std::string out = "1 2 6 11 14 25 33 34 36 51 54 ", in = "1 2 4 5 11 14 25 33 34 ";
  const std::string name = "paramcpy: invalid parameter", set = "25:18 33:34 54:66 ";
  const Operation operations[] = {
      {name, out, "25:20,17 33:36,33 54:64 ",
       [&](DskParam* p) { return paramcpy(memory, p, 32, byteLength, charLength); }},
      {"paramcpyTruncate: invalid parameter", out, "25:20,17 33:36,33 54:64 ",
       [&](DskParam* p) { return paramcpyTruncate(memory, p, 32); }},
      {"paramcpy(KoraString <-- DskParam): invalid parameter", "1 2 6 14 25 36 ", "25:24 ",
       [&](DskParam* p) { return paramcpy(characters, p); }},
      {"paramcpy(KoraBinary <-- DskParam): invalid parameter", "11 33 34 36 ", "33:39 ",
       [&](DskParam* p) { return paramcpy(bytes, p); }},
      {name, "1 2 11 14 25 33 34 36 51 54 ", "25:20,22 33:36,33 54:64,65(24) ",
       [&](DskParam* p) { return paramcpy(room.get(), p); }},
      {name, in + "51 54 ", "5:34 " + set, [&](DskParam* p) { return paramcpy(p, source, 3, 3); }},
      {name, in + "54 ", "5:18 " + set, [](DskParam* p) { return paramcpy(p, "abc", 3); }},
      {name, "1 2 4 11 14 25 33 34 51 54 ", set,
       [&](DskParam* p) { return paramcpy(p, content.get()); }},
      {"paramBytesLen: invalid parameter",
       "1 2 3 4 5 6 7 8 11 14 16 17 18 19 20 21 24 25 33 34 36 42 44 51 52 53 54 57 ",
       "25:20 33:36 54:68 ", [&](DskParam* p) { return paramBytesLen(p, &length); }},
      {"paramCharactersLen: invalid parameter", "1 2 5 6 14 25 36 51 54 ", "25:20 54:69 ",
       [&](DskParam* p) { return paramCharactersLen(p, &length); }},
      {"paramBytesPtr: invalid param", "1 2 11 14 25 33 34 51 54 ", "25:16 33:32 54:64 ",
       [&](DskParam* p) { return paramBytesPtr(p, &place); }},
  };
  for (const auto& [log, handled, codes, run] : operations) {
    std::string accepted, sent;
    for (unsigned format = 0; format <= 60; ++format) {
      const std::string number = std::to_string(format);
      unsigned calls = 0;
      for (unsigned failing = 0; failing <= calls; ++failing) {
        const Param param(format, "abcdefghi");
        if (format == 5 || param.isHeld()) param->setValue<DskDataHandler>(watchingHandler);
        std::fill_n(memory, 32, '#');
        length = 99;
        place = content.get()->data();
        room = Buffer(std::string(32, '#'));
        characters.setBytes("old", 3);
        bytes.setBytes("old", 3);
        const std::string before = param.snapshot() + outputs();
        codesSent.clear();
        callsUntilFailure = failing;
        const int status = run(param);
        callsUntilFailure = 0;
        EXPECT_EQ(lines(), status == 1000 ? log + " type (" + number + ")\n" : "");
        EXPECT_TRUE(status == 0 || param.snapshot() + outputs() == before) << log << format;
        EXPECT_TRUE(failing == 0 ? status == 0 || status == 1000 : status == 77) << log << format;
        if (failing != 0) continue;
        if (status == 0) accepted += number + " ";
        if (!codesSent.empty()) sent += number + ":" + codesSent.substr(1) + " ";
        calls = static_cast<unsigned>(std::count(codesSent.begin(), codesSent.end(), ','));
      }
      if (calls == 0) continue;
      const Param param(format, "abc");
      param->setValue<DskDataHandler>(nullptr);
      EXPECT_EQ(run(param), 1000);
      EXPECT_EQ(lines(), "");
      param->setValue<DskDataHandler>(koraDataHandler);
    }
    EXPECT_EQ(accepted, handled) << log;
    EXPECT_EQ(sent, codes) << log;
    EXPECT_EQ(run(nullptr), 1000);
    EXPECT_EQ(lines(), "");
  }
  for (const unsigned format : {25u, 33u}) {
    const Param cut(format, "abc");
    cut->setValue<DskDataHandler>(watchingHandler);
    callsUntilFailure = 2;
    EXPECT_EQ(paramcpyTruncate(memory, cut, 2), 77);
    callsUntilFailure = 0;
    EXPECT_EQ(paramcpy(static_cast<DskBuffer*>(nullptr), cut), 1000);
    EXPECT_EQ(paramcpy(cut, static_cast<const DskBuffer*>(nullptr)), 1000);
  }
}

}  // namespace
