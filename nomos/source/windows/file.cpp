// KoraFile on a file handle; no file that is open has the null handle. The calls set the last
// errors themselves, and open no directory.

#include "nomos/file.h"

#include <windows.h>

namespace {

HANDLE standardHandle(NosStream stream) {
  constexpr DWORD kNumbers[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return GetStdHandle(kNumbers[static_cast<std::uint32_t>(stream)]);
}

void* orNull(HANDLE file) {
  return file == INVALID_HANDLE_VALUE ? nullptr : file;
}

}  // namespace

KoraFile::~KoraFile() {
  close();
}

bool KoraFile::openReadOnly(const char* path) {
  close();
  _handle = orNull(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  return _handle != nullptr;
}

bool KoraFile::createNew(const char* path) {
  close();
  _handle = orNull(CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
  return _handle != nullptr;
}

bool KoraFile::openDevice(const char* path) {
  close();
  _handle = orNull(CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (_handle == nullptr || GetFileType(_handle) != FILE_TYPE_DISK) return _handle != nullptr;
  close();
  SetLastError(ERROR_FILE_EXISTS);
  return false;
}

bool KoraFile::openStandard(NosStream stream) {
  close();
  HANDLE copy = nullptr;
  const HANDLE process = GetCurrentProcess();
  if (DuplicateHandle(process, standardHandle(stream), process, &copy, 0, FALSE,
                      DUPLICATE_SAME_ACCESS) != 0) {
    _handle = copy;
  }
  return _handle != nullptr;
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

bool KoraFile::write(const void* buffer, std::uint32_t byteCount) {
  std::uint32_t done = 0;
  while (done < byteCount) {
    DWORD count = 0;
    if (WriteFile(_handle, static_cast<const char*>(buffer) + done, byteCount - done, &count,
                  nullptr) == 0) {
      return false;
    }
    done += count;
  }
  return true;
}

bool KoraFile::flush() {
  return FlushFileBuffers(_handle) != 0;
}

std::int64_t KoraFile::size() const {
  LARGE_INTEGER size{};
  const bool isFile = GetFileType(_handle) == FILE_TYPE_DISK && GetFileSizeEx(_handle, &size) != 0;
  return isFile ? size.QuadPart : -1;
}

void KoraFile::close() {
  if (_handle != nullptr) CloseHandle(_handle);
  _handle = nullptr;
}

bool nosReplaceFile(const char* from, const char* to) {
  return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool nosDeleteFile(const char* path) {
  return DeleteFileA(path) != 0;
}

// A character device may also be a null device: only a console has a mode.
bool nosIsTerminal(NosStream stream) noexcept {
  DWORD mode = 0;
  return GetConsoleMode(standardHandle(stream), &mode) != 0;
}
