// Dynamic objects from images that came from outside: every property is read, set, listed and
// looked up, and one more is added.
// Laws: what fails leaves the object as it was; a value is read back as it was set; what is found
// by name is the first of that name.
// Input: the number of descriptions, the length of the values image, each in one byte; then the
// descriptions, the values and the long values.
#include "nomos/testhooks.h"
#include "sys/dynaobj.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreLine(void*, NosLogLevel, const char*) {}
void ignoreAssertion(void*, const char*, const char*, const char*, const char*, unsigned) {}

struct Release {
  void operator()(DynamicObject* object) const { DynamicObject::deleteInstance(object); }
};

std::string stateOf(const DynamicObject& object) {
  std::string all = std::to_string(object.getRevision());
  for (const auto* image :
       {&object.getPropertyDescriptions(), &object.getValues(), &object.getLongValues()}) {
    all += "|" + std::string(reinterpret_cast<const char*>(image->data()), image->length());
  }
  return all;
}

void read(const DynamicObject& object, std::uint32_t index) {
  ShortDskParam any = ShortDskParam::allZero();
  paramCreateKoraAny(any, 0);
  bool isNull = false;
  const int status = object.getPropertyValue(index, any, isNull);
  std::uint32_t length = 0;
  const unsigned char* bytes = nullptr;
  require(object.getPropertyValue(index, length, bytes) == status);
  const std::vector<unsigned char> copy(bytes, bytes + length);  // reads every byte
  unsigned measured = 0;
  if (status == 0 && paramBytesLen(any, &measured) == 0) require(measured == length);
  paramDeleteKoraAny(any);

  char text[600] = "";
  ShortDskParam string(DSKCSTRING, 0, 0);
  string.setValue(&text[0]);
  // A DSKCSTRING knows no room, so that only what fits is asked for.
  if (length < sizeof text) object.getPropertyValue(index, string);
}

void set(DynamicObject& object, std::uint32_t index) {
  const char* const name = "value that is set";
  const std::uint32_t lengths[] = {0, 1, 4, 8, 12, 16, 17};
  for (const std::uint32_t length : lengths) {
    const std::string before = stateOf(object);
    if (object.setPropertyValue(index, length, name) != 0) {
      require(stateOf(object) == before);
      continue;
    }
    std::uint32_t found = 0;
    const unsigned char* bytes = nullptr;
    require(object.getPropertyValue(index, found, bytes) == 0);
    require(found == length && std::equal(bytes, bytes + length, name));
  }
  ShortDskParam string(DSKCSTRING, 0, 0);
  string.setValue(name);
  const std::string before = stateOf(object);
  if (object.setPropertyValue(index, string) != 0) require(stateOf(object) == before);
}

void find(const DynamicObject& object, std::uint32_t index) {
  char name[101];
  ShortDskParam found = ShortDskParam::allZero();
  if (object.getPropertyName(index, name, sizeof name) != 0) return;
  require(object.getPropertyIndex(name, found) == 0);
  const auto first = found.getValue<std::uint32_t>();
  require(first <= index);
  // The last of these has an index, if there are names enough.
  for (int search = 0; search < 5; ++search) require(object.getPropertyIndex(name, found) == 0);
  require(first == found.getValue<std::uint32_t>());
  char other[101];
  for (std::uint32_t i = 1; i < first; ++i)
    require(object.getPropertyName(i, other, sizeof other) != 0 || std::strcmp(name, other) != 0);
}

void list(DynamicObject& object) {
  std::vector<ShortDskParam> entries(object.getPropertyCount());
  const auto count = static_cast<std::uint32_t>(entries.size());
  ShortDskParam all = ShortDskParam::allZero();
  if (object.copyToDskParamList(all, entries.data(), count) != 0) return;
  const std::string before = stateOf(object);
  if (object.copyFromDskParamList(all) != 0) require(stateOf(object) == before);
  for (ShortDskParam& entry : entries) paramDeleteKoraAny(entry);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  nosSetLogSink(ignoreLine, nullptr);
  nosSetAssertSink(ignoreAssertion, nullptr);
  const std::unique_ptr<DynamicObject, Release> object(
      DynamicObject::createInstance(DskObjectId{}, DynamicObject::kKoraKind));
  const std::size_t descriptions = std::min<std::size_t>(size - 2, data[0] * std::size_t{120});
  const std::size_t values = std::min<std::size_t>(size - 2 - descriptions, data[1]);
  const std::uint8_t* from = data + 2;
  object->setPropertyDescriptions(from, static_cast<std::uint32_t>(descriptions));
  from += descriptions;
  object->setValues(from, static_cast<std::uint32_t>(values));
  from += values;
  object->setLongValues(from, static_cast<std::uint32_t>(data + size - from));
  const std::uint32_t count = object->getPropertyCount();
  for (std::uint32_t index = 0; index <= count + 1; ++index) {
    read(*object, index);
    find(*object, index);
  }
  list(*object);
  for (std::uint32_t index = 0; index <= count + 1; ++index) set(*object, index);
  const std::string before = stateOf(*object);
  if (object->addAndSetAttributeValue("added", DSKCSTRING, 4, "text") != 0) {
    require(stateOf(*object) == before);
  }
  return 0;
}
