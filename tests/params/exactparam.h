// Parameters for tests. The record of a Param, and the memory that its value points to, end where
// a block of the heap ends, so that the address sanitizer sees a byte too many. The header has
// usage 3, more 5 and 0x44332211 behind them; what the value does not need is filled with 0xCC.
// In the words of the tables '~' is the letter a with two dots in UTF-8, two bytes, '^' the same in
// the code page 1252, '|' a NUL, a digit the byte of that value, and "_" is nothing.
#ifndef NOMUTIL_TESTS_EXACTPARAM_H
#define NOMUTIL_TESTS_EXACTPARAM_H

#include "recorder.h"
#include "rows.h"
#include "sys/decimals.h"
#include "sys/params.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace nomtest {

inline std::uint32_t numberOf(const std::string& word) {
  return static_cast<std::uint32_t>(std::stoull(word));
}

inline bool isAmong(unsigned format, std::initializer_list<unsigned> formats) {
  return std::find(formats.begin(), formats.end(), format) != formats.end();
}

// The formats of texts, and the status of one that is too long, which is that of its family; 0 for
// other formats.
inline constexpr unsigned kTexts[] = {1, 2, 14, 25, 11, 33, 34, 51, 54};
inline int tooLongOf(unsigned format) {
  if (isAmong(format, {1, 2, 14, 25})) return 1035;
  return isAmong(format, {11, 33, 34}) ? 1091 : isAmong(format, {51, 54}) ? 1124 : 0;
}

// The characters of words that stand for other bytes, and those; C3 goes ahead of A4.
inline const std::string kSigns = "|123456789^~", kBytes("\0\1\2\3\4\5\6\7\x08\x09\xE4\xA4", 12);

// The bytes of a word, without room behind them, and the word of bytes.
inline std::vector<char> bytesOf(const std::string& word) {
  std::string bytes;
  for (const char unit : word == "_" ? "" : word) {
    const std::size_t sign = kSigns.find(unit);
    if (unit == '~') bytes += '\xC3';
    bytes += sign == kSigns.npos ? unit : kBytes[sign];
  }
  return {bytes.begin(), bytes.end()};
}
template <class Bytes>
std::string wordOf(const Bytes& bytes) {
  std::string word;
  for (const char unit : bytes) {
    const std::size_t sign = kBytes.find(unit);
    if (unit != '\xC3') word += sign == kBytes.npos ? unit : kSigns[sign];
  }
  return word.empty() ? "_" : word;
}

class Param {
 public:
  // A handler parameter that holds nothing yet, or a parameter without a value.
  explicit Param(unsigned format) : _record(isInline(format) ? 528 : 40, '\xCC') {
    const std::uint64_t header = 0x4433221105030000 | format;
    std::memcpy(_record.data(), &header, sizeof header);
    if (format == 5 || isHeld()) get()->setValue(DskHandlerValue{koraDataHandler, nullptr, *this});
  }

  // With the text of a word, for which a block has no more room, and which "@7" gives an offset.
  // The value of another format begins with the bytes of the word, or is a number like "=1.50".
  Param(unsigned format, const std::string& word, std::uint32_t maximum = kKoraNoMaximum)
      : Param(format) {
    const std::size_t at = word.find('@');
    const std::uint32_t offset = at == word.npos ? 0 : numberOf(word.substr(at + 1));
    const std::string text = word.substr(0, at);
    memory = bytesOf(text);
    const auto length = static_cast<std::uint32_t>(memory.size());
    const auto pairs = std::count(memory.begin(), memory.end(), '\xA4');
    if (format == 1) memory = bytesOf(text == "_" ? "|" : text + "|");
    auto* const bytes = reinterpret_cast<unsigned char*>(memory.data());
    const StringUtf8Info info{bytes, length, length - static_cast<std::uint32_t>(pairs), length};
    const DskBinaryBlock block{bytes, offset, length, length};
    if (isInline(format)) std::memcpy(&_record[8], &length, 2);
    if (isInline(format)) std::copy(memory.begin(), memory.end(), &_record[12]);
    if (isAmong(format, {1, 14, 34})) get()->setValue(block);
    if (format == 51) get()->setValue(info);
    if (format == 25) made = paramCreateKoraString(*this, memory.data(), length, maximum, 2);
    if (format == 33) made = paramCreateKoraBinary(*this, bytes, length, maximum, 2);
    if (format == 54) made = paramCreateKoraStringUtf8(*this, &info, maximum, 2);
    if (isAmong(format, {1, 2, 5, 11, 14, 25, 33, 34, 36, 51, 54})) return;
    std::copy_n(memory.begin(), std::min<std::size_t>(length, 32), &_record[8]);
    if (word[0] == '=') _setNumber(word.substr(1));
  }
  Param(Param&&) = default;
  ~Param() {
    if (!_record.empty() && isHeld()) paramDeleteKoraAny(*this);
  }

