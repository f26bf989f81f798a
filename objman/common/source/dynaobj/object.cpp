// The object as a whole: its making and copies, its identity, its images and its format descriptor.

#include "nameindex.h"
#include "propertyformats.h"

#include "nomos/heap.h"
#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/dynaobj.h"
#include "sys/formatters.h"
#include "sys/messages.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

using namespace nomutil::dynaobj;

namespace {

// Each text ends in a NUL, the number follows it.
constexpr unsigned char kNewFormatDesc[] =
    "<< format >>\0\1"
    "<< version >>\0\1"
    "<< charSize >>\0\1";
constexpr std::size_t kFormatOffset = 13;
constexpr std::size_t kVersionOffset = 28;
constexpr std::size_t kCharSizeOffset = 44;
static_assert(sizeof kNewFormatDesc == DynamicObject::kFormatDescSize + 1);  // the literal's NUL
static_assert(kNewFormatDesc[kFormatOffset] == 1 && kNewFormatDesc[kVersionOffset] == 1);
static_assert(kNewFormatDesc[kCharSizeOffset] == 1);

template <class T>
DynamicObject* create(const DskObjectId& parent) {
  void* const memory = XHeap::library().allocate(sizeof(T));
  return memory == nullptr ? nullptr : new (memory) T(parent);
}

int setImage(KoraString<unsigned char>& image, const void* bytes, std::uint32_t length) {
  if (bytes == nullptr && length != 0) return kInvalidParameterValue;
  return statusOf([&] { image.setBytes(bytes, length); });
}

}  // namespace

DynamicObject* DynamicObject::createInstance(const DskObjectId& parent, Kind kind) {
  return kind == kRpsKind ? create<RpsDynamicObject>(parent) : create<KoraDynamicObject>(parent);
}

void DynamicObject::deleteInstance(DynamicObject* object) {
  if (object == nullptr) return;
  object->~DynamicObject();
  XHeap::library().release(object);
}

DynamicObject::DynamicObject(const DskObjectId& parent, std::uint32_t descSize)
    : _parent(parent), _descSize(descSize) {
  _values.useMemory(_valuesRoom, sizeof _valuesRoom);
  _longValues.useMemory(_longValuesRoom, sizeof _longValuesRoom);
  std::memcpy(_formatDesc, kNewFormatDesc, sizeof _formatDesc);
}

DynamicObject::DynamicObject(const DynamicObject& other)
    : DynamicObject(other._parent, other._descSize) {
  _copyImages(other);
}

DynamicObject& DynamicObject::operator=(const DynamicObject& other) {
  if (_copyImages(other) == kNoError) _parent = other._parent;
  return *this;
}

DynamicObject::~DynamicObject() {
  _dropNameIndex();
}

KoraDynamicObject::~KoraDynamicObject() = default;
RpsDynamicObject::~RpsDynamicObject() = default;

std::uint32_t KoraDynamicObject::getPropertyDescSize() const {
  return kDescSize;
}
std::uint32_t RpsDynamicObject::getPropertyDescSize() const {
  return kDescSize;
}

// Copies everything but the parent, or nothing.
int DynamicObject::_copyImages(const DynamicObject& source) {
  if (&source == this) return kNoError;
  return statusOf([&] {
    KoraString<unsigned char> descriptions(source._descriptions);
    KoraString<unsigned char> values(source._values);
    KoraString<unsigned char> longValues(source._longValues);
    _forgetNames();
    _descriptions = std::move(descriptions);
    _values = std::move(values);
    _longValues = std::move(longValues);
    std::memcpy(_formatDesc, source._formatDesc, sizeof _formatDesc);
    _revision = source._revision;
  });
}

int DynamicObject::cloneSelf(DynamicObject* target) const {
  if (target == nullptr) return kInvalidParameterValue;
  if (target->_descSize != _descSize) return kIncompatibleObjectFormat;
  return target->_copyImages(*this);
}

bool DynamicObject::operator==(const DynamicObject& other) const {
  return oidsAreEqual(_parent, other._parent);
}

// The fields that oidsAreEqual compares, the last of which goes beyond subId.
std::uint32_t DynamicObject::hash() const {
  constexpr std::size_t kLastWord = offsetof(DskObjectId, subId);
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&_parent);
  return static_cast<std::uint32_t>(_parent.instanceId) + _parent.classId.number() +
         _parent.parentClassId.number() + _parent.level +
         loadFrom<std::uint32_t>(bytes + kLastWord);
}

int DynamicObject::setPropertyDescriptions(const void* bytes, std::uint32_t length) {
  const int status = setImage(_descriptions, bytes, length);
  if (status == kNoError) _forgetNames();
  return status;
}

int DynamicObject::setValues(const void* bytes, std::uint32_t length) {
  return setImage(_values, bytes, length);
}

int DynamicObject::setLongValues(const void* bytes, std::uint32_t length) {
  return setImage(_longValues, bytes, length);
}

void DynamicObject::clear() {
  _forgetNames();
  _descriptions.clear();
  clearValues();
}

void DynamicObject::clearValues() {
  _values.clear();
  _longValues.clear();
}

int DynamicObject::checkFormat(const unsigned char* formatDesc) const {
  if (formatDesc == nullptr) return kInvalidParameterValue;
  const unsigned char* const own = _formatDesc;
  if (own[kVersionOffset] == formatDesc[kVersionOffset] &&
      own[kFormatOffset] == formatDesc[kFormatOffset] &&
      own[kCharSizeOffset] == formatDesc[kCharSizeOffset]) {
    return kNoError;
  }
  nomLog("Dynamic Object: incompatible format - expected=%u.%u.%u, actual=%u.%u.%u",
         own[kVersionOffset], own[kFormatOffset], own[kCharSizeOffset], formatDesc[kVersionOffset],
         formatDesc[kFormatOffset], formatDesc[kCharSizeOffset]);
  return kIncompatibleObjectFormat;
}

std::uint8_t DynamicObject::getCharacterSize(const unsigned char* formatDesc) {
  return formatDesc == nullptr ? std::uint8_t{0} : formatDesc[kCharSizeOffset];
}
