// Lines to the standard error stream and to a log file, each in one write so that lines of several
// threads do not mix; and a window, for a graphical program on a desktop that somebody sees.

#include "platform.h"

#include <windows.h>

#include <cstring>

namespace {

constexpr std::size_t kLineRoom = 1100;  // a line of the log and its end

bool writeAll(HANDLE file, const char* bytes, std::size_t byteCount) {
  DWORD written = 0;
  return WriteFile(file, bytes, static_cast<DWORD>(byteCount), &written, nullptr) != 0;
}

bool writeLine(HANDLE file, const char* line) {
  constexpr char kEnd[] = {'\r', '\n'};
  const std::size_t length = std::strlen(line);
  char text[kLineRoom];
  if (length > sizeof text - sizeof kEnd) {
    return writeAll(file, line, length) && writeAll(file, kEnd, sizeof kEnd);
  }
  std::memcpy(text, line, length);
  std::memcpy(text + length, kEnd, sizeof kEnd);
  return writeAll(file, text, length + sizeof kEnd);
}

bool isUsable(HANDLE handle) {
  return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

// Whether the windows of this process appear on a screen: those of a service do not.
bool isStationVisible() {
  USEROBJECTFLAGS flags{};
  return GetUserObjectInformationA(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                   nullptr) != 0 &&
         (flags.dwFlags & WSF_VISIBLE) != 0;
}

}  // namespace

namespace nomos::platform {

void writeErrorLine(const char* line) {
  const HANDLE stream = GetStdHandle(STD_ERROR_HANDLE);
  if (isUsable(stream)) writeLine(stream, line);
}

bool appendLine(const char* path, const char* line) {
  // The right to append, and no other, makes the system put each write at the end.
  const HANDLE file = CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (!isUsable(file)) return false;
  const bool written = writeLine(file, line);
  CloseHandle(file);
  return written;
}

bool showMessageBox(const char* text, const char* title) {
  const bool isGraphical =
      GetConsoleWindow() == nullptr && !isUsable(GetStdHandle(STD_ERROR_HANDLE));
  if (!isGraphical || !isStationVisible()) return false;
  return MessageBoxA(nullptr, text, title, MB_OK | MB_SETFOREGROUND) != 0;
}

}  // namespace nomos::platform