  static bool isInline(unsigned format) { return isAmong(format, {2, 11}); }
  DskParam* get() const { return reinterpret_cast<DskParam*>(_record.data()); }
  operator DskParam*() const { return get(); }
  DskParam* operator->() const { return get(); }
  ShortDskParam* asShort() const { return reinterpret_cast<ShortDskParam*>(_record.data()); }
  unsigned format() const { return asShort()->header.format; }
  bool isHeld() const { return isAmong(format(), {25, 33, 54}); }
  KoraBytes* held() const {
    return static_cast<KoraBytes*>(get()->getValue<DskHandlerValue>().item);
  }

  // The value as a word, read without the library's help: "(none)" without a held object, "ab~/3"
  // for held UTF-8 of three characters.
  std::string word() const {
    const auto block = get()->getValue<DskBinaryBlock>();
    std::uint32_t length = format() == 51 ? block.offset : block.length;
    const void* text = block.data;
    if (isInline(format())) length = get()->getValue<std::uint16_t>();
    if (isInline(format())) text = &_record[12];
    if (format() == 1) length = static_cast<std::uint32_t>(std::strlen(memory.data()));
    if (format() == 4) return std::to_string(get()->getValue<std::int32_t>());
    if (isHeld() && held() == nullptr) return "(none)";
    if (isHeld()) length = held()->length();
    if (isHeld()) text = held()->bytes();
    const auto* const utf8 = isHeld() ? dynamic_cast<const KoraUtf8String*>(held()) : nullptr;
    return wordOf(std::string(static_cast<const char*>(text), length)) +
           (utf8 == nullptr ? "" : "/" + std::to_string(utf8->characters()));
  }

  // Every byte of the record and of its memory, and the held text.
  std::string snapshot() const {
    return std::string(_record.begin(), _record.end()) + wordOf(memory) + (isHeld() ? word() : "");
  }

  mutable std::vector<char> memory;
  int made = 0;  // what creation returned

 private:
  void _setNumber(const std::string& text) {
    DskDecimal decimal{};
    if (isAmong(format(), {4, 16, 17})) return get()->setValue(std::stoi(text));
    if (format() == 20) return get()->setValue(std::stof(text));
    if (format() == 21) return get()->setValue(std::stod(text));
    if (format() != 19) return get()->setValue<std::int64_t>(std::stoll(text));
    EXPECT_TRUE(nomDecimalFromString(text.c_str(), &decimal));
    get()->setValue(decimal);
  }

  mutable std::vector<char> _record;
};

// A DskBuffer whose data, given as a word, end their block of the heap.
struct Buffer {
  explicit Buffer(const std::string& word) : bytes(bytesOf(std::string(72, '#') + word)) {
    get()->length = static_cast<std::uint32_t>(bytes.size() - 50);
  }
  DskBuffer* get() { return reinterpret_cast<DskBuffer*>(bytes.data()); }
  std::vector<char> bytes;
};

// The library's data handler behind a list of its calls, each with a comma ahead and 65 with the
// room it is given; one call may fail.
inline std::string codesSent;
inline unsigned callsUntilFailure = 0;
inline int watchingHandler(std::uint8_t code, DskParam* parameter, void* argument,
                           std::uint32_t* count) {
  codesSent += "," + std::to_string(code);
  if (code == 65) codesSent += "(" + std::to_string(*count) + ")";
  return --callsUntilFailure == 0 ? 77 : koraDataHandler(code, parameter, argument, count);
}

// The log lines since the last call, each with a line feed behind it.
inline std::string linesOf(Recorder& recorder) {
  std::string all;
  for (const LogLine& line : recorder.takeLines()) all += line.text + "\n";
  return all;
}

// Expects at the end of a test that no line was logged unseen and no block of the heap is left.
class Checked : public testing::Test {
 protected:
  ~Checked() override {
    nosFailAllocation(0);
    EXPECT_EQ(nosAllocatedBlocks(), _before);
    EXPECT_EQ(lines(), "");
  }
  std::string lines() { return linesOf(_recorder); }

 private:
  Recorder _recorder;
  std::uint64_t _before = nosAllocatedBlocks();
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_EXACTPARAM_H
