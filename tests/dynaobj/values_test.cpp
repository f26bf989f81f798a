// Values: which parameter takes which property, regions and their reuse, sources that lie in the
// object itself, references, values as bytes, lists.

#include "objectmodel.h"

#include <string>
#include <vector>

namespace {

using namespace nomtest;

class DynamicObjectValues : public Watched {
 protected:
  int add(const char* name, unsigned format, const Param& value) {
    return object->addAndSetAttributeValue(name, value, static_cast<PFormat>(format));
  }
  std::uint32_t longLength() const { return object->getLongValues().length(); }

  Object object = newObject();
};

// Property format and word, target format and a block's offset, status or format and word of what
// was read.
TEST_F(DynamicObjectValues, FillParametersOfTheirFamily) {
  const auto check = [&](const Row& row) {
    object->clear();
    EXPECT_EQ(add("p", numberOf(row[0]), Param(numberOf(row[0]), row[1])), 0);
    const unsigned format = numberOf(row[2]);
    const bool isBlock = isAmong(format, {14, 34});
    Param target = isBlock || isAmong(format, {1, 2, 51}) ? Param(format, "######") : Param(format);
    if (isBlock) {
      target.memory.resize(7);  // and a NUL
      const std::size_t at = row[2].find('@');
      const std::uint32_t offset = at == row[2].npos ? 0 : numberOf(row[2].substr(at + 1));
      target->setValue(
          DskBinaryBlock{reinterpret_cast<unsigned char*>(&target.memory[0]), offset, 0, 6});
    }
    const int status = object->getPropertyValue("p", target);
    if (status == 1000) {
      EXPECT_EQ(lines(), "DynamicObject::getPropertyValue: invalid parameter type (" +
                             std::to_string(format) + ")\n");
    }
    if (status != 0) return std::to_string(status);
    const auto block = target->getValue<DskBinaryBlock>();
    EXPECT_TRUE(!isBlock || (block.offset == 0 && target->header.more == 0));
    EXPECT_TRUE(format != 14 || numberOf(row[0]) != 1 || block.data[block.length] == '\0');
    return std::to_string(target.format()) + ":" + target.word();
  };
  nomtest::expectRows(
      4, check,
      "1 text 5 25:text  1 text 25 25:text  1 text 2 2:text  1 text 1 1:text  1 text 14 14:text "
      "1 _ 5 25:_  1 sixsix 14 14:sixsix  1 text 14@2 14:xt  1 text 14@4 14:_  1 text 14@5 1035 "
      "1 seven77 14 1035  1 seven77 14@3 1035  1 text 33 1000  1 text 34 1000  1 text 11 1000 "
      "1 text 51 1000  1 text 54 1000  1 text 4 1000  1 text 36 1000  11 a|b 5 33:a|b "
      "11 a|b 33 33:a|b  11 a|b 34 34:a|b  11 a|b 34@1 34:|b  11 a|b 11 11:a|b "
      "11 seven77 34 1091  11 a|b 34@4 1091  11 a|b 25 1000  11 a|b 14 1000  11 a|b 1 1000 "
      "11 a|b 54 1000  51 a~ 5 54:a~/2  51 a~ 54 54:a~/2  51 a~ 51 51:a~  51 seven77 51 1124 "
      "51 a~ 25 1000  51 a~ 14 1000  51 a~ 33 1000  4 =7 36 4:7  4 =7 14 4:7  4 =-7 5 4:-7");
}

// A piece goes to its offset; a held UTF-8 string is asked once.
TEST_F(DynamicObjectValues, OfStringsTakePiecesAndHeldTexts) {
  ASSERT_EQ(add("s", 1, Param(14, "cd@2")), 0);
  ASSERT_EQ(add("b", 11, Param(34, "cd@1")), 0);
  EXPECT_EQ(wordOf(imageOf(object->getLongValues())), "||cd||cd");
  ASSERT_EQ(object->addAttribute("u", DSKSTRINGUTF8BLOCK), 0);
  const Param held(54, "a~");
  held->setValue<DskDataHandler>(watchingHandler);
  codesSent.clear();
  ASSERT_EQ(object->setPropertyValue("u", held), 0);
  EXPECT_EQ(codesSent, ",64");
  EXPECT_EQ(wordOf(imageOf(object->getLongValues()).substr(8)), "3|||2|||a~");
  callsUntilFailure = 1;
  EXPECT_EQ(object->setPropertyValue("u", held), 77);
}

TEST_F(DynamicObjectValues, OfFixedFormatsGiveTheirFormat) {
  for (const auto& [format, row] : Model::kFormats) {
    if (isAmong(format, {1, 11, 51})) continue;
    const std::string name = std::to_string(format);
    const std::string word = isAmong(format, {3, 24}) ? "||||||||||||" : "abcdefghijklmnop";
    ASSERT_EQ(add(name.c_str(), format, Param(format, word)), 0);
    Param read(36);
    bool isNull = true;
    ASSERT_EQ(object->getPropertyValue(name.c_str(), read, isNull), 0);
    EXPECT_EQ(read.format(), format == 3 ? 24 : format);
    EXPECT_EQ(wordOf(std::string(reinterpret_cast<const char*>(read->value), row.first)),
              word.substr(0, row.first));
    EXPECT_EQ(read->header.more, 0);
    EXPECT_FALSE(isNull);
  }
}

TEST_F(DynamicObjectValues, MayLieInTheObject) {
  const std::string text(100, 't');
  ASSERT_EQ(add("a", 1, Param(1, text)), 0);
  ASSERT_EQ(add("n", 19, Param(19, "=12.5")), 0);
  std::uint32_t length = 0;
  const unsigned char* bytes = nullptr;
  const char* name = nullptr;
  PFormat format{};
  const auto look = [&](std::uint32_t index) {
    EXPECT_EQ(object->getPropertyValue(index, name, format, length, bytes), 0);
  };
  // New regions of a hundred bytes, and of part of one; a region onto itself, moved.
  for (const char* next : {"b", "c", "d", "e", "f"}) {
    look(1);
    ASSERT_EQ(object->addAndSetAttributeValue(next, DSKCSTRING, length, bytes), 0);
    look(1);
    const DskBinaryBlock block{const_cast<unsigned char*>(bytes), 0, length, length};
    Param view(34);
    view->setValue(block);
    ASSERT_EQ(object->addAndSetAttributeValue((std::string(next) + "2").c_str(), view), 0);
    look(2);
    ASSERT_EQ(object->addAndSetAttributeValue((std::string(next) + "3").c_str(), DSKDECIMAL, length,
                                              bytes),
              0);
    look(2);
    Param nameView(1);
    nameView->setValue(name);
    ASSERT_EQ(object->addAndSetAttributeValue((std::string(next) + "4").c_str(), nameView), 0);
  }
  look(3);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), length), text);
  look(22);
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "n");
  ASSERT_EQ(object->setPropertyValue("a", 6, "abcdef"), 0);
  look(1);
  ASSERT_EQ(object->setPropertyValue("a", 4, bytes + 1), 0);
  look(1);
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "bcde");
  look(21);
  EXPECT_EQ(length, 16u);
  look(2);
  ASSERT_EQ(object->addAttribute(name, DSKINTEGER), 1433);
  lines();
}

