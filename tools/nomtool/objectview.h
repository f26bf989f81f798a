// What is in a dynamic object, as texts: its properties with their values, and its images field by
// field.
#ifndef NOMTOOL_OBJECTVIEW_H
#define NOMTOOL_OBJECTVIEW_H

#include "sys/dynaobj.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {

struct PropertyView {
  std::string name;
  PFormat format;
  std::uint8_t usage;
  std::string type;  // class and number, as "6.7"
  bool isNull;
  std::string text;        // UTF-8; digits of a binary
  std::string_view bytes;  // until the object changes
};

// REQUIRES: the images hold together, as those of readObject do.
std::vector<PropertyView> propertiesOf(const DynamicObject& object);

// Bytes of an image, and what they mean.
struct ImageField {
  std::size_t offset;
  std::size_t length;
  std::string meaning;
};
struct ImageView {
  std::string name;
  std::string_view bytes;          // until the object changes
  std::vector<ImageField> fields;  // in the order of their offsets; those from outside may overlap
};

// The format descriptor, descriptions, values and long values. Every byte is in a field. REQUIRES:
// as above.
std::vector<ImageView> imagesOf(const DynamicObject& object);

}  // namespace nomtool

#endif  // NOMTOOL_OBJECTVIEW_H
