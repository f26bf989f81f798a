// The public operations on values, which find the property and leave the rest to the operations
// that a kind of object may replace; and the list of all values.

#include "finding.h"
#include "propertyformats.h"

#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/build.h"
#include "sys/dynaobj.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstdint>
#include <cstring>

using namespace nomutil::dynaobj;

namespace {

constexpr const char* kFile = "objman/common/source/dynaobj";

// A list: where the entries lie and how many there are. It is not aligned.
struct List {
  ShortDskParam* entries;
  std::uint32_t count;
};
constexpr std::size_t kListSize = 12;

int refuseList(const char* operation, const DskParam* list) {
  if (list != nullptr) {
    nomLog("DynamicObject::%s: invalid parameter type (%u)", operation, list->header.format);
  }
  return kInvalidParameterType;
}

// What is rare stays out of line: the short way to the bytes then has nothing to keep.
[[gnu::noinline]] int refuseBytes(const PropertyDesc& property) {
  nomLog("DynamicObject::getPropertyValue(%s) invalid attribute type %d", property.name,
         property.format);
  return kInvalidParameterType;
}

}  // namespace

// ---- One value ----

int DynamicObject::getPropertyValue(const char* name, DskParam* value) const {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  return property == nullptr ? kPropertyNotDefined : _getPropertyValue(*property, value);
}
int DynamicObject::getPropertyValue(std::uint32_t index, DskParam* value) const {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  return property == nullptr ? kPropertyNotDefined : _getPropertyValue(*property, value);
}
int DynamicObject::getPropertyValue(const char* name, DskParam* value, bool& isNull) const {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  return property == nullptr ? kPropertyNotDefined : _getPropertyValue(*property, value, isNull);
}
int DynamicObject::getPropertyValue(std::uint32_t index, DskParam* value, bool& isNull) const {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  return property == nullptr ? kPropertyNotDefined : _getPropertyValue(*property, value, isNull);
}

int DynamicObject::setPropertyValue(const char* name, const DskParam* value) {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  return property == nullptr ? kPropertyNotDefined : _setPropertyValue(*property, value);
}
int DynamicObject::setPropertyValue(std::uint32_t index, const DskParam* value) {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  return property == nullptr ? kPropertyNotDefined : _setPropertyValue(*property, value);
}

inline int DynamicObject::_getPropertyBytes(const PropertyDesc* property, std::uint32_t& length,
                                            const unsigned char*& bytes) const {
  if (property == nullptr) return kPropertyNotDefined;
  Content content;
  const int status = _findContent(*property, content);
  if (status == kInvalidParameterType) return refuseBytes(*property);
  if (status != kNoError) return status;
  length = content.length;
  bytes = content.data;
  return kNoError;
}

[[gnu::noinline]] int DynamicObject::_getAnyPropertyBytes(const char* name, std::uint32_t& length,
                                                          const unsigned char*& bytes) const {
  return _getPropertyBytes(_findAnyName(name), length, bytes);
}

int DynamicObject::getPropertyValue(const char* name, std::uint32_t& length,
                                    const unsigned char*& bytes) const {
  const PropertyDesc* const property = _findShortName(name);
  return property != nullptr ? _getPropertyBytes(property, length, bytes)
                             : _getAnyPropertyBytes(name, length, bytes);
}
int DynamicObject::getPropertyValue(std::uint32_t index, std::uint32_t& length,
                                    const unsigned char*& bytes) const {
  return _getPropertyBytes(_findPropertyDescriptor(index), length, bytes);
}
int DynamicObject::getPropertyValue(std::uint32_t index, const char*& name, PFormat& format,
                                    std::uint32_t& length, const unsigned char*& bytes) const {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  const int status = _getPropertyBytes(property, length, bytes);
  if (status != kNoError) return status;
  name = property->name;
  format = property->format;
  return kNoError;
}

