// Fields are told by docs/formats/dynaobj.md: the description of the first property begins with its
// name at 0, and has its usage at 101; its slot lies where the last four bytes say.
#include "objectview.h"

#include "parametertext.h"
#include "storednumber.h"
#include "valuetext.h"

#include "nomos/intl.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace nomtool {
namespace {

template <class T>
T recordAt(std::string_view bytes, std::size_t offset) {
  T record{};
  const std::string_view held = bytes.substr(offset);
  std::memcpy(&record, held.data(), std::min(held.size(), sizeof record));
  return record;
}

std::string_view viewOf(const KoraString<unsigned char>& image) {
  return {reinterpret_cast<const char*>(image.data()), image.length()};
}

bool isRegion(PFormat format) {
  return format == DSKCSTRING || format == DSKBINARY || format == DSKSTRINGUTF8BLOCK;
}

std::string textOfValue(PFormat format, std::string_view bytes) {
  switch (format) {
    case DSKCSTRING:
      return convert(IntlFormat::CodePage, bytes, IntlFormat::Utf8).text;
    case DSKSTRINGUTF8BLOCK:
      return std::string(bytes);
    case DSKBINARY:
      return hexOf(bytes.data(), bytes.size());
    default: {
      BuiltParameter built;
      built.parameter.header.format = format == DSKOBJECTID ? DSKSHORTOBJECTID : format;
      std::memcpy(built.parameter.value, bytes.data(), bytes.size());
      const ConvertedText shown = textOf(built.parameter, bytes.size());
      return shown.status == kNoError ? shown.text : hexOf(bytes.data(), bytes.size());
    }
  }
}

// ---- Images ----

void add(ImageView& image, std::size_t offset, std::size_t length, std::string meaning) {
  image.fields.push_back({offset, length, std::move(meaning)});
}

// Brings the fields in order, and names the bytes between them.
void close(ImageView& image) {
  std::ranges::stable_sort(image.fields, {}, &ImageField::offset);
  std::vector<ImageField> all;
  std::size_t end = 0;
  const auto fill = [&](std::size_t next) {
    if (next > end) all.push_back({end, next - end, "not in use"});
  };
  for (ImageField& field : image.fields) {
    fill(field.offset);
    end = std::max(end, field.offset + field.length);
    all.push_back(std::move(field));
  }
  fill(image.bytes.size());
  image.fields = std::move(all);
}

ImageView formatDescriptorOf(const DynamicObject& object) {
  ImageView image{
      "format descriptor",
      {reinterpret_cast<const char*>(object.getFormatDesc()), DynamicObject::kFormatDescSize},
      {}};
  const auto addNumber = [&](std::size_t from, std::size_t place, const std::string& name) {
    add(image, from, place - from, "title");
    add(image, place, 1, name + ' ' + std::to_string(recordAt<std::uint8_t>(image.bytes, place)));
  };
  addNumber(0, 13, "format");
  addNumber(14, 28, "version");
  addNumber(29, 44, "charSize");
  return image;
}

void addDescription(ImageView& image, std::size_t at, const PropertyView& property,
                    const PropertyDesc& desc) {
  const auto addNumber = [&](std::size_t offset, std::size_t size, const char* name,
                             std::uint64_t number) {
    add(image, at + offset, size, std::string(name) + ' ' + std::to_string(number));
  };
  add(image, at, sizeof desc.name, "name " + property.name);
  addNumber(offsetof(PropertyDesc, usage), 1, "usage", desc.usage);
  addNumber(offsetof(PropertyDesc, format), 2, "format", desc.format);
  image.fields.back().meaning += std::string(" ") + getParamFormatName(desc.format);
  addNumber(offsetof(PropertyDesc, typeNumber), 8, "typeNumber", desc.typeNumber);
  addNumber(offsetof(PropertyDesc, typeClass), 4, "typeClass", desc.typeClass);
  addNumber(offsetof(PropertyDesc, slotOffset), 4, "slotOffset", desc.slotOffset);
}

void addRegion(ImageView& image, std::uint32_t room, std::uint32_t offset,
               const PropertyView& property) {
  if (room == 0) return;
  const std::string name = property.name + ": ";
  if (property.format != DSKSTRINGUTF8BLOCK) {
    add(image, offset, room, name + (property.format == DSKBINARY ? "bytes" : "text and NUL"));
    return;
  }
  const auto byteCount = recordAt<std::uint32_t>(image.bytes, offset);
  const auto characterCount = recordAt<std::uint32_t>(image.bytes, std::size_t{offset} + 4);
  add(image, offset, 4, name + "bytes " + std::to_string(byteCount));
  add(image, std::size_t{offset} + 4, 4, name + "characters " + std::to_string(characterCount));
  if (byteCount != 0) add(image, std::size_t{offset} + 8, byteCount, name + "text");
}

}  // namespace

std::vector<PropertyView> propertiesOf(const DynamicObject& object) {
  std::vector<PropertyView> properties(object.getPropertyCount());
  for (std::uint32_t index = 1; index <= properties.size(); ++index) {
    PropertyView& property = properties[index - 1];
    const char* name = "";
    std::uint32_t length = 0;
    const unsigned char* bytes = nullptr;
    DskObjectId type{};
    object.getPropertyValue(index, name, property.format, length, bytes);
    object.getPropertyUsage(index, property.usage);
    object.getPropertyType(index, type);
    property.name = convert(IntlFormat::CodePage, name, IntlFormat::Utf8).text;
    property.type = std::to_string(type.classId.number()) + '.' + std::to_string(type.instanceId);
    property.isNull = bytes == nullptr;
    if (property.isNull) continue;
    property.bytes = {reinterpret_cast<const char*>(bytes), length};
    property.text = textOfValue(property.format, property.bytes);
  }
  return properties;
}

std::vector<ImageView> imagesOf(const DynamicObject& object) {
  const std::vector<PropertyView> properties = propertiesOf(object);
  ImageView descriptions{"descriptions", viewOf(object.getPropertyDescriptions()), {}};
  ImageView values{"values", viewOf(object.getValues()), {}};
  ImageView longValues{"long values", viewOf(object.getLongValues()), {}};
  std::size_t at = 0;
  for (const PropertyView& property : properties) {
    const auto desc = recordAt<PropertyDesc>(descriptions.bytes, at);
    const std::size_t slot = desc.slotOffset;
    addDescription(descriptions, at, property, desc);
    at += object.getPropertyDescSize();
    if (!isRegion(property.format)) {
      add(values, slot, property.bytes.size(), property.name);
      continue;
    }
    const auto room = recordAt<std::uint32_t>(values.bytes, slot);
    const auto offset = recordAt<std::uint32_t>(values.bytes, slot + 4);
    add(values, slot, 4, property.name + ": room " + std::to_string(room));
    add(values, slot + 4, 4, property.name + ": offset " + std::to_string(offset));
    addRegion(longValues, room, offset, property);
  }
  std::vector<ImageView> images = {formatDescriptorOf(object), std::move(descriptions),
                                   std::move(values), std::move(longValues)};
  std::ranges::for_each(images, close);
  return images;
}

}  // namespace nomtool
