// Properties: finding them, adding them, and what is told of them besides their values.

#include "finding.h"
#include "nameindex.h"
#include "propertyformats.h"

#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/dynaobj.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace nomutil::dynaobj;

namespace {

// From so many properties on an index is built, once so many searches have gone without: it takes
// as long as they do.
constexpr std::uint32_t kIndexedCount = 4;
constexpr std::uint8_t kSearchesWithout = 5;

// Bounded by the field, of which a name from outside may fill every byte. REQUIRES: the description
// is whole.
std::uint32_t nameLength(const void* description) {
  const ShortName text(static_cast<const char*>(description));
  if (text.isShort()) return text.length();
  const void* const end = std::memchr(description, '\0', sizeof PropertyDesc::name);
  return end == nullptr ? std::uint32_t{sizeof PropertyDesc::name}
                        : static_cast<std::uint32_t>(static_cast<const char*>(end) -
                                                     static_cast<const char*>(description));
}

int setInteger(DskParam* parameter, std::uint32_t number) {
  if (parameter == nullptr) return kInvalidParameterType;
  parameter->header.format = DSKINTEGER;
  parameter->header.more = 0;
  parameter->setValue(number);
  return kNoError;
}

ClassID classOf(std::uint32_t number) {
  return {{static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
           static_cast<std::uint8_t>(number >> 16)}};
}

int giveType(const PropertyDesc* property, DskObjectId& type) {
  if (property == nullptr) return kPropertyNotDefined;
  type = {};
  type.instanceId = property->typeNumber;
  type.classId = classOf(property->typeClass);
  return kNoError;
}

int giveFormat(const PropertyDesc* property, PFormat& format) {
  if (property == nullptr) return kPropertyNotDefined;
  format = property->format;
  return kNoError;
}

int giveUsage(const PropertyDesc* property, std::uint8_t& usage) {
  if (property == nullptr) return kPropertyNotDefined;
  usage = property->usage;
  return kNoError;
}

// The format of a property that is to hold the value of a parameter.
PFormat foldedFormat(PFormat format) {
  switch (format) {
    case DSKSTRING:
    case DSKSTRINGBLOCK:
    case DSKKORASTRING:
      return DSKCSTRING;
    case DSKKORABINARY:
    case DSKBINARYBLOCK:
      return DSKBINARY;
    case DSKKORASTRINGUTF8:
      return DSKSTRINGUTF8BLOCK;
    default:
      return format;
  }
}

int refuseFormat(const char* name, int format) {
  nomLog("DynamicObject::addAttribute(%s) invalid type: %d", name == nullptr ? "" : name, format);
  return kInvalidParameterType;
}

}  // namespace

// ---- The index of names ----

// Nobody reads while the object changes, so a plain store does; an exchange would take longer than
// the rest of most changes.
void DynamicObject::_dropNameIndex() {
  NameIndex* const index = _index.load(std::memory_order_relaxed);
  if (index == nullptr) return;
  _index.store(nullptr, std::memory_order_relaxed);
  NameIndex::release(index);
}

// For other descriptions, which may be searched rarely.
void DynamicObject::_forgetNames() {
  _dropNameIndex();
  _searches.store(0, std::memory_order_relaxed);
}

// Readers may build it at the same time: the first to finish gives it to all.
const NameIndex* DynamicObject::_makeNameIndex() const {
  const std::uint32_t count = getPropertyCount();
  if (count < kIndexedCount) return nullptr;
  // Searches of several threads may count as one.
  const std::uint8_t searches = _searches.load(std::memory_order_relaxed);
  if (searches < kSearchesWithout) {
    _searches.store(static_cast<std::uint8_t>(searches + 1), std::memory_order_relaxed);
    return nullptr;
  }
  NameIndex* const built = NameIndex::create(count, _descSize);
  if (built == nullptr) return nullptr;
  const unsigned char* description = _descriptions.data();
  for (std::uint32_t i = 0; i < count; ++i, description += _descSize) {
    const auto* const name = reinterpret_cast<const char*>(description);
    built->append(nameHash(name, nameLength(description)));
  }
  NameIndex* other = nullptr;
  if (_index.compare_exchange_strong(other, built, std::memory_order_acq_rel)) return built;
  NameIndex::release(built);
  return other;
}

// ---- Finding ----

