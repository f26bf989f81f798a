// Files as byte streams, read forward: the bytes as they are stored, on Windows too, where CR LF
// stays CR LF.
#ifndef NOMOS_FILE_H
#define NOMOS_FILE_H

#include "nomos/export.h"

#include <cstdint>

// Not shared between threads.
class NOMOS_API KoraFile {
 public:
  KoraFile() noexcept = default;
  ~KoraFile();
  KoraFile(const KoraFile&) = delete;
  KoraFile& operator=(const KoraFile&) = delete;

  // Opens an existing file for reading, as bytes; a directory is none. False leaves the reason in
  // nosGetLastError.
  bool openReadOnly(const char* path);

  // Reads up to byteCount bytes at the current position; fewer only at the end of the file.
  // Returns the number read, -1 on an error.
  std::int64_t read(void* buffer, std::uint32_t byteCount);

  void close();

 private:
  void* _handle = nullptr;
};

#endif  // NOMOS_FILE_H