TEST_F(DynamicObjectValues, AsBytesHaveTheLengthOfTheirFormat) {
  const std::string zeros(32, '\0');
  for (const auto& [format, row] : Model::kFormats) {
    object->clear();
    const auto asFormat = static_cast<PFormat>(format);
    ASSERT_EQ(object->addAttribute("p", asFormat), 0);
    for (std::uint32_t length = 0; length < 20; ++length) {
      const int expected = isAmong(format, {1, 11, 51}) || length == row.first ? 0 : 1002;
      EXPECT_EQ(object->setPropertyValue("p", length, zeros.data()), expected) << format;
    }
    EXPECT_EQ(object->setPropertyValue(1u, 0, nullptr), 0);
    EXPECT_EQ(object->setPropertyValue(1u, 1, nullptr), 1002);
    EXPECT_EQ(object->setPropertyValue(1u, "p", asFormat, 0, nullptr), 0);
    EXPECT_EQ(object->setPropertyValue(1u, "q", asFormat, 0, nullptr), 1011);
    EXPECT_EQ(object->setPropertyValue(1u, "p", DSKANY, 0, nullptr), 1426);
  }
}

TEST_F(DynamicObjectValues, OfReferencesRespectLifetimes) {
  // Parent, target: the lifetimes; then its parent class and instance.
  struct {
    unsigned from, to;
    std::uint8_t parentClass;
    std::uint64_t instance;
    int status;
  } const rows[] = {{0, 0, 0, 1, 0},    {0, 1, 0, 1, 1215}, {0, 2, 0, 1, 0},    {0, 3, 0, 1, 1215},
                    {1, 0, 0, 1, 0},    {1, 1, 0, 1, 0},    {1, 3, 0, 1, 0},    {2, 1, 0, 1, 1215},
                    {2, 3, 0, 1, 1215}, {3, 0, 0, 1, 0},    {3, 1, 0, 1, 1289}, {3, 3, 0, 1, 0},
                    {0, 1, 4, 1, 1013}, {1, 0, 4, 1, 1013}, {0, 1, 4, 0, 0}};
  for (const auto& row : rows) {
    object = newObject(row.from);
    ASSERT_EQ(object->addReference("r", DskObjectId{}), 0);
    Param value(3), read(24);
    DskObjectId id = objectId(row.to);
    id.instanceId = row.instance;
    id.parentClassId.bytes[0] = row.parentClass;
    value->setValue(id);
    const std::string before = stateOf(*object);
    EXPECT_EQ(object->setPropertyValue("r", value), row.status) << row.from << row.to;
    if (row.status != 0) {
      EXPECT_EQ(stateOf(*object), before);
    }
    if (row.parentClass != 0) continue;
    EXPECT_EQ(object->setPropertyValue("r", sizeof(ShortDskObjectId), &id), row.status);
    if (row.status != 0) continue;
    ASSERT_EQ(object->getPropertyValue("r", read), 0);
    EXPECT_EQ(std::memcmp(read.get()->value, &id, sizeof(ShortDskObjectId)), 0);
  }
}

