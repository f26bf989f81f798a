// KoraFile on a file handle; no file that is open has the null handle. The calls set the last
// errors themselves, and open no directory.

#include "nomos/file.h"

#include <windows.h>

KoraFile::~KoraFile() {
  close();
}

bool KoraFile::openReadOnly(const char* path) {
  close();
  const HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  _handle = file;
  return true;
}

std::int64_t KoraFile::read(void* buffer, std::uint32_t byteCount) {
  std::uint32_t done = 0;
  while (done < byteCount) {
    DWORD count = 0;
    if (ReadFile(_handle, static_cast<char*>(buffer) + done, byteCount - done, &count, nullptr) ==
        0) {
      if (GetLastError() != ERROR_BROKEN_PIPE) return -1;
      count = 0;  // the end of a pipe
    }
    if (count == 0) break;
    done += count;
  }
  return done;
}

void KoraFile::close() {
  if (_handle != nullptr) CloseHandle(_handle);
  _handle = nullptr;
}
