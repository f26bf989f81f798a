// Text utilities: base64, named character entities, UTF-8 as plain 7-bit text, byte counts with a
// suffix, digits, and the line of a text that holds a position.
//
// All of it may be called from any thread: the functions share no state but constants.
#ifndef NOMUTIL_SYS_TEXTUTIL_H
#define NOMUTIL_SYS_TEXTUTIL_H

#include "nomos/korastring.h"
#include "sys/build.h"

#include <cstdint>

// ---- Base64 ----
// The alphabet and the padding of RFC 4648. The blocks that these functions give out are released
// by base64Free.

// Encodes bytes: full lines hold 76 characters, and CR LF stands between lines, never behind the
// last; with suppressLineBreaks there is one line. The text ends with a NUL that length does not
// count; no bytes give the empty text. Returns 0, or kNoRoom and no text when the heap is exhausted
// or the text has 2^32 characters or more.
// REQUIRES: bytes holds byteCount bytes.
NOMUTIL_API int base64Encode(const std::uint8_t* bytes, std::uint32_t byteCount, char*& text,
                             std::uint32_t& length, bool suppressLineBreaks);

// Decodes a text leniently: line ends, blanks, NULs and every other character that is neither of
// the alphabet nor '=' are skipped; the first '=' ends the text, and what follows the padding is
// ignored. An empty text gives no block, any other one block of length bytes, of which byteCount
// count.
// Returns 0; kNoRoom and no block; or kBase64DecodingFailed for a last group that is not padded
// ("TQ", "TQ=", "TWF"), whose second '=' does not follow the first at once ("TQ= ="), or that has
// one character. Then byteCount is left as it was, and the block is still to be released.
// REQUIRES: text holds length characters.
NOMUTIL_API int base64DecodeWithLength(const char* text, std::uint32_t length, std::uint8_t*& bytes,
                                       std::uint32_t& byteCount);

// The same for a text that ends with NUL; null counts as empty, and a text of 2^32 characters or
// more gives kNoRoom.
NOMUTIL_API int base64Decode(const char* text, std::uint8_t*& bytes, std::uint32_t& byteCount);

// Release what the functions above gave and set the pointer to null, which is accepted as well.
NOMUTIL_API void base64Free(char*& text);
NOMUTIL_API void base64Free(std::uint8_t*& bytes);

// ---- Character entities ----
// The 252 of HTML 4.01 in the order of its three sets, with "apostrophe" behind "quot", and 36
// more; docs/formats/entitytable.md shows the table as text. Names and descriptions live as long as
// the process.

// The code point of an entity, and its description where the pointer is not null; 0x7FFFFFFF, and
// the description untouched, for a name that there is not. Case counts.
NOMUTIL_API std::uint32_t findCharEntityByName(const char* name,
                                               const char** description = nullptr);

// The first entity of a code point, as "tab" for 9: stores through the pointers that are not null.
// False, and nothing stored, when there is none.
NOMUTIL_API bool findCharEntityByNumber(int codePoint, const char** name, const char** description);

// Writes whole rows of the table and a NUL, and returns the number of bytes without the NUL. A null
// buffer gives the size with which every row fits. A size of 0 writes nothing.
// REQUIRES: buffer has room for size bytes.
NOMUTIL_API std::uint32_t dumpCharEntityTable(char* buffer, std::uint32_t size);

// ---- UTF-8 as plain text ----

// Escapes markup, and leaves no control character, instead of using the names of the table.
inline constexpr int kPlainTextMarkup = 1;

// Appends a UTF-8 text as printable ASCII, line ends and tabs. Only the data and byteLength of the
// source count, and only bit 0 of the options, kPlainTextMarkup:
//
//   character                 without markup              with markup
//   '&'                       &amp;                       &amp;
//   '<' '>' '"' and '         as it is                    &lt; &gt; &quot; &apos;
//   ';'                       &semi;                      as it is
//   NUL                       &#00;                       nothing
//   TAB, LF, CR               as it is                    &#x09; &#x0A; &#x0D;
//   any other of 32 to 126    as it is                    as it is
//   the rest                  &eacute; by its first name  &#xE9;
//                             in the table, else &#x7F;
//
// Returns 0; the status of the target when it does not take the text (1035 over its maximum, 1448);
// or 1002 for malformed UTF-8. On failure the characters before the one that fails remain appended
// as far as they fill parts of 128.
// REQUIRES: the source does not lie in the target.
NOMUTIL_API int stringUtf8AsPlainText(const StringUtf8Info& source, int options,
                                      KoraString<char>& target);

// ---- Numbers ----

// A byte count: a decimal number as strtoull reads it (blanks before it, and a sign, too), a
// fraction, which is dropped, and a suffix letter in either case: none or B for 1, K, M, G, T and P
// for 1024 to the power of 1 to 5. What follows the suffix is not read. "10K" is 10240, "1.5M" is
// 1048576.
// Returns 0; or 1002, with a line in the log, for a number beyond 64 bits, which gives the largest,
// for a fraction, and for an unknown suffix, which counts for 1. A number that outgrows 64 bits
// through its suffix becomes the largest with status 0.
// REQUIRES: text is not null and ends with NUL.
NOMUTIL_API int stringToUInteger64(const char* text, std::uint64_t& value);

// The reverse: divides by 1024 as long as nothing remains, up to five times, and writes the number
// with its suffix: 1536 is "1536", 1048576 "1M", 2^60 "1024P". Writes at most length bytes with the
// NUL and cuts what is longer; 22 suffice. A length of 0 writes nothing.
NOMUTIL_API void uInteger64ToMetricString(std::uint64_t value, char* buffer, std::uint32_t length);

// Decimal digits, and one for the sign of a negative number: 1 for 0, 2 for -5. The logarithm that
// counts them is one of reals: from 15 digits on, a number just below a power of ten counts one
// more than it has (10^15 - 1 counts 16, 10^15 - 3 counts 15). Integers of another type are cast.
NOMUTIL_API std::uint32_t getDigitsIn(std::int32_t value);
NOMUTIL_API std::uint32_t getDigitsIn(std::uint32_t value);
NOMUTIL_API std::uint32_t getDigitsIn(std::int64_t value);
NOMUTIL_API std::uint32_t getDigitsIn(std::uint64_t value);

// ---- Lines ----

// The number of the line, from 1, that holds the character at a position, from 1, and the line
// itself with the LF that ends it. 0, and an empty line, for a null text, for a position that is
// not in the text, and when line does not take its line (its maximum, an exhausted heap).
// REQUIRES: text is null or holds length characters.
NOMUTIL_API std::uint32_t getLineAtPosition(const char* text, std::uint32_t length,
                                            std::uint32_t position, KoraString<char>& line);

#endif  // NOMUTIL_SYS_TEXTUTIL_H
