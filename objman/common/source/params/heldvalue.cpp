// Parameters behind the library's data handler: made, adopted, released and looked into. The value
// area is the handler at 0, the held object at 8, null while there is none, and the parameter
// itself at 16.

#include "heldobject.h"
#include "record.h"

#include "nomos/exception.h"
#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace nomutil::params {
namespace {

int initialise(DskParam* parameter, PFormat format, PUsage usage, KoraBytes* held) {
  const DskParamHeader header(format, usage, 0);
  std::memcpy(bytesOf(parameter), &header, offsetof(DskParamHeader, carried));
  store<DskDataHandler>(parameter, koraDataHandler, offsetof(DskHandlerValue, handler));
  store(parameter, held, kItemOffset);
  store(parameter, parameter, kSelfOffset);
  return kNoError;
}

// A parameter that holds a new object with a copy of the text. Without memory for it, it holds
// none.
template <class Held>
int create(DskParam* parameter, PFormat format, PUsage usage, const StringUtf8Info& text,
           std::uint32_t maximum) {
  if (parameter == nullptr) return kInvalidParameterType;
  Held* held = newHeld<Held>(maximum, text.byteLength);
  int status = kNoError;
  try {
    if (held != nullptr) held->setUtf8(text);
  } catch (const NomException& failure) {
    status = failure.number();
  } catch (const std::bad_alloc&) {
    status = kMemoryAllocationFailed;
  }
  if (status != kNoError) {
    deleteHeld(held);
    held = nullptr;
  }
  if (status != kNoError && status != kMemoryAllocationFailed) return status;
  return initialise(parameter, format, usage, held);
}

template <class T>
StringUtf8Info textOf(const T* elements, std::uint32_t length) {
  auto* const data = const_cast<T*>(elements);
  return {reinterpret_cast<unsigned char*>(data), length, 0, 0};
}

int adopt(DskParam* parameter, PFormat format, PUsage usage, KoraBytes* held) {
  if (parameter == nullptr) return kInvalidParameterType;
  return initialise(parameter, format, usage, held);
}

int release(DskParam* parameter, HandlerCode code) {
  StringUtf8Info argument{};
  std::uint32_t count = 0;
  return callHandler(parameter, code, argument, count);
}

int releaseFormat(DskParam* parameter, PFormat required, HandlerCode code, const char* operation) {
  if (parameter == nullptr) return kInvalidParameterType;
  const PFormat format = formatOf(parameter);
  if (format == required) return release(parameter, code);
  nomLog("KoraString::%s - invalid format (0x%x)", operation, static_cast<unsigned>(format));
  return kInvalidParameterType;
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramCreateKoraString(DskParam* parameter, const char* characters, std::uint32_t length,
                          std::uint32_t maximum, PUsage usage) {
  return create<KoraString<char>>(parameter, DSKKORASTRING, usage, textOf(characters, length),
                                  maximum);
}

int paramCreateKoraBinary(DskParam* parameter, const unsigned char* bytes, std::uint32_t length,
                          std::uint32_t maximum, PUsage usage) {
  return create<KoraString<unsigned char>>(parameter, DSKKORABINARY, usage, textOf(bytes, length),
                                           maximum);
}

int paramCreateKoraStringUtf8(DskParam* parameter, const StringUtf8Info* text,
                              std::uint32_t maximum, PUsage usage) {
  return create<KoraUtf8String>(parameter, DSKKORASTRINGUTF8, usage,
                                text != nullptr ? *text : StringUtf8Info{}, maximum);
}

int paramCreateKoraAny(DskParam* parameter, PUsage usage) {
  return adopt(parameter, DSKANY, usage, nullptr);
}

int paramSetKoraString(DskParam* parameter, KoraString<char>* string, PUsage usage) {
  return adopt(parameter, DSKKORASTRING, usage, string);
}

int paramSetKoraBinary(DskParam* parameter, KoraString<unsigned char>* binary, PUsage usage) {
  return adopt(parameter, DSKKORABINARY, usage, binary);
}

int paramSetKoraStringUtf8(DskParam* parameter, KoraUtf8String* string, PUsage usage) {
  return adopt(parameter, DSKKORASTRINGUTF8, usage, string);
}

int paramDeleteKoraString(DskParam* parameter) {
  return releaseFormat(parameter, DSKKORASTRING, kReleaseCharacters, "paramDeleteKoraString");
}

int paramDeleteKoraBinary(DskParam* parameter) {
  return releaseFormat(parameter, DSKKORABINARY, kReleaseBytes, "paramDeleteKoraBinary");
}

// The code for characters is meant: it releases any held string.
int paramDeleteKoraStringUtf8(DskParam* parameter) {
  return releaseFormat(parameter, DSKKORASTRINGUTF8, kReleaseCharacters,
                       "paramDeleteKoraStringUtf8");
}

int paramDeleteKoraAny(DskParam* parameter) {
  if (parameter == nullptr) return kInvalidParameterType;
  switch (kindOf(parameter)) {
    case Kind::HeldString:
    case Kind::HeldUtf8:
      return release(parameter, kReleaseCharacters);
    case Kind::HeldBinary:
      return release(parameter, kReleaseBytes);
    default:
      return kNoError;
  }
}

int koraGetString(const DskHandlerValue* value, StringUtf8Info* result) {
  std::uint32_t count = 0;
  return value->handler(kCharacters, value->self, result, &count);
}

int koraSetString(DskParam* parameter, const char* characters, std::uint32_t length) {
  if (parameter == nullptr) return kInvalidParameterType;
  return setHeld(parameter, kSetCharacters, characters, length);
}

int DerefString(DskParam* parameter, char** characters) {
  if (parameter == nullptr) return kNoError;
  switch (kindOf(parameter)) {
    case Kind::HeldString: {
      store(parameter, parameter, kSelfOffset);
      StringUtf8Info text{};
      const int status = describeHeld(parameter, kCharacters, text);
      if (status == kNoError) *characters = reinterpret_cast<char*>(text.data);
      return status;
    }
    case Kind::CString:
    case Kind::StringBlock:
      *characters = load<char*>(parameter);
      return kNoError;
    default:
      *characters = reinterpret_cast<char*>(parameter);
      return kNoError;
  }
}

int DerefBinary(DskParam* parameter, unsigned char** bytes, std::uint32_t* length) {
  if (parameter == nullptr) return kNoError;
  switch (kindOf(parameter)) {
    case Kind::HeldBinary: {
      store(parameter, parameter, kSelfOffset);
      std::uint32_t heldLength = 0;
      StringUtf8Info text{};
      int status = measureHeld(parameter, kByteCount, heldLength);
      if (status == kNoError) status = describeHeld(parameter, kBytes, text);
      if (status != kNoError) return status;
      *length = heldLength;
      *bytes = text.data;
      return kNoError;
    }
    case Kind::BinaryBlock: {
      const auto block = loadBlock<DskBinaryBlock>(parameter);
      *length = block.length;
      *bytes = block.data;
      return kNoError;
    }
    case Kind::InlineBinary:
      *length = inlineLength(parameter);
      *bytes = inlineData(parameter);
      return kNoError;
    default:
      *length = 0;
      *bytes = reinterpret_cast<unsigned char*>(parameter);
      return kNoError;
  }
}

int DerefStringUtf8(DskParam* parameter, unsigned char** bytes, std::uint32_t* byteLength,
                    std::uint32_t* characterLength) {
  if (parameter == nullptr) return kNoError;
  StringUtf8Info text{};
  switch (kindOf(parameter)) {
    case Kind::HeldUtf8:
      if (const int status = describeHeld(parameter, kUtf8, text); status != kNoError) {
        return status;
      }
      break;
    case Kind::Utf8Block:
      text = loadUtf8Block(parameter);
      break;
    default:
      return kNoError;
  }
  *bytes = text.data;
  *byteLength = text.byteLength;
  *characterLength = text.charLength;
  return kNoError;
}
