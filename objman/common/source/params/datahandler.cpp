// koraDataHandler: the operations on a held KoraString or KoraUtf8String, by their codes. It works
// on what all held strings share and asks the object itself where a KoraUtf8String differs, so that
// a code that does not suit the object is harmless.

#include "heldobject.h"
#include "record.h"

#include "nomos/exception.h"
#include "nomos/heap.h"
#include "nomos/korastring.h"
#include "nomos/log.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>

namespace nomutil::params {
namespace {

// The bits of a code that select what it works on.
constexpr unsigned kCharacterBit = 16;
constexpr unsigned kByteBit = 32;
constexpr unsigned kUtf8Bit = 64;

enum class Operation : std::uint8_t {
  View,
  CopyOut,
  CopyOutTerminated,
  Set,
  Resize,
  Length,
  Maximum,
  Append,
  ViewAndLength,
  Release,
  Describe,
  CopyOutUtf8,
  SetUtf8,
  ResizeUtf8,
  Characters,
  MaximumCharacters,
  AppendUtf8,
};

// From code 16, 32 and 64 on.
using Op = Operation;
constexpr Op kCharacterOperations[] = {
    Op::View,    Op::CopyOutTerminated, Op::Set,    Op::Resize,        Op::Length,
    Op::Maximum, Op::CopyOut,           Op::Append, Op::ViewAndLength, Op::Release};
constexpr Op kByteOperations[] = {Op::View,   Op::CopyOut,       Op::Set,
                                  Op::Resize, Op::Length,        Op::Maximum,
                                  Op::Append, Op::ViewAndLength, Op::Release};
constexpr Op kUtf8Operations[] = {Op::Describe,          Op::CopyOutUtf8, Op::SetUtf8,
                                  Op::ResizeUtf8,        Op::Length,      Op::Characters,
                                  Op::MaximumCharacters, Op::AppendUtf8,  Op::Release};

// The operation of a code; false for a code that has none. The byte bit goes before the others.
bool findOperation(unsigned code, Operation& operation) {
  const auto take = [&operation](const auto& operations, unsigned index) {
    if (index >= std::size(operations)) return false;
    operation = operations[index];
    return true;
  };
  if ((code & kByteBit) != 0) return take(kByteOperations, code - kByteBit);
  if ((code & kCharacterBit) != 0) return take(kCharacterOperations, code - kCharacterBit);
  if ((code & kUtf8Bit) != 0) return take(kUtf8Operations, code - kUtf8Bit);
  return false;
}

int refuse(const char* reason, unsigned number, int status) {
  nomLog("KoraString::koraDataHandler - invalid %s (0x%x)", reason, number);
  return status;
}

// Steps from DSKANY to the format that the code's bits ask for.
int settleFormat(unsigned code, DskParam* parameter) {
  if (const void* const item = load<void*>(parameter, kItemOffset); item != nullptr) {
    nomLog("koraDataHandler: non-null item 0x%x",
           static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(item)));
    return kInvalidParameterType;
  }
  if ((code & kCharacterBit) != 0) {
    storeFormat(parameter, DSKKORASTRING);
  } else if ((code & kUtf8Bit) != 0) {
    storeFormat(parameter, DSKKORASTRINGUTF8);
  } else if ((code & kByteBit) != 0) {
    storeFormat(parameter, DSKKORABINARY);
  } else {
    return refuse("format", DSKANY, kInvalidParameterType);
  }
  return kNoError;
}

// The empty object that a code makes on first use; null for a release code and without memory.
KoraBytes* createFor(unsigned code) {
  if ((code & kCharacterBit) != 0 && code != kReleaseCharacters) return newHeld<KoraString<char>>();
  if ((code & kUtf8Bit) != 0 && code != kReleaseUtf8) return newHeld<KoraUtf8String>();
  if ((code & kByteBit) != 0 && code != kReleaseBytes) return newHeld<KoraString<unsigned char>>();
  return nullptr;
}

// min(length, count) elements.
std::uint32_t copyOut(const KoraBytes& held, unsigned char* target, std::uint32_t count) {
  const std::uint32_t copied = std::min(held.length(), count);
  if (copied != 0) std::memmove(target, held.bytes(), copied);
  return copied;
}

int copyOutUtf8(const KoraBytes& held, StringUtf8Info& argument, std::uint32_t count) {
  if (count < held.length()) {
    argument.byteLength = argument.charLength = 0;
    return kStringTooLong;
  }
  argument.byteLength = copyOut(held, argument.data, count);
  argument.charLength = held.characters();
  return kNoError;
}

// The argument of a code for characters or bytes is a data pointer and perhaps nothing more.
unsigned char*& dataOf(void* argument) {
  return *static_cast<unsigned char**>(argument);
}

int perform(Operation operation, KoraBytes& held, void* argument, std::uint32_t* count) {
  switch (operation) {
    case Op::ViewAndLength:
      *count = held.length();
      [[fallthrough]];
    case Op::View:
      dataOf(argument) = static_cast<unsigned char*>(held.bytes());
      break;
    case Op::CopyOut:
      copyOut(held, dataOf(argument), *count);
      break;
    case Op::CopyOutTerminated: {
      unsigned char* const target = dataOf(argument);
      target[copyOut(held, target, *count)] = '\0';
      break;
    }
    case Op::Set:
      held.setBytes(dataOf(argument), *count);
      break;
    case Op::Append:
      held.appendBytes(dataOf(argument), *count);
      break;
    case Op::Resize:
      held.resizeBytes(*count);
      break;
    case Op::Length:
      *count = held.length();
      break;
    case Op::Maximum:
      *count = held.maximum();
      break;
    case Op::Describe:
      *static_cast<StringUtf8Info*>(argument) = {static_cast<unsigned char*>(held.bytes()),
                                                 held.length(), held.characters(), held.maximum()};
      break;
    case Op::CopyOutUtf8:
      return copyOutUtf8(held, *static_cast<StringUtf8Info*>(argument), *count);
    case Op::SetUtf8:
      held.setUtf8(*static_cast<const StringUtf8Info*>(argument));
      break;
    case Op::AppendUtf8:
      held.appendUtf8(*static_cast<const StringUtf8Info*>(argument));
      break;
    case Op::ResizeUtf8:
      if (*count == 0) {
        held.setUtf8({});
      } else {
        held.resizeBytes(*count);
      }
      break;
    case Op::Characters:
      *count = held.characters();
      break;
    case Op::MaximumCharacters:
      *count = held.maximum() == kKoraNoMaximum ? kKoraNoMaximum : held.maximum() / 4;
      break;
    case Op::Release:
      break;
  }
  return kNoError;
}

// What a parameter without an object answers while the heap has no memory for one: the lengths of
// an empty text, which lies nowhere, and success for a text that it cannot take.
int performOnNothing(Operation operation, void* argument, std::uint32_t* count) {
  switch (operation) {
    case Op::ViewAndLength:
      *count = 0;
      [[fallthrough]];
    case Op::View:
      dataOf(argument) = nullptr;
      break;
    case Op::CopyOutTerminated:
      *dataOf(argument) = '\0';
      break;
    case Op::Length:
    case Op::Maximum:
    case Op::Characters:
    case Op::MaximumCharacters:
      *count = 0;
      break;
    case Op::Describe:
      *static_cast<StringUtf8Info*>(argument) = {};
      break;
    case Op::CopyOutUtf8: {
      auto& info = *static_cast<StringUtf8Info*>(argument);
      info.byteLength = info.charLength = 0;
      break;
    }
    default:
      break;
  }
  return kNoError;
}

}  // namespace

