// Formatted text, the texts of reals, conversions between character forms, and what the code page
// says of its characters. The texts of reals and the conversions are the same on both platforms and
// in every locale: 0.1 is "0.1", the euro sign is the byte 80 of Windows-1252, E2 82 AC in UTF-8.
//
// All of it may be called from any thread.
#ifndef NOMOS_INTL_H
#define NOMOS_INTL_H

#include "nomos/export.h"

#include <cstdarg>
#include <cstdint>

// Formats like the C library's snprintf, and the same on both platforms: I64 stands for the 64-bit
// length modifier as well as ll. Always ends the text with NUL when size is positive, writes
// nothing when it is 0. Returns the number of characters stored, without the NUL.
NOMOS_API int intlSnprintf(char* buffer, unsigned size, const char* format, ...);
NOMOS_API int intlVsnprintf(char* buffer, unsigned size, const char* format,
                            std::va_list arguments);

// The same without a bound. REQUIRES: buffer has room for the whole text and its NUL.
NOMOS_API int intlSprintf(char* buffer, const char* format, ...);

// The shortest decimal text in fixed notation (no exponent) that reads back as the same real:
// 0.1 is "0.1", 1e22 is "10000000000000000000000". decimals above 0 asks for exactly that many
// places, correctly rounded; 0 asks for as many as it takes. At most size - 1 characters are
// stored, then a NUL: a longer text is cut at the right. Infinities are "inf" and "-inf", a NaN
// "nan". Returns the number of characters stored. A size of 0 stores nothing.
NOMOS_API unsigned intlDoubleToStringFixed(char* buffer, unsigned size, double value, int decimals);
NOMOS_API unsigned intlFloatToStringFixed(char* buffer, unsigned size, float value, int decimals);

// Character forms of intlConvertString. The code page is process-wide, a single-byte extension of
// ASCII: the Windows number in the key "CodePage" of section "KoraClient" of the global
// configuration file names it; without the key it is Windows-1252, on Windows the system's ANSI
// code page.
enum class IntlFormat : std::uint32_t { CodePage = 0, Utf8 = 1, Utf32 = 2 };

// Converts sourceBytes bytes at source into target, which has room for room bytes. Nothing is
// terminated. byteCount and characterCount receive what was written. UTF-32 is little-endian.
// A character that the code page lacks becomes '?'. Returns 0; 1002 for malformed UTF-8 or UTF-32
// (overlong forms, surrogates, above 10FFFF, a cut sequence); 1035 when room is too small. On
// failure byteCount and characterCount tell what was written before the failing character.
NOMOS_API int intlConvertString(IntlFormat from, const void* source, std::uint32_t sourceBytes,
                                IntlFormat to, void* target, std::uint32_t room,
                                std::uint32_t& byteCount, std::uint32_t& characterCount);

// Counts the characters of a UTF-8 text. Returns 0, or 1002 and a count of the characters before
// the first malformed sequence.
NOMOS_API int intlStringUTF8VerifyCountchars(const unsigned char* text, std::uint32_t byteCount,
                                             std::uint32_t& characterCount);

// Compare texts of the code page without regard to case, at most count characters; below, equal
// to or above 0 like strncmp.
NOMOS_API int intlStrnicmp(const char* left, const char* right, unsigned count);
NOMOS_API int nosStrcmpi(const char* left, const char* right);

// Character classes of the code page.
NOMOS_API bool nosIsCharAlpha(unsigned char character);
NOMOS_API bool nosIsCharAlphaNumeric(unsigned char character);
NOMOS_API bool nosIsCharUpper(unsigned char character);
NOMOS_API bool nosIsCharLower(unsigned char character);

#endif  // NOMOS_INTL_H
