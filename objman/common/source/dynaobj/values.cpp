// Values: from the images into parameters and back. Whatever a description says is compared with
// the images before a byte is read or written through it: the slot with the values image, the
// region with the long values, what a region says of itself with its room.

#include "finding.h"
#include "propertyformats.h"

#include "nomos/intl.h"
#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/dynaobj.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace nomutil::dynaobj;

namespace {

// One of the sizes that slots of fixed formats have. The places may overlap.
inline void copyFixed(void* to, const void* from, std::uint32_t size) {
  switch (size) {
    case 1:
      std::memmove(to, from, 1);
      break;
    case 4:
      std::memmove(to, from, 4);
      break;
    case 8:
      std::memmove(to, from, 8);
      break;
    case 12:
      std::memmove(to, from, 12);
      break;
    default:
      std::memmove(to, from, 16);
  }
}

int tooLong(Form form) {
  return form == Form::String   ? kStringTooLong
         : form == Form::Binary ? kBinaryTooLong
                                : kStringUtf8TooLong;
}

int refuseGet(const PropertyDesc& property) {
  nomLog("DynamicObject::getPropertyValue(%s) invalid attribute type %d", property.name,
         property.format);
  return kInvalidParameterType;
}

int refuseSet(const PropertyDesc& property, const char* operation) {
  nomLog("DynamicObject::%s(%s) invalid type: %d", operation, property.name, property.format);
  return kInvalidParameterType;
}

// The value area follows the header also where the record is a ShortDskParam.
unsigned char* valueOf(DskParam* parameter) {
  return reinterpret_cast<unsigned char*>(parameter) + sizeof(DskParamHeader);
}
const unsigned char* valueOf(const DskParam* parameter) {
  return reinterpret_cast<const unsigned char*>(parameter) + sizeof(DskParamHeader);
}

void giveFixed(DskParam* value, PFormat format, const Content& content) {
  value->header.format = format;
  value->header.more = 0;
  copyFixed(valueOf(value), content.data, content.length);
}

int refuseTarget(const DskParam* value) {
  nomLog("DynamicObject::getPropertyValue: invalid parameter type (%u)", value->header.format);
  return kInvalidParameterType;
}

// What paramcpy does with a block. It is done here, since that takes half of the time: a block is
// how a value is read fast.
int giveBlock(DskParam* value, const Content& content, bool isString) {
  // Field by field, as it is written: a load of all of it would wait for the stores.
  unsigned char* const block = valueOf(value);
  const auto data = loadFrom<char*>(block);
  const auto offset = loadFrom<std::uint32_t>(block + offsetof(DskBinaryBlock, offset));
  const auto capacity = loadFrom<std::uint32_t>(block + offsetof(DskBinaryBlock, capacity));
  if (content.length > capacity || offset > content.length) {
    return isString ? kStringTooLong : kBinaryTooLong;
  }
  const std::uint32_t length = content.length - offset;
  if (length != 0) std::memmove(data, content.data + offset, length);
  if (isString) data[length] = '\0';
  storeAt(block + offsetof(DskBinaryBlock, offset), std::uint32_t{0});
  storeAt(block + offsetof(DskBinaryBlock, length), length);
  value->header.more = 0;
  return kNoError;
}

// Handler codes: the text of a UTF-8 string with both lengths, and setting it from one.
constexpr std::uint8_t kGetUtf8 = 64;
constexpr std::uint8_t kSetUtf8 = 66;

int callHandler(const DskParam* value, std::uint8_t code, StringUtf8Info& text) {
  const auto handler = value->getValue<DskDataHandler>();
  if (handler == nullptr) return kInvalidParameterType;
  return handler(code, const_cast<DskParam*>(value), &text, &text.byteLength);
}

// A handler that has no memory for an object to hold the text in succeeds all the same.
int statusOfHeld(const DskParam* value, int status) {
  const bool isHeld = status != kNoError || value->getValue<DskHandlerValue>().item != nullptr;
  return isHeld ? status : kMemoryAllocationFailed;
}

// A target of another family is refused, though the copy would take it.
int giveString(DskParam* value, const Content& content) {
  switch (value->header.format) {
    case DSKSTRINGBLOCK:
      return giveBlock(value, content, true);
    case DSKCSTRING:
    case DSKSTRING:
      return paramcpy(value, reinterpret_cast<const char*>(content.data), content.length);
    case DSKANY:
    case DSKKORASTRING:
      return statusOfHeld(
          value, paramcpy(value, reinterpret_cast<const char*>(content.data), content.length));
    default:
      return refuseTarget(value);
  }
}

int giveBinary(DskParam* value, const Content& content) {
  switch (value->header.format) {
    case DSKBINARYBLOCK:
      return giveBlock(value, content, false);
    case DSKBINARY:
      return paramcpy(value, static_cast<const void*>(content.data), content.length);
    case DSKANY:
    case DSKKORABINARY:
      return statusOfHeld(value,
                          paramcpy(value, static_cast<const void*>(content.data), content.length));
    default:
      return refuseTarget(value);
  }
}

int giveUtf8(DskParam* value, const Content& content) {
  switch (value->header.format) {
    case DSKSTRINGUTF8BLOCK:
      if (content.length > value->getValue<StringUtf8Info>().maximum) return kStringUtf8TooLong;
      value->header.more = 0;
      return paramcpy(value, content.data, content.length, content.characters);
    case DSKANY:  // which the copy from memory would make a binary
    case DSKKORASTRINGUTF8: {
      StringUtf8Info text{const_cast<unsigned char*>(content.data), content.length,
                          content.characters, 0};
      return statusOfHeld(value, callHandler(value, kSetUtf8, text));
    }
    default:
      return refuseTarget(value);
  }
}

// Where the bytes of a parameter lie. A block is a piece that goes to its offset.
int readContent(const DskParam* value, Content& content) {
  switch (value->header.format) {
    case DSKCHARACTER:
      content = {valueOf(value), 0, 1, 0};
      return kNoError;
    case DSKSTRINGBLOCK:
    case DSKBINARYBLOCK: {
      const auto block = value->getValue<DskBinaryBlock>();
      content = {block.data, block.offset, block.length, 0};
      return kNoError;
    }
    case DSKCSTRING:
    case DSKSTRING:
    case DSKBINARY:
    case DSKKORASTRING:
    case DSKKORABINARY:
    case DSKSTRINGUTF8BLOCK:
    case DSKKORASTRINGUTF8: {
      unsigned char* bytes = nullptr;
      int status = paramBytesPtr(value, &bytes);
      if (status == kNoError) status = paramBytesLen(value, &content.length);
      content.data = bytes;
      return status;
    }
    default: {
      // The copy refuses it, with its log line.
      unsigned byteLength = 0, characterLength = 0;
      return paramcpy(nullptr, value, 0, byteLength, characterLength);
    }
  }
}

int readUtf8(const DskParam* value, Content& content) {
  auto text = value->getValue<StringUtf8Info>();
  if (value->header.format == DSKKORASTRINGUTF8) {
    text = {};
    const int status = callHandler(value, kGetUtf8, text);
    if (status != kNoError) return status;
  }
  content = {text.data, 0, text.byteLength, text.charLength};
  return kNoError;
}

}  // namespace

