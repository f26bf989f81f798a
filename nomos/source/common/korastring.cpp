// Strings on the heap of the library. The capacity of a text stands in a header before it, so that
// the objects stay at 24 bytes; a string without a text points at one empty text that all share.

#include "nomos/korastring.h"

#include "nomos/exception.h"
#include "nomos/heap.h"
#include "nomos/intl.h"
#include "nomos/status.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

std::uint32_t countCharacters(const void* text, std::uint32_t byteCount) {
  std::uint32_t characters = 0;
  intlStringUTF8VerifyCountchars(static_cast<const unsigned char*>(text), byteCount, characters);
  return characters;
}

}  // namespace

// Never written to, so that threads may share it.
constinit KoraBytes::EmptyText KoraBytes::_empty{{0, 0}, ""};

int KoraBytes::_tooLong() const noexcept {
  return kNosBinaryTooLong;
}

void KoraBytes::_checkLength(std::uint64_t byteCount) const {
  if (byteCount > _maximum) throw NomException(_tooLong());
}

// A block for byteCount elements or more: a string that grows gets half as much again, so that
// appending costs the same per element at any length.
KoraBytes::Block* KoraBytes::_allocateBlock(std::uint64_t byteCount) const {
  constexpr std::uint64_t kGrain = 16;
  const std::uint64_t held = _block().capacity;
  const std::uint64_t wanted = std::max(byteCount, held != 0 ? held + held / 2 : 0);
  const std::uint64_t whole = (_blockSize(wanted) + kGrain - 1) / kGrain * kGrain - _blockSize(0);
  const std::uint64_t capacity = std::max(byteCount, std::min<std::uint64_t>(whole, _maximum));
  void* const block = XHeap::library().allocate(_blockSize(capacity));
  if (block == nullptr) throw NomException(kNosMemoryAllocationFailed);
  return new (block) Block{static_cast<std::uint32_t>(capacity), 1};
}

void KoraBytes::_releaseBlock() noexcept {
  XHeap::library().release(&_block(), _blockSize(_block().capacity));
}

void KoraBytes::_setLength(std::uint32_t byteCount) noexcept {
  _length = byteCount;
  // The shared text ends already, and other threads read it.
  if (_data != _empty.text) static_cast<char*>(_data)[byteCount] = '\0';
}

void KoraBytes::setBytes(const void* source, std::uint32_t byteCount) {
  _checkLength(byteCount);
  if (byteCount > _block().capacity) {
    Block* const block = _allocateBlock(byteCount);
    std::memcpy(block->text(), source, byteCount);
    _release();
    _data = block->text();
  } else if (byteCount != 0) {
    std::memmove(_data, source, byteCount);
  }
  _setLength(byteCount);
}

void KoraBytes::appendBytes(const void* source, std::uint32_t byteCount) {
  if (byteCount == 0) return;
  const std::uint64_t length = std::uint64_t{_length} + byteCount;
  _checkLength(length);
  if (length > _block().capacity) {
    Block* const block = _allocateBlock(length);
    std::memcpy(block->text(), _data, _length);
    // The source may lie in the old text, which therefore goes last.
    std::memcpy(block->text() + _length, source, byteCount);
    _release();
    _data = block->text();
  } else {
    std::memmove(static_cast<char*>(_data) + _length, source, byteCount);
  }
  _setLength(static_cast<std::uint32_t>(length));
}

void* KoraBytes::extendBytes(std::uint32_t byteCount) {
  const std::uint64_t length = std::uint64_t{_length} + byteCount;
  _checkLength(length);
  if (length > _block().capacity) {
    Block* const block = _allocateBlock(length);
    std::memcpy(block->text(), _data, _length);
    _release();
    _data = block->text();
  }
  void* const added = static_cast<char*>(_data) + _length;
  _setLength(static_cast<std::uint32_t>(length));
  return added;
}

void KoraBytes::resizeBytes(std::uint32_t byteCount) {
  if (byteCount <= _length) return _setLength(byteCount);
  const std::uint32_t added = byteCount - _length;
  std::memset(extendBytes(added), 0, added);
}

void KoraBytes::setUtf8(const StringUtf8Info& source) {
  setBytes(source.data, source.byteLength);
}

void KoraBytes::appendUtf8(const StringUtf8Info& source) {
  appendBytes(source.data, source.byteLength);
}

void KoraBytes::_take(KoraBytes& source) {
  if (&source == this) return;
  if (source._block().isOnHeap == 0) {
    setBytes(source._data, source._length);
    source._setLength(0);
    return;
  }
  _checkLength(source._length);
  _release();
  _data = source._data;
  _length = source._length;
  source._data = _empty.text;
  source._length = 0;
}

void KoraBytes::_swap(KoraBytes& other) noexcept {
  std::swap(_data, other._data);
  std::swap(_length, other._length);
  std::swap(_maximum, other._maximum);
}

bool KoraBytes::_equals(const KoraBytes& other) const noexcept {
  return _length == other._length && std::memcmp(_data, other._data, _length) == 0;
}

template <>
int KoraString<char>::_tooLong() const noexcept {
  return kNosStringTooLong;
}
template <>
int KoraString<unsigned char>::_tooLong() const noexcept {
  return kNosBinaryTooLong;
}
template class KoraString<char>;
template class KoraString<unsigned char>;

KoraUtf8String::KoraUtf8String(const StringUtf8Info& info, std::uint32_t maximum)
    : KoraBytes(maximum) {
  set(info);
}

KoraUtf8String::KoraUtf8String(const KoraUtf8String& other) : KoraBytes(other.maximum()) {
  *this = other;
}

KoraUtf8String::KoraUtf8String(KoraUtf8String&& other) : KoraBytes(other.maximum()) {
  *this = static_cast<KoraUtf8String&&>(other);
}

KoraUtf8String& KoraUtf8String::operator=(const KoraUtf8String& other) {
  setBytes(other.bytes(), other.length());
  _characters = other._characters;
  return *this;
}

KoraUtf8String& KoraUtf8String::operator=(KoraUtf8String&& other) {
  if (&other == this) return *this;
  _take(other);
  _characters = other._characters;
  other._characters = 0;
  return *this;
}

KoraUtf8String::~KoraUtf8String() = default;

void KoraUtf8String::set(const StringUtf8Info& info) {
  setBytes(info.data, info.byteLength);
  const bool isCounted = info.charLength != 0 || info.byteLength == 0;
  _characters = isCounted ? info.charLength : countCharacters(bytes(), length());
}

void KoraUtf8String::append(const unsigned char* source, std::uint32_t byteLength,
                            std::uint32_t charLength) {
  const std::uint32_t before = length();
  appendBytes(source, byteLength);
  _characters += charLength != 0 ? charLength : countCharacters(data() + before, byteLength);
}

void KoraUtf8String::resize(std::uint32_t byteLength) {
  resizeBytes(byteLength);
  _characters = countCharacters(bytes(), length());
}

void KoraUtf8String::clear() noexcept {
  resizeBytes(0);
  _characters = 0;
}

int KoraUtf8String::_tooLong() const noexcept {
  return kNosStringUtf8TooLong;
}

KoraInlineString::KoraInlineString(const char* source, std::uint32_t length) : KoraInlineString() {
  set(source, length);
}

KoraInlineString::KoraInlineString(const KoraInlineString& other)
    : KoraInlineString(other.data(), other.length()) {}

KoraInlineString& KoraInlineString::operator=(const KoraInlineString& other) {
  setBytes(other.bytes(), other.length());
  return *this;
}

int KoraInlineString::_tooLong() const noexcept {
  return kNosStringTooLong;
}
