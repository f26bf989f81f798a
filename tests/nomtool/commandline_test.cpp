// The command line: exit statuses, results and printed forms.
#include "commandline.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace nomtool {
namespace {

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome runTool(const std::string& line) {
  std::istringstream words(line);
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) arguments.push_back(word);
  std::ostringstream out;
  std::ostringstream err;
  const int status = run(arguments, out, err);
  return {status, out.str(), err.str()};
}

constexpr const char* kRefused = "Invalid parameter value (1002)\n";
constexpr const char* kOverflow = "Result of expression overflows Decimal precision (1422)\n";

TEST(DecimalCommand, PrintsTheExactResultOrWhyThereIsNone) {
  const struct {
    const char* line;
    int status;
    const char* out;
    std::string err;
  } cases[] = {
      {"0.1 + 0.02", 0, "0.12\n", ""},
      {"1.0 + 0", 0, "1.0\n", ""},
      {"-5 - -7.5", 0, "2.5\n", ""},
      {"2.5 x 0.2", 0, "0.50\n", ""},
      {"2.5 * -.2", 0, "-0.50\n", ""},
      {"1 / 3", 0, "0.33333333333333333333333\n", ""},
      {"-7.5 // 2", 0, "-3\n", ""},
      {"-7.5 % 2", 0, "-1.5\n", ""},
      {"2.0 cmp 2", 0, "0\n", ""},
      {"-1 cmp 0", 0, "-1\n", ""},
      {"200 / 3", 0, "66.66666666666666666666666\n", "stored as 66.66666666666666666667\n"},
      {"1 / 0.00", 1, "", std::string("division by zero: ") + kRefused},
      {"1 // 0", 1, "", std::string("division by zero: ") + kRefused},
      {"1 % -0", 1, "", std::string("division by zero: ") + kRefused},
      {"1e5 + x", 1, "", std::string("\"1e5\": ") + kRefused + "\"x\": " + kRefused},
      {"1.000000000000000000000001 + 1", 1, "",
       std::string("\"1.000000000000000000000001\": ") + kOverflow},
      {"99999999999999999999999 + 1", 1, "", kOverflow},
      {"-99999999999999999999999 x 99999999999999999999999", 1, "", kOverflow},
      {"1 ^ 2", 2, "", "nomtool: \"^\" is no operation; see --help\n"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = runTool(std::string("decimal ") + c.line);
    EXPECT_EQ(outcome.status, c.status) << c.line;
    EXPECT_EQ(outcome.out, c.out) << c.line;
    EXPECT_EQ(outcome.err, c.err) << c.line;
  }
  EXPECT_EQ(runTool("decimal 200 / -3 --json").out,
            "{\n  \"left\": \"200\",\n  \"operation\": \"/\",\n  \"right\": \"-3\",\n"
            "  \"result\": \"-66.66666666666666666666666\",\n"
            "  \"stored\": \"-66.66666666666666666667\"\n}\n");
}

TEST(MessageCommand, PrintsTextsAndRefusesUnknownNumbers) {
  const Outcome known = runTool("message 0 1002 5003");
  EXPECT_EQ(known.status, 0);
  EXPECT_EQ(known.out,
            "0  No error\n1002  Invalid parameter value\n5003  Requested file not found\n");
  const Outcome unknown = runTool("message 42 1002");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.out, "1002  Invalid parameter value\n");
  EXPECT_EQ(unknown.err, "42      Undefined message number\n");
  EXPECT_EQ(runTool("message --json 1422").out,
            "[\n  {\n    \"number\": 1422,\n    \"status\": 0,\n"
            "    \"text\": \"Result of expression overflows Decimal precision\"\n  }\n]\n");
}

TEST(CommandLine, WrongUsageIsStatus2) {
  for (const char* line :
       {"", "tables", "table", "table no-such-file.csv", "decimal 1 +", "decimal 1 + 2 3",
        "message", "message 12x", "message 4294967296", "message 1 --jsn"}) {
    const Outcome outcome = runTool(line);
    EXPECT_EQ(outcome.status, 2) << line;
    EXPECT_EQ(outcome.out, "") << line;
    EXPECT_NE(outcome.err, "") << line;
  }
  EXPECT_EQ(runTool("--help").status, 0);
  EXPECT_NE(runTool("table --help").out.find("Usage: nomtool table"), std::string::npos);
}

TEST(CommandLine, AnOutputThatCannotBeWrittenIsStatus2) {
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run({"message", "0"}, out, err), 2);
}

class TableCommand : public testing::Test {
 protected:
  void write(const char* text) const { std::ofstream(_path, std::ios::binary) << text; }
  const std::string _path =
      NOMUTIL_BINARY_DIR "/tablecommand_" +
      std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + ".csv";
};

TEST_F(TableCommand, AlignsPointsAndNamesWhatItLeavesOut) {
  write("price;caf\xC3\xA9;city;code\n-1.5;7;x;x\n10.25;;y;1\n;1000;z;x\nn/a;8;z;x\n");
  const Outcome outcome = runTool("table -d ; " + _path);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            _path +
                ": 4 rows, 4 columns, 2 of them numeric\n"
                "column  count  missing  refused  smallest  largest      sum      mean\n"
                "price       2        1        1      -1.5    10.25     8.75    4.375\n"
                "caf\xC3\xA9        3        1        0       7    1000     1015     338.3333\n"
                "without figures: city, code (numbers in it: 1)\n");
  EXPECT_EQ(outcome.err, _path + ":5: row 4, column 1 \"price\": \"n/a\": " + kRefused + _path +
                             ": refused rows: 0, refused fields: 1, rounded fields: 0\n");
}

TEST_F(TableCommand, PrintsDecimalsInJsonAsText) {
  write("v\tn\n0.10\ta\n0.000000000000000000000001\tb\n7\n");
  const Outcome outcome = runTool("table --json --delimiter tab --column v " + _path);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "{\n  \"file\": \"" + _path +
                "\",\n  \"rows\": 3,\n  \"refusedRows\": 1,\n  \"columns\": [\n    {\n"
                "      \"name\": \"v\",\n      \"count\": 2,\n      \"missing\": 0,\n"
                "      \"refused\": 0,\n      \"rounded\": 1,\n"
                "      \"smallest\": \"0.00000000000000000000000\",\n"
                "      \"largest\": \"0.10\",\n      \"sum\": \"0.10000000000000000000000\",\n"
                "      \"mean\": \"0.05\"\n    }\n  ],\n  \"withoutFigures\": [\n    {\n"
                "      \"name\": \"n\",\n      \"numbers\": 0\n    }\n  ]\n}\n");
}

TEST_F(TableCommand, WrongOptionsAreStatus2) {
  write("v\n1\n");
  EXPECT_EQ(runTool("table --delimiter ,, " + _path).status, 2);
  EXPECT_EQ(runTool("table --delimiter \" " + _path).status, 2);
  EXPECT_EQ(runTool("table --column v v " + _path).status, 2);
  EXPECT_EQ(runTool("table --column w " + _path).status, 2);
  EXPECT_EQ(runTool("table " NOMTOOL_DATA).status, 2);  // a directory
}

}  // namespace
}  // namespace nomtool
