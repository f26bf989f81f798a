// Copies out of parameters and into them, their lengths and places. Targets are blocks of the heap
// that hold '#' where nothing was written; a word of a table leaves out a target that is as it was.

#include "exactparam.h"

#include <functional>

using namespace nomtest;

namespace {

std::string result(int status, const std::vector<char>& target) {
  const std::string word = wordOf(target);
  const bool isTouched = word.find_first_not_of("#_") != std::string::npos;
  return std::to_string(status) + (isTouched ? ":" + word : "");
}

// The columns: format, text, offset, size of the target; the copy with its two lengths, and what
// is cut.
TEST(ParamCopyOut, NeedsRoomForTheValueOrCutsIt) {
  const auto check = [](const Row& row) {
    const Param source(numberOf(row[0]), row[1], numberOf(row[2]));
    const std::uint32_t size = numberOf(row[3]);
    std::vector<char> target(size, '#'), cut(size, '#');
    unsigned bytes = 77, characters = 77;
    const int status = paramcpy(target.data(), source, size, bytes, characters);
    const int cutStatus = paramcpyTruncate(cut.data(), source, size);
    return std::to_string(bytes) + "/" + std::to_string(characters) + "=" + result(status, target) +
           "," + result(cutStatus, cut);
  };
  expectRows(5, check, R"(
      1 abc 0 4  3/3=0:abc|,0:abc|        1 abc 0 3  3/3=1035,1035:ab|
      1 abc 0 6  3/3=0:abc|##,0:abc|##    1 abc 0 1  3/3=1035,1035:|
      1 abc 0 0  3/3=1035,1035            1 _   0 0  0/0=1035,1035
      1 _   0 1  0/0=0:|,0:|              2 x{10} 0 10 10/10=1035,1035:x{9}|
      2 x{10} 0 11 10/10=0:x{10}|,0:x{10}| 2 x{10} 0 5 10/10=1035,1035:xxxx|
      2 _   0 0  0/0=1035,1035            2 x{512} 0 513 512/512=0:x{512}|,0:x{512}|
      6 a   0 2  1/1=0:a|,0:a|            6 a   0 1  1/1=1035,1035
      6 a   0 0  1/1=1035,1035            6 a   0 3  1/1=0:a|#,0:a|#
      11 abc 0 3 3/3=0:abc,0:abc          11 abc 0 2 3/3=1091,1091:ab
      11 abc 0 0 3/3=1091,1091            11 _  0 0  0/0=0,0
      14 abc 5 9 3/3=0:#####abc|,0:#####abc|  14 abc 5 8 3/3=1035,1035:#####ab|
      14 abc 5 6 3/3=1035,1035:#####|     14 abc 9 6 3/3=1035,1035:#####|
      14 abc 5 1 3/3=1035,1035            14 abc 0 0 3/3=1035,1035
      14 _   0 1 0/0=0:|,1035             14 _   2 4 0/0=0:##|#,0:##|#
      14 _   0 0 0/0=1035,1035            14 x{10} 100 111 10/10=0:#{100}x{10}|,0:#{100}x{10}|
      14 x{10} 100 50 10/10=1035,1035:#{49}|  14 x{10} 100 110 10/10=1035,1035:#{100}x{9}|
      14 x{17} 4294967280 16 17/17=1035,1035:#{15}|
      34 abc 5 8 3/3=0:#####abc,0:#####abc  34 abc 5 7 3/3=1091,1091:#####ab
      34 abc 5 5 3/3=1091,1091            34 abc 9 5 3/3=1091,1091
      34 _   9 5 0/0=1091,1091            34 _   0 0 0/0=0,0
      34 x{17} 4294967280 16 17/17=1091,1091
      25 abc 0 4 3/3=0:abc|,0:abc|        25 abc 0 3 3/3=1035,1035:ab|
      25 abc 0 0 3/3=1035,1035            25 _   0 0 0/0=1035,1035
      33 abc 0 3 3/3=0:abc,0:abc          33 abc 0 2 3/3=1091,1091:ab
      33 abc 0 0 3/3=1091,1091            33 _   0 0 0/0=0,0
      36 _   0 0 0/0=0,0                  36 abc 0 3 0/0=0,0
      51 ab~ 0 4 4/3=0:ab~,0:ab~          51 ab~ 0 2 4/3=1124,1124:ab
      51 ab~ 0 0 4/3=1124,1124            51 _   0 0 0/0=0,0
      54 ab~ 0 4 4/3=0:ab~,0:ab~          54 ab~ 0 2 4/3=1124,1124:ab
      54 ab~ 0 0 4/3=1124,1124            54 _   0 0 0/0=0,0)");
}

// The columns: format, text, offset, room; what became of it.
TEST(ParamCopyOut, FillsTheRoomOfABufferAndKeepsItsHeader) {
  const auto check = [](const Row& row) {
    const Param source(numberOf(row[0]), row[1], numberOf(row[2]));
    Buffer buffer(row[3] == "0" ? "" : std::string(numberOf(row[3]), '#'));
    const std::vector<char> header(buffer.bytes.begin(), buffer.bytes.begin() + 72);
    const int status = paramcpy(buffer.get(), source);
    EXPECT_TRUE(std::equal(header.begin(), header.end(), buffer.bytes.begin()));
    return result(status, {buffer.bytes.begin() + 72, buffer.bytes.end()});
  };
  expectRows(5, check, R"(
      1  abc 0 3 0:abc   1  abc 0 2 1035  2  abc 0 3 0:abc   2  abc 0 2 1035  1 abc 0 4 0:abc#
      14 abc 1 4 0:#abc  14 abc 1 3 1035  14 x{17} 4294967280 9 1035  14 _ 0 0 0
      25 abc 0 3 0:abc   25 abc 0 2 1035  11 abc 0 3 0:abc   11 abc 0 2 1091  25 abc 0 4 0:abc#
      34 abc 1 4 0:#abc  34 abc 1 3 1091  34 x{17} 4294967280 9 1091  34 _ 0 0 0
      33 abc 0 3 0:abc   33 abc 0 2 1091  36 abc 0 0 0       36 abc 0 3 0
      51 ab~ 0 12 0:4|||3|||ab~  51 ab~ 0 11 1124  51 _ 0 7 1124  51 _ 0 8 0:|{8}
      54 ab~ 0 13 0:4|||3|||ab~# 54 ab~ 0 12 0:4|||3|||ab~  54 ab~ 0 11 1124  54 _ 0 7 1124)");
  for (const std::uint32_t length : {0u, 21u}) {
    Buffer none("");
    none.get()->length = length;
    const Param target(25, "a");
    EXPECT_EQ(paramcpy(none.get(), target), 1035);
    EXPECT_EQ(paramcpy(none.get(), Param(51, "_")), 1124);
    EXPECT_EQ(paramcpy(Param(51, "a"), none.get()), 1124);
    EXPECT_EQ(paramcpy(target, none.get()), 0);
    EXPECT_EQ(target.word(), "_");
  }
}

// The columns: format, text, offset; what becomes of a string of characters and of one of bytes.
TEST(ParamCopyOut, ReplacesStringsUpToTheirMaximum) {
  Recorder recorder;
  const auto check = [](const Row& row) {
    const Param source(numberOf(row[0]), row[1], numberOf(row[2]));
    KoraString<char> characters("old", 3, 4);
    KoraString<unsigned char> bytes(reinterpret_cast<const unsigned char*>("old"), 3, 4);
    const int status = paramcpy(characters, source), bytesStatus = paramcpy(bytes, source);
    const auto word = [](const KoraBytes& string) {
      return wordOf(std::string(static_cast<const char*>(string.bytes()), string.length()));
    };
    return std::to_string(status) + word(characters) + "," + std::to_string(bytesStatus) +
           word(bytes);
  };
  expectRows(4, check, R"(
      1 abc 0 0abc,1000old  2 abc 0 0abc,1000old  6 a 0 0a,1000old     14 abc 5 0abc,1000old
      25 abc 0 0abc,1000old 36 _ 0 0_,0_          11 abc 0 1000old,0abc 33 abc 0 1000old,0abc
      34 abc 5 1000old,0abc 51 abc 0 1000old,1000old  54 abc 0 1000old,1000old
      25 abcde 0 1035old,1000old  1 abcde 0 1035old,1000old  34 abcde 0 1000old,1091old)");
  const Param own(25, "abcdef");
  EXPECT_EQ(paramcpy(*static_cast<KoraString<char>*>(own.held()), own), 0);
  EXPECT_EQ(own.word(), "abcdef");
}

// The columns: from 'm'emory, 'c'haracters or a 'b'uffer; target format, its text, whose last byte
// is behind the capacity of a block of characters, offset, source, length; the status, and where
// there is a change the format, the value and the memory. Memory is said to have 3 characters.
TEST(ParamCopyIn, FillsWhatTheTargetIs) {
  Recorder recorder;
  nosSetCodePage(1252);
  const auto check = [](const Row& row) {
    const std::uint32_t format = numberOf(row[1]), length = numberOf(row[5]);
    const Param target(format, row[2], numberOf(row[3]));
    auto* const data = target.memory.data();
    const auto last = static_cast<std::uint32_t>(target.memory.size()) - 1;
    if (format == 14) target->setValue(DskStringBlock{data, numberOf(row[3]), 77, last});
    const std::vector<char> source = bytesOf(row[4]);
    const void* const bytes = source.data();
    Buffer buffer(row[4] == "_" ? "" : row[4]);
    const std::string before = target.snapshot();
    const int status = row[0] == "c"   ? paramcpy(target, source.data(), length)
                       : row[0] == "b" ? paramcpy(target, buffer.get())
                                       : paramcpy(target, bytes, length, 3);
    if (target.snapshot() == before) return std::to_string(status);
    const auto block = target->getValue<StringUtf8Info>();
    const bool isBlock = isAmong(format, {14, 34});
    EXPECT_TRUE(!isBlock || (block.byteLength == 0 && target->header.more == 0));
    EXPECT_TRUE(format != 51 || (block.charLength == 3 && block.maximum == 4));
    return std::to_string(status) + ":" + std::to_string(target.format()) + ":" + target.word() +
           (isAmong(format, {1, 14, 34, 51}) ? ":" + wordOf(target.memory) : "");
  };
  expectRows(7, check, R"(
      m 1 #{8} 0 abcdef| 3   0:1:abcdef:abcdef|#|  c 1 #{8} 0 abcdef| 3 0:1:abcdef:abcdef|#|
      b 1 #{8} 0 abc 3       0:1:abc:abc|####|     m 1 ### 0 _ 0        0:1:_:|##|
      m 2 x 0 abc 3          0:2:abc               c 2 x 0 abc 3        0:2:abc
      m 2 x 0 x{512} 512     0:2:x{512}            m 2 x 0 x{513} 513   1035
      b 2 x 0 x{512} 512     0:2:x{512}            b 2 x 0 x{513} 513   1035
      m 4 _ 0 _ 7            0:4:7                 c 4 _ 0 _ 7          0:4:7
      b 4 _ 0 abc 3          0:4:3                 m 4 _ 0 _ 4294967295 0:4:-1
      m 5 _ 0 abc 3          0:33:abc              c 5 _ 0 abc 3        0:25:abc
      b 5 _ 0 abc 3          1000                  m 25 x 0 abc 3       0:25:abc
      c 25 x 0 abc 3         0:25:abc              b 25 x 0 abc 3       0:25:abc
      m 33 x 0 abc 3         0:33:abc              c 33 x 0 abc 3       0:33:abc
      b 33 x 0 abc 3         0:33:abc              m 11 x 0 x{512} 512  0:11:x{512}
      m 11 x 0 x{513} 513    1091                  b 11 x 0 x{511} 511  0:11:x{511}
      b 11 x 0 x{512} 512    1091                  c 11 x 0 x{512} 512  0:11:x{512}
      m 14 #{6} 0 abc 3      0:14:abc:abc|##       m 14 #{4} 0 abc 3    0:14:abc:abc|
      m 14 ### 0 abc 3       1035                  c 14 #{9} 2 abcde 5  0:14:cde:cde|#####
      b 14 #{6} 5 abcde 5    0:14:_:|#####         m 14 #{9} 6 abcde 5  1035
      c 14 ### 0 abc 3       1035                  b 14 ### 0 abc 3     1035
      m 34 ### 0 abc 3       0:34:abc:abc          m 34 ## 0 abc 3      1091
      c 34 #{5} 2 abcde 5    0:34:cde:cde##        b 34 #{9} 6 abcde 5  1091
      m 51 #### 0 ab~ 4      0:51:ab~:ab~          c 51 #### 0 abc 3    1000
      b 51 #### 0 4|||3|||ab~ 0 0:51:ab~:ab~       m 51 #### 0 abc 3    0:51:abc:abc#
      b 51 #### 0 5|||3|||ab~ 0 1124               b 51 #### 0 ^^^^3|||ab~ 0 1124
      m 54 x 0 ab~ 4         0:54:ab~/3            c 54 x 0 ^b^ 3       0:54:~b~/3
      b 54 x 0 4|||3|||ab~ 0 0:54:ab~/3            b 54 x 0 5|||3|||ab~ 0 1124
      c 54 x 0 ^{63} 63      0:54:~{63}/63         c 54 x 0 ^{64} 64    0:54:~{64}/64
      c 54 x 0 _ 0           0:54:_/0              b 54 x 0 4||| 0      1124)");
  nosSetCodePage(0);
}

TEST(ParamCopyIn, TakesTheHeapForLongTextsAloneAndGivesItBack) {
  for (const std::uint32_t length : {63u, 64u}) {
    const Param target(54, std::string(400, 'x'));
    const std::uint64_t blocks = nosAllocatedBlocks();
    nosFailAllocation(1);
    const int status = paramcpy(target, std::string(length, 'y').c_str(), length);
    nosFailAllocation(0);
    EXPECT_EQ(status, length == 63 ? 0 : 1448);
    EXPECT_EQ(target.word().front(), length == 63 ? 'y' : 'x');
    EXPECT_EQ(paramcpy(target, std::string(length, 'z').c_str(), length), 0);
    EXPECT_EQ(nosAllocatedBlocks(), blocks);
  }
  const Param small(54, "abcd", 0, 4);
  const std::uint64_t blocks = nosAllocatedBlocks();
  EXPECT_EQ(paramcpy(small, std::string(64, 'z').c_str(), 64), 1124);
  EXPECT_EQ(small.word(), "abcd/4");
  EXPECT_EQ(nosAllocatedBlocks(), blocks);
}

// The columns: format, text, offset; length in bytes and in characters, place of the bytes: 'i'
// inline, 't' the text elsewhere; '-' for what the format has not.
TEST(ParamLength, AndPlaceFollowTheFormat) {
  Recorder recorder;
  const auto check = [](const Row& row) {
    const Param param(numberOf(row[0]), row[1], numberOf(row[2]));
    unsigned bytes = 0, characters = 0;
    unsigned char* place = nullptr;
    const void* text = param.memory.data();
    if (param.isHeld()) text = param.held()->bytes();
    std::string word = paramBytesLen(param, &bytes) == 0 ? std::to_string(bytes) : "-";
    const bool isCounted = paramCharactersLen(param, &characters) == 0;
    word += "," + (isCounted ? std::to_string(characters) : "-");
    if (paramBytesPtr(param, &place) != 0) return word + ",-";
    const bool isInline = place == reinterpret_cast<unsigned char*>(param.get()) + 12;
    return word + (isInline ? ",i" : place == text ? ",t" : ",?");
  };
  expectRows(4, check, R"(
      1 abc 0 3,3,t   2 abc 0 3,3,i   3 abc 0 22,-,-  4 abc 0 4,-,-   5 _ 0 0,0,-   6 a 0 1,1,-
      7 abc 0 1,-,-   8 abc 0 8,-,-   11 abc 0 3,-,i  14 abc 5 8,8,t  15 a 0 -,-,-  16 a 0 4,-,-
      17 abc 0 4,-,-  18 abc 0 8,-,-  19 abc 0 16,-,- 20 abc 0 4,-,-  21 a 0 8,-,-  24 a 0 12,-,-
      25 abc 0 3,3,t  33 abc 0 3,-,t  34 abc 5 8,-,t  36 abc 0 0,0,-  42 a 0 8,-,-  44 a 0 12,-,-
      51 ab~ 0 4,3,t  52 abc 0 1,-,-  53 abc 0 8,-,-  54 ab~ 0 4,3,t  57 a 0 12,-,- 45 a 0 -,-,-)");
}

std::string codesSent;
unsigned callsUntilFailure = 0;

// The library's data handler behind a list of its calls, of which one may fail.
int watchingHandler(std::uint8_t code, DskParam* parameter, void* argument, std::uint32_t* count) {
  codesSent += "," + std::to_string(code);
  return --callsUntilFailure == 0 ? 77 : koraDataHandler(code, parameter, argument, count);
}

// An operation on a parameter, the formats that it handles, and the codes that it sends to the
// data handler of each.
struct Operation {
  std::string log, handled, codes;
  std::function<int(DskParam*)> run;
};

TEST(ParamOperation, RefusesOtherFormatsAndPassesFailuresOnWithoutATrace) {
  Recorder recorder;
  char memory[32];
  unsigned length = 0, other = 0;
  unsigned char* place = nullptr;
  KoraString<char> characters;
  KoraString<unsigned char> bytes;
  Buffer room(std::string(32, '#')), content(std::string(8, '|'));
  const void* const source = "abc";
  const std::string out = "1 2 6 11 14 25 33 34 36 51 54 ", in = "1 2 4 5 11 14 25 33 34 ";
  const std::string name = "paramcpy: invalid parameter", set = "25:18 33:34 54:66 ";
  const Operation operations[] = {
      {name, out, "25:20,17 33:36,33 54:64 ",
       [&](DskParam* p) { return paramcpy(memory, p, 32, length, other); }},
      {"paramcpyTruncate: invalid parameter", out, "25:20,17 33:36,33 54:64 ",
       [&](DskParam* p) { return paramcpyTruncate(memory, p, 32); }},
      {"paramcpy(KoraString <-- DskParam): invalid parameter", "1 2 6 14 25 36 ", "25:24 ",
       [&](DskParam* p) { return paramcpy(characters, p); }},
      {"paramcpy(KoraBinary <-- DskParam): invalid parameter", "11 33 34 36 ", "33:39 ",
       [&](DskParam* p) { return paramcpy(bytes, p); }},
      {name, "1 2 11 14 25 33 34 36 51 54 ", "25:20,22 33:36,33 54:64,65 ",
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
      for (unsigned failing = 0, calls = 0; failing <= calls; ++failing) {
        const Param param(format, "abcdefghi");
        if (format == 5 || param.isHeld()) param->setValue<DskDataHandler>(watchingHandler);
        const std::string before = param.snapshot();
        codesSent.clear();
        callsUntilFailure = failing;
        const int status = run(param);
        callsUntilFailure = 0;
        EXPECT_EQ(linesOf(recorder), status == 1000 ? log + " type (" + number + ")\n" : "");
        EXPECT_TRUE(status == 0 || param.snapshot() == before) << log << format;
        EXPECT_TRUE(failing == 0 ? status == 0 || status == 1000 : status == 77) << log << format;
        if (failing != 0) continue;
        if (status == 0) accepted += number + " ";
        if (!codesSent.empty()) sent += number + ":" + codesSent.substr(1) + " ";
        calls = static_cast<unsigned>(std::count(codesSent.begin(), codesSent.end(), ','));
      }
    }
    EXPECT_EQ(accepted, handled) << log;
    EXPECT_EQ(sent, codes) << log;
    EXPECT_EQ(run(nullptr), 1000);
    EXPECT_EQ(linesOf(recorder), "");
  }
}

}  // namespace
