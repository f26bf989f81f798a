// The table of formats: one row tells everything that is fixed about a format, and its kind is what
// the operations branch on. 4 is "Integer", 4 bytes, fixed; 25 is "String", 24 bytes, behind a data
// handler; 9 is not a format.
#ifndef NOMUTIL_PARAMS_FORMATS_H
#define NOMUTIL_PARAMS_FORMATS_H

#include "sys/params.h"

#include <array>
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
inline constexpr FormatRow kNotAFormat = {{nullptr, "Unknown", nullptr, 0, false}, Kind::None};

// The index is the number of the format.
inline constexpr FormatRow kFormats[kFormatCount] = {
    kNotAFormat,
    {{"DSKCSTRING", "String", "string", 8, true}, Kind::CString},         // 1
    {{"DSKSTRING", "String", "string", 516, false}, Kind::InlineString},  // 2
    {{"DSKOBJECTID", "Object", "fixed", 22, true}, Kind::Fixed},          // 3
    {{"DSKINTEGER", "Integer", "fixed", 4, true}, Kind::Integer},         // 4
    {{"DSKANY", "Any", "any", 24, true}, Kind::Any},                      // 5
    {{"DSKCHARACTER", "Character", "fixed", 1, true}, Kind::Character},   // 6
    {{"DSKBOOLEAN", "Boolean", "fixed", 1, true}, Kind::Fixed},           // 7
    {{"DSKPOINT", "Point", "fixed", 8, true}, Kind::Fixed},               // 8
    kNotAFormat,
    kNotAFormat,
    {{"DSKBINARY", "Binary", "binary", 516, false}, Kind::InlineBinary},  // 11
    kNotAFormat,
    kNotAFormat,
    {{"DSKSTRINGBLOCK", "String", "string", 20, true}, Kind::StringBlock},  // 14
    {{"DSKDOTTEDPAIR", "Unknown", "rendered", 6, true}, Kind::Rendered},    // 15
    {{"DSKDATE", "Date", "fixed", 4, true}, Kind::Fixed},                   // 16
    {{"DSKTIME", "Time", "fixed", 4, true}, Kind::Fixed},                   // 17
    {{"DSKTIMESTAMP", "Timestamp", "fixed", 8, true}, Kind::Fixed},         // 18
    {{"DSKDECIMAL", "Decimal", "fixed", 16, true}, Kind::Fixed},            // 19
    {{"DSKSHORTREAL", "Unknown", "fixed", 4, true}, Kind::Fixed},           // 20
    {{"DSKREAL", "Real", "fixed", 8, true}, Kind::Fixed},                   // 21
    kNotAFormat,
    kNotAFormat,
    {{"DSKSHORTOBJECTID", "Object", "fixed", 12, true}, Kind::Fixed},     // 24
    {{"DSKKORASTRING", "String", "string", 24, true}, Kind::HeldString},  // 25
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    {{"DSKKORABINARY", "Binary", "binary", 24, true}, Kind::HeldBinary},    // 33
    {{"DSKBINARYBLOCK", "Binary", "binary", 20, true}, Kind::BinaryBlock},  // 34
    kNotAFormat,
    {{"DSKNULL", "Null", "null", 32, true}, Kind::Null},  // 36
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    kNotAFormat,
    {{"DSKINTEGER64", "Integer64", "fixed", 8, true}, Kind::Fixed},  // 42
    kNotAFormat,
    {{"DSKMEMORYADDRESS", "MemoryAddress", "fixed", 12, true}, Kind::Fixed},  // 44
    {{"DSKNUMBERANDPAIR", "Unknown", "rendered", 10, true}, Kind::Rendered},  // 45
    {{"DSKDOTTEDTRIPLE", "Unknown", "rendered", 15, true}, Kind::Rendered},   // 46
    kNotAFormat,
    {{"DSKCSTRING2", "Unknown", "rendered", 8, true}, Kind::Rendered},     // 48
    {{"DSKDOTTEDPAIR2", "Unknown", "rendered", 6, true}, Kind::Rendered},  // 49
    kNotAFormat,
    {{"DSKSTRINGUTF8BLOCK", "StringUtf8", "utf8", 20, true}, Kind::Utf8Block},       // 51
    {{"DSKBYTE", "Byte", "fixed", 1, true}, Kind::Fixed},                            // 52
    {{"DSKTIMESTAMPINTERVAL", "TimestampInterval", "fixed", 8, true}, Kind::Fixed},  // 53
    {{"DSKKORASTRINGUTF8", "StringUtf8", "utf8", 24, true}, Kind::HeldUtf8},         // 54
    kNotAFormat,
    kNotAFormat,
    {{"DSKTIMESTAMPOFFSET", "TimestampOffset", "fixed", 12, true}, Kind::Fixed},  // 57
};
static_assert(sizeof kFormats / sizeof kFormats[0] == DSKTIMESTAMPOFFSET + 1);

// Any number from 58 on is as little a format as 0.
inline const FormatRow& formatRow(unsigned format) {
  return kFormats[format < kFormatCount ? format : 0];
}

// One column of the table for itself, a byte for each format, since every operation begins there.
template <class Column>
constexpr auto columnOf(Column column) {
  std::array<decltype(column(kNotAFormat)), kFormatCount> bytes{};
  for (unsigned format = 0; format < kFormatCount; ++format)
    bytes[format] = column(kFormats[format]);
  return bytes;
}
inline constexpr auto kKinds = columnOf([](const FormatRow& row) { return row.kind; });
inline Kind kindOfFormat(unsigned format) {
  return kKinds[format < kFormatCount ? format : 0];
}

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_FORMATS_H
