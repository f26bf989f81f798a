// The library descriptor: which files may be the library and where they are looked for. The denials
// of the test hooks take effect here, so that no backend knows of them.

#include "nomos/dlldesc.h"

#include "copycut.h"
#include "nomos/directory.h"
#include "nomos/lasterror.h"
#include "nomos/log.h"
#include "nomos/profile.h"
#include "nomos/status.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>
#include <cstring>

namespace platform = nomos::platform;

namespace {

constexpr unsigned kPathRoom = 520;
constexpr unsigned kDirectoryRoom = kPathRoom + 1;  // the normal form may add a separator

// A name that tests deny; the flag spares the usual case the lock.
class Denial {
 public:
  void set(const char* name) noexcept {
    ThreadMutexHold hold(_mutex);
    std::strncpy(_name, name != nullptr ? name : "", sizeof _name - 1);
    _isSet.store(_name[0] != '\0', std::memory_order_release);
  }

  bool covers(const char* name) noexcept {
    if (!_isSet.load(std::memory_order_acquire)) return false;
    ThreadMutexHold hold(_mutex);
    return std::strcmp(_name, name) == 0;
  }

 private:
  std::atomic<bool> _isSet{false};
  ThreadMutex _mutex{"NosDenial"};
  char _name[50] NOMOS_GUARDED_BY(_mutex) = "";
};

constinit Denial deniedLibrary;
constinit Denial deniedEntry;

// The folder that the configuration names for a library, in normal form; empty when there is none.
void findDirectory(const char* library, char (&directory)[kDirectoryRoom]) {
  const char* const file = getGlbIniFileName();
  char forAll[kPathRoom];
  getIniFileStringParam("NomLibraries", "Directory", "", forAll, kPathRoom, file);
  getIniFileStringParam("NomLibraries", library, forAll, directory, kPathRoom, file);
  if (directory[0] != '\0') nosNormaliseDirectory(directory, kDirectoryRoom);
}

}  // namespace

DllDesc::DllDesc(const char* name) noexcept
    : _name(name), _mutex("DllDesc"), _library(nullptr), _fileName("") {}

DllDesc::~DllDesc() {
  unload();
}

// Gives the system's error number, or 0.
unsigned DllDesc::_load() noexcept {
  if (deniedLibrary.covers(_name)) return kNosNoSuchLibrary;
  if (_library != nullptr) return 0;
  char directory[kDirectoryRoom];
  findDirectory(_name, directory);
  unsigned failure = kNosNoSuchLibrary;
  for (unsigned i = 0; platform::libraryFileName(_name, i, _fileName, sizeof _fileName); ++i) {
    unsigned error = 0;
    _library = platform::openLibrary(directory, _fileName, error);
    if (_library != nullptr) return 0;
    // A file that is there and of no use says more than one that is not.
    if (failure == kNosNoSuchLibrary) failure = error;
  }
  return failure;
}

int DllDesc::load() noexcept {
  unsigned error;
  {
    ThreadMutexHold hold(_mutex);
    error = _load();
  }
  if (error == 0) return 0;
  nosSetLastError(error);
  return kNosLibraryNotFound;
}

bool DllDesc::isLoaded() const noexcept {
  return _library.load(std::memory_order_acquire) != nullptr && !deniedLibrary.covers(_name);
}

void DllDesc::unload() noexcept {
  ThreadMutexHold hold(_mutex);
  if (void* const library = _library.exchange(nullptr)) platform::closeLibrary(library);
}

void* DllDesc::getMethod(const char* entry, bool logsFailure) noexcept {
  unsigned error;
  void* address = nullptr;
  {
    ThreadMutexHold hold(_mutex);
    error = _load();
    if (error == 0 && !deniedEntry.covers(entry)) address = platform::findEntry(_library, entry);
  }
  if (address != nullptr) return address;
  if (error == 0) error = kNosNoSuchEntry;
  if (logsFailure) {
    nomLog("DllDesc: Unable to get address of '%s' in '%s', O/S Error %u.", entry, _name, error);
  }
  nosSetLastError(error);
  return nullptr;
}

unsigned DllDesc::copyPath(char* buffer, unsigned size) const noexcept {
  ThreadMutexHold hold(_mutex);
  if (!isLoaded()) return nomos::copyCut("", buffer, size);
  return platform::copyLibraryPath(_library, buffer, size);
}

unsigned DllDesc::copyFileName(char* buffer, unsigned size) const noexcept {
  ThreadMutexHold hold(_mutex);
  return nomos::copyCut(isLoaded() ? _fileName : "", buffer, size);
}

void nosDenyLibrary(const char* name) noexcept {
  deniedLibrary.set(name);
}

void nosDenyEntry(const char* name) noexcept {
  deniedEntry.set(name);
}
