// Parameters from bytes that came from outside: copied in from a DskBuffer and from memory, built
// from a binary image, and then used by every operation that reads them.
// Laws: what is refused leaves the target as it was; a value that was copied in is as long as the
// library says; a cut copy is the beginning of the whole one.
// Input: the target's format, the kind of source, the room of the copy out; the rest is the value.
#include "nomos/testhooks.h"
#include "sys/params.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreLine(void*, NosLogLevel, const char*) {}

// A parameter whose memory is exactly as large as it says.
struct Target {
  DskParam parameter = DskParam::allZero();
  std::vector<unsigned char> memory;

  Target(std::uint8_t format, std::size_t room) : memory(room) {
    parameter.header.format = static_cast<PFormat>(format);
    const auto capacity = static_cast<std::uint32_t>(room != 0 ? room - 1 : 0);
    if (format == DSKCSTRING || format == DSKCSTRING2) parameter.setValue(memory.data());
    if (format == DSKSTRINGBLOCK || format == DSKBINARYBLOCK) {
      parameter.setValue(DskBinaryBlock{memory.data(), 0, 0, capacity});
    }
    if (format == DSKSTRINGUTF8BLOCK) parameter.setValue(StringUtf8Info{memory.data(), 0, 0, 0});
    if (format == DSKANY || format == DSKKORASTRING || format == DSKKORABINARY ||
        format == DSKKORASTRINGUTF8) {
      parameter.setValue(DskHandlerValue{koraDataHandler, nullptr, &parameter});
    }
  }
  ~Target() { paramDeleteKoraAny(&parameter); }
};

int copyIn(Target& target, std::uint8_t kind, const unsigned char* data, std::uint32_t size) {
  if (kind % 3 == 0) {
    std::vector<unsigned char> bytes(72 + size);
    auto* const buffer = reinterpret_cast<DskBuffer*>(bytes.data());
    buffer->length = size + 22;
    if (size != 0) std::memcpy(buffer->data(), data, size);
    return paramcpy(&target.parameter, buffer);
  }
  std::vector<unsigned char> bytes(data, data + size);
  bytes.push_back('\0');  // a string's end
  if (kind % 3 == 1) {
    return paramcpy(&target.parameter, static_cast<const void*>(bytes.data()), size, size);
  }
  return paramcpy(&target.parameter, reinterpret_cast<const char*>(bytes.data()), size);
}

void readAll(DskParam* parameter, std::uint32_t room) {
  unsigned length = 0;
  unsigned bytes = 0;
  unsigned characters = 0;
  const int measured = paramBytesLen(parameter, &length);
  std::vector<unsigned char> whole(std::size_t{length} + 1);
  std::vector<unsigned char> cut(room);
  const auto wholeRoom = static_cast<std::uint32_t>(whole.size());
  const int copied = paramcpy(whole.data(), parameter, wholeRoom, bytes, characters);
  require(copied != 0 || (measured == 0 && bytes == length));
  const int cutStatus = paramcpyTruncate(cut.data(), parameter, room);
  if (copied == 0 && cutStatus == 0) {
    require(std::equal(whole.begin(), whole.begin() + std::min(length, room), cut.begin()));
  }
  paramcpy(cut.data(), parameter, room, bytes, characters);
  unsigned char* place = nullptr;
  paramCharactersLen(parameter, &characters);
  paramBytesPtr(parameter, &place);
  std::vector<char> text(room);
  paramToString(parameter, text.data(), room);
  bool equal = false;
  paramsAreEqual(parameter, parameter, &equal);

  auto* const source = reinterpret_cast<ShortDskParam*>(parameter);
  ShortDskParam copy = ShortDskParam::allZero();
  if (paramcpy(&copy, source) == 0) paramDeleteKoraAny(copy.operator DskParam*());
  ShortDskParam image = ShortDskParam::allZero();
  paramAsBinary(&image, source);
}

void build(std::uint8_t format, const unsigned char* data, std::uint32_t size) {
  if (format == DSKREAL && size < 8) return;  // reads 8 bytes whatever the length
  std::vector<unsigned char> bytes(data, data + size);
  ShortDskParam source(DSKBINARYBLOCK, 0, 0);
  source.setValue(DskBinaryBlock{bytes.data(), size / 3, size, size});
  if (format == DSKREAL && size - size / 3 < 8) return;
  Target target(format, 0);
  const DskParam before = target.parameter;
  auto* const built = reinterpret_cast<ShortDskParam*>(&target.parameter);
  if (paramFromBinary(built, &source) != 0) {
    require(std::memcmp(&before, &target.parameter, sizeof before) == 0);
    return;
  }
  char text[100];
  const bool isFixed = std::strcmp(findParamFormat(format)->family, "fixed") == 0;
  if (isFixed) paramToString(&target.parameter, text, sizeof text);
  ShortDskParam negated = ShortDskParam::allZero();
  paramNegateValue(&negated, built);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  nosSetLogSink(ignoreLine, nullptr);
  const auto length = static_cast<std::uint32_t>(size - 3);
  Target target(data[0], length + 1);
  const DskParam before = target.parameter;
  if (copyIn(target, data[1], data + 3, length) == 0) {
    readAll(&target.parameter, data[2]);
  } else if (before.header.format != DSKANY) {
    // An object may have been made, which is empty.
    const std::size_t compared = offsetof(DskHandlerValue, item) + sizeof(DskParamHeader);
    require(std::memcmp(&before, &target.parameter, compared) == 0);
  }
  if (findParamFormat(data[0]) != nullptr) build(data[0], data + 3, length);
  return 0;
}
