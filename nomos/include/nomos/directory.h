// Directories and the environment. Paths are texts of single bytes as the system takes them, with
// its own separator; a directory in normal form ends with one, so that a file name may follow:
// "/usr//share" is "/usr/share/".
#ifndef NOMOS_DIRECTORY_H
#define NOMOS_DIRECTORY_H

#include "nomos/export.h"

// Copies the value of an environment variable, at most size - 1 characters and a NUL; an unset
// variable is the empty text. Returns the number of characters stored.
NOMOS_API unsigned nosGetEnv(const char* name, char* buffer, unsigned size);

// Copies the installation directory, in normal form: where message files and the global
// configuration file lie. It is found from the place of the nomos library itself: its own folder
// on Windows; on Linux <prefix>/share/nomutil when the library lies in <prefix>/lib or in a folder
// of it, and exists; else the library's own folder. Returns the number of characters stored.
NOMOS_API unsigned nosGetInstallDirectory(char* buffer, unsigned size);

// Brings a directory in place into the normal form: separators of the platform, repeated ones
// joined, one at the end. The empty text becomes "./" (".\" on Windows). A text that would not fit
// into size with its separator is left as it is and false is returned.
NOMOS_API bool nosNormaliseDirectory(char* directory, unsigned size);

#endif  // NOMOS_DIRECTORY_H