// The first property of the name. A description whose name does not end is none.
const PropertyDesc* DynamicObject::_findPropertyDescriptor(const char* name,
                                                           std::size_t length) const {
  if (length > kMaximumNameLength) return nullptr;
  const auto* const descriptions = reinterpret_cast<const char*>(_descriptions.data());
  const auto bytes = static_cast<std::uint32_t>(length);
  const auto isMatch = [=](std::uint32_t offset) {
    const char* const held = descriptions + offset;
    return held[bytes] == '\0' && held[kMaximumNameLength] == '\0' && isSameText(held, name, bytes);
  };
  const NameIndex* index = _index.load(std::memory_order_acquire);
  if (index == nullptr) index = _makeNameIndex();
  std::uint32_t offset = kNoName;
  if (index != nullptr) {
    offset = index->find(nameHash(name, bytes), isMatch);
  } else {
    const std::uint32_t count = getPropertyCount();
    for (std::uint32_t i = 0; i < count && offset == kNoName; ++i) {
      if (isMatch(i * _descSize)) offset = i * _descSize;
    }
  }
  if (offset == kNoName) return nullptr;
  return reinterpret_cast<const PropertyDesc*>(descriptions + offset);
}

const PropertyDesc* DynamicObject::_findAnyName(const char* name) const {
  return name == nullptr ? nullptr : _findPropertyDescriptor(name, std::strlen(name));
}

const PropertyDesc* DynamicObject::_findPropertyDescriptor(const char* name) const {
  const PropertyDesc* const property = _findShortName(name);
  return property != nullptr ? property : _findAnyName(name);
}

// ---- Adding ----

int DynamicObject::_addProperty(const char* name, const DskObjectId& type, PFormat format) {
  const std::size_t length = std::strlen(name);
  if (length > kMaximumNameLength) {
    nomInfo("DynamicObject::addProperty: property %s name too long", name);
    return kPropertyNameTooLong;
  }
  if (_findPropertyDescriptor(name, length) != nullptr) {
    nomLog("KoraDynamicObject::addProperty: property %s already defined", name);
    return kPropertyNameConflict;
  }
  const std::uint32_t before = _descriptions.length();
  if (before % _descSize != 0) return kInvalidParameterValue;
  const PropertyFormat& row = propertyFormat(format);
  if (std::uint64_t{before} + _descSize > kKoraNoMaximum ||
      std::uint64_t{_values.length()} + row.slotSize > kKoraNoMaximum) {
    return kBinaryTooLong;
  }

  // Built aside, since the name may lie in the image that moves.
  PropertyDesc property{};
  std::memcpy(property.name, name, length);
  property.format = format;
  const bool isTyped = type.instanceId != 0 && type.classId.number() != 0;
  property.typeNumber = isTyped ? type.instanceId : row.typeNumber;
  property.typeClass = isTyped ? type.classId.number() : row.typeClass;
  property.slotOffset = _values.length();
  const int status = statusOf([&] {
    _descriptions.resize(before + _descSize);
    _values.resize(property.slotOffset + row.slotSize);
  });
  if (status != kNoError) {
    _descriptions.resize(before);
    return status;
  }
  std::memcpy(_descriptions.data() + before, &property, sizeof property);
  NameIndex* const index = _index.load(std::memory_order_relaxed);
  const auto bytes = static_cast<std::uint32_t>(length);
  if (index != nullptr && !index->append(nameHash(property.name, bytes))) _dropNameIndex();
  ++_revision;
  return kNoError;
}

int DynamicObject::addAttribute(const char* name, const DskObjectId& type, PFormat format) {
  if (propertyFormat(format).form == Form::None) return refuseFormat(name, format);
  return name == nullptr ? kInvalidParameterValue : _addProperty(name, type, format);
}

int DynamicObject::addAttribute(const char* name, PFormat format) {
  return addAttribute(name, DskObjectId{}, format);
}

int DynamicObject::addReference(const char* name, const DskObjectId& type) {
  return addAttribute(name, type, DSKSHORTOBJECTID);
}

bool DynamicObject::_isInGrowingImage(const void* bytes) const {
  const auto lies = [place = reinterpret_cast<std::uintptr_t>(bytes)](const KoraBytes& image) {
    const auto begin = reinterpret_cast<std::uintptr_t>(image.bytes());
    return place >= begin && place - begin < image.length();
  };
  return lies(_descriptions) || lies(_values);
}

// set(property) sets the value of the new property.
template <class Set>
int DynamicObject::_addAndSet(const char* name, PFormat format, Set set) {
  const std::uint32_t descriptions = _descriptions.length();
  const std::uint32_t values = _values.length();
  const std::uint32_t longValues = _longValues.length();
  const std::uint32_t revision = _revision;
  int status = addAttribute(name, format);
  if (status != kNoError) return status;
  const unsigned char* const added = _descriptions.data() + descriptions;
  status = set(*reinterpret_cast<const PropertyDesc*>(added));
  if (status == kNoError) return kNoError;
  _descriptions.resize(descriptions);
  _values.resize(values);
  _longValues.resize(longValues);
  _dropNameIndex();
  _revision = revision;
  return status;
}

