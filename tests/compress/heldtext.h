// Targets of compressed blocks: the library's own held values, and a handler of somebody else's,
// which is a string with a maximum and a list of the appends, the model that held values are
// compared with.
#ifndef NOMUTIL_TESTS_HELDTEXT_H
#define NOMUTIL_TESTS_HELDTEXT_H

#include "sys/compress.h"
#include "sys/messages.h"
#include "sys/params.h"

#include "recorder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nomtest {

// The lines of the log since the last call, each up to where `end` begins.
inline std::string takeLines(Recorder& recorder, const char* end = "\n") {
  std::string all;
  for (const LogLine& line : recorder.takeLines()) {
    all += line.text.substr(0, line.text.find(end)) + '\n';
  }
  return all;
}

class Target {
 public:
  virtual ~Target() = default;
  virtual std::string text() = 0;

  // From memory of exactly the size.
  int compress(const std::string& source, int method) {
    const std::vector<unsigned char> exact(source.begin(), source.end());
    return doAltCompress(false, exact.data(), static_cast<unsigned>(exact.size()), method,
                         _parameter);
  }
  int uncompress(const std::string& block, bool isString = false) {
    std::vector<unsigned char> exact(block.begin(), block.end());
    return doAltUncompress(isString, exact.data(), static_cast<unsigned>(exact.size()), _parameter);
  }

  ShortDskParam& parameter() { return _parameter; }

 protected:
  ShortDskParam _parameter;
};

// A value behind the library's handler: of format 5, 25, 33 or 54.
class HeldText : public Target {
 public:
  explicit HeldText(PFormat format, std::string text = "", std::uint32_t maximum = kKoraNoMaximum) {
    auto* const bytes = reinterpret_cast<unsigned char*>(text.data());
    const auto length = static_cast<std::uint32_t>(text.size());
    const StringUtf8Info utf8{bytes, length, 0, 0};
    switch (format) {
      case DSKKORASTRING:
        paramCreateKoraString(_parameter, text.data(), length, maximum, 0);
        break;
      case DSKKORABINARY:
        paramCreateKoraBinary(_parameter, bytes, length, maximum, 0);
        break;
      case DSKKORASTRINGUTF8:
        paramCreateKoraStringUtf8(_parameter, &utf8, maximum, 0);
        break;
      default:
        paramCreateKoraAny(_parameter, 0);
    }
  }
  ~HeldText() override { paramDeleteKoraAny(_parameter); }

  std::string text() override {
    unsigned char* bytes = nullptr;
    unsigned length = 0;
    paramBytesPtr(_parameter, &bytes);
    paramBytesLen(_parameter, &length);
    return std::string(bytes, bytes + length);
  }
};

// The model. It knows the five codes that the functions are said to need, and refuses others.
class ForeignText : public Target {
 public:
  explicit ForeignText(const std::string& text = "", std::uint32_t maximum = kKoraNoMaximum,
                       int tooLong = kBinaryTooLong)
      : _text(text), _maximum(maximum), _tooLong(tooLong) {
    _parameter = ShortDskParam(DSKKORABINARY, 0, 0);
    _parameter.setValue(DskHandlerValue{handle, this, _parameter});
  }

  std::string text() override { return _text; }

  static constexpr int kRefusal = -77;
  int refused = 0;                     // a code
  std::vector<std::uint32_t> appends;  // their lengths

 private:
  static int handle(std::uint8_t code, DskParam* parameter, void* argument, std::uint32_t* count) {
    auto& self = *static_cast<ForeignText*>(parameter->getValue<DskHandlerValue>().item);
    auto*& data = *static_cast<char**>(argument);
    const bool isAppend = code == 23 || code == 38;
    if (code == self.refused || !(isAppend || code == 16 || code == 19 || code == 20)) {
      return kRefusal;
    }
    if (code == 16) data = self._text.data();
    if (code == 19) self._text.resize(*count);
    if (code == 20) *count = static_cast<std::uint32_t>(self._text.size());
    if (!isAppend) return 0;
    self.appends.push_back(*count);
    if (self._text.size() + *count > self._maximum) return self._tooLong;
    self._text.append(data, *count);
    return 0;
  }

  std::string _text;
  const std::uint32_t _maximum;
  const int _tooLong;
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_HELDTEXT_H
