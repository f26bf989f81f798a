// The parameter: one record in which every typed value crosses a call boundary, and the operations
// that copy, hold and measure such values. docs/formats/parameter.md shows every value area.
//
// Functions that return int return a status, 0 for success. 1000 (a format that the operation does
// not handle) comes with a log line that names the operation; a null parameter gives 1000 without
// one, a handler parameter whose handler is null too. On failure nothing is written but where a
// function says so. Nothing throws. A parameter belongs to one thread at a time; any number of
// threads may read one whose value is inline or in a block.
#ifndef NOMUTIL_SYS_PARAMS_H
#define NOMUTIL_SYS_PARAMS_H

#include "nomos/korastring.h"
#include "sys/build.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// The value area is given for each format; sizes in bytes, integers little-endian. Strings, UTF-8
// strings and binaries are kept inline, in a block that the caller owns, or behind a data handler
// that owns an object.
enum PFormat : std::uint16_t {
  DSKCSTRING = 1,             // char*: NUL-terminated, the caller's
  DSKSTRING = 2,              // DskString, in a DskParam alone
  DSKOBJECTID = 3,            // 22: DskObjectId
  DSKINTEGER = 4,             // int32
  DSKANY = 5,                 // DskHandlerValue, by paramCreateKoraAny; then 25, 33 or 54
  DSKCHARACTER = 6,           // char
  DSKBOOLEAN = 7,             // 1: not 0 is true
  DSKPOINT = 8,               // DskPoint
  DSKBINARY = 11,             // DskInlineBinary, in a DskParam alone
  DSKSTRINGBLOCK = 14,        // DskStringBlock
  DSKDOTTEDPAIR = 15,         // uint32, uint16
  DSKDATE = 16,               // uint32
  DSKTIME = 17,               // uint32
  DSKTIMESTAMP = 18,          // 8: date, time
  DSKDECIMAL = 19,            // 16: DskDecimal
  DSKSHORTREAL = 20,          // float
  DSKREAL = 21,               // double
  DSKSHORTOBJECTID = 24,      // 12: ShortDskObjectId
  DSKKORASTRING = 25,         // DskHandlerValue that holds a KoraString<char>
  DSKKORABINARY = 33,         // DskHandlerValue that holds a KoraString<unsigned char>
  DSKBINARYBLOCK = 34,        // DskBinaryBlock
  DSKNULL = 36,               // no value; all 32 bytes are copied
  DSKINTEGER64 = 42,          // int64
  DSKMEMORYADDRESS = 44,      // 12: uint64 address, uint32 length
  DSKNUMBERANDPAIR = 45,      // uint32, uint32, uint16
  DSKDOTTEDTRIPLE = 46,       // 15: uint64, uint32, uint16, uint8
  DSKCSTRING2 = 48,           // as 1
  DSKDOTTEDPAIR2 = 49,        // as 15
  DSKSTRINGUTF8BLOCK = 51,    // StringUtf8Info: its maximum is the block's capacity in bytes
  DSKBYTE = 52,               // uint8
  DSKTIMESTAMPINTERVAL = 53,  // int64 milliseconds
  DSKKORASTRINGUTF8 = 54,     // DskHandlerValue that holds a KoraUtf8String
  DSKTIMESTAMPOFFSET = 57,    // 12: date, time, int32 offset
};
// The usage and more of a parameter, of which the table below tells.
using PUsage = std::uint8_t;
using PMore = std::uint8_t;

// A whole header as other records carry it.
struct DskHeader {
  std::uint64_t bits;
};

// A ShortDskParam (40 bytes) is the beginning of a DskParam (528 bytes).
//
//   offset size        field
//   0      2           format: what the value is and how it is kept
//   2      1           usage, carried by every copy; 2 in a parameter that the library makes
//   3      1           more, not 0 while the value is partial
//   4      4           carried, not interpreted
//   8      32 or 520   value, laid out by format
//
// Wherever a DskParam is taken, a ShortDskParam may stand: the functions touch the bytes behind its
// end for the inline formats 2 and 11 alone.
struct DskParamHeader {
  PFormat format;
  PUsage usage;
  PMore more;
  std::uint32_t carried;  // set by the constructor from a DskHeader alone