int DynamicObject::setPropertyValue(const char* name, std::uint32_t length, const void* bytes) {
  const PropertyDesc* const property = _findPropertyDescriptor(name);
  return property == nullptr ? kPropertyNotDefined : _setPropertyValue(*property, length, bytes);
}
int DynamicObject::setPropertyValue(std::uint32_t index, std::uint32_t length, const void* bytes) {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  return property == nullptr ? kPropertyNotDefined : _setPropertyValue(*property, length, bytes);
}
int DynamicObject::setPropertyValue(std::uint32_t index, const char* name, PFormat format,
                                    std::uint32_t length, const void* bytes) {
  const PropertyDesc* const property = _findPropertyDescriptor(index);
  if (property == nullptr || name == nullptr || std::strcmp(property->name, name) != 0) {
    return kPropertyNotDefined;
  }
  return property->format == format ? _setPropertyValue(*property, length, bytes)
                                    : kPropertyTypeMismatch;
}

// ---- All values ----

int DynamicObject::copyToDskParamList(DskParam* list, ShortDskParam* array,
                                      std::uint32_t paramArraySize) const {
  if (list == nullptr) return kInvalidParameterType;
  NOMUTIL_REQUIRE(kFile, getPropertyCount() <= paramArraySize);
  const std::uint32_t count = getPropertyCount();
  if (count > paramArraySize || (array == nullptr && count != 0)) return kInvalidParameterValue;
  int status = kNoError;
  std::uint32_t made = 0;
  while (made < count && status == kNoError) {
    ShortDskParam& entry = array[made++];
    paramCreateKoraAny(entry, 0);
    const PropertyDesc* const pPropDesc = _findPropertyDescriptor(made);
    NOMUTIL_ASSERT(kFile, pPropDesc != nullptr);
    bool isNull = false;
    status =
        pPropDesc == nullptr ? kPropertyNotDefined : _getPropertyValue(*pPropDesc, entry, isNull);
    if (status != kNoError || !isNull) continue;
    // An empty value would not be null when it is set again.
    paramDeleteKoraAny(entry);
    entry = ShortDskParam::allZero();
    entry.header.format = DSKNULL;
  }
  if (status != kNoError) {
    while (made != 0) paramDeleteKoraAny(array[--made]);
    return status;
  }
  list->header.format = DSKMEMORYADDRESS;
  list->header.more = 0;
  const List whole{array, count};
  std::memcpy(reinterpret_cast<unsigned char*>(list) + sizeof(DskParamHeader), &whole, kListSize);
  return kNoError;
}

int DynamicObject::copyFromDskParamList(const DskParam* list) {
  if (list == nullptr || list->header.format != DSKMEMORYADDRESS) {
    return refuseList("copyFromDskParamList", list);
  }
  List whole{};
  std::memcpy(&whole, reinterpret_cast<const unsigned char*>(list) + sizeof(DskParamHeader),
              kListSize);
  const std::uint32_t paramArraySize = whole.count;
  NOMUTIL_REQUIRE(kFile, getPropertyCount() <= paramArraySize);
  const std::uint32_t count = getPropertyCount();
  if (count > paramArraySize || (whole.entries == nullptr && count != 0)) {
    return kInvalidParameterValue;
  }

  // The images are replaced by copies, so that entries may look at the bytes that they had.
  const std::uint32_t revision = _revision;
  KoraString<unsigned char> values;
  KoraString<unsigned char> longValues;
  int status = statusOf([&] {
    values = _values;
    longValues = _longValues;
  });
  if (status != kNoError) return status;
  _values.swap(values);
  _longValues.swap(longValues);
  for (std::uint32_t index = 1; index <= count && status == kNoError; ++index) {
    const PropertyDesc* const pPropDesc = _findPropertyDescriptor(index);
    NOMUTIL_ASSERT(kFile, pPropDesc != nullptr);
    status = pPropDesc == nullptr ? kPropertyNotDefined
                                  : _setPropertyValue(*pPropDesc, whole.entries[index - 1]);
  }
  if (status != kNoError) {
    _values.swap(values);
    _longValues.swap(longValues);
    _revision = revision;
  }
  return status;
}