// ---- Storing ----

int DynamicObject::_storeFixed(const PropertyDesc& property, const void* bytes) {
  Slot slot;
  const int status = _findSlot(property, slot);
  if (status != kNoError) return status;
  copyFixed(_values.data() + slot.offset, bytes, slot.format.slotSize);
  ++_revision;
  return kNoError;
}

// A region that is too small is left behind, and a new one begins at the end of the long values.
// Where the room is reused it becomes the length, so that a longer value later needs a new region
// even if the old bytes are still there.
int DynamicObject::_storeContent(const PropertyDesc& property, const Content& content) {
  Slot slot;
  int status = _findSlot(property, slot);
  if (status != kNoError) return status;
  const Form form = slot.format.form;
  const std::uint32_t head = form == Form::Utf8 ? sizeof(Utf8Lengths) : 0;
  const std::uint32_t tail = form == Form::String ? 1 : 0;
  const std::uint64_t needed = std::uint64_t{head} + content.offset + content.length + tail;
  auto region = loadFrom<Region>(_values.data() + slot.offset);
  if (std::uint64_t{region.offset} + region.room > _longValues.length() && region.room != 0) {
    return kInvalidParameterValue;
  }

  // The source may lie in the long values, which move when they grow.
  const unsigned char* source = content.data;
  if (needed > region.room) {
    const std::uint32_t before = _longValues.length();
    if (before + needed > kKoraNoMaximum) return tooLong(form);
    const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(source) -
                                 reinterpret_cast<std::uintptr_t>(_longValues.data());
    status = statusOf([&] { _longValues.resize(before + static_cast<std::uint32_t>(needed)); });
    if (status != kNoError) return status;
    if (place < before) source = _longValues.data() + place;
    region.offset = before;
  }
  region.room = static_cast<std::uint32_t>(needed);
  if (needed != 0) {
    unsigned char* const held = _longValues.data() + region.offset;
    if (content.length != 0) std::memmove(held + head + content.offset, source, content.length);
    if (form == Form::Utf8) storeAt(held, Utf8Lengths{content.length, content.characters});
    if (form == Form::String) held[needed - 1] = '\0';
  }
  storeAt(_values.data() + slot.offset, region);
  ++_revision;
  return kNoError;
}

// Also of a property whose region is damaged: this is how it is used again.
int DynamicObject::_setNullPropertyValue(const PropertyDesc& property) {
  Slot slot;
  const int status = _findSlot(property, slot);
  if (status == kInvalidParameterType) return refuseSet(property, "_setNullPropertyValue");
  if (status != kNoError) return status;
  std::memset(_values.data() + slot.offset, 0, slot.format.slotSize);
  ++_revision;
  return kNoError;
}

