// Finding a property and its value, which every operation begins with: inline, since it takes less
// time than the calls would. Here a description is checked against the images.
#ifndef NOMUTIL_DYNAOBJ_FINDING_H
#define NOMUTIL_DYNAOBJ_FINDING_H

#include "nameindex.h"
#include "propertyformats.h"

#include "sys/dynaobj.h"
#include "sys/messages.h"

#include <atomic>
#include <cstdint>

// For the sources of this family alone, which say the same.
using namespace nomutil::dynaobj;

// Most properties that are there, at once; null for all others. Calls nothing, so that who calls
// this has little to keep.
inline const PropertyDesc* DynamicObject::_findShortName(const char* name) const {
  const NameIndex* const index = _index.load(std::memory_order_acquire);
  if (index == nullptr || name == nullptr || !ShortName::mayLoad(name)) return nullptr;
  const ShortName text(name);
  if (!text.isShort()) return nullptr;
  const std::uint32_t length = text.length();
  if (length > ShortName::kMaximum) __builtin_unreachable();  // nameHash needs no loop here
  const auto* const descriptions = reinterpret_cast<const char*>(_descriptions.data());
  const auto isMatch = [=](std::uint32_t offset) {
    const char* const held = descriptions + offset;
    return text.isSame(held) && held[kMaximumNameLength] == '\0';
  };
  const std::uint32_t offset = index->findEntered(nameHash(name, length), isMatch);
  if (offset == kNoName) return nullptr;
  return reinterpret_cast<const PropertyDesc*>(descriptions + offset);
}

// A description whose name does not end is none.
inline const PropertyDesc* DynamicObject::_findPropertyDescriptor(std::uint32_t index) const {
  const std::uint64_t end = std::uint64_t{index} * _descSize;
  if (index == 0 || end > _descriptions.length()) return nullptr;
  const unsigned char* const description = _descriptions.data() + end - _descSize;
  const auto* const property = reinterpret_cast<const PropertyDesc*>(description);
  return property->name[kMaximumNameLength] == '\0' ? property : nullptr;
}

// 1000 for a format that no property has.
inline int DynamicObject::_findSlot(const PropertyDesc& property, Slot& slot) const {
  slot = {property.slotOffset, propertyFormat(property.format)};
  if (slot.format.form == Form::None) return kInvalidParameterType;
  const std::uint64_t end = std::uint64_t{slot.offset} + slot.format.slotSize;
  return end <= _values.length() ? kNoError : kInvalidParameterValue;
}

inline int DynamicObject::_findContent(const PropertyDesc& property, Content& content) const {
  Slot slot;
  const int status = _findSlot(property, slot);
  if (status != kNoError) return status;
  const unsigned char* const bytes = _values.data() + slot.offset;
  const Form form = slot.format.form;
  if (form == Form::Fixed || form == Form::Reference) {
    content = {bytes, 0, slot.format.slotSize, 0};
    return kNoError;
  }

  content = {};
  const auto region = loadFrom<Region>(bytes);
  if (region.room == 0) return kNoError;
  if (std::uint64_t{region.offset} + region.room > _longValues.length()) {
    return kInvalidParameterValue;
  }
  const unsigned char* const held = _longValues.data() + region.offset;
  if (form == Form::Binary) {
    content = {held, 0, region.room, 0};
  } else if (form == Form::String) {
    // The copy into a DSKCSTRING goes up to a NUL.
    if (held[region.room - 1] != '\0') return kInvalidParameterValue;
    content = {held, 0, region.room - 1, 0};
  } else {
    if (region.room < sizeof(Utf8Lengths)) return kInvalidParameterValue;
    const auto lengths = loadFrom<Utf8Lengths>(held);
    if (lengths.bytes > region.room - sizeof lengths) return kInvalidParameterValue;
    content = {held + sizeof lengths, 0, lengths.bytes, lengths.characters};
  }
  return kNoError;
}

#endif  // NOMUTIL_DYNAOBJ_FINDING_H