  // Without arguments a header of format 0, which no operation accepts. carried is not set.
  DskParamHeader() : DskParamHeader(PFormat{}, 0, 0) {}
  DskParamHeader(PFormat initialFormat, PUsage initialUsage, PMore initialMore)
      : format(initialFormat), usage(initialUsage), more(initialMore) {}
  // All 8 bytes.
  explicit DskParamHeader(const DskHeader& whole) { std::memcpy(this, &whole, sizeof *this); }
};
static_assert(sizeof(DskParamHeader) == 8 && sizeof(DskHeader) == 8);
static_assert(offsetof(DskParamHeader, usage) == 2 && offsetof(DskParamHeader, more) == 3);
static_assert(offsetof(DskParamHeader, carried) == 4);
static_assert(std::is_trivially_copyable_v<DskParamHeader>);

// A parameter with a value area of kRoom bytes. Construction sets format, usage and more, and
// leaves the other bytes as they were; copies take all of them and follow no pointer.
template <std::size_t kRoom>
struct DskParamRecord {
  DskParamHeader header;
  unsigned char value[kRoom];

  // A header of format 0.
  DskParamRecord() {}
  // A parameter without a value, which setValue or a copy into a fixed format gives it. That is not
  // enough where the value area is read first: a format with a pointer (1, 14, 34, 51) needs it
  // set, and one behind a data handler (5, 25, 33, 54), whose function the first operation calls,
  // is made by paramCreateKoraAny and its kin. DskParam(DSKANY, 0, 0) calls whatever lay there.
  DskParamRecord(PFormat format, PUsage usage, PMore more) : header(format, usage, more) {}

  // The first sizeof(T) bytes of the value area. They are reached from the record's address, since
  // a DskParam may be a ShortDskParam, whose array is shorter.
  template <class T>
  T getValue() const {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= kRoom);
    T field;
    std::memcpy(&field, reinterpret_cast<const unsigned char*>(this) + sizeof header, sizeof field);
    return field;
  }
  template <class T>
  void setValue(const T& field) {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= kRoom);
    std::memcpy(reinterpret_cast<unsigned char*>(this) + sizeof header, &field, sizeof field);
  }
};

struct DskParam;

// A parameter of 40 bytes, which holds every value but the inline strings and binaries (2 and 11).
struct ShortDskParam : DskParamRecord<32> {
  using DskParamRecord::DskParamRecord;
  ShortDskParam() {}

  // Every byte 0, a format that no operation accepts.
  static ShortDskParam allZero();

  // The same address.
  operator DskParam*();
  operator const DskParam*() const;
  operator DskParam&();
  operator const DskParam&() const;
};

// A parameter of 528 bytes, which holds every value.
struct DskParam : DskParamRecord<520> {
  using DskParamRecord::DskParamRecord;
  DskParam() {}

  // Not for `DskParam d = shortParam` nor an argument by value, which would copy 528 bytes out of
  // 40: three exact constructors, none of them explicit, make these ambiguous with the operators.
  DskParam(const ShortDskParam& source) { *this = source; }
  DskParam(ShortDskParam& source) { *this = source; }
  DskParam(ShortDskParam&& source) { *this = source; }

  // Takes the 40 bytes of the source and keeps those behind them.
  DskParam& operator=(const ShortDskParam& source) {
    std::memcpy(static_cast<void*>(this), &source, sizeof source);
    return *this;
  }

  // Every byte 0.
  static DskParam allZero();
};
static_assert(sizeof(ShortDskParam) == 40 && sizeof(DskParam) == 528);
static_assert(offsetof(DskParamRecord<32>, value) == 8 &&
              offsetof(DskParamRecord<520>, value) == 8);
static_assert(std::is_trivially_copyable_v<ShortDskParam>);
static_assert(std::is_trivially_copyable_v<DskParam>);