TEST_F(DynamicObjectValues, TravelAsAList) {
  ASSERT_EQ(add("s", 1, Param(1, "text")), 0);
  ASSERT_EQ(add("n", 19, Param(19, "=12.5")), 0);
  ASSERT_EQ(add("null", 1, Param(36)), 0);
  ASSERT_EQ(add("b", 11, Param(11, "a|b")), 0);
  ASSERT_EQ(add("u", 51, Param(51, "a~")), 0);
  std::vector<ShortDskParam> entries(5);
  Param list(36);
  ASSERT_EQ(object->copyToDskParamList(list, entries.data(), 5), 0);
  EXPECT_EQ(list.format(), 44u);
  EXPECT_EQ(list->getValue<ShortDskParam*>(), entries.data());
  EXPECT_EQ(list->getValue<DskBinaryBlock>().offset, 5u);

  // What is set in the same order gives the same images.
  const Object copy =
      rebuilt(imageOf(object->getPropertyDescriptions()), std::string(48, '\0'), "");
  ASSERT_EQ(copy->copyFromDskParamList(list), 0);
  EXPECT_EQ(copy->getRevision(), 5u);
  copy->setRevision(object->getRevision());
  EXPECT_EQ(stateOf(*copy), stateOf(*object));

  // The fourth is refused, and the first is as it was.
  const std::string before = stateOf(*copy);
  ASSERT_EQ(paramcpy(entries[0], "a longer text", 13u), 0);
  paramDeleteKoraAny(entries[3]);
  entries[3] = ShortDskParam(DSKINTEGER, 0, 0);
  EXPECT_EQ(copy->copyFromDskParamList(list), 1000);
  EXPECT_EQ(stateOf(*copy), before);
  EXPECT_EQ(copy->copyFromDskParamList(Param(4)), 1000);
  EXPECT_EQ(lines(),
            "paramcpy: invalid parameter type (4)\n"
            "DynamicObject::copyFromDskParamList: invalid parameter type (4)\n");
  for (ShortDskParam& entry : entries) paramDeleteKoraAny(entry);
}

