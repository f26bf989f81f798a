// Parameters built from texts as the commands take them, and texts of parameters. The command line
// and the output are UTF-8; strings lie in a parameter as characters of the code page, but those of
// the UTF-8 formats. A text is a number, true or false, a character, a string; numbers with commas
// between them, as "3,-4" of a point; pairs of hexadecimal digits for binaries and identifiers.
#ifndef NOMTOOL_PARAMETERTEXT_H
#define NOMTOOL_PARAMETERTEXT_H

#include "nomos/intl.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nomtool {

// The number of a format that is given by its number or its enumerator; 0 for none.
unsigned formatOf(const std::string& name);

// A parameter and the memory that its value lies in.
struct BuiltParameter {
  DskParam parameter = DskParam::allZero();
  std::string memory;

  BuiltParameter() = default;
  ~BuiltParameter() { paramDeleteKoraAny(&parameter); }
  BuiltParameter(const BuiltParameter&) = delete;
  BuiltParameter& operator=(const BuiltParameter&) = delete;
};

// Gives a parameter, whose format is set, the value that a text says. Returns a status: 1002 for a
// text that is none of the format.
int storeText(BuiltParameter& built, const std::string& text);

struct ConvertedText {
  int status;
  std::string text;
  std::uint32_t characterCount;
};

ConvertedText convert(IntlFormat from, std::string_view text, IntlFormat to);

// The text of a value that was given in inputSize bytes.
ConvertedText textOf(const DskParam& parameter, std::size_t inputSize);

}  // namespace nomtool

#endif  // NOMTOOL_PARAMETERTEXT_H