inline ShortDskParam ShortDskParam::allZero() {
  ShortDskParam zero;
  std::memset(static_cast<void*>(&zero), 0, sizeof zero);
  return zero;
}
inline DskParam DskParam::allZero() {
  DskParam zero;
  std::memset(static_cast<void*>(&zero), 0, sizeof zero);
  return zero;
}
inline ShortDskParam::operator DskParam*() {
  return reinterpret_cast<DskParam*>(this);
}
inline ShortDskParam::operator const DskParam*() const {
  return reinterpret_cast<const DskParam*>(this);
}
inline ShortDskParam::operator DskParam&() {
  return *reinterpret_cast<DskParam*>(this);
}
inline ShortDskParam::operator const DskParam&() const {
  return *reinterpret_cast<const DskParam*>(this);
}

// ---- Value areas ----

// Formats 2 and 11. The 16 bits behind the length are neither read nor written. A length above 512
// counts as 512.
struct DskString {
  std::uint16_t length;
  std::uint16_t unused;
  char data[512];
};
struct DskInlineBinary {
  std::uint16_t length;
  std::uint16_t unused;
  unsigned char data[512];
};
static_assert(sizeof(DskString) == 516 && offsetof(DskString, data) == 4);
static_assert(sizeof(DskInlineBinary) == 516 && offsetof(DskInlineBinary, data) == 4);

// Formats 14 and 34: a block that the caller owns and the library never frees; its 20 bytes take
// the value area. The content starts at data, but for paramToString and paramFromBinary, which read
// from data + offset, and is length elements. offset is its place in the whole value of which it
// may be a piece; a block whose offset is not 0 is partial. capacity counts elements: the NUL that
// a copy puts behind a string needs one byte more.
struct DskStringBlock {
  char* data;
  std::uint32_t offset;
  std::uint32_t length;
  std::uint32_t capacity;
};
struct DskBinaryBlock {
  unsigned char* data;
  std::uint32_t offset;
  std::uint32_t length;
  std::uint32_t capacity;
};
static_assert(offsetof(DskStringBlock, capacity) == 16 && offsetof(DskBinaryBlock, capacity) == 16);
static_assert(offsetof(StringUtf8Info, maximum) == 16);

// Formats 5, 25, 33 and 54: every access goes through the handler, called with the parameter itself
// but by koraGetString. argument points to a StringUtf8Info, of which an operation on characters or
// bytes uses the data pointer alone.
using DskDataHandler = int (*)(std::uint8_t code, DskParam* parameter, void* argument,
                               std::uint32_t* count);
struct DskHandlerValue {
  DskDataHandler handler;
  void* item;      // the held object; null while there is none
  DskParam* self;  // the parameter whose value this is
};
static_assert(sizeof(DskHandlerValue) == 24 && offsetof(DskHandlerValue, self) == 16);

// Format 8.
struct DskPoint {
  std::int32_t x;
  std::int32_t y;
};

// A buffer of other layers of the system. length counts 22 bytes more than there are data, so that
// a length below 22 has none; the record takes length + 50 bytes of memory.
struct DskBuffer {
  std::uint32_t length;
  unsigned char carried[68];
  // The data, behind the record.
  unsigned char* data() { return reinterpret_cast<unsigned char*>(this) + sizeof *this; }
  const unsigned char* data() const {
    return reinterpret_cast<const unsigned char*>(this) + sizeof *this;
  }
};
static_assert(sizeof(DskBuffer) == 72);

// ---- Formats and type numbers ----

// What is fixed about a format. family is one word: "string", "utf8", "binary", "fixed", "any",
// "null", or "rendered" for a format that is only shown as text.
struct ParamFormatInfo {
  const char* enumerator;   // as in "DSKINTEGER"
  const char* displayName;  // as getParamFormatName returns it
  const char* family;
  std::uint16_t valueSize;  // bytes of the value area that the format uses
  bool fitsShortParam;
};
// Null for a number that is not a format.
NOMUTIL_API const ParamFormatInfo* findParamFormat(unsigned number);

