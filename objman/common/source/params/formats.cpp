// What callers may ask the table of formats.

#include "formats.h"

using nomutil::params::formatRow;
using nomutil::params::FormatRow;
using nomutil::params::Kind;

const ParamFormatInfo* findParamFormat(unsigned number) {
  const FormatRow& row = formatRow(number);
  return row.kind == Kind::None ? nullptr : &row.info;
}

const char* getParamFormatName(PFormat format) {
  return formatRow(format).info.displayName;
}
