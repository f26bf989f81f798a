// Where the nomos library itself lies: beside it lie its module for ICU and, unless it is installed
// under a lib folder, the message files.
#ifndef NOMOS_SOURCE_LINUX_LIBRARYFOLDER_H
#define NOMOS_SOURCE_LINUX_LIBRARYFOLDER_H

#include <string>

namespace nomos::platform {

// The folder, with a separator at the end and without symbolic links: "/usr/lib/" for the library
// of which /opt/libnomos.so is a link. Empty when the system does not tell. Throws std::bad_alloc.
std::string libraryFolder();

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_LINUX_LIBRARYFOLDER_H