// "String", "Object", "Integer" ...; "Unknown" for what has no name. Constant texts.
NOMUTIL_API const char* getParamFormatName(PFormat format);

// Stores the format of a value of a type: that of the same number for the primitive types, and
// DSKOBJECTID for every other number, that of a class among them. Returns 0.
NOMUTIL_API int mapTypeNumberToPFormat(int typeNumber, PFormat* format);

// classNumber + 1000000 for a number from 1 to 2047 that is not reserved; any other unchanged.
NOMUTIL_API int makeUserClassNumber(int classNumber);

// The operations of expressions.
enum ArithmeticOperation : std::uint32_t {
  kArithmeticAdd = 0,
  kArithmeticSubtract = 1,
  kArithmeticMultiply = 2,
  kArithmeticDivide = 3,
  kArithmeticIntegralDivide = 4,
  kArithmeticNumeric5 = 5,  // between numbers alone, as 6
  kArithmeticNumeric6 = 6,
};

// The type number of left operation right; 0 where the operation is not defined for the pair.
NOMUTIL_API std::uint8_t LookupArithmeticOperationResultType(ArithmeticOperation operation,
                                                             int left, int right);

// Whether a value of the source type may be assigned to the target type. False for a type outside
// 19, 21, 42, 4, 52, 16, 17, 18, 53 and 57, also to itself.
NOMUTIL_API bool CheckAssignmentCompatibility(int target, int source);

// ---- Text of a DskString ----

// Whether a NUL-terminated text is exactly the text of string. Nothing is read behind its NUL.
NOMUTIL_API bool CEqualToDsk(const char* text, const DskString* string);

// Copy the characters, at most limit, and put a NUL behind them; return their number.
// REQUIRES: target has room for the characters and the NUL.
NOMUTIL_API unsigned dskStringToC(const DskString* string, char* target);
NOMUTIL_API unsigned dskStringToC(const DskString* string, char* target, unsigned limit);

// ---- Copy out of a parameter ----
// A piece of a string or binary (formats 14 and 34) is placed at its offset in the target.
// A data handler's own failure is returned as it stands. Handled are the formats 1, 2, 6, 11, 14,
// 25, 33, 34, 36, 51 and 54, unless a function says otherwise.

// Copies the value to target, which has room for targetSize bytes, and reports its length. A NUL,
// for which room is needed, stands behind characters, none behind bytes and UTF-8. Returns 1035,
// 1091 or 1124 and writes nothing but the two lengths when the room is too small. A DSKNULL has
// length 0 and needs no room; target may then be null.
NOMUTIL_API int paramcpy(void* target, const DskParam* source, unsigned targetSize,
                         unsigned& byteLength, unsigned& characterLength);

// Copies what fits, in characters with their NUL, and returns 1035, 1091 or 1124 when it had to
// cut. A UTF-8 value is cut at a byte. A targetSize of 0 gives 1035 for every string, an empty one
// too, and writes nothing; so does 1 for a block of characters of which nothing is copied.
NOMUTIL_API int paramcpyTruncate(void* target, const DskParam* source, unsigned targetSize);

// Replace the text of target by the value: characters of the formats 1, 2, 6, 14, 25 and 36, bytes
// of 11, 33, 34 and 36. Of a block its length from its pointer on, whatever its offset. Return the
// status of the target when it cannot take the value (1035, 1091, 1448).
NOMUTIL_API int paramcpy(KoraString<char>& target, const DskParam* source);
NOMUTIL_API int paramcpy(KoraString<unsigned char>& target, const DskParam* source);

// Copies the value without a NUL to the data of target, whose length tells the room and is not
// changed. UTF-8 is stored as uint32 byteLength, uint32 characterLength, bytes. Format 6 is not
// handled.
NOMUTIL_API int paramcpy(DskBuffer* target, const DskParam* source);

