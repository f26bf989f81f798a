// Properties and objects: what is added and refused, with its log line; names at their limits;
// what a failure leaves; identity and copies; the index of names.

#include "dynaobj/nameindex.h"
#include "objectmodel.h"
#include "support/threads.h"

#include <cstring>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using namespace nomtest;

class DynamicObjectProperties : public Watched {
 protected:
  Object object = newObject();
};

// The types of the formats themselves are those of the model.
TEST_F(DynamicObjectProperties, HaveTheTypeOfTheirFormatUnlessOneIsGiven) {
  const std::pair<DskObjectId, std::string> rows[] = {
      {{9, {{1, 2, 0x43}}, 7, {{5, 0, 0}}, 1, 2, 3}, little(9, 8) + little(0x430201, 4)},
      {{0, {{1, 2, 3}}, 0, {}, 0, 0, 0}, little(7, 8) + little(6, 4)},
      {{9, {}, 5, {}, 0, 0, 0}, little(7, 8) + little(6, 4)},
  };
  for (const auto& [given, expected] : rows) {
    object->clear();
    ASSERT_EQ(object->addAttribute("p", given, DSKINTEGER), 0);
    EXPECT_EQ(imageOf(object->getPropertyDescriptions()).substr(104, 12), expected);
  }
}

TEST_F(DynamicObjectProperties, AreRefusedWithTheirLines) {
  const std::string longest(100, 'n'), tooLong(101, 'n');
  for (const char* name : {longest.c_str(), "Name", "name", ""})
    ASSERT_EQ(object->addAttribute(name, DSKINTEGER), 0);
  const std::string before = stateOf(*object);
  const std::string defined = "KoraDynamicObject::addProperty: property %s already defined";
  const std::string type = "DynamicObject::addAttribute(%s) invalid type: ";
  struct {
    std::string name;
    unsigned format;
    int status;
    std::string line;
  } const rows[] = {
      {tooLong, 4, 1425, "DynamicObject::addProperty: property %s name too long"},
      {longest, 4, 1433, defined},
      {"name", 1, 1433, defined},
      {"", 1, 1433, defined},
      {"name", 25, 1000, type + "25"},
      {"new", 0, 1000, type + "0"},
      {"new", 58, 1000, type + "58"},
      {tooLong, 65535, 1000, type + "65535"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(object->addAttribute(row.name.c_str(), static_cast<PFormat>(row.format)), row.status);
    const auto seen = recorder.takeLines();
    ASSERT_EQ(seen.size(), 1u);
    std::string line = row.line;
    EXPECT_EQ(seen[0].text, line.replace(line.find("%s"), 2, row.name));
    EXPECT_EQ(seen[0].level, row.status == 1425 ? NosLogLevel::Information : NosLogLevel::Error);
  }
  EXPECT_EQ(object->addAttribute(nullptr, DSKINTEGER), 1002);
  EXPECT_EQ(stateOf(*object), before);
}

TEST_F(DynamicObjectProperties, TakeTheFormatOfTheirValue) {
  const std::pair<unsigned, int> rows[] = {
      {1, 1},   {2, 1},   {14, 1},  {25, 1},  {11, 11},   {33, 11},    {34, 11},    {51, 51},
      {54, 51}, {24, 24}, {57, 57}, {42, 42}, {5, -1000}, {36, -1000}, {20, -1000}, {0, -1000}};
  for (const auto& [format, expected] : rows) {
    const Param value(format, format == 24 ? "||||||||||||" : "abcdefghijkl");
    const std::string name = "of" + std::to_string(format);
    const int status = object->addAndSetAttributeValue(name.c_str(), value);
    PFormat stored{};
    object->getPropertyFormat(name.c_str(), stored);
    EXPECT_EQ(status == 0 ? stored : -status, expected) << format;
  }
  EXPECT_EQ(object->addAndSetAttributeValue("x", nullptr), 1000);
  lines();
}

TEST_F(DynamicObjectProperties, AddedWithAValueThatIsRefusedAreTakenBack) {
  for (const char* name : {"a", "b", "c", "d", "e"})
    ASSERT_EQ(object->addAndSetAttributeValue(name, Param(1, "text")), 0);
  EXPECT_EQ(object->getRevision(), 10u);  // one of the property, one of the value
  const std::string before = stateOf(*object);
  EXPECT_EQ(object->addAndSetAttributeValue("f", DSKINTEGER, 8, "12345678"), 1002);
  EXPECT_EQ(object->addAndSetAttributeValue("f", DSKSTRINGUTF8BLOCK, 2, "\xC3("), 1002);
  // The images, and a place for the new bytes of each, come from the heap.
  const std::string large(5000, 'x');
  for (std::uint64_t n = 1; n < 5; ++n) {
    nosFailAllocation(n);
    const int status = object->addAndSetAttributeValue("f", DSKCSTRING, 5000, large.data());
    if (status == 0) break;
    EXPECT_EQ(status, 1448);
    EXPECT_EQ(stateOf(*object), before) << n;
  }
  nosFailAllocation(0);
  EXPECT_EQ(object->getPropertyCount(), 6u);
  Param index(36);
  EXPECT_EQ(object->getPropertyIndex("f", index), 0);
  EXPECT_EQ(index.word(), "6");
  EXPECT_EQ(object->addAttribute("f", DSKINTEGER), 1433);
  lines();
}

TEST_F(DynamicObjectProperties, AreToldByNameAndIndex) {
  for (const char* each : {"first", "second"}) ASSERT_EQ(object->addAttribute(each, DSKREAL), 0);
  char name[7] = "??????";
  EXPECT_EQ(object->getPropertyName(2, name, 7), 0);
  EXPECT_STREQ(name, "second");
  EXPECT_EQ(object->getPropertyName(2, name, 4), 1035);
  EXPECT_STREQ(name, "sec");
  EXPECT_EQ(object->getPropertyName(0, name, 7), 1011);
  EXPECT_STREQ(name, "");
  EXPECT_EQ(object->getPropertyName(3, name, 7), 1011);
  EXPECT_EQ(lines(),
            "[DynamicObject::getPropertyName] index out of range (0), maxIndex=2\n"
            "[DynamicObject::getPropertyName] index out of range (3), maxIndex=2\n");
  Param count(25);
  EXPECT_EQ(object->getPropertyCount(count), 0);
  EXPECT_EQ(count.word(), "2");
  EXPECT_EQ(object->getPropertyValue("Second", count), 1011);
  EXPECT_EQ(object->getPropertyValue(0u, count), 1011);
  EXPECT_EQ(object->getPropertyValue(4294967295u, count), 1011);
  EXPECT_EQ(object->setPropertyUsage("third", 1), 1011);
  EXPECT_EQ(object->getRevision(), 2u);
}

TEST_F(DynamicObjectProperties, AreFoundWithAndWithoutAnIndex) {
  // Names that differ in one place only, at every length.
  std::vector<std::string> names;
  for (std::size_t length = 1; length <= 100; ++length) {
    for (const std::size_t place : {std::size_t{0}, length / 2, length - 1}) {
      std::string name(length, 'm');
      name[place] = static_cast<char>('a' + length % 7);
      names.push_back(name);
      if (length < 3) break;
    }
  }
  for (const std::string& name : names)
    ASSERT_EQ(object->addAttribute(name.c_str(), DSKBYTE), 0) << name;
  for (const bool hasMemory : {true, false}) {
    const std::string image = imageOf(object->getPropertyDescriptions());
    const Object copy = rebuilt(image + image, "", "");  // of two of a name it is the first
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::string other = names[i] + "m";
      Param index(36);
      const int status = object->getPropertyIndex(other.c_str(), index);
      if (!hasMemory) nosFailAllocation(1);
      ASSERT_EQ(copy->getPropertyIndex(other.c_str(), index), status) << other;
      if (!hasMemory) nosFailAllocation(1);
      ASSERT_EQ(copy->getPropertyIndex(names[i].c_str(), index), 0) << names[i];
      ASSERT_EQ(index.word(), std::to_string(i + 1));
    }
    nosFailAllocation(0);
  }
  // Wherever the name lies, what follows it does not count, and right before the end of a page it
  // is not even read.
  constexpr std::size_t kPage = 4096;
  char* const page = nosGuardedPage();
  ASSERT_NE(page, nullptr);
  std::memset(page, 'm', kPage);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::size_t size = names[i].size() + 1;
    for (std::size_t behind = 0; behind<40; behind += size> 40 ? 40 : 1) {
      char* const name = page + kPage - behind - size;
      std::memcpy(name, names[i].c_str(), size);
      std::uint32_t length = 0;
      const unsigned char* bytes = nullptr;
      ASSERT_EQ(object->getPropertyValue(name, length, bytes), 0) << names[i];
      ASSERT_EQ(bytes, object->getValues().data() + i) << names[i];
      name[size - 1] = 'm';
    }
  }
}

