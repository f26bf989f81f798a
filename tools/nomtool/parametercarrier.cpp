// The two ways: a decimal is copied, taken as its image of 14 bytes and built again; a text goes
// from a block into a held string and out. What arrives is compared with what was sent, so that a
// status of 0 alone is not believed.
#include "parametercarrier.h"

#include "sys/messages.h"

namespace nomtool {

int ParameterCarrier::_judge(int status, bool equal) {
  if (status != kNoError) return status;
  if (!equal) return kInvalidParameterValue;
  ++_arrived;
  return kNoError;
}

int ParameterCarrier::carry(const DskDecimal& value) {
  ShortDskParam sent(DSKDECIMAL, 0, 0);
  sent.setValue(value);
  ShortDskParam copied;
  if (const int status = paramcpy(&copied, &sent); status != kNoError) return status;
  ShortDskParam image = ShortDskParam::allZero();
  ShortDskParam built(DSKDECIMAL, 0, 0);
  built.setValue(DskDecimal{});
  if (const int status = paramAsBinary(&image, &copied); status != kNoError) return status;
  if (const int status = paramFromBinary(&built, &image); status != kNoError) return status;
  bool equal = false;
  const int status = paramsAreEqual(sent, built, &equal);
  return _judge(status, equal);
}

int ParameterCarrier::carry(const std::string& text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  ShortDskParam sent(DSKSTRINGBLOCK, 0, 0);
  // The block is only read.
  sent.setValue(DskStringBlock{const_cast<char*>(text.data()), 0, length, length});
  if (const int status = paramcpy(&_held, &sent); status != kNoError) return status;
  _text.resize(text.size() + 1);
  unsigned bytes = 0;
  unsigned characters = 0;
  const int status = paramcpy(_text.data(), _held, length + 1, bytes, characters);
  return _judge(status, bytes == length && _text.compare(0, length, text) == 0);
}

}  // namespace nomtool