// ---- Copy into a parameter ----
// The target's format says what is expected; nothing is reformatted but a DSKANY by its first
// value, also by one that is then refused.
//   1           to the memory it points to: the NUL-terminated source whatever byteLength, but ""
//               for a byteLength of 0; from a buffer its bytes and a NUL
//   2           at most 512 characters, else 1035
//   4           the number is byteLength itself, and nothing is read
//   5, 25, 33   handed to the data handler; 5 becomes 33 from memory and 25 from characters, and
//               is refused from a buffer
//   11          at most 512 bytes, from a buffer 511, else 1091
//   14, 34      the source is the whole value, of which the part from offset on goes to the block.
//               1035 (1091) for a byteLength over the capacity or below the offset. Then offset
//               and more are 0. A NUL stands behind the characters of 14, behind the capacity when
//               the block is full.
//   51          the bytes and both lengths, without a test of the capacity; refused from characters
//   54          handed to the data handler
// REQUIRES: the memory that a target points to has room for what it takes.

NOMUTIL_API int paramcpy(DskParam* target, const void* source, unsigned byteLength,
                         unsigned characterLength);

// The same with a characterLength of 0, which says that nobody has counted.
NOMUTIL_API int paramcpy(DskParam* target, const void* source, unsigned byteLength);

// The overload of a char array too; memory is cast to const void*, a null source to either.
// From characters of the code page; a DSKKORASTRINGUTF8 receives them as UTF-8. Returns the status
// of the conversion where it fails, 1448 without memory for it.
NOMUTIL_API int paramcpy(DskParam* target, const char* source, unsigned length);

// From the data of a buffer. UTF-8 whose lengths do not fit the buffer gives 1124.
NOMUTIL_API int paramcpy(DskParam* target, const DskBuffer* source);

// ---- Copy between short parameters ----

// Copies a whole value. Strings (1, 14, 25), binaries (33, 34) and UTF-8 strings (51, 54) go to
// the target's handler where the target is a DSKANY or holds the same kind; otherwise the target
// becomes a new handler parameter of usage 2 with a copy, and what it held before is not released.
// Every other format is copied with its header, of an inline string (2) no more than 24 characters;
// a format up to 57 that cannot be copied so (11 among them) gives 1000 after the header has been
// copied.
NOMUTIL_API int paramcpy(ShortDskParam* target, const ShortDskParam* source);

// ---- Lengths and place ----

// The length of the value in bytes, for a block its offset and length together, modulo 2^32. 15,
// 45, 46, 48 and 49 are not handled.
NOMUTIL_API int paramBytesLen(const DskParam* parameter, unsigned* length);

// In characters: formats 1, 2, 5, 6, 14, 25, 36, 51 and 54.
NOMUTIL_API int paramCharactersLen(const DskParam* parameter, unsigned* length);

// Where the bytes of a string or binary of any kind lie; for a block its pointer, whatever its
// offset.
NOMUTIL_API int paramBytesPtr(const DskParam* parameter, unsigned char** bytes);

// ---- Comparison ----
// The flag is false unless both sides are known to agree. A null pointer gives 1000.

// Whether two values are equal. Values of one family are equal across its ways of being kept, byte
// by byte; a date equals the timestamp of its midnight; the two reals compare as doubles, and a NaN
// equals nothing; a decimal equals one of another scale; object identifiers compare by
// oidsAreEqual; of timestamps with an offset only the timestamps count. Other pairs of formats are
// unequal. A DSKNULL equals the empty or zero value of the other side. A block with an offset
// equals only a block with the same offset and content. Returns 1000 for a left side of 5, 24, a
// format that is only rendered or none, for a DSKNULL beside one of these, and for two DSKNULL.
NOMUTIL_API int paramsAreEqual(const DskParam* left, const DskParam* right, bool* equal);

// Whether two formats agree: the same number, a DSKNULL or DSKANY on either side, or the same
// family. An integer does not agree with an Integer64, nor a string with UTF-8. Returns 0.
NOMUTIL_API int paramsAreCompatible(const DskParam* left, const DskParam* right, bool* compatible);

// Equality within one family. 1000 for a left side of another, 1002 for a left block with an
// offset; a right side like these is unequal.
NOMUTIL_API int stringParamEqualTo(const DskParam* left, const DskParam* right, bool* equal);
NOMUTIL_API int binaryParamEqualTo(const DskParam* left, const DskParam* right, bool* equal);
NOMUTIL_API int stringUtf8ParamEqualTo(const DskParam* left, const DskParam* right, bool* equal);