// Each takes what the other had: both texts lie in the image that is replaced, in the object or on
// the heap.
// Each allocation that a reading makes fails once.
TEST_F(DynamicObjectValues, AreReadWholeOrNotAtAllWithoutMemory) {
  const std::string text = "longer than an object holds";
  for (const unsigned format : {1u, 11u, 51u}) {
    ASSERT_EQ(add(std::to_string(format).c_str(), format, Param(format, text)), 0);
  }
  for (const unsigned format : {1u, 11u, 51u}) {
    for (std::uint64_t n = 1;; ++n) {
      ShortDskParam any;
      paramCreateKoraAny(any, 0);
      nosFailAllocation(n);
      bool isNull = false;
      const int status = object->getPropertyValue(std::to_string(format).c_str(), any, isNull);
      nosFailAllocation(0);
      paramDeleteKoraAny(any);
      EXPECT_EQ(status, n <= 2 ? 1448 : 0) << format << " " << n;
      if (status == 0 || n > 5) break;
    }
  }
  for (std::uint64_t n = 1; n <= 7; ++n) {
    ShortDskParam list, array[3];
    nosFailAllocation(n);
    const int status = object->copyToDskParamList(list, array, 3);
    nosFailAllocation(0);
    EXPECT_EQ(status, n <= 6 ? 1448 : 0) << n;
    if (status != 0) continue;
    for (ShortDskParam& entry : array) paramDeleteKoraAny(entry);
  }
}

TEST_F(DynamicObjectValues, ComeFromEntriesThatLookAtTheObject) {
  for (const std::size_t length : {4u, 900u}) {
    object->clear();
    const std::string texts[] = {std::string(length, 's'), std::string(length, 't')};
    ASSERT_EQ(add("s", 1, Param(1, texts[0].c_str())), 0);
    ASSERT_EQ(add("t", 1, Param(1, texts[1].c_str())), 0);
    std::vector<ShortDskParam> entries;
    for (const std::uint32_t other : {2u, 1u}) {
      std::uint32_t size = 0;
      const unsigned char* bytes = nullptr;
      ASSERT_EQ(object->getPropertyValue(other, size, bytes), 0);
      auto* const text = reinterpret_cast<char*>(const_cast<unsigned char*>(bytes));
      entries.emplace_back(DSKSTRINGBLOCK, 0, 0).setValue(DskStringBlock{text, 0, size, size});
    }
    Param list(44);
    list->setValue(DskBinaryBlock{reinterpret_cast<unsigned char*>(entries.data()), 2, 0, 0});
    ASSERT_EQ(object->copyFromDskParamList(list), 0);
    for (const std::uint32_t index : {1u, 2u}) {
      std::uint32_t size = 0;
      const unsigned char* bytes = nullptr;
      ASSERT_EQ(object->getPropertyValue(index, size, bytes), 0);
      EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), size), texts[2 - index]);
    }
  }
}

TEST_F(DynamicObjectValues, TravelWholeOrNotAtAll) {
  ASSERT_EQ(add("s", 1, Param(1, "text")), 0);
  ASSERT_EQ(add("t", 1, Param(1, "text")), 0);
  std::vector<ShortDskParam> entries(2);
  Param list(44);
  EXPECT_EQ(object->copyToDskParamList(list, entries.data(), 1), 1002);
  list->setValue(DskBinaryBlock{nullptr, 1, 0, 0});
  EXPECT_EQ(object->copyFromDskParamList(list), 1002);
  const auto seen = recorder.takeAssertions();
  ASSERT_EQ(seen.size(), 2u);
  for (const Assertion& assertion : seen) {
    EXPECT_EQ(assertion.expression, "getPropertyCount() <= paramArraySize");
    EXPECT_EQ(assertion.kind, "Precondition contract violated");
    EXPECT_EQ(assertion.file, "objman/common/source/dynaobj");
  }
  // A description that is none, behind one whose value has been made.
  std::string descriptions = imageOf(object->getPropertyDescriptions());
  descriptions[120 + 100] = 'x';
  object->setPropertyDescriptions(descriptions.data(), 240);
  EXPECT_EQ(object->copyToDskParamList(list, entries.data(), 2), 1011);
  EXPECT_EQ(recorder.takeExpressions(), "pPropDesc != nullptr");
}

}  // namespace
