// What callers may ask the table of formats. 4 is DSKINTEGER, "Integer", of the family "fixed" and
// 4 bytes; 9 is not a format and has no row, but the name "Unknown".

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