// ---- Text ----

// Renders a value for people into size bytes, always with a NUL; a size of 0 writes nothing.
// Binaries are pairs of hexadecimal digits with a blank behind each. A block is shown from its
// pointer and offset on. UTF-8 becomes characters of the code page; the status of the conversion
// (1002, 1035 where size is too small) is returned, and the text is then unspecified. Formats 0, 5
// and 36 give 1000.
//
// A text longer than the buffer is cut. From a size of 5 on, strings end in "...", but for one that
// is longer by its NUL alone, and so do binaries. A decimal whose integer part does not fit is '*'
// throughout; everything else is just cut.
NOMUTIL_API int paramToString(const DskParam* parameter, char* text, unsigned size);

// ---- Binary image ----
// Formats 2 and 11 take a DskParam, also where a ShortDskParam is written.

// Makes target a binary block that looks at the bytes of source, valid while source lives and is
// unchanged; usage, more and carried of the target stay. A decimal's image is 14 bytes; of 14 and
// 34 it is the block without its offset. Formats 5, 11, 15, 20, 24, 25, 36, 44, 45, 46, 48 and 49
// give 1000.
NOMUTIL_API int paramAsBinary(ShortDskParam* target, const ShortDskParam* source);

// Builds a value of the target's format from a binary (11, 33, 34: that one from its offset on).
// 1002 for a length that the format does not have; one of 0 changes nothing. 1 and 14 become a new
// held string, 11 and 34 a new held binary, 51 a new held UTF-8 string, of usage 2; 25, 33 and 54
// are set through their handler, 54 after its bytes are verified. Any other target format gives
// 1000; so does a source that is no binary, without a log line.
// REQUIRES: for format 21, whose length is not tested, 8 readable bytes.
NOMUTIL_API int paramFromBinary(ShortDskParam* target, const ShortDskParam* source);

// Makes target the negative of source, with its header: formats 4 and 42 (the most negative value
// stays), 19 (1002 when it is not valid or not to be stored), 20 and 21 (the sign bit). Any other
// gives 1000 after the header has been copied.
NOMUTIL_API int paramNegateValue(ShortDskParam* target, const ShortDskParam* source);

// ---- Held strings and binaries ----

// clang-format off
// The data handler of the library. The held object lies on XHeap::library() and belongs to the
// parameter until a release code runs; it is created by the first operation that needs one, and
// while the heap has nothing for it, it counts as empty. The bits 16, 32 and 64 of a code stand for
// characters, bytes and UTF-8; [n] is *count, [d], [b], [k] and [m] are data, byteLength,
// charLength and maximum of the StringUtf8Info at argument. What a code does not name may be null.
//
//   16 32     [d] = the text, which moves when its length changes
//   17        copy at most [n] characters to [d], and a NUL behind them
//   22 33     copy at most [n] elements to [d]
//   18 34     set to [n] elements from [d]
//   19 35     resize to [n] elements
//   20 36 68  [n] = length in bytes
//   21 37     [n] = maximum length, 0xFFFFFFFF without a limit
//   23 38     append [n] elements from [d]
//   24 39     [d] = the text, [n] = its length
//   64        [d] [b] [k] [m] = the text, its lengths, its maximum in bytes
//   65        copy to [d], set [b] and [k]; with [n] below the length 1035, and [b] and [k] are 0
//   66        set to [b] bytes from [d], [k] characters
//   67        resize to [n] bytes; the characters stay as counted, but for [n] of 0, which clears
//   69        [n] = length in characters
//   70        [n] = maximum length in characters: a quarter of that in bytes, or 0xFFFFFFFF
//   71        append [b] bytes from [d], [k] characters
//   25 40 72  release
//
// A code is not compared with the kind of the held object: an operation on characters takes a
// binary as characters, and leaves the characters of UTF-8 as counted. In 66 and 71 a [k] of 0 says
// that nobody has counted, and the string counts.
//
// Returns 1000 for another format than 5, 25, 33 and 54, for a DSKANY that holds an object and for
// one that a code without any of the three bits is sent to; 1002 for another code; and what the
// string reports when it cannot take a text (1035, 1091, 1124, 1448), which is then as before. A
// code that gives 1002 or fails has settled a DSKANY and made a missing object all the same.
// REQUIRES: parameter is not null.
// clang-format on
NOMUTIL_API int koraDataHandler(std::uint8_t code, DskParam* parameter, void* argument,
                                std::uint32_t* count);

