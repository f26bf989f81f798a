// Dates written in the patterns of all locales and read back. A model of the reader in another
// language, fed with the patterns of ICU 72, has 748, 614 and 507 of 805 locales whole. Texts and
// reasons follow from CLDR's patterns: "1 de enero de 2024" has a word that is no month's name.
#include "commandline.h"

#include "nomos/localedate.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

namespace nomtool {
namespace {

bool hasIcu() {
  char text[64];
  return nosFormatLocaleDate(1033, NosDateStyle::Full, 2460315, text, sizeof text);
}

std::string world(const std::string& locale) {
  std::ostringstream out, err;
  const int status = run({"date", "world", "--locale", locale}, out, err);
  return std::to_string(status) + '\n' + out.str() + err.str();
}

TEST(DatesOfTheWorld, ComeBackInMostLocales) {
  std::ostringstream out, err;
  ASSERT_EQ(run({"date", "world"}, out, err), 0) << err.str();
  const std::string text = out.str();
  const std::size_t line = text.rfind('\n', text.size() - 2) + 1;
  unsigned count = 0, shorts = 0, longs = 0, fulls = 0;
  ASSERT_EQ(std::sscanf(text.c_str() + line,
                        "locales in all %u: come back whole %u short, %u long, %u full", &count,
                        &shorts, &longs, &fulls),
            4)
      << text.substr(line);
  // Elsewhere the system's list and patterns are its own; most of the short ones are numbers.
  EXPECT_GE(count, hasIcu() ? 805u : 300u);
  EXPECT_GE(shorts, hasIcu() ? 748u : count / 4 * 3);
  EXPECT_GE(longs, hasIcu() ? 614u : count / 3);
  EXPECT_GE(fulls, hasIcu() ? 507u : 0u);
}

TEST(DatesOfTheWorld, RefuseALocaleThatTheSystemDoesNotKnow) {
  EXPECT_EQ(world("xx-YY"), "2\nnomtool: there is no such locale in the system's list\n");
}

TEST(DatesOfTheWorld, ShowWhyALocaleIsNotRead) {
  if (!hasIcu()) GTEST_SKIP() << "the patterns are the system's";
  const std::string head = "0\nlocale           short  long  full\n";
  EXPECT_EQ(world("en-GB"), head +
                                "en_GB              366   366   366\n"
                                "locales in all 1: come back whole 1 short, 1 long, 1 full\n");
  EXPECT_EQ(world("es-CL"),
            head +
                "es_CL              366     0     0\n"
                "  long   1 de enero de 2024  stops at offset 2, before de enero de 2024\n"
                "  full   lunes, 1 de enero de 2024  stops at offset 9, before de enero de 2024\n"
                "locales in all 1: come back whole 1 short, 0 long, 0 full\n");
  EXPECT_EQ(world("sr-Latn-RS"),
            head +
                "sr_Latn_RS           0     0     0\n"
                "  short  1.1.24.  is the date but for the end, .\n"
                "  long   1. januar 2024.  is the date but for the end, .\n"
                "  full   ponedeljak, 1. januar 2024.  is the date but for the end, .\n"
                "locales in all 1: come back whole 0 short, 0 long, 0 full\n");
}

}  // namespace
}  // namespace nomtool
