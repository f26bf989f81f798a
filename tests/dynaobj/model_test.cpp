// Random operations on an object and on the model of objectmodel.h: the statuses, the images and
// the revision agree after each, and so does what is read.

#include "objectmodel.h"

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace nomtest;

class DynamicObjectModel : public Watched {
 protected:
  unsigned upTo(std::size_t last) { return static_cast<unsigned>(_random() % (last + 1)); }

  // Of names that are alike at both ends, since the index looks at words; 100 and 101 are limits.
  std::string name() {
    const unsigned number = upTo(60);
    if (number < 3) return std::string(99 + number, 'n');
    if (number < 10) return std::string(number - 3, 'p');
    return "property" + std::string(number / 3, '_') + std::to_string(number) + "property";
  }
  unsigned format() {
    static const std::vector<unsigned> formats = {
        1, 3, 4, 6, 7, 8, 11, 16, 17, 18, 19, 21, 24, 42, 44, 51, 52, 53, 57, 1, 11, 51, 1, 5, 20};
    return formats[upTo(formats.size() - 1)];
  }

  // A parameter and what it holds.
  Param parameter(Value& value) {
    static const std::vector<unsigned> formats = {1, 2, 14, 25, 6, 11, 33, 34, 51, 54, 36, 5, 20};
    const unsigned format =
        upTo(2) == 0 ? formats[upTo(formats.size() - 1)] : std::max(1u, this->format());
    std::string word(upTo(upTo(7) == 0 ? 300 : 24), 'a');
    for (char& letter : word) letter = static_cast<char>('a' + upTo(25));
    if (upTo(3) == 0) word += "~";
    if (word.empty()) word = "_";
    Param made(format, word);
    std::string text(made.memory.data(), made.memory.size());
    if (format == 1) text.pop_back();
    const auto* const bytes = reinterpret_cast<const char*>(made.get()) + 8;
    value = {Value::Fixed, format, std::string(bytes, 32), 0};
    if (isAmong(format, {1, 2, 14, 25})) value = {Value::String, format, text, 0};
    if (isAmong(format, {11, 33, 34})) value = {Value::Binary, format, text, 0};
    if (isAmong(format, {51, 54})) {
      const auto second = static_cast<std::uint32_t>(std::count(text.begin(), text.end(), '\xA4'));
      value = {Value::Utf8, format, text, static_cast<std::uint32_t>(text.size()) - second};
    }
    if (format == 36) value.kind = Value::Null;
    if (format == 6) value = {Value::String, format, value.bytes.substr(0, 1), 0};
    return made;
  }

  void step(Object& object, Model& model) {
    const std::string name = this->name();
    const std::size_t position = model.find(name);
    const auto index = static_cast<std::uint32_t>(position + 1);
    const unsigned format = this->format();
    const auto asFormat = static_cast<PFormat>(format);
    Value value{};
    switch (upTo(9)) {
      case 0:
        ASSERT_EQ(object->addAttribute(name.c_str(), asFormat), model.add(name, format));
        break;
      case 1: {
        const Param source = parameter(value);
        ASSERT_EQ(object->addAndSetAttributeValue(name.c_str(), source, asFormat),
                  model.addAndSet(name, format, value));
        break;
      }
      case 2: {
        const Object copy = rebuilt(model.descriptions, model.values, model.longValues);
        ASSERT_EQ(copy->cloneSelf(object.get()), 0);
        model.revision = 0;
        break;
      }
      case 3:
        if (upTo(99) != 0) break;
        object->clear();
        model.descriptions = model.values = model.longValues = "";
        break;
      case 4: {
        const auto usage = static_cast<std::uint8_t>(upTo(255));
        const bool isFound = position < model.count();
        ASSERT_EQ(object->setPropertyUsage(name.c_str(), usage), isFound ? 0 : 1011);
        if (!isFound) break;
        model.descriptions[120 * position + 101] = static_cast<char>(usage);
        ++model.revision;
        break;
      }
      case 5:
      case 6: {
        const Param source = parameter(value);
        ASSERT_EQ(object->setPropertyValue(index, source), model.set(position, value));
        break;
      }
      default: {
        const Param source = parameter(value);
        ASSERT_EQ(object->setPropertyValue(name.c_str(), source), model.set(position, value));
      }
    }
    lines();  // their texts have a test of their own
    ASSERT_EQ(stateOf(*object), model.state());
  }

  void read(const DynamicObject& object, const Model& model) {
    ASSERT_EQ(object.getPropertyCount(), model.count());
    for (std::size_t position = 0; position < model.count(); ++position) {
      std::uint32_t length = 77;
      const unsigned char* bytes = nullptr;
      ASSERT_EQ(object.getPropertyValue(model.nameAt(position).c_str(), length, bytes), 0);
      const auto expected = model.bytesAt(position);
      ASSERT_EQ(bytes != nullptr, expected.has_value());
      Param any(5);
      bool isNull = expected.has_value();
      ASSERT_EQ(object.getPropertyValue(static_cast<std::uint32_t>(position + 1), any, isNull), 0);
      ASSERT_EQ(isNull, !expected.has_value());
      if (bytes == nullptr) continue;
      ASSERT_EQ(std::string(reinterpret_cast<const char*>(bytes), length), *expected);
    }
  }

 private:
  std::mt19937_64 _random{0x0B7EC7};
};

TEST_F(DynamicObjectModel, AgreesAfterEveryOperation) {
  Object object = newObject();
  Model model;
  for (unsigned i = 0; i < 20000 && !HasFatalFailure(); ++i) {
    SCOPED_TRACE(i);
    step(object, model);
    if (i % 50 == 0) read(*object, model);
    if (model.longValues.size() > 20000) {
      object->clear();
      model.descriptions = model.values = model.longValues = "";
    }
  }
}

}  // namespace
