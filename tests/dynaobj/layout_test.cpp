// The images byte for byte, as docs/formats/dynaobj.md shows them, and the format descriptor.

#include "objectmodel.h"

#include <string>
#include <vector>

namespace {

using namespace nomtest;
using namespace std::string_literals;

class DynamicObjectLayout : public Watched {};

std::string descriptor(const std::string& name, const std::string& behind) {
  return name + std::string(101 - name.size(), '\0') + behind;
}

const std::string kDescriptions =
    descriptor("name", "\0\x01\0\x0B\0\0\0\0\0\0\0\x06\0\0\0\0\0\0\0"s) +
    descriptor("age", "\x03\x04\0\x07\0\0\0\0\0\0\0\x06\0\0\0\x08\0\0\0"s) +
    descriptor("photo", "\0\x0B\0\x02\0\0\0\0\0\0\0\x06\0\0\0\x0C\0\0\0"s) +
    descriptor("motto", "\0\x33\0\x17\0\0\0\0\0\0\0\x06\0\0\0\x14\0\0\0"s) +
    descriptor("boss", "\0\x18\0\x05\0\0\0\0\0\0\0\x07\x08\0\0\x1C\0\0\0"s);
const std::string kValues =
    "\x04\0\0\0\x03\0\0\0\x2A\0\0\0\0\0\0\0\0\0\0\0\x0A\0\0\0\x07\0\0\0"
    "\x12\0\0\0\0\0\0\0\x07\x08\0\0"s;
const std::string kLongValues = "Al\0Ann\0\x02\0\0\0\x01\0\0\0\xC3\xA4"s;

TEST_F(DynamicObjectLayout, OfTheExampleIsThatOfItsPage) {
  ASSERT_EQ(kDescriptions.size(), 5u * 120);
  const Object object = newObject();
  DskObjectId person{5, {{7, 8, 0}}, 0, {}, 0, 0, 0};
  ASSERT_EQ(object->addAndSetAttributeValue("name", Param(1, "Al")), 0);
  ASSERT_EQ(object->addAttribute("age", DSKINTEGER), 0);
  ASSERT_EQ(object->addAttribute("photo", DSKBINARY), 0);
  ASSERT_EQ(object->addAttribute("motto", DSKSTRINGUTF8BLOCK), 0);
  ASSERT_EQ(object->addReference("boss", person), 0);
  ASSERT_EQ(object->setPropertyValue("name", Param(14, "Ann")), 0);
  ASSERT_EQ(object->setPropertyValue("age", Param(4, "=42")), 0);
  ASSERT_EQ(object->setPropertyUsage("age", 3), 0);
  ASSERT_EQ(object->setPropertyValue("motto", Param(51, "~")), 0);
  Param boss(24);
  boss->setValue(ShortDskObjectId{18, {{7, 8, 0}}, 0});
  ASSERT_EQ(object->setPropertyValue("boss", boss), 0);
  EXPECT_EQ(imageOf(object->getPropertyDescriptions()), kDescriptions);
  EXPECT_EQ(imageOf(object->getValues()), kValues);
  EXPECT_EQ(imageOf(object->getLongValues()), kLongValues);
  EXPECT_EQ(object->getRevision(), 11u);
}

TEST_F(DynamicObjectLayout, IsReadBackAfterShipping) {
  const Object object = rebuilt(kDescriptions, kValues, kLongValues);
  const std::vector<std::pair<unsigned, std::string>> expected = {
      {25, "Ann"}, {4, "42"}, {33, "_"}, {54, "~/1"}};
  EXPECT_EQ(object->getPropertyCount(), 5u);
  for (std::uint32_t index = 1; index <= expected.size(); ++index) {
    Param value(5);
    ASSERT_EQ(object->getPropertyValue(index, value), 0);
    EXPECT_EQ(value.format(), expected[index - 1].first);
    EXPECT_EQ(value.word(), expected[index - 1].second);
  }
  Param boss(36);
  ASSERT_EQ(object->getPropertyValue("boss", boss), 0);
  EXPECT_EQ(boss.format(), 24u);
  EXPECT_EQ(boss->getValue<ShortDskObjectId>().instanceId, 18u);
  DskObjectId type = objectId(3);
  ASSERT_EQ(object->getPropertyType("boss", type), 0);
  EXPECT_TRUE(oidsAreEqual(type, {5, {{7, 8, 0}}, 0, {}, 0, 0, 0}));
  std::uint8_t usage = 0;
  EXPECT_EQ(object->getPropertyUsage(2u, usage), 0);
  EXPECT_EQ(usage, 3);
}

const std::string kFormatDesc = "<< format >>\0\x01<< version >>\0\x01<< charSize >>\0\x01"s;

TEST_F(DynamicObjectLayout, OfTheFormatDescriptorIsCheckedInThreePlaces) {
  const Object object = newObject();
  ASSERT_EQ(object->getFormatDescSize(), 45u);
  const auto* const own = reinterpret_cast<const char*>(object->getFormatDesc());
  EXPECT_EQ(std::string(own, 45), kFormatDesc);
  const auto check = [&](std::size_t place, char number) {
    std::string other = kFormatDesc;
    other[place] = number;
    return object->checkFormat(reinterpret_cast<const unsigned char*>(other.data()));
  };
  EXPECT_EQ(check(44, 2), 1465);
  EXPECT_EQ(check(13, 3), 1465);
  EXPECT_EQ(check(28, '\xFF'), 1465);
  const std::string line = "Dynamic Object: incompatible format - expected=1.1.1, actual=";
  EXPECT_EQ(lines(), line + "1.1.2\n" + line + "1.3.1\n" + line + "255.1.1\n");
  EXPECT_EQ(check(0, 'x'), 0);
  EXPECT_EQ(object->checkFormat(nullptr), 1002);
  std::string wide = kFormatDesc;
  wide[44] = 2;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(wide.data());
  EXPECT_EQ(DynamicObject::getCharacterSize(bytes), 2);
  EXPECT_EQ(DynamicObject::getCharacterSize(nullptr), 0);
}

TEST_F(DynamicObjectLayout, OfTheRelationalKindHasLargerDescriptions) {
  const Object object = newObject(0, DynamicObject::kRpsKind);
  for (const char* name : {"a", "b", "c", "d", "e"})
    ASSERT_EQ(object->addAndSetAttributeValue(name, Param(1, name)), 0);
  EXPECT_EQ(object->getPropertyDescriptions().length(), 5u * 260);
  Param value(5);
  ASSERT_EQ(object->getPropertyValue("d", value), 0);
  EXPECT_EQ(value.word(), "d");
  char name[8];
  EXPECT_EQ(object->getPropertyName(5, name, sizeof name), 0);
  EXPECT_STREQ(name, "e");
  const std::string second = imageOf(object->getPropertyDescriptions()).substr(260, 260);
  EXPECT_EQ(second, descriptor("b", "\0\x01\0\x0B\0\0\0\0\0\0\0\x06\0\0\0\x08\0\0\0"s) +
                        std::string(140, '\0'));
  EXPECT_EQ(object->cloneSelf(newObject().get()), 1465);
}

}  // namespace