// Names that differ in a place of each of three words, of 24 and of 40 characters.
TEST(NameHash, TellsNamesOfOnePatternApart) {
  for (const std::size_t size : {24u, 40u}) {
    std::set<std::uint32_t> hashes;
    std::string name(size, '_');
    for (int i = 0; i < 26 * 26 * 26; ++i) {
      name[0] = static_cast<char>('a' + i % 26);
      name[8] = static_cast<char>('a' + i / 26 % 26);
      name[16] = static_cast<char>('a' + i / 26 / 26);
      hashes.insert(nomutil::dynaobj::nameHash(name.c_str(), static_cast<std::uint32_t>(size)));
    }
    EXPECT_GE(hashes.size(), 17'500u) << size;
  }
}

// Names that share an entry of the index, more than it takes there, and two pairs that share the
// hash; found by trying, as somebody would who wants to make lookups slow or wrong.
TEST_F(DynamicObjectProperties, AreFoundAmongNamesOfOneHash) {
  std::vector<std::string> names;
  std::unordered_map<std::uint32_t, std::string> hashes;
  for (int i = 0, pairs = 0; i < 1'000'000 && (pairs < 2 || names.size() < 80); ++i) {
    const std::string name = "name" + std::to_string(i);
    const std::uint32_t hash =
        nomutil::dynaobj::nameHash(name.c_str(), static_cast<std::uint32_t>(name.size()));
    const auto [other, isNew] = hashes.emplace(hash, name);
    if (!isNew && ++pairs <= 2) {
      names.insert(names.begin(), {other->second, name});  // what is left out shall come last
    } else if (hash % 1024 == 5 && names.size() < 80) {
      names.push_back(name);
    }
  }
  ASSERT_GE(names.size(), 80u);
  for (const std::string& name : names) ASSERT_EQ(object->addAttribute(name.c_str(), DSKBYTE), 0);
  std::string image = imageOf(object->getPropertyDescriptions());
  const auto expectFound = [&](std::size_t without) {
    const Object copy = rebuilt(image, std::string(names.size(), '\0'), "");
    for (std::size_t search = 0; search < 2 * names.size(); ++search) {
      const std::size_t i = search % names.size();  // the index is not there from the beginning
      std::uint32_t length = 0;
      const unsigned char* bytes = nullptr;
      ASSERT_EQ(copy->getPropertyValue(names[i].c_str(), length, bytes), i == without ? 1011 : 0);
      ASSERT_EQ(bytes, i == without ? nullptr : copy->getValues().data() + i) << names[i];
    }
    char name[100];
    const auto index = static_cast<std::uint32_t>(without) + 1;
    EXPECT_EQ(copy->getPropertyName(index, name, sizeof name), 1011);
    EXPECT_EQ(lines().empty(), without < names.size()) << "only an index out of range is logged";
  };
  expectFound(names.size());
  image[3 * 120 + 100] = 'x';  // the name does not end
  expectFound(3);
}

TEST(ShortName, CountsUpToItsEnd) {
  for (std::uint32_t length = 0; length <= 31; ++length) {
    alignas(64) char text[64];
    char other[64];
    std::memset(text, 'm', sizeof text);
    std::memset(other, 'x', sizeof other);
    std::memset(other, 'm', length);
    text[length] = other[length] = '\0';
    const nomutil::dynaobj::ShortName name(text);
    ASSERT_EQ(name.isShort(), length <= 24);
    if (!name.isShort()) continue;
    EXPECT_EQ(name.length(), length);
    EXPECT_TRUE(name.isSame(other));
    for (std::uint32_t at = 0; at <= length; ++at) {
      ++other[at];
      EXPECT_FALSE(name.isSame(other)) << length << " " << at;
      --other[at];
    }
  }
}

TEST_F(DynamicObjectProperties, AreNotFoundInImagesThatWereReplaced) {
  KoraDynamicObject other(objectId());
  for (const char* name : {"a", "b", "c", "d"}) {
    ASSERT_EQ(object->addAttribute(name, DSKBYTE), 0);
    ASSERT_EQ(other.addAttribute((name + std::string("x")).c_str(), DSKBYTE), 0);
  }
  Param index(36);
  const std::string image = imageOf(other.getPropertyDescriptions());
  for (int search = 0; search < 6; ++search) {  // the last makes the index
    ASSERT_EQ(object->getPropertyIndex("a", index), 0);
    ASSERT_EQ(other.getPropertyIndex("a", index), 1011);
  }
  ASSERT_EQ(object->setPropertyDescriptions(image.data(), 480), 0);
  EXPECT_EQ(object->getPropertyIndex("dx", index), 0);
  ASSERT_EQ(object->addAttribute("a", DSKBYTE), 0);
  ASSERT_EQ(object->cloneSelf(&other), 0);
  EXPECT_EQ(other.getPropertyIndex("a", index), 0);
}

TEST_F(DynamicObjectProperties, AreReadByThreadsThatMakeTheIndexTogether) {
  for (int i = 0; i < 30; ++i)
    ASSERT_EQ(object->addAttribute(("p" + std::to_string(i)).c_str(), DSKBYTE), 0);
  const Object copy = rebuilt(imageOf(object->getPropertyDescriptions()), "", "");
  int found[4] = {};
  nomtest::inThreads(4, [&](unsigned thread) {
    PFormat format;
    for (int i = 0; i < 30; ++i)
      found[thread] += copy->getPropertyFormat(("p" + std::to_string(i)).c_str(), format) == 0;
  });
  for (const int count : found) EXPECT_EQ(count, 30);
}

// Places of the identifier whose change makes another object.
TEST_F(DynamicObjectProperties, DoNotCountForIdentity) {
  object->addAttribute("a", DSKINTEGER);
  EXPECT_TRUE(*object == *newObject());
  for (std::size_t place = 0; place < sizeof(DskObjectId); ++place) {
    DskObjectId id = objectId();
    reinterpret_cast<unsigned char*>(&id)[place] ^= 1;
    const Object other(DynamicObject::createInstance(id, DynamicObject::kKoraKind));
    const bool isIgnored = place == 11 || place >= 20;
    EXPECT_EQ(*object == *other, isIgnored) << place;
    // Each field counts for itself, but for the high half of the 64-bit one.
    EXPECT_EQ(object->hash() == other->hash(), isIgnored || (place >= 4 && place < 8)) << place;
  }
  const DskObjectId id = {0x1FFFFFFFF, {{3, 0, 1}}, 9, {{5, 0, 2}}, 7, 0x0201, 0xAAAA0403};
  // 0xFFFFFFFF + 0x010003 + 0x020005 + 7 + 0x04030201
  EXPECT_EQ(KoraDynamicObject(id).hash(), 0x0406020Fu);
}

TEST_F(DynamicObjectProperties, AreCopiedWhole) {
  for (const char* name : {"a", "b", "c", "d"})
    ASSERT_EQ(object->addAndSetAttributeValue(name, Param(1, name)), 0);
  KoraDynamicObject other(objectId(1));
  ASSERT_EQ(other.addAttribute("b", DSKINTEGER), 0);
  const auto& source = static_cast<const KoraDynamicObject&>(*object);
  for (std::uint64_t n = 1; n <= 3; ++n) {
    const std::string before = stateOf(other);
    nosFailAllocation(n);
    EXPECT_EQ(object->cloneSelf(&other), 1448);
    nosFailAllocation(n);
    other = source;
    EXPECT_EQ(stateOf(other), before);
    nosFailAllocation(n);
    EXPECT_EQ(KoraDynamicObject(source).getPropertyCount(), 0u);
  }
  ASSERT_EQ(object->cloneSelf(&other), 0);
  EXPECT_EQ(stateOf(other), stateOf(*object));
  EXPECT_FALSE(other == *object);
  other = source;
  EXPECT_TRUE(other == *object);
  EXPECT_EQ(stateOf(KoraDynamicObject(source)), stateOf(*object));
  nosFailAllocation(1);
  EXPECT_EQ(DynamicObject::createInstance(objectId(), DynamicObject::kKoraKind), nullptr);
}

}  // namespace