int DynamicObject::addAndSetAttributeValue(const char* name, const DskParam* value) {
  if (value == nullptr) return kInvalidParameterType;
  return addAndSetAttributeValue(name, value, foldedFormat(value->header.format));
}

int DynamicObject::addAndSetAttributeValue(const char* name, const DskParam* value,
                                           PFormat format) {
  if (value == nullptr) return kInvalidParameterType;
  // A value that looks at an image which the new property moves is copied first.
  KoraString<unsigned char> copy;
  ShortDskParam looking;
  const bool isBlock = value->header.format == DSKSTRINGBLOCK ||
                       value->header.format == DSKBINARYBLOCK ||
                       value->header.format == DSKSTRINGUTF8BLOCK;
  const auto* const bytes = value->getValue<const unsigned char*>();
  if ((isBlock || value->header.format == DSKCSTRING) && _isInGrowingImage(bytes)) {
    const auto block = value->getValue<DskBinaryBlock>();
    std::uint32_t length = block.length;
    if (!isBlock) length = static_cast<std::uint32_t>(std::strlen(value->getValue<char*>()));
    if (value->header.format == DSKSTRINGUTF8BLOCK) length = block.offset;
    const int status = statusOf([&] { copy.set(bytes, length); });
    if (status != kNoError) return status;
    std::memcpy(static_cast<void*>(&looking), value, sizeof looking);
    looking.setValue(copy.data());
    value = looking;
  }
  return _addAndSet(name, format, [this, value](const PropertyDesc& property) {
    return _setPropertyValue(property, value);
  });
}

int DynamicObject::addAndSetAttributeValue(const char* name, PFormat format, std::uint32_t length,
                                           const void* bytes) {
  KoraString<unsigned char> copy;
  if (_isInGrowingImage(bytes)) {
    const int status = statusOf([&] { copy.setBytes(bytes, length); });
    if (status != kNoError) return status;
    bytes = copy.bytes();
  }
  return _addAndSet(name, format, [=, this](const PropertyDesc& property) {
    return _setPropertyValue(property, length, bytes);
  });
}

// ---- Telling ----

std::uint32_t DynamicObject::getPropertyCount() const {
  return _descriptions.length() / _descSize;
}

int DynamicObject::getPropertyCount(DskParam* count) const {
  return setInteger(count, getPropertyCount());
}

int DynamicObject::getPropertyName(std::uint32_t index, char* buffer, std::uint32_t size) const {
  const bool hasRoom = buffer != nullptr && size != 0;
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  if (property == nullptr) {
    if (hasRoom) *buffer = '\0';
    const std::uint32_t count = getPropertyCount();
    if (index == 0 || index > count) {
      nomLog("[DynamicObject::getPropertyName] index out of range (%d), maxIndex=%u",
             static_cast<int>(index), count);
    }
    return kPropertyNotDefined;
  }
  if (!hasRoom) return kStringTooLong;
  const std::uint32_t length = nameLength(property);
  const std::uint32_t copied = std::min(length, size - 1);
  std::memcpy(buffer, property->name, copied);
  buffer[copied] = '\0';
  return copied == length ? kNoError : kStringTooLong;
}

int DynamicObject::getPropertyIndex(const char* name, DskParam* index) const {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  if (property == nullptr) return kPropertyNotDefined;
  const std::ptrdiff_t offset =
      reinterpret_cast<const unsigned char*>(property) - _descriptions.data();
  return setInteger(index, static_cast<std::uint32_t>(offset) / _descSize + 1);
}

int DynamicObject::getPropertyUsage(const char* name, std::uint8_t& usage) const {
  return giveUsage(_findPropertyDescriptor(name), usage);
}
int DynamicObject::getPropertyUsage(std::uint32_t index, std::uint8_t& usage) const {
  return giveUsage(_findPropertyDescriptor(index), usage);
}

int DynamicObject::setPropertyUsage(const char* name, std::uint8_t usage) {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  if (property == nullptr) return kPropertyNotDefined;
  const_cast<PropertyDesc*>(property)->usage = usage;
  ++_revision;
  return kNoError;
}

int DynamicObject::getPropertyType(const char* name, DskObjectId& type) const {
  return giveType(_findPropertyDescriptor(name), type);
}
int DynamicObject::getPropertyType(std::uint32_t index, DskObjectId& type) const {
  return giveType(_findPropertyDescriptor(index), type);
}
int DynamicObject::getPropertyFormat(const char* name, PFormat& format) const {
  return giveFormat(_findPropertyDescriptor(name), format);
}
int DynamicObject::getPropertyFormat(std::uint32_t index, PFormat& format) const {
  return giveFormat(_findPropertyDescriptor(index), format);
}
