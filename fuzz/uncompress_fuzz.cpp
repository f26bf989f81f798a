// Any bytes as a compressed block, expanded into the library's own targets and into a foreign
// handler, which gets every chunk appended. Laws: all of them end with the same status and the same
// text; no more is kept than the limit; a value that came out goes in and comes out again.
// Input: the flags, the limit and the maximum of the targets in chunks; the rest is the block.
#include "nomos/testhooks.h"
#include "sys/compress.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

constexpr std::uint64_t kChunk = 36312;

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreLine(void*, NosLogLevel, const char*) {}

struct Model {
  std::string text;
  std::uint32_t maximum;
  int tooLong;
};

int handleModel(std::uint8_t code, DskParam* parameter, void* argument, std::uint32_t* count) {
  auto& model = *static_cast<Model*>(parameter->getValue<DskHandlerValue>().item);
  auto*& data = *static_cast<char**>(argument);
  const bool isAppend = code == 23 || code == 38;
  const std::size_t length = code == 19 ? *count : isAppend ? model.text.size() + *count : 0;
  if (length > model.maximum) return model.tooLong;
  if (isAppend) model.text.append(data, *count);
  if (code == 16) data = model.text.data();
  if (code == 19) model.text.resize(length);
  if (code == 20) *count = static_cast<std::uint32_t>(model.text.size());
  return 0;
}

std::string textOf(const DskParam* parameter) {
  unsigned char* bytes = nullptr;
  unsigned length = 0;
  require(paramBytesPtr(parameter, &bytes) == 0 && paramBytesLen(parameter, &length) == 0);
  return std::string(bytes, bytes + length);
}

void goAround(const std::string& text) {
  ShortDskParam block, again;
  paramCreateKoraBinary(block, nullptr, 0, kKoraNoMaximum, 0);
  paramCreateKoraBinary(again, nullptr, 0, kKoraNoMaximum, 0);
  doSetUncompressLimit(0);
  const auto* const source = reinterpret_cast<const unsigned char*>(text.data());
  require(doAltCompress(false, source, static_cast<unsigned>(text.size()), 'z' + 256, block) == 0);
  std::string bytes = textOf(block);
  require(doAltUncompress(false, reinterpret_cast<unsigned char*>(bytes.data()),
                          static_cast<unsigned>(bytes.size()), again) == 0);
  require(textOf(again) == text);
  paramDeleteKoraAny(block);
  paramDeleteKoraAny(again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  nosSetLogSink(ignoreLine, nullptr);
  const bool isString = data[0] % 2 != 0;
  // A bomb would only cost time.
  const std::uint64_t limit = data[1] * kChunk / 16 + 1;
  const std::uint32_t maximum =
      data[2] == 255 ? kKoraNoMaximum : static_cast<std::uint32_t>(data[2] * kChunk / 64);
  doSetUncompressLimit(limit);
  // A block of exactly the size.
  const auto length = static_cast<unsigned>(size - 3);
  const std::unique_ptr<unsigned char[]> block(new unsigned char[length]);
  std::copy(data + 3, data + size, block.get());

  ShortDskParam held;
  if (isString) {
    paramCreateKoraString(held, nullptr, 0, maximum, 0);
  } else {
    paramCreateKoraBinary(held, nullptr, 0, maximum, 0);
  }
  Model model{"", maximum, isString ? kStringTooLong : kBinaryTooLong};
  ShortDskParam foreign(isString ? DSKKORASTRING : DSKKORABINARY, 0, 0);
  foreign.setValue(DskHandlerValue{handleModel, &model, foreign});
  const int status = doAltUncompress(isString, block.get(), length, held);
  require(doAltUncompress(isString, block.get(), length, foreign) == status);
  const std::string text = textOf(held);
  require(text == model.text && text.size() <= limit && text.size() <= maximum);
  if (status == 0) goAround(text);
  paramDeleteKoraAny(held);
  return 0;
}
