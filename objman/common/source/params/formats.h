// The table of formats: one row tells everything that is fixed about a format, and its kind is what
// the operations branch on.
#ifndef NOMUTIL_PARAMS_FORMATS_H
#define NOMUTIL_PARAMS_FORMATS_H

#include "sys/params.h"

#include <cstdint>

namespace nomutil::params {

// How a value is kept. One kind has one row, but for Fixed and Rendered.
enum class Kind : std::uint8_t {
  None,  // not a format
  CString,
  InlineString,
  StringBlock,
  HeldString,
  InlineBinary,
  BinaryBlock,
  HeldBinary,
  Utf8Block,
  HeldUtf8,
  Any,
  Null,
  Integer,    // Fixed; as a target it takes a length for its value
  Character,  // Fixed; as a source it is a string of one
  Fixed,
  Rendered,  // shown as text and nothing else
};

struct FormatRow {
  ParamFormatInfo info;
  Kind kind;
};

inline constexpr unsigned kFormatCount = 58;
extern const FormatRow kFormats[kFormatCount];

// Any number from 58 on is as little a format as 0.
inline const FormatRow& formatRow(unsigned format) {
  return kFormats[format < kFormatCount ? format : 0];
}

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_FORMATS_H
