// Configuration files in the profile form: sections in brackets, key=value lines, ';' comments: a
// line that starts with it, or the rest of a line from a ';' on that starts a value or stands
// behind a blank, between quotes as well. Of sections or keys with the same name the first counts.
// Names are at most 49 characters, values at most 1,023.
#ifndef NOMOS_PROFILE_H
#define NOMOS_PROFILE_H

#include "nomos/export.h"

// The path of the global configuration file: the environment variable NOMUTIL_INI, else
// "nomutil.ini" in the installation directory. The file need not exist. The text lives as long as
// the process.
NOMOS_API const char* getGlbIniFileName();

// Copies the value of a key into buffer, at most size - 1 characters and a NUL, or defaultValue
// when file, section or key is missing. Section and key compare without regard to case; blanks
// around a value and one pair of quotes around it do not count. Returns the number of characters
// stored.
NOMOS_API unsigned getIniFileStringParam(const char* section, const char* key,
                                         const char* defaultValue, char* buffer, unsigned size,
                                         const char* file);

// A key that says true, yes, on or 1 (false, no, off or 0), in any case; defaultValue when it is
// missing or says anything else.
NOMOS_API bool getIniFileBooleanParam(const char* section, const char* key, bool defaultValue,
                                      const char* file);

#endif  // NOMOS_PROFILE_H
