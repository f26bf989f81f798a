// The command line: exit statuses, results and printed forms.
#include "commandline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace nomtool {
namespace {

using Outcome = std::tuple<int, std::string, std::string>;  // exit status, results, refusals

Outcome runTool(const std::string& line) {
  std::istringstream words(line);
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) arguments.push_back(word);
  std::ostringstream out, err;
  const int status = run(arguments, out, err);
  return {status, out.str(), err.str()};
}

const std::string kRefused = "Invalid parameter value (1002)\n";
const std::string kOverflow = "Result of expression overflows Decimal precision (1422)\n";

TEST(CommandLine, PrintsTheExactResultOrWhyThereIsNone) {
  const std::string quotientJson =
      "{\n  \"left\": \"200\",\n  \"operation\": \"/\",\n  \"right\": \"-3\",\n"
      "  \"result\": \"-66.66666666666666666666666\",\n  \"stored\": "
      "\"-66.66666666666666666667\"\n}\n";
  const std::pair<const char*, Outcome> kRows[] = {
      {"decimal 1.0 + 0", {0, "1.0\n", ""}},
      {"decimal -5 - -7.5", {0, "2.5\n", ""}},
      {"decimal 2.5 * -.2", {0, "-0.50\n", ""}},
      {"decimal -7.5 // 2", {0, "-3\n", ""}},
      {"decimal -7.5 % 2", {0, "-1.5\n", ""}},
      {"decimal 2.0 cmp 2", {0, "0\n", ""}},
      {"decimal 200 / 3",
       {0, "66.66666666666666666666666\n", "stored as 66.66666666666666666667\n"}},
      {"decimal 1 / 0.00", {1, "", "division by zero: " + kRefused}},
      {"decimal 1 % -0", {1, "", "division by zero: " + kRefused}},
      {"decimal 1e5 + x", {1, "", "\"1e5\": " + kRefused + "\"x\": " + kRefused}},
      {"decimal -99999999999999999999999 x 99999999999999999999999", {1, "", kOverflow}},
      {"decimal 1 ^ 2", {2, "", "nomtool: \"^\" is no operation; see --help\n"}},
      {"decimal 200 / -3 --json", {0, quotientJson, ""}},
      {"message 0 1002", {0, "0  No error\n1002  Invalid parameter value\n", ""}},
      {"message 42 1006", {1, "1006  Library not found\n", "42      Undefined message number\n"}},
      {"date 2460315",
       {0,
        "date     2460315\ntime     0\ntext     05 January 2024\nliteral  2024:01:05\n"
        "fixed    2024/01/05\nday      Friday\n",
        ""}},
      {"date x", {1, "", "x\n ^\nthe reader stops at offset 1: " + kRefused}},
      {"oid 110000000000000000084000",
       {0,
        "general    [2048.17 (t)]\nlong       [2048.17 (transient)]\n"
        "full       [2048.17.0.0.0 (t)]\nnewer      0002048.00000000000000000017 (t)\n"
        "older      02048.0000000017 (t)\nseparated  0002048_00000000000000000017 (t)\n",
        ""}},
      {"oid 1100", {1, "", "\"1100\": an identifier has 12, 18 or 22 bytes: " + kRefused}},
      {"param DSKTIMESTAMPOFFSET 2460315,50829042,-780",
       {0,
        "format  DSKTIMESTAMPOFFSET\nheader  39 00 00 00 00 00 00 00\n"
        "value   9b 8a 25 00 f2 96 07 03 f4 fc ff ff\ntext    05 January 2024, 14:07:09 +1300\n"
        "image   9b 8a 25 00 f2 96 07 03 f4 fc ff ff\n",
        ""}},
      {"param 33 deAD",
       {0,
        "format  DSKKORABINARY\nheader  21 00 00 00 00 00 00 00\nvalue   pointers\n"
        "text    de ad \nimage   de ad\n",
        ""}},
      {"param DSKCSTRING -1",
       {0,
        "format  DSKCSTRING\nheader  01 00 00 00 00 00 00 00\nvalue   pointers\n"
        "text    -1\nimage   2d 31\n",
        ""}},
      {"param 4 2147483648", {1, "", "\"2147483648\": " + kRefused}},
      {"param 9 x", {2, "", "nomtool: \"9\" is no format; see nomtool formats\n"}},
  };
  for (const auto& [line, outcome] : kRows) EXPECT_EQ(runTool(line), outcome) << line;
}

