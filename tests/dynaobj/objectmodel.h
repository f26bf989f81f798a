// Objects for tests, and a second implementation of their images: plain strings that are searched
// from the front and written as the page of the images says, without an index and without checks,
// since it never meets damage. Statuses and images of both have to agree.
#ifndef NOMUTIL_TESTS_OBJECTMODEL_H
#define NOMUTIL_TESTS_OBJECTMODEL_H

#include "params/exactparam.h"
#include "sys/dynaobj.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace nomtest {

// Class 2048, instance 17, and a lifetime code.
inline DskObjectId objectId(unsigned lifetime = 0) {
  return {17, {{0, 8, static_cast<std::uint8_t>(lifetime << 6)}}, 0, {}, 0, 0, 0};
}

// Expects at the end of a test that no line was logged unseen and no block of the heap is left.
class Watched : public testing::Test {
 protected:
  ~Watched() override {
    nosFailAllocation(0);
    EXPECT_EQ(nosAllocatedBlocks(), _before);
    EXPECT_EQ(lines(), "");
  }
  std::string lines() { return linesOf(recorder); }

  Recorder recorder;

 private:
  std::uint64_t _before = nosAllocatedBlocks();
};

struct ReleaseObject {
  void operator()(DynamicObject* object) const { DynamicObject::deleteInstance(object); }
};
using Object = std::unique_ptr<DynamicObject, ReleaseObject>;
inline Object newObject(unsigned lifetime = 0,
                        DynamicObject::Kind kind = DynamicObject::kKoraKind) {
  return Object(DynamicObject::createInstance(objectId(lifetime), kind));
}

inline std::string imageOf(const KoraString<unsigned char>& image) {
  return {reinterpret_cast<const char*>(image.data()), image.length()};
}
inline std::string stateOf(const DynamicObject& object) {
  return imageOf(object.getPropertyDescriptions()) + "|" + imageOf(object.getValues()) + "|" +
         imageOf(object.getLongValues()) + "|" + std::to_string(object.getRevision());
}
// By setting the images: the block of each ends where the image does.
inline Object rebuilt(const std::string& descriptions, const std::string& values,
                      const std::string& longValues) {
  Object object = newObject();
  const auto size = [](const std::string& image) {
    return static_cast<std::uint32_t>(image.size());
  };
  object->setPropertyDescriptions(descriptions.data(), size(descriptions));
  object->setValues(values.data(), size(values));
  object->setLongValues(longValues.data(), size(longValues));
  return object;
}

inline std::string little(std::uint64_t number, unsigned size) {
  std::string bytes;
  for (unsigned i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}
inline std::uint32_t littleAt(const std::string& image, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(image[at + i]);
  return number;
}

// A value without its way of being kept.
struct Value {
  enum Kind { Null, String, Binary, Utf8, Fixed, Other } kind;
  unsigned format;
  std::string bytes;
  std::uint32_t characters;
};

class Model {
 public:
  std::string descriptions, values, longValues;
  std::uint32_t revision = 0;

  std::string state() const {
    return descriptions + "|" + values + "|" + longValues + "|" + std::to_string(revision);
  }

  // Format: slot, type number; the class is 6, of references 2.
  static inline const std::map<unsigned, std::pair<unsigned, unsigned>> kFormats = {
      {1, {8, 11}},  {3, {12, 1}},  {4, {4, 7}},   {6, {1, 4}},   {7, {1, 3}},
      {8, {8, 9}},   {11, {8, 2}},  {16, {4, 5}},  {17, {4, 12}}, {18, {8, 13}},
      {19, {16, 6}}, {21, {8, 10}}, {24, {12, 1}}, {42, {8, 21}}, {44, {12, 22}},
      {51, {8, 23}}, {52, {1, 20}}, {53, {8, 24}}, {57, {12, 25}}};

  std::size_t count() const { return descriptions.size() / 120; }
  std::string nameAt(std::size_t position) const {
    return descriptions.substr(120 * position, 101).c_str();
  }
  unsigned formatAt(std::size_t position) const {
    return littleAt(descriptions, 120 * position + 102) & 0xFFFF;
  }
  // count() when there is none.
  std::size_t find(const std::string& name) const {
    std::size_t position = 0;
    while (position < count() && nameAt(position) != name) ++position;
    return position;
  }

  int add(const std::string& name, unsigned format) {
    const auto row = kFormats.find(format);
    if (row == kFormats.end()) return 1000;
    if (name.size() > 100) return 1425;
    if (find(name) != count()) return 1433;
    const auto [slot, type] = row->second;
    descriptions += name + std::string(102 - name.size(), '\0') + little(format, 2) +
                    little(type, 8) + little(type == 1 ? 2 : 6, 4) + little(values.size(), 4);
    values.append(slot, '\0');
    ++revision;
    return 0;
  }

  int set(std::size_t position, const Value& value) {
    if (position >= count()) return 1011;
    const unsigned format = formatAt(position);
    const std::size_t slot = littleAt(descriptions, 120 * position + 116);
    const unsigned size = kFormats.at(format).first;
    if (value.kind == Value::Null) {
      values.replace(slot, size, size, '\0');
    } else if (format == 1 || format == 11 || format == 51) {
      if (value.kind == Value::Fixed || value.kind == Value::Other) return 1000;
      if (format == 51 && value.kind != Value::Utf8) return 1000;
      std::string region = value.bytes;
      if (format == 1) region += '\0';
      if (format == 51) {
        region = little(region.size(), 4) + little(value.characters, 4) + region;
      }
      std::uint32_t offset = littleAt(values, slot + 4);
      if (littleAt(values, slot) < region.size()) {
        offset = static_cast<std::uint32_t>(longValues.size());
        longValues += region;
      } else {
        longValues.replace(offset, region.size(), region);
      }
      values.replace(slot, 8, little(region.size(), 4) + little(offset, 4));
    } else if (format == 3 || format == 24) {
      if (value.format != 3 && value.format != 24) return 1426;
      const std::string& id = value.bytes;
      const bool isNull = id.substr(0, 8) == std::string(8, '\0');
      const unsigned lifetime = static_cast<unsigned char>(id[10]) >> 6;
      if (!isNull && value.format == 3 && id.substr(12, 3) != std::string(3, '\0')) return 1013;
      if (!isNull && lifetime % 2 != 0) return 1215;  // the parent is persistent
      values.replace(slot, 12, id.substr(0, 12));
    } else {
      if (value.format != format) return 1426;
      values.replace(slot, size, value.bytes.substr(0, size));
    }
    ++revision;
    return 0;
  }

  int addAndSet(const std::string& name, unsigned format, const Value& value) {
    const Model before = *this;
    int status = add(name, format);
    if (status == 0) status = set(count() - 1, value);
    if (status != 0) *this = before;
    return status;
  }

  // Of a property of the position; nothing when it is null.
  std::optional<std::string> bytesAt(std::size_t position) const {
    const unsigned format = formatAt(position);
    const std::size_t slot = littleAt(descriptions, 120 * position + 116);
    if (format != 1 && format != 11 && format != 51) {
      return values.substr(slot, kFormats.at(format).first);
    }
    const std::uint32_t room = littleAt(values, slot);
    if (room == 0) return {};
    const std::string region = longValues.substr(littleAt(values, slot + 4), room);
    return format == 1 ? region.substr(0, room - 1) : format == 51 ? region.substr(8) : region;
  }
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_OBJECTMODEL_H
