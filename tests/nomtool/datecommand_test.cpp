// nomtool date with texts: the value in every form, or where the text is wrong, in English and in
// locales.
#include "commandline.h"

#include "nomos/locale.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace nomtool {
namespace {

using Outcome = std::tuple<int, std::string, std::string>;  // exit status, results, refusals

Outcome dateOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "date");
  std::ostringstream out, err;
  const int status = run(arguments, out, err);
  return {status, out.str(), err.str()};
}

const std::string kChristmas =
    "date     2460304\ntime     81015500\ntext     25 December 2023, 22:30:15\n"
    "literal  2023:12:25:22:30:15.500\nfixed    2023/12/25\nelapsed  22:30:15.500\nday      "
    "Monday\n";

TEST(DateCommand, ShowsTheValueOfATextInEveryForm) {
  const std::vector<std::string> kRows[] = {
      {"Dec 25, 2023 10:30:15.5 pm"},
      {"25/12/2023 22:30:15.5", "--locale", "en-GB"},
      {"12/25/2023 22:30:15.5", "-l", "1033"},
      {"Montag, 25. Dezember 2023 22:30:15.5", "--locale", "de-DE"},
      {"25/12/2566 22:30:15.5", "--locale", "th-TH"},
  };
  const unsigned before = nosGetThreadLocale();
  for (const auto& row : kRows) EXPECT_EQ(dateOf(row), Outcome(0, kChristmas, "")) << row[0];
  EXPECT_EQ(nosGetThreadLocale(), before);
  const std::string json = std::get<1>(dateOf({"2023-12-25", "--json"}));
  EXPECT_NE(json.find("\"literal\": \"2023:12:25:00:00:00\""), json.npos) << json;
}

// The text is on a line of its own, and the mark under its fault.
TEST(DateCommand, MarksWhereTheReaderOfATextStops) {
  struct Row {
    std::vector<std::string> arguments;
    std::string line;
    std::size_t column;
    std::string offset;
  };
  const Row kRows[] = {
      {{"Sept 5 2023"}, "Sept 5 2023", 4, "4"},
      {{"25/12/2023\t10:60"}, "25/12/2023?10:60", 16, "16"},
      {{"25/12/2023 at 10"}, "25/12/2023 at 10", 11, "11"},
      {{std::string(60, ' ') + "x"}, "..." + std::string(49, ' ') + "x", 53, "61"},
      {{"25. Dezembers 2023", "-l", "de-DE"}, "25. Dezembers 2023", 4, "4"},
      {{"5 juin\xC3\xA9 2023", "-l", "fr-FR"}, "5 juin\xC3\xA9 2023", 2, "2"},
      {{"12/25/2023 1:00 \xC3\xA9", "-l", "en-US"}, "12/25/2023 1:00 \xC3\xA9", 16, "16"},
  };
  for (const Row& row : kRows) {
    const std::string refusal = row.line + '\n' + std::string(row.column, ' ') +
                                "^\nthe reader stops at offset " + row.offset +
                                ": Invalid parameter value (1002)\n";
    EXPECT_EQ(dateOf(row.arguments), Outcome(1, "", refusal)) << row.line;
  }
  EXPECT_EQ(dateOf({"1", "--locale", "xx-nowhere"}),
            Outcome(2, "", "nomtool: \"xx-nowhere\" is no locale of this system\n"));
}

}  // namespace
}  // namespace nomtool
