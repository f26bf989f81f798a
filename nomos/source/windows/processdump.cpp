// Process dumps as minidumps. dbghelp.dll is loaded by name: few programs need it, and the one of
// the system is the one that fits.

#include "platform.h"

#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <cstring>

namespace nomos::platform {
namespace {

// Bit 29 marks a code that no system component uses, bits 30 and 31 a failure.
constexpr DWORD kDumpCode = 0xE0000000;

// The writer stays loaded for the life of the process.
decltype(&MiniDumpWriteDump) findWriter() {
  decltype(&MiniDumpWriteDump) writer = nullptr;
  const HMODULE library = LoadLibraryExA("dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (library == nullptr) return nullptr;
  const FARPROC entry = GetProcAddress(library, "MiniDumpWriteDump");
  static_assert(sizeof writer == sizeof entry);
  std::memcpy(&writer, &entry, sizeof writer);
  return writer;
}

// The state of this thread, in the form of an exception here: a debugger opens a dump at one.
bool writeDump(decltype(&MiniDumpWriteDump) writer, HANDLE file, int kind) {
  CONTEXT context;
  RtlCaptureContext(&context);
  EXCEPTION_RECORD record{};
  record.ExceptionCode = kDumpCode;
  record.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
  record.NumberParameters = 1;
  record.ExceptionInformation[0] = static_cast<ULONG_PTR>(kind);
  EXCEPTION_POINTERS pointers{&record, &context};
  MINIDUMP_EXCEPTION_INFORMATION exception{GetCurrentThreadId(), &pointers, FALSE};

  char comment[64];
  const int length = std::snprintf(comment, sizeof comment, "nosProcessDump(%d)", kind);
  MINIDUMP_USER_STREAM stream{CommentStreamA, static_cast<ULONG>(length) + 1, comment};
  MINIDUMP_USER_STREAM_INFORMATION streams{1, &stream};

  return writer(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &exception,
                &streams, nullptr) != 0;
}

}  // namespace

const unsigned kFileExists = ERROR_FILE_EXISTS;

unsigned processNumber() {
  return GetCurrentProcessId();
}

void findTemporaryDirectory(char* buffer, unsigned size) {
  if (GetTempPathA(size, buffer) >= size) buffer[0] = '\0';
}

unsigned writeProcessDump(const char* path, int kind) {
  const auto writer = findWriter();
  if (writer == nullptr) return GetLastError();
  const HANDLE file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError();
  DWORD error = 0;
  if (!writeDump(writer, file, kind)) {
    // The writer sets an HRESULT, which holds the system's number.
    error = HRESULT_CODE(GetLastError());
    if (error == 0) error = ERROR_WRITE_FAULT;
  }
  CloseHandle(file);
  if (error != 0) DeleteFileA(path);
  return error;
}

}  // namespace nomos::platform
