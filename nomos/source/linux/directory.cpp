// Where the library lies, and the environment. A library in /usr/lib, or in a folder of it, has its
// files in /usr/share/nomutil; any other beside itself.

#include "copycut.h"
#include "linux/libraryfolder.h"
#include "platform.h"

#include <dlfcn.h>
#include <unistd.h>
#include <climits>
#include <cstdlib>
#include <string>

namespace nomos::platform {

std::string libraryFolder() {
  Dl_info info;
  char resolved[PATH_MAX];
  if (dladdr(reinterpret_cast<const void*>(&libraryFolder), &info) == 0) return {};
  if (realpath(info.dli_fname, resolved) == nullptr) return {};
  const std::string path = resolved;
  return path.substr(0, path.rfind('/') + 1);
}

const char kSeparator = '/';

bool isSeparator(char character) {
  return character == '/';
}

unsigned getEnvironment(const char* name, char* buffer, unsigned size) {
  const char* const value = std::getenv(name);
  return copyCut(value != nullptr ? value : "", buffer, size);
}

unsigned findInstallDirectory(char* buffer, unsigned size) {
  const std::string folder = libraryFolder();
  std::string ancestor = folder;
  while (ancestor.size() > 1) {
    ancestor.pop_back();
    const std::size_t start = ancestor.rfind('/') + 1;
    const std::string name = ancestor.substr(start);
    ancestor.resize(start);
    if (name == "lib" || name == "lib64") {
      const std::string shared = ancestor + "share/nomutil";
      if (access(shared.c_str(), F_OK) == 0) return copyCut(shared, buffer, size);
    }
  }
  return copyCut(folder, buffer, size);
}

}  // namespace nomos::platform
