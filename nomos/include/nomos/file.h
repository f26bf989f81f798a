// Files, devices and the standard streams as byte streams, read or written forward: the bytes as
// they are stored, on Windows too, where CR LF stays CR LF. Paths are texts of single bytes as the
// system takes them. An operation that fails leaves the reason in nosGetLastError.
#ifndef NOMOS_FILE_H
#define NOMOS_FILE_H

#include "nomos/export.h"

#include <cstdint>

// The standard streams of the process.
enum class NosStream : std::uint32_t { Input = 0, Output = 1, Error = 2 };

// Not shared between threads.
class NOMOS_API KoraFile {
 public:
  KoraFile() noexcept = default;
  ~KoraFile();
  KoraFile(const KoraFile&) = delete;
  KoraFile& operator=(const KoraFile&) = delete;

  // Each closes what was open before; false when it fails, and then nothing is open.
  // Opens an existing file for reading; a directory is none.
  bool openReadOnly(const char* path);
  // Creates a file for writing; fails when there is anything of that name.
  bool createNew(const char* path);
  // Opens what is no file for writing, a device or a named pipe; fails for files and directories.
  bool openDevice(const char* path);
  // Opens a standard stream of the process once more: it stays open when this object is closed.
  bool openStandard(NosStream stream);

  // Reads up to byteCount bytes at the current position; fewer only at the end of the file.
  // Returns the number read, -1 on an error.
  std::int64_t read(void* buffer, std::uint32_t byteCount);

  // Writes all bytes; false on an error, when some of them may have been written.
  bool write(const void* buffer, std::uint32_t byteCount);

  // Waits until a file that was written lies on the disk.
  bool flush();

  // The number of bytes in an open file; -1 for what has no size, as a pipe.
  std::int64_t size() const;

  // Closes what is open, if anything; what was written need not lie on the disk.
  void close();

 private:
  void* _handle = nullptr;
};

// Gives a file another name in one step: whoever opens that name meets the old file or the new one,
// whole. Both names lie on one disk; a directory of that name is not replaced. On Linux the file
// takes over the permissions of the one that it replaces.
NOMOS_API bool nosReplaceFile(const char* from, const char* to);

// Removes a file. False, with the last error set, when it cannot: when there is none of that name,
// or it is a directory.
NOMOS_API bool nosDeleteFile(const char* path);

// Whether a person may see what the stream shows, and a line can be written over.
NOMOS_API bool nosIsTerminal(NosStream stream) noexcept;

#endif  // NOMOS_FILE_H
