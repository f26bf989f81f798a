// Images that do not hold together: every truncation and every change of a byte of small images,
// random damage of large ones. Each gives a status, and under the sanitizers no byte is read or
// written beyond an image.

#include "objectmodel.h"

#include <random>
#include <string>
#include <vector>

namespace {

using namespace nomtest;

class DynamicObjectDamage : public Watched {
 protected:
  struct Images {
    std::string descriptions, values, longValues;
  };

  // Of every form, with a region that is in use no more.
  static Images images(int count) {
    const Object object = newObject();
    const unsigned formats[] = {1, 4, 11, 51, 19, 24, 52};
    for (int i = 0; i < count; ++i) {
      const unsigned format = formats[i % 7];
      const std::string name = "property" + std::to_string(i);
      const Param value(format, format == 24 ? "||||||||||||" : "valu~|1234567890");
      EXPECT_EQ(object->addAndSetAttributeValue(name.c_str(), value), 0);
      if (format == 1) {
        EXPECT_EQ(object->setPropertyValue(name.c_str(), Param(1, name)), 0);
      }
    }
    return {imageOf(object->getPropertyDescriptions()), imageOf(object->getValues()),
            imageOf(object->getLongValues())};
  }

  static void expectAmong(int status, std::initializer_list<int> statuses) {
    for (const int expected : statuses) {
      if (status == expected) return;
    }
    ADD_FAILURE() << status;
  }

  // Uses all of an object; what fails leaves it as it was.
  void use(const Images& images) {
    const Object object = rebuilt(images.descriptions, images.values, images.longValues);
    const std::uint32_t count = object->getPropertyCount();
    std::string before = stateOf(*object);
    for (std::uint32_t index = 0; index <= count + 1; ++index) {
      Param read(5), text(2), number(36);
      bool isNull;
      expectAmong(object->getPropertyValue(index, read, isNull), {0, 1000, 1002, 1011});
      expectAmong(object->getPropertyValue(index, text), {0, 1000, 1002, 1011, 1035});
      std::uint32_t length = 0;
      const unsigned char* bytes = nullptr;
      int status = object->getPropertyValue(index, length, bytes);
      expectAmong(status, {0, 1000, 1002, 1011});
      std::uint32_t sum = 0;
      for (std::uint32_t i = 0; i < length; ++i) sum += bytes[i];
      EXPECT_LE(sum, 255u * length);
      char name[101];
      status = object->getPropertyName(index, name, sizeof name);
      expectAmong(status, {0, 1011});
      if (status == 0) {
        // Without the index of names and with it.
        for (int search = 0; search < 6; ++search)
          EXPECT_EQ(object->getPropertyIndex(name, number), 0);
      }
      for (const unsigned format : {36u, 1u, 11u, 54u, 24u, 4u}) {
        const Param value(format, format == 24 ? "||||||||||||" : "newvalue");
        status = object->setPropertyValue(index, value);
        expectAmong(status, {0, 1000, 1002, 1011, 1426});
        if (status != 0) {
          ASSERT_EQ(stateOf(*object), before);
        }
        before = stateOf(*object);
      }
    }
    std::vector<ShortDskParam> entries(count);
    Param list(36);
    if (object->copyToDskParamList(list, entries.data(), count) == 0) {
      expectAmong(object->copyFromDskParamList(list), {0, 1002});
      for (ShortDskParam& entry : entries) paramDeleteKoraAny(entry);
    }
    const bool isWhole = images.descriptions.size() % 120 == 0;
    EXPECT_EQ(object->addAndSetAttributeValue("new", Param(1, "text")), isWhole ? 0 : 1002);
    lines();
  }
};

TEST_F(DynamicObjectDamage, OfAnyLengthIsNoticed) {
  const Images whole = images(7);
  for (std::string Images::*image : {&Images::descriptions, &Images::values, &Images::longValues}) {
    Images cut = whole;
    for (std::string& bytes = cut.*image; !bytes.empty();) {
      bytes.pop_back();
      use(cut);
    }
  }
}

TEST_F(DynamicObjectDamage, OfAnyByteIsNoticed) {
  for (std::string Images::*image : {&Images::descriptions, &Images::values, &Images::longValues}) {
    Images changed = images(4);
    std::string& bytes = changed.*image;
    for (std::size_t place = 0; place < bytes.size(); ++place) {
      const char before = bytes[place];
      for (const int change : {0x01, 0x80, 0xFF}) {
        bytes[place] = static_cast<char>(before ^ change);
        use(changed);
      }
      bytes[place] = before;
      if (HasFailure()) FAIL() << "at " << place;
    }
  }
}

TEST_F(DynamicObjectDamage, AtRandomIsNoticed) {
  std::mt19937 random(0xDA3A6E);
  const Images whole = images(80);
  for (int round = 0; round < 60; ++round) {
    Images changed = whole;
    for (std::string* image : {&changed.descriptions, &changed.values, &changed.longValues}) {
      for (std::size_t i = random() % 200; i-- > 0;)
        (*image)[random() % image->size()] = static_cast<char>(random());
      if (random() % 4 == 0) image->resize(random() % image->size());
    }
    use(changed);
    if (HasFailure()) FAIL() << "in round " << round;
  }
}

// Each row changes a word of the images; the status is that of reading the property.
TEST_F(DynamicObjectDamage, GivesTheStatusOfItsKind) {
  Images whole = images(4);  // a string of 10, an integer, a binary, UTF-8 of 16 and 8 bytes
  struct {
    std::string Images::*image;
    std::size_t place;
    std::uint32_t word;
    std::uint32_t index;
    int status;
  } const rows[] = {
      {&Images::descriptions, 97, 0x78787878, 1, 1011},  // the last byte of the name
      {&Images::descriptions, 100, 0x00090000, 1, 1000},
      {&Images::descriptions, 116, 21, 1, 1002},  // the slot ends behind the values
      {&Images::descriptions, 116, 0xFFFFFFFC, 1, 1002},
      {&Images::descriptions, 236, 25, 2, 1002},
      {&Images::values, 4, 0xFFFFFFFF, 1, 1002},  // the region begins behind the long values
      {&Images::values, 0, 0xFFFFFFFF, 1, 1002},
      {&Images::values, 0, 9, 1, 1002},  // no NUL at the end
      {&Images::values, 20, 7, 4, 1002},
      {&Images::values, 20, 24, 4, 1002},  // one byte less than its lengths say
      {&Images::values, 20, 0, 4, 0},
  };
  for (const auto& row : rows) {
    Images changed = whole;
    (changed.*row.image).replace(row.place, 4, little(row.word, 4));
    const Object object = rebuilt(changed.descriptions, changed.values, changed.longValues);
    Param read(5);
    EXPECT_EQ(object->getPropertyValue(row.index, read), row.status) << row.place;
    const std::string name = "property" + std::to_string(row.index - 1);
    Param again(5);
    EXPECT_EQ(object->getPropertyValue(name.c_str(), again), row.status) << row.place;
    const int set = object->setPropertyValue(row.index, Param(36));
    const bool isInSlot = row.image == &Images::values;  // which null makes good
    EXPECT_EQ(set, isInSlot ? 0 : row.status) << row.place;
    lines();
  }
}

}  // namespace
