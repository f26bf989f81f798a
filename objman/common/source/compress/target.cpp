// The codes of the data handler that compression uses.

#include "target.h"

#include "sys/messages.h"

#include <cstring>

namespace nomutil::compress {

enum Target::Code : std::uint8_t {
  kCharacters = 16,
  kResizeCharacters = 19,
  kCharacterCount = 20,
  kAppendCharacters = 23,
  kBytes = 32,
  kResizeBytes = 35,
  kByteCount = 36,
  kAppendBytes = 38,
};

PFormat Target::_format() const noexcept {
  // A DskParam may be a ShortDskParam, hence not through a member.
  PFormat format;
  std::memcpy(&format, _parameter, sizeof format);
  return format;
}

bool Target::_hasHandler() const noexcept {
  if (_parameter == nullptr) return false;
  switch (_format()) {
    case DSKANY:
    case DSKKORASTRING:
    case DSKKORABINARY:
    case DSKKORASTRINGUTF8:
      return _parameter->getValue<DskHandlerValue>().handler != nullptr;
    default:
      return false;
  }
}

void* Target::_item() const noexcept {
  return _parameter->getValue<DskHandlerValue>().item;
}

bool Target::_isOurs() const noexcept {
  return _hasHandler() && _parameter->getValue<DskHandlerValue>().handler == koraDataHandler;
}

KoraBytes* Target::held() const noexcept {
  if (!_isOurs()) return nullptr;
  std::uint32_t length;
  // A parameter that has no object yet makes one, and has a format for it, when it is asked. One of
  // format 5 with an object is what the handler refuses.
  if (_item() == nullptr && getLength(length) != kNoError) return nullptr;
  return _format() != DSKANY ? static_cast<KoraBytes*>(_item()) : nullptr;
}

int Target::_call(Code characterCode, Code byteCode, unsigned char*& data,
                  std::uint32_t& count) const noexcept {
  if (!_hasHandler()) return kInvalidParameterType;
  StringUtf8Info argument{data, count, 0, 0};
  const int status = _parameter->getValue<DskHandlerValue>().handler(
      _isString ? characterCode : byteCode, _parameter, &argument, &count);
  data = argument.data;
  return status;
}

int Target::append(const unsigned char* bytes, std::uint32_t length) const noexcept {
  auto* source = const_cast<unsigned char*>(bytes);  // only read
  const int status = _call(kAppendCharacters, kAppendBytes, source, length);
  if (status != kNoError || !_isOurs()) return status;
  return length == 0 || _item() != nullptr ? kNoError : kMemoryAllocationFailed;
}

int Target::getLength(std::uint32_t& length) const noexcept {
  unsigned char* none = nullptr;
  length = 0;
  return _call(kCharacterCount, kByteCount, none, length);
}

int Target::setLength(std::uint32_t length) const noexcept {
  unsigned char* none = nullptr;
  return _call(kResizeCharacters, kResizeBytes, none, length);
}

int Target::getText(unsigned char*& text) const noexcept {
  std::uint32_t count = 0;
  text = nullptr;
  return _call(kCharacters, kBytes, text, count);
}

}  // namespace nomutil::compress
