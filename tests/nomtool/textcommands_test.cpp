// The commands over text: base64, plain, entities, number, and the line that shows progress.
#include "toolfiles.h"

#include "nomos/testhooks.h"
#include "progress.h"

#include "recorder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

namespace {

class Base64Command : public nomtest::ToolFiles {};
class PlainCommand : public nomtest::ToolFiles {};
class EntitiesCommand : public nomtest::ToolFiles {};
class NumberCommand : public nomtest::ToolFiles {};

constexpr std::size_t kDecodePiece = std::size_t{1} << 20;
constexpr std::size_t kPlainPiece = std::size_t{1} << 18;

std::string repeated(const std::string& text, std::size_t count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST_F(Base64Command, MakesTheTextsOfRfc4648AndReadsThem) {
  const std::pair<const char*, const char*> kRows[] = {{"", ""},
                                                       {"f", "Zg=="},
                                                       {"fo", "Zm8="},
                                                       {"foo", "Zm9v"},
                                                       {"foob", "Zm9vYg=="},
                                                       {"fooba", "Zm9vYmE="},
                                                       {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : kRows) {
    EXPECT_EQ(made("base64", bytes), text);
    EXPECT_EQ(made("base64 --decode", text), bytes);
  }
}

// "Man" is "TWFu", so that lines and pieces can be told by their length.
TEST_F(Base64Command, JoinsPiecesAsLinesAreJoined) {
  constexpr std::size_t kLines = 16384;
  const std::string line = repeated("TWFu", 19);
  for (const std::size_t lines : {kLines, 2 * kLines + 1}) {
    const std::string text = repeated(line + "\r\n", lines - 1) + line;
    const std::string bytes = repeated("Man", 19 * lines);
    EXPECT_TRUE(made("base64", bytes) == text) << lines;
    EXPECT_TRUE(made("base64", bytes + "M") == text + "\r\nTQ==") << lines;
    EXPECT_TRUE(made("base64 --one-line", bytes) == repeated("TWFu", 19 * lines)) << lines;
    EXPECT_TRUE(made("base64 -d", text) == bytes) << lines;
  }
}

TEST_F(Base64Command, DecodesGroupsAndPaddingAcrossPieces) {
  for (std::size_t before = 1; before < 9; ++before) {
    const std::string junk(kDecodePiece - before, '\n');
    EXPECT_EQ(made("base64 -d", junk + "TWFuTWE=TWFu"), "ManMa") << before;
    EXPECT_EQ(made("base64 -d", junk + "T W F u T Q=="), "ManM") << before;
    EXPECT_EQ(made("base64 -d", "TWF" + junk + "uTQ==x"), "ManM") << before;
    EXPECT_EQ(made("base64 -d", "T" + junk + "Q" + junk + "==x"), "M") << before;
  }
}

TEST_F(Base64Command, SaysWhereTheLastGroupIsWrong) {
  const std::string wrong =
      ": the last group is not padded as it should be: Base64 Decoding failed (1420)\n";
  const std::string junk(kDecodePiece - 5, '\n');
  const std::pair<std::string, const char*> kRows[] = {{"TQ=", "0"},
                                                       {"TWFu TWF", "5"},
                                                       {"TWFuT==", "4"},
                                                       {"TWFu" + junk + "TQ= =", "1048575"},
                                                       {"TW" + junk + "F", "0"},
                                                       {junk + junk + "TWFu T W ", "2097147"}};
  for (const auto& [text, offset] : kRows) {
    EXPECT_EQ(refusal("base64 -d", text), offset + wrong);
  }
}

TEST_F(Base64Command, MayReplaceItsInput) {
  write("in", "foobar");
  EXPECT_EQ(runTool("base64 @in --output @in"), Outcome(0, "", ""));
  EXPECT_EQ(read("in"), "Zm9vYmFy");
}

TEST_F(Base64Command, KeepsEveryByteOfThePipes) {
  const std::string bytes("\r\n\n\x1A\0\xFF", 6);  // printf '\r\n\n\x1a\0\xff' | base64
  EXPECT_EQ(piped("base64", bytes), "DQoKGgD/");
  EXPECT_EQ(piped("base64 -d -", "DQoKGgD/"), bytes);
}

TEST_F(PlainCommand, NamesCharactersOrEscapesMarkup) {
  const std::string text = "caf\xC3\xA9 & <\xE2\x82\xAC>;\r\n\xF0\x9F\x98\x80";
  EXPECT_EQ(made("plain", text), "caf&eacute; &amp; <&euro;>&semi;\r\n&#x1F600;");
  EXPECT_EQ(made("plain --markup", text), "caf&#xE9; &amp; &lt;&#x20AC;&gt;;&#x0D;&#x0A;&#x1F600;");
  EXPECT_EQ(piped("plain", "\r\n\n"), "\r\n\n");
}

TEST_F(PlainCommand, ReadsCharactersAcrossPieces) {
  const std::pair<const char*, const char*> kRows[] = {
      {"\xC3\xA9", "&eacute;"}, {"\xE2\x82\xAC", "&euro;"}, {"\xF0\x9F\x98\x80", "&#x1F600;"}};
  for (const auto& [character, plain] : kRows) {
    for (std::size_t before = 0; before < 5; ++before) {
      const std::string text(kPlainPiece - before, 'x');
      EXPECT_TRUE(made("plain", text + character + "y") == text + plain + "y") << plain << before;
    }
  }
}

TEST_F(PlainCommand, SaysWhereTheTextIsNoUtf8) {
  const std::pair<std::string, const char*> kRows[] = {
      {"ab\xC3(", "2"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFF", "9"},
      {std::string(kPlainPiece - 1, 'x') + "\xE2\x82", "262143"},
      {std::string(kPlainPiece + 5, '\n') + "\xA9", "262149"}};
  for (const auto& [text, offset] : kRows) {
    EXPECT_EQ(refusal("plain", text),
              std::string(offset) + ": malformed UTF-8: Invalid parameter value (1002)\n");
  }
}

TEST_F(EntitiesCommand, ShowsNamesAndCodePoints) {
  const std::pair<const char*, Outcome> kRows[] = {
      {"entities eacute",
       {0, "eacute                  233  latin small letter e with acute\n", ""}},
      {"entities U+20AC 9",
       {0,
        "euro                   8364  euro sign\n"
        "tab                       9  horizontal tabulation\n",
        ""}},
      {"entities AMP 300",
       {1, "",
        "\"AMP\": no such entity: Invalid parameter value (1002)\n"
        "\"300\": no such entity: Invalid parameter value (1002)\n"}},
      {"entities --json amp",
       {0,
        "[\n  {\n    \"name\": \"amp\",\n    \"codePoint\": 38,\n"
        "    \"description\": \"ampersand\"\n  }\n]\n",
        ""}}};
  for (const auto& [line, outcome] : kRows) EXPECT_EQ(runTool(line), outcome) << line;
  const std::string all = std::get<1>(runTool("entities"));
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 289);
  EXPECT_EQ(all.rfind("ReplacementCharacter  65533  Object replacement character\n"),
            all.size() - 58);
}

TEST_F(NumberCommand, ShowsTheBestReading) {
  nomtest::Recorder log;
  const std::string table =
      "  text                 value                metric  digits\n"
      "   10K                 10240                   10K       5\n"
      "  1.5M               1048576                    1M       7\n"
      "20000P  18446744073709551615  18446744073709551615      20\n"
      "    5X                     5                     5       1\n";
  const std::string refusals =
      "\"1.5M\": taken as 1048576: Invalid parameter value (1002)\n"
      "\"5X\": taken as 5: Invalid parameter value (1002)\n";
  EXPECT_EQ(runTool("number 10K 1.5M 20000P 5X"), Outcome(1, table, refusals));
  EXPECT_EQ(log.takeLines().size(), 2u);
  EXPECT_EQ(std::get<1>(runTool("number --json 1024P")),
            "[\n  {\n    \"text\": \"1024P\",\n    \"value\": 1152921504606846976,\n"
            "    \"metric\": \"1024P\",\n    \"digits\": 19,\n    \"status\": 0\n  }\n]\n");
}

TEST(ProgressLine, ShowsThreeDigitsAndWhatIsKnown) {
  constexpr std::uint64_t kMebi = 1 << 20;
  const std::string half = std::string(18, '#') + std::string(18, ' ');
  const std::tuple<std::uint64_t, std::optional<std::uint64_t>, std::int64_t, std::string> kRows[] =
      {{0, std::nullopt, 0, "0 B  0 B/s"},
       {999, std::nullopt, 1000, "999 B  999 B/s"},
       {1000, std::nullopt, 2000, "0.98 KiB  500 B/s"},
       {kMebi * 1024 - 1, std::nullopt, 1000, "1.00 GiB  1.00 GiB/s"},
       {150 * kMebi, 300 * kMebi, 12000, "150 MiB of 300 MiB   50% [" + half + "]  12.5 MiB/s"},
       {7 * kMebi, 5 * kMebi, 1000,
        "7.00 MiB of 5.00 MiB  100% [" + std::string(36, '#') + "]  7.00 MiB/s"}};
  for (const auto& [done, total, millis, line] : kRows) {
    EXPECT_EQ(nomtool::progressLine(done, total, millis), line);
  }
}

std::int64_t stillTime = 0;

TEST(Progress, IsWrittenTenTimesASecondAndWipedOut) {
  nosSetRelativeClock([]() noexcept { return stillTime; });
  std::ostringstream shown, hidden;
  {
    nomtool::Progress progress(shown, std::nullopt, true), silent(hidden, 5, false);
    for (const std::int64_t millis : {499, 500, 599, 600}) {
      stillTime = millis;
      progress.advance(300);
      silent.advance(300);
    }
  }
  nosSetRelativeClock(nullptr);
  EXPECT_EQ(shown.str(),
            "\r600 B  1.17 KiB/s\r1.17 KiB  1.95 KiB/s\r" + std::string(20, ' ') + "\r");
  EXPECT_EQ(hidden.str(), "");
}

}  // namespace