// Make a parameter that holds a new object with a copy of the text. A maximum of kKoraNoMaximum is
// no limit. Return 0, also when the heap has no memory: the parameter then holds nothing until its
// first use, which makes an object without a limit. 1035, 1091 or 1124 for a text over the maximum:
// the parameter stays as it was.
NOMUTIL_API int paramCreateKoraString(DskParam* parameter, const char* characters,
                                      std::uint32_t length, std::uint32_t maximum, PUsage usage);
NOMUTIL_API int paramCreateKoraBinary(DskParam* parameter, const unsigned char* bytes,
                                      std::uint32_t length, std::uint32_t maximum, PUsage usage);
// A null text is an empty one.
NOMUTIL_API int paramCreateKoraStringUtf8(DskParam* parameter, const StringUtf8Info* text,
                                          std::uint32_t maximum, PUsage usage);
// Makes a DSKANY with the library's data handler and no object: the only way to a valid one but a
// DskHandlerValue of the caller's own. The first operation settles whether it becomes 25, 33 or 54.
NOMUTIL_API int paramCreateKoraAny(DskParam* parameter, PUsage usage);

// Make a parameter that owns an object from now on. REQUIRES: it was built in memory of
// XHeap::library().
NOMUTIL_API int paramSetKoraString(DskParam* parameter, KoraString<char>* string, PUsage usage);
NOMUTIL_API int paramSetKoraBinary(DskParam* parameter, KoraString<unsigned char>* binary,
                                   PUsage usage);
NOMUTIL_API int paramSetKoraStringUtf8(DskParam* parameter, KoraUtf8String* string, PUsage usage);

// Release the held object through the handler; the parameter may be used again. 1000 for another
// format than 25, 33 or 54 respectively. paramDeleteKoraAny takes every format and does nothing
// for one that holds nothing.
NOMUTIL_API int paramDeleteKoraString(DskParam* parameter);
NOMUTIL_API int paramDeleteKoraBinary(DskParam* parameter);
NOMUTIL_API int paramDeleteKoraStringUtf8(DskParam* parameter);
NOMUTIL_API int paramDeleteKoraAny(DskParam* parameter);

// Stores the held characters' place in result->data. Takes the value area, not the parameter, and
// calls the handler with its self: in a copied record that is the parameter it was copied from.
// REQUIRES: value and its handler are not null.
NOMUTIL_API int koraGetString(const DskHandlerValue* value, StringUtf8Info* result);
// Sets the held characters.
NOMUTIL_API int koraSetString(DskParam* parameter, const char* characters, std::uint32_t length);

// Where the value lies, without a copy. A null parameter gives 0 and stores nothing. Return a
// failure of the data handler. DerefString and DerefBinary write the self of a held value first, so
// that only one thread may look at it so.
// DerefString: formats 1, 14 and 25; for any other the parameter's own address.
NOMUTIL_API int DerefString(DskParam* parameter, char** characters);
// DerefBinary: formats 11, 33 and 34; for any other the parameter's own address and length 0.
NOMUTIL_API int DerefBinary(DskParam* parameter, unsigned char** bytes, std::uint32_t* length);
// DerefStringUtf8: formats 51 and 54; for any other nothing is stored.
NOMUTIL_API int DerefStringUtf8(DskParam* parameter, unsigned char** bytes,
                                std::uint32_t* byteLength, std::uint32_t* characterLength);

#endif  // NOMUTIL_SYS_PARAMS_H
