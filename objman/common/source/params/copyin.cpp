// Copies into a parameter, whose format says what is expected: from memory, from characters, from
// a DskBuffer. The table in sys/params.h tells what each format takes.

#include "record.h"
#include "text.h"

#include "nomos/heap.h"
#include "nomos/intl.h"
#include "sys/build.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace nomutil::params {
namespace {

enum class Origin : std::uint8_t { Memory, Characters, Buffer };

struct Source {
  Origin origin;
  const unsigned char* data;
  std::uint32_t length;
  std::uint32_t characters;
};

// The caller's memory has room, which nothing tells.
int fillString(char* target, const Source& source) {
  if (source.length == 0) {
    *target = '\0';
  } else if (source.origin == Origin::Buffer) {
    copyBytes(target, source.data, source.length);
    target[source.length] = '\0';
  } else {
    const char* const text = reinterpret_cast<const char*>(source.data);
    copyBytes(target, text, std::strlen(text) + 1);
  }
  return kNoError;
}

int fillInline(DskParam* target, const Source& source) {
  store(target, narrowChecked<std::uint16_t>(source.length));
  copyBytes(inlineData(target), source.data, source.length);
  return kNoError;
}

// The source is the whole value, of which the block takes what begins at its offset. The NUL of a
// full block stands behind its capacity.
template <class Block>
int fillBlock(DskParam* target, const Source& source, bool isTerminated, int tooLong) {
  auto block = loadBlock<Block>(target);
  if (source.length > block.capacity || block.offset > source.length) return tooLong;
  const std::uint32_t length = source.length - block.offset;
  copyBytes(block.data, source.data + block.offset, length);
  if (isTerminated) block.data[length] = '\0';
  // Nothing else of the block changes.
  static_assert(offsetof(Block, length) == offsetof(Block, offset) + 4);
  const std::uint32_t offsetAndLength[] = {0, length};
  std::memcpy(valueOf(target) + offsetof(Block, offset), offsetAndLength, sizeof offsetAndLength);
  clearMore(target);
  return kNoError;
}

// UTF-8 as a buffer carries it: both lengths, then the bytes. The lengths are not to be trusted.
bool readUtf8(const Source& source, StringUtf8Info& text) {
  constexpr std::uint32_t kLengths = 8;
  if (source.length < kLengths) return false;
  std::memcpy(&text.byteLength, source.data, 4);
  std::memcpy(&text.charLength, source.data + 4, 4);
  text.data = const_cast<unsigned char*>(source.data) + kLengths;
  return text.byteLength <= source.length - kLengths;
}

bool describeSource(const Source& source, StringUtf8Info& text) {
  if (source.origin == Origin::Buffer) return readUtf8(source, text);
  text = {const_cast<unsigned char*>(source.data), source.length, source.characters, 0};
  return true;
}

int fillUtf8Block(DskParam* target, const Source& source) {
  StringUtf8Info text{};
  if (!describeSource(source, text)) return kStringUtf8TooLong;
  StringUtf8Info block = loadUtf8Block(target);
  copyBytes(block.data, text.data, text.byteLength);
  block.byteLength = text.byteLength;
  block.charLength = text.charLength;
  std::memcpy(valueOf(target), &block, kBlockSize);
  return kNoError;
}

struct HeapRelease {
  void operator()(void* block) const { XHeap::library().release(block); }
};

// Characters of the code page; UTF-8 needs up to four times their room.
int setConverted(DskParam* target, const Source& source) {
  unsigned char onStack[256];
  std::unique_ptr<void, HeapRelease> onHeap;
  void* scratch = onStack;
  const std::uint64_t room = std::uint64_t{source.length} * 4;
  if (room >= sizeof onStack) {
    onHeap.reset(XHeap::library().allocate(room));
    if (onHeap == nullptr) return kMemoryAllocationFailed;
    scratch = onHeap.get();
  }
  std::uint32_t bytes = 0;
  std::uint32_t characters = 0;
  const int status = intlConvertString(
      IntlFormat::CodePage, source.data, source.length, IntlFormat::Utf8, scratch,
      static_cast<std::uint32_t>(std::min<std::uint64_t>(room, 0xFFFFFFFF)), bytes, characters);
  if (status != kNoError) return status;
  if (characters != source.length) return kStringUtf8TooLong;
  return setHeld(target, kSetUtf8, scratch, bytes, characters);
}

int setHeldUtf8(DskParam* target, const Source& source) {
  if (source.origin == Origin::Characters) return setConverted(target, source);
  StringUtf8Info text{};
  if (!describeSource(source, text)) return kStringUtf8TooLong;
  return setHeld(target, kSetUtf8, text.data, text.byteLength, text.charLength);
}

int refuse(const DskParam* target) {
  return refuseFormat("paramcpy", formatOf(target));
}

int copyIn(DskParam* target, const Source& source) {
  if (target == nullptr) return kInvalidParameterType;
  const bool isBuffer = source.origin == Origin::Buffer;
  switch (kindOf(target)) {
    case Kind::CString:
      return fillString(load<char*>(target), source);
    case Kind::InlineString:
      return source.length > kInlineRoom ? kStringTooLong : fillInline(target, source);
    case Kind::Integer:
      // The length is the number.
      store(target, source.length);
      return kNoError;
    case Kind::Any:
      if (isBuffer) return refuse(target);
      return setHeld(target, source.origin == Origin::Memory ? kSetBytes : kSetCharacters,
                     source.data, source.length);
    case Kind::HeldString:
      return setHeld(target, kSetCharacters, source.data, source.length);
    case Kind::HeldBinary:
      return setHeld(target, kSetBytes, source.data, source.length);
    case Kind::InlineBinary:
      return source.length > kInlineRoom - (isBuffer ? 1 : 0) ? kBinaryTooLong
                                                              : fillInline(target, source);
    case Kind::StringBlock:
      return fillBlock<DskStringBlock>(target, source, true, kStringTooLong);
    case Kind::BinaryBlock:
      return fillBlock<DskBinaryBlock>(target, source, false, kBinaryTooLong);
    case Kind::Utf8Block:
      return source.origin == Origin::Characters ? refuse(target) : fillUtf8Block(target, source);
    case Kind::HeldUtf8:
      return setHeldUtf8(target, source);
    default:
      return refuse(target);
  }
}

}  // namespace
}  // namespace nomutil::params

using namespace nomutil::params;

int paramcpy(DskParam* target, const void* source, unsigned byteLength, unsigned characterLength) {
  return copyIn(target, {Origin::Memory, static_cast<const unsigned char*>(source), byteLength,
                         characterLength});
}

int paramcpy(DskParam* target, const void* source, unsigned byteLength) {
  return paramcpy(target, source, byteLength, 0);
}

int paramcpy(DskParam* target, const char* source, unsigned length) {
  return copyIn(target,
                {Origin::Characters, reinterpret_cast<const unsigned char*>(source), length, 0});
}

int paramcpy(DskParam* target, const DskBuffer* source) {
  if (source == nullptr) return kInvalidParameterType;
  return copyIn(target, {Origin::Buffer, source->data(), bufferRoom(*source), 0});
}