void deleteHeld(KoraBytes* held) {
  if (held == nullptr) return;
  held->~KoraBytes();
  XHeap::library().release(held);
}

}  // namespace nomutil::params

using namespace nomutil::params;

int koraDataHandler(std::uint8_t code, DskParam* parameter, void* argument, std::uint32_t* count) {
  if (formatOf(parameter) == DSKANY) {
    if (const int status = settleFormat(code, parameter); status != kNoError) return status;
  }
  const PFormat format = formatOf(parameter);
  if (format != DSKKORASTRING && format != DSKKORABINARY && format != DSKKORASTRINGUTF8) {
    return refuse("format", format, kInvalidParameterType);
  }

  // Also a code that is refused below creates the object.
  auto* held = load<KoraBytes*>(parameter, kItemOffset);
  if (held == nullptr) {
    held = createFor(code);
    store(parameter, held, kItemOffset);
  }

  Operation operation;
  if (!findOperation(code, operation)) return refuse("operation", code, kInvalidParameterValue);
  if (operation == Operation::Release) {
    store<KoraBytes*>(parameter, nullptr, kItemOffset);
    deleteHeld(held);
    return kNoError;
  }
  if (held == nullptr) return performOnNothing(operation, argument, count);
  try {
    return perform(operation, *held, argument, count);
  } catch (const NomException& failure) {
    return failure.number();
  } catch (const std::bad_alloc&) {
    return kMemoryAllocationFailed;
  }
}
