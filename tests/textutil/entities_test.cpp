// The entity table, its look-ups and plain text.

#include "nomos/testhooks.h"
#include "sys/messages.h"
#include "sys/textutil.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

// Name, code point, description.
using Row = std::tuple<std::string, int, std::string>;

std::string dump(std::uint32_t size) {
  std::vector<char> buffer(size);
  const std::uint32_t written = dumpCharEntityTable(buffer.data(), size);
  EXPECT_EQ(buffer.at(written), '\0');
  return std::string(buffer.data(), written);
}

std::vector<Row> readTable() {
  std::istringstream lines(dump(dumpCharEntityTable(nullptr, 0)));
  std::vector<Row> rows;
  std::string name, codePoint, description;
  while (std::getline(lines, name, '\t') && std::getline(lines, codePoint, '\t') &&
         std::getline(lines, description, '\r') && lines.get() == '\n') {
    rows.push_back({name, std::stoi(codePoint), description});
  }
  return rows;
}

// python3 -c 'from html.entities import name2codepoint as n; print(len(n), sum(n.values()))'
// prints 252 868242; the 37 rows beside them sum to 300790.
TEST(CharEntities, AreThoseOfHtmlAndOurs) {
  const std::vector<Row> rows = readTable();
  ASSERT_EQ(rows.size(), 252u + 37);
  int sum = 0;
  for (const auto& [name, codePoint, description] : rows) {
    sum += codePoint;
    EXPECT_EQ(description.find("U+"), std::string::npos) << name;
  }
  EXPECT_EQ(sum, 868242 + 300790);
  const std::pair<std::size_t, Row> kRows[] = {
      {0, {"nbsp", 160, "no-break space = non-breaking space"}},
      {88, {"oslash", 248, "latin small letter o with stroke, = latin small letter o slash"}},
      {95, {"yuml", 255, "latin small letter y with diaeresis"}},
      {96, {"fnof", 402, "latin small f with hook = function = florin"}},
      {219, {"diams", 9830, "black diamond suit"}},
      {221, {"apostrophe", 39, "apostrophe = neutral single quotation mark = APL quote"}},
      {252, {"euro", 8364, "euro sign"}},
      {273, {"RomanTweleve", 8555, "Roman numeral tweleve"}},
      {288, {"ReplacementCharacter", 65533, "Object replacement character"}}};
  for (const auto& [place, row] : kRows) EXPECT_EQ(rows[place], row);
}

TEST(CharEntities, AreFoundByNameAndFirstByNumber) {
  std::map<int, Row> firsts;
  for (const Row& row : readTable()) {
    const char* description = "none";
    const std::string& name = std::get<0>(row);
    const std::uint32_t codePoint = findCharEntityByName(name.c_str(), &description);
    EXPECT_EQ(row, Row(name, codePoint, description));
    firsts.emplace(codePoint, row);
  }
  for (int codePoint = -1; codePoint < 66000; ++codePoint) {
    const char *name = nullptr, *description = nullptr;
    const auto row = firsts.find(codePoint);
    ASSERT_EQ(findCharEntityByNumber(codePoint, &name, &description), row != firsts.end());
    if (name != nullptr) {
      EXPECT_EQ(row->second, Row(name, codePoint, description));
    }
  }
  EXPECT_TRUE(findCharEntityByNumber(9, nullptr, nullptr));
  for (const char* none : {"AMP", "apos", "RomanTwelve", "", "nbs", "nbspx"}) {
    EXPECT_EQ(findCharEntityByName(none), 0x7FFFFFFFu) << none;
  }
}

// The size and the row of docs/formats/entitytable.md.
TEST(CharEntities, AreDumpedInWholeRows) {
  EXPECT_EQ(dumpCharEntityTable(nullptr, 99), 12305u);
  const std::string all = dump(12305);
  EXPECT_EQ(all.substr(0, 46), "nbsp\t160\tno-break space = non-breaking space\r\n");
  char untouched = 'x';
  EXPECT_EQ(dumpCharEntityTable(&untouched, 0), 0u);
  EXPECT_EQ(untouched, 'x');
  std::size_t written = 0;
  for (const auto& [name, codePoint, description] : readTable()) {
    const std::size_t reached = written + 11 + name.size() + description.size();
    EXPECT_EQ(dump(static_cast<std::uint32_t>(reached)), all.substr(0, written));
    written = all.find('\n', written) + 1;
    EXPECT_EQ(dump(static_cast<std::uint32_t>(reached) + 1), all.substr(0, written));
  }
}

std::string plain(const std::string& text, int options, int status = 0,
                  std::uint32_t maximum = kKoraNoMaximum) {
  KoraString<char> target("<", 1, maximum);
  std::vector<unsigned char> exact(text.begin(), text.end());
  const StringUtf8Info source{exact.data(), static_cast<std::uint32_t>(exact.size()), 0, 0};
  EXPECT_EQ(stringUtf8AsPlainText(source, options, target), status);
  return std::string(target.data(), target.length()).substr(1);
}

TEST(PlainText, FollowsItsTable) {
  const std::string kCases[][3] = {
      // text, with names, with markup
      {"", "", ""},
      {"a & b; \"c\" 'd' <e>", "a &amp; b&semi; \"c\" 'd' <e>",
       "a &amp; b; &quot;c&quot; &apos;d&apos; &lt;e&gt;"},
      {std::string("\0x", 2), "&#00;x", "x"},
      {"\t\n\r", "\t\n\r", "&#x09;&#x0A;&#x0D;"},
      {" ~\x1F\x7F", " ~&#x1F;&#x7F;", " ~&#x1F;&#x7F;"},
      {"\xC3\xA9\xE2\x82\xAC", "&eacute;&euro;", "&#xE9;&#x20AC;"},
      {"\xEF\xBF\xBD", "&ReplacementCharacter;", "&#xFFFD;"},
      {"\xC5\xB1\xF4\x8F\xBF\xBF", "&#x171;&#x10FFFF;", "&#x171;&#x10FFFF;"}};
  for (const auto& [text, names, markup] : kCases) {
    EXPECT_EQ(plain(text, 0), names);
    EXPECT_EQ(plain(text, kPlainTextMarkup), markup);
    EXPECT_EQ(plain(text, -2), names) << "other options count for nothing";
  }
}

TEST(PlainText, SplitsNoCharacterBetweenParts) {
  for (const char* character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x90\x84"}) {
    std::string text, expected;
    for (int count = 0; count < 260; ++count) {
      ASSERT_EQ(plain("x" + text, 0), "x" + expected) << count;
      text += character;
      expected += plain(character, 0);
    }
  }
}

TEST(PlainText, KeepsThePartsBeforeAFailure) {
  const std::string part(128, 'x');
  for (const char* malformed : {"\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80"}) {
    EXPECT_EQ(plain("ab" + std::string(malformed), 0, kInvalidParameterValue), "");
    EXPECT_EQ(plain(part + malformed + part, 0, kInvalidParameterValue), part);
  }
  EXPECT_EQ(plain(std::string(1000, '\x80'), 0, kInvalidParameterValue), "");
  EXPECT_EQ(plain(part + "y", 0, kStringTooLong, 129), part);
  nosFailAllocation(2);
  EXPECT_EQ(plain(part, 0, kMemoryAllocationFailed), "");
  nosFailAllocation(0);
}

}  // namespace