// An identifier without a number or a class names no object.
int DynamicObject::_checkReference(const DskObjectId& target) const {
  constexpr std::uint32_t kClassBits = 0x3FFFFF;
  constexpr std::uint32_t kTransient = 1;
  constexpr std::uint32_t kSharedTransient = 3;
  const auto lifetimeOf = [](const DskObjectId& id) { return id.classId.number() >> 22; };
  if (target.instanceId == 0 || (target.classId.number() & kClassBits) == 0) return kNoError;
  if (target.parentClassId.number() != 0) return kSharedSubobjectReference;
  const std::uint32_t to = lifetimeOf(target);
  const std::uint32_t from = lifetimeOf(_parent);
  const bool isPersistent = from != kTransient && from != kSharedTransient;
  if (isPersistent && (to == kTransient || to == kSharedTransient)) {
    return kPersistentReferencesTransient;
  }
  return from == kSharedTransient && to == kTransient ? kSharedReferencesNonShared : kNoError;
}

// ---- The operations that kinds of objects may replace ----

int DynamicObject::_getPropertyValue(const PropertyDesc& property, DskParam* value) const {
  bool isNull;
  return _getPropertyValue(property, value, isNull);
}

int DynamicObject::_getPropertyValue(const PropertyDesc& property, DskParam* value,
                                     bool& isNull) const {
  if (value == nullptr) return kInvalidParameterType;
  const PropertyFormat row = propertyFormat(property.format);
  if (row.form != Form::Fixed) return _getOtherValue(property, value, isNull);
  const std::uint64_t end = std::uint64_t{property.slotOffset} + row.slotSize;
  if (end > _values.length()) return kInvalidParameterValue;
  giveFixed(value, property.format, {_values.data() + property.slotOffset, 0, row.slotSize, 0});
  isNull = false;
  return kNoError;
}

// Apart, so that a fixed format needs no frame on the stack.
[[gnu::noinline]] int DynamicObject::_getOtherValue(const PropertyDesc& property, DskParam* value,
                                                    bool& isNull) const {
  Content content;
  int status = _findContent(property, content);
  if (status == kInvalidParameterType) return refuseGet(property);
  if (status != kNoError) return status;
  const bool hasNone = content.data == nullptr;
  if (hasNone) content.data = reinterpret_cast<const unsigned char*>("");
  switch (propertyFormat(property.format).form) {
    case Form::String:
      status = giveString(value, content);
      break;
    case Form::Binary:
      status = giveBinary(value, content);
      break;
    case Form::Utf8:
      status = giveUtf8(value, content);
      break;
    default:
      giveFixed(value, DSKSHORTOBJECTID, content);
  }
  if (status == kNoError) isNull = hasNone;
  return status;
}

int DynamicObject::_setPropertyValue(const PropertyDesc& property, const DskParam* value) {
  if (value == nullptr) return kInvalidParameterType;
  const PFormat given = value->header.format;
  if (given == DSKNULL) return _setNullPropertyValue(property);
  Content content;
  switch (propertyFormat(property.format).form) {
    case Form::Fixed:
      return given == property.format ? _storeFixed(property, valueOf(value))
                                      : kPropertyTypeMismatch;
    case Form::Reference: {
      if (given != DSKOBJECTID && given != DSKSHORTOBJECTID) return kPropertyTypeMismatch;
      DskObjectId target{};
      std::memcpy(&target, valueOf(value),
                  given == DSKOBJECTID ? sizeof target : sizeof(ShortDskObjectId));
      const int status = _checkReference(target);
      return status == kNoError ? _storeFixed(property, &target) : status;
    }
    case Form::Utf8: {
      if (given != DSKSTRINGUTF8BLOCK && given != DSKKORASTRINGUTF8) {
        nomLog("DynamicObject::setPropertyValue(%s) invalid type: %d", property.name, given);
        return kInvalidParameterType;
      }
      const int status = readUtf8(value, content);
      return status == kNoError ? _storeContent(property, content) : status;
    }
    case Form::String:
    case Form::Binary: {
      const int status = readContent(value, content);
      return status == kNoError ? _storeContent(property, content) : status;
    }
    default:
      return refuseSet(property, "setPropertyValue");
  }
}

int DynamicObject::_setPropertyValue(const PropertyDesc& property, std::uint32_t length,
                                     const void* bytes) {
  if (bytes == nullptr) {
    return length == 0 ? _setNullPropertyValue(property) : kInvalidParameterValue;
  }
  const PropertyFormat& row = propertyFormat(property.format);
  Content content{static_cast<const unsigned char*>(bytes), 0, length, 0};
  switch (row.form) {
    case Form::Fixed:
      return length == row.slotSize ? _storeFixed(property, bytes) : kInvalidParameterValue;
    case Form::Reference: {
      if (length != row.slotSize) return kInvalidParameterValue;
      DskObjectId target{};
      std::memcpy(&target, bytes, length);
      const int status = _checkReference(target);
      return status == kNoError ? _storeFixed(property, &target) : status;
    }
    case Form::Utf8: {
      const int status = intlStringUTF8VerifyCountchars(content.data, length, content.characters);
      return status == kNoError ? _storeContent(property, content) : status;
    }
    case Form::String:
    case Form::Binary:
      return _storeContent(property, content);
    default:
      return refuseSet(property, "setPropertyValue");
  }
}
