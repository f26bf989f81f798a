// The forms that the fields of a column may have, and the way of a field between its text and the
// value of a property. A column has the first form in which every field that is not empty comes
// back byte by byte, so that no field changes on its way: 007 and 1.50e3 are text.
#ifndef NOMTOOL_COLUMNFORM_H
#define NOMTOOL_COLUMNFORM_H

#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomtool {

// The numbers stand in snapshots.
enum class ColumnForm : std::uint8_t {
  kBoolean = 0,           // true
  kInteger = 1,           // -12, of 64 bits
  kDecimal = 2,           // -12.50, of 23 digits
  kDate = 3,              // 2024-01-05
  kDateSlash = 4,         // 2024/01/05
  kTimeStamp = 5,         // 2024-01-05 10:30:00
  kTimeStampT = 6,        // 2024-01-05T10:30:00
  kTimeStampMillis = 7,   // 2024-01-05 10:30:00.250
  kTimeStampMillisT = 8,  // 2024-01-05T10:30:00.250
  kText = 9,              // UTF-8
  kBytes = 10,
};
inline constexpr unsigned kColumnFormCount = 11;

// Sets of forms, one bit each.
using ColumnForms = unsigned;
inline constexpr ColumnForms kAllForms = (1u << kColumnFormCount) - 1;

// Those of the wanted forms in which a field that is not empty comes back as it is.
ColumnForms formsOf(std::string_view field, ColumnForms wanted);

// The first of a set; a column without any field that is not empty is text.
ColumnForm firstForm(ColumnForms forms);

PFormat formatOf(ColumnForm form);
const char* nameOf(ColumnForm form);  // "decimal"
// Whether an empty field has no value of its own.
constexpr bool isFixed(ColumnForm form) {
  return form < ColumnForm::kText;
}
constexpr bool isNumber(ColumnForm form) {
  return form == ColumnForm::kInteger || form == ColumnForm::kDecimal;
}

// The bytes of a value, as DynamicObject takes and gives them.
struct ValueBytes {
  unsigned char room[16];
  std::uint32_t length = 0;
  std::string_view text;  // of a text, which stays where it is

  const void* data() const {
    return text.data() != nullptr ? text.data() : static_cast<const void*>(room);
  }
};

// REQUIRES: the field has the form.
ValueBytes valueOf(ColumnForm form, std::string_view field);

// Appends the field of a value; false for bytes that are no value of the form.
bool appendValue(std::string& text, ColumnForm form, std::string_view bytes);

// -1, 0 or 1 as the one value is less than, equal to or greater than the other one. REQUIRES: they
// are values of the form.
int compareValues(ColumnForm form, std::string_view left, std::string_view right);

}  // namespace nomtool

#endif  // NOMTOOL_COLUMNFORM_H
