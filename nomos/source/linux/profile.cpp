// Profile files through inih. inih reads whole lines, trims keys and values, and takes ';' and '#'
// at the start of a line, and ';' behind a blank, as comments.

#include "platform.h"

#include <ini.h>
#include <strings.h>
#include <algorithm>
#include <cstring>

namespace nomos::platform {
namespace {

struct Search {
  const char* section;
  const char* key;
  char* buffer;
  unsigned size;
  bool found;
};

// Called for every key of the file; the first one that matches counts.
int visit(void* user, const char* section, const char* name, const char* value) {
  auto& search = *static_cast<Search*>(user);
  if (search.found || strcasecmp(section, search.section) != 0 ||
      strcasecmp(name, search.key) != 0) {
    return 1;
  }
  search.found = true;
  const std::size_t length = std::min<std::size_t>(std::strlen(value), search.size - 1);
  std::memcpy(search.buffer, value, length);
  search.buffer[length] = '\0';
  return 1;
}

}  // namespace

bool readProfile(const char* file, const char* section, const char* key, char* buffer,
                 unsigned size) {
  Search search{section, key, buffer, size, false};
  return ini_parse(file, visit, &search) >= 0 && search.found;
}

}  // namespace nomos::platform