TEST(CommandLine, PrintsTheFormatsAndTheTypeTables) {
  const std::string text = std::get<1>(runTool("formats"));
  const std::string json = std::get<1>(runTool("formats --json"));
  for (const char* part :
       {"\n    25  DSKKORASTRING         String             string       24  yes    3\n",
        "\n    57  DSKTIMESTAMPOFFSET    TimestampOffset    fixed        12  yes    57\n",
        "\nTimestamp          -          -          -          -          -          -          "
        "Timestamp  Interval   Timestamp  -\n",
        "\"bytes\": 516,\n      \"fitsShortParam\": false,\n      \"asTypeNumber\": 11\n",
        "\"operation\": 4,\n      \"left\": 19,\n      \"right\": 21,\n      \"result\": 4\n"}) {
    EXPECT_NE((text + json).find(part), text.npos) << part << text << json;
  }
}

TEST(CommandLine, AnOutputThatCannotBeWrittenIsStatus2) {
  std::ostringstream out, err;
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
  const std::string out =
      ": 4 rows, 4 columns, 2 of them numeric; 13 values came through parameters\n"
      "column  count  missing  refused  smallest  largest      sum      mean\n"
      "price       2        1        1      -1.5    10.25     8.75    4.375\n"
      "caf\xC3\xA9        3        1        0       7    1000     1015     338.3333\n"
      "without figures: city, code (numbers in it: 1)\n";
  const std::string err = ":5: row 4, column 1 \"price\": \"n/a\": " + kRefused + _path +
                          ": refused rows: 0, refused fields: 1, rounded fields: 0\n";
  EXPECT_EQ(runTool("table -d ; " + _path), Outcome(1, _path + out, _path + err));
}

TEST_F(TableCommand, PrintsDecimalsInJsonAsText) {
  write("v\tn\n0.10\ta\n0.000000000000000000000001\tb\n7\n");
  const auto [status, out, err] = runTool("table --json --delimiter tab --column v " + _path);
  EXPECT_EQ(status, 1);
  std::string packed;
  std::copy_if(out.begin(), out.end(), std::back_inserter(packed), [](char c) { return c > ' '; });
  EXPECT_NE(
      packed.find(R"(","rows":3,"refusedRows":1,"carried":4,"columns":[{"name":"v","count":2,)"
                  R"("missing":0,"refused":0,"rounded":1,"smallest":"0.0000000000000000000000)"
                  R"(0","largest":"0.10","sum":"0.10000000000000000000000","mean":"0.05"}],)"
                  R"("withoutFigures":[{"name":"n","numbers":0}]})"),
      out.npos)
      << out;
}

TEST_F(TableCommand, AndAllOthersGiveStatus2ForWrongUsage) {
  write("v\n1\n");
  for (const char* words :
       {"", "tables", "table", "table no-such-file.csv", "table " NOMTOOL_DATA, "decimal 1 +",
        "decimal 1 + 2 3", "message", "message 12x", "message 4294967296", "message 1 --jsn",
        "table --delimiter ,, FILE", "table --delimiter \" FILE", "table --column v v FILE",
        "table --column w FILE"}) {
    std::string line = words;
    if (line.ends_with("FILE")) line.replace(line.size() - 4, 4, _path);
    const auto& [status, out, err] = runTool(line);
    EXPECT_TRUE(status == 2 && out.empty() && !err.empty()) << line << ": " << status << out;
  }
  EXPECT_EQ(std::get<0>(runTool("--help")), 0);
}

}  // namespace
}  // namespace nomtool
