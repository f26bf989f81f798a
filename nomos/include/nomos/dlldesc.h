// Dynamic libraries that are loaded at run time, by a name that is the same on every platform, and
// the entries looked up in them. The library "zlib1" is libz.so.1 on Linux and zlib1.dll on
// Windows; "geos_c" is libgeos_c.so.1, and geos_c.dll or else libgeos_c-1.dll. Any other name N is
// libN.so, and N.dll or else libN.dll.
//
// Where the system looks for libraries of its programs, there a library is looked for; on Windows
// first beside nomos, and neither in the current folder nor in those of PATH. The section
// "NomLibraries" of the global configuration file names one folder instead: under the library's
// name as the key, for that library alone, else under the key "Directory", for all. A key of a
// library with an empty value leaves that one with the system.
#ifndef NOMOS_DLLDESC_H
#define NOMOS_DLLDESC_H

#include "nomos/export.h"
#include "nomos/mutex.h"

#include <atomic>

// The last errors after a library that is nowhere and after an entry that a library lacks, on every
// platform. For a file that is there and cannot be loaded it is the system's, 126 on Linux.
inline constexpr unsigned kNosNoSuchLibrary = 126;
inline constexpr unsigned kNosNoSuchEntry = 127;

// One library. Any thread may call any operation, several at once; only unload and the destructor
// ask that no thread still uses an entry. A library that reaches back into its descriptor while the
// system loads it waits for ever.
class NOMOS_API DllDesc {
 public:
  // Loads nothing yet. The name, at most 49 characters, must outlive the descriptor.
  explicit DllDesc(const char* name) noexcept;

  // Unloads.
  virtual ~DllDesc();

  DllDesc(const DllDesc&) = delete;
  DllDesc& operator=(const DllDesc&) = delete;

  // As given to the constructor.
  const char* name() const noexcept { return _name; }

  // Loads the library unless it is loaded. 0, or 1006 with the last error set.
  int load() noexcept;

  // Whether the library is loaded at this moment.
  bool isLoaded() const noexcept;

  // Gives the library back to the system, which keeps it while anybody else uses it. Every entry
  // that getMethod gave is void from here on.
  void unload() noexcept;

  // The address of an entry of the library, which is loaded first if it is not. Null, with the
  // last error set, when there is no such library or entry; then logsFailure writes one line to the
  // log as well. Only what is found stays: the next call looks again.
  void* getMethod(const char* entry, bool logsFailure) noexcept;

  // Copies the path of the loaded file, or the name under which it was found ("libz.so.1"), at most
  // size - 1 characters and a NUL; the empty text when nothing is loaded. Returns the number of
  // characters stored.
  unsigned copyPath(char* buffer, unsigned size) const noexcept;
  unsigned copyFileName(char* buffer, unsigned size) const noexcept;

 private:
  static constexpr unsigned kFileNameRoom = 64;

  unsigned _load() noexcept NOMOS_REQUIRES(_mutex);

  const char* _name;
  mutable ThreadMutex _mutex;
  std::atomic<void*> _library;  // the system's handle; changes under the mutex
  // The name that was tried last, which is that of the loaded file.
  char _fileName[kFileNameRoom] NOMOS_GUARDED_BY(_mutex);
};

// The address of something that nomos itself exports, looked up at this moment by its name as the
// linker knows it; null for a name that it does not export, whatever other libraries have.
NOMOS_API void* nosFindExport(const char* name) noexcept;

// What knows code pages and locales for nomos: the path of its file and its version, each at most
// size - 1 characters and a NUL. On Linux that is the module beside nomos that links ICU, and the
// version ICU's ("72.1"); false, with empty texts, when it does not load, and then Windows-1252 and
// 1033 alone are known. On Windows it is the system itself, kernel32.dll and "10.0.19045".
NOMOS_API bool nosDescribeLocaleLibrary(char* path, unsigned pathSize, char* version,
                                        unsigned versionSize) noexcept;

#endif  // NOMOS_DLLDESC_H
