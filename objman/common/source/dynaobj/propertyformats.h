// The table of property formats, and values on their way between parameters and images. 1 is a
// string: a slot of 8 bytes, and of type 11 of class 6 unless one is given; 19 is a decimal, whose
// 16 bytes are its slot; 5 cannot be the format of a property.
#ifndef NOMUTIL_DYNAOBJ_PROPERTYFORMATS_H
#define NOMUTIL_DYNAOBJ_PROPERTYFORMATS_H

#include "nameindex.h"

#include "nomos/exception.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <new>

namespace nomutil::dynaobj {

enum class Form : std::uint8_t { None, Fixed, Reference, String, Binary, Utf8 };

struct PropertyFormat {
  Form form = Form::None;
  std::uint8_t slotSize = 0;
  std::uint8_t typeNumber = 0;
  std::uint8_t typeClass = 0;
};

inline constexpr auto kPropertyFormats = [] {
  std::array<PropertyFormat, DSKTIMESTAMPOFFSET + 1> rows{};
  rows[DSKCSTRING] = {Form::String, 8, 11, 6};
  rows[DSKOBJECTID] = {Form::Reference, 12, 1, 2};
  rows[DSKINTEGER] = {Form::Fixed, 4, 7, 6};
  rows[DSKCHARACTER] = {Form::Fixed, 1, 4, 6};
  rows[DSKBOOLEAN] = {Form::Fixed, 1, 3, 6};
  rows[DSKPOINT] = {Form::Fixed, 8, 9, 6};
  rows[DSKBINARY] = {Form::Binary, 8, 2, 6};
  rows[DSKDATE] = {Form::Fixed, 4, 5, 6};
  rows[DSKTIME] = {Form::Fixed, 4, 12, 6};
  rows[DSKTIMESTAMP] = {Form::Fixed, 8, 13, 6};
  rows[DSKDECIMAL] = {Form::Fixed, 16, 6, 6};
  rows[DSKREAL] = {Form::Fixed, 8, 10, 6};
  rows[DSKSHORTOBJECTID] = {Form::Reference, 12, 1, 2};
  rows[DSKINTEGER64] = {Form::Fixed, 8, 21, 6};
  rows[DSKMEMORYADDRESS] = {Form::Fixed, 12, 22, 6};
  rows[DSKSTRINGUTF8BLOCK] = {Form::Utf8, 8, 23, 6};
  rows[DSKBYTE] = {Form::Fixed, 1, 20, 6};
  rows[DSKTIMESTAMPINTERVAL] = {Form::Fixed, 8, 24, 6};
  rows[DSKTIMESTAMPOFFSET] = {Form::Fixed, 12, 25, 6};
  return rows;
}();

inline const PropertyFormat& propertyFormat(unsigned format) {
  return kPropertyFormats[format < kPropertyFormats.size() ? format : 0];
}

// The value of a property, or of a parameter on its way into one. A piece goes to its offset in
// the region. Null is told by data.
struct Content {
  const unsigned char* data = nullptr;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
  std::uint32_t characters = 0;
};

// A slot that lies in the values image.
struct Slot {
  std::uint32_t offset;
  PropertyFormat format;
};

// What the slot of a string, binary or UTF-8 property holds: where its bytes lie in the long
// values. A room of 0 is null; a string's NUL and the lengths of UTF-8 count.
struct Region {
  std::uint32_t room;
  std::uint32_t offset;
};
static_assert(sizeof(Region) == 8);

// Ahead of the bytes in a region of UTF-8.
struct Utf8Lengths {
  std::uint32_t bytes;
  std::uint32_t characters;
};
static_assert(sizeof(Utf8Lengths) == 8);

template <class T>
void storeAt(void* bytes, const T& record) {
  std::memcpy(bytes, &record, sizeof record);
}

// Runs what may throw and gives the number of its exception.
template <class Change>
int statusOf(Change change) {
  try {
    change();
    return kNoError;
  } catch (const NomException& failure) {
    return failure.number();
  } catch (const std::bad_alloc&) {
    return kMemoryAllocationFailed;
  }
}

}  // namespace nomutil::dynaobj

#endif  // NOMUTIL_DYNAOBJ_PROPERTYFORMATS_H
