// Process dumps as texts: the calls in progress on the calling thread, which need the memory map to
// be read once the process is gone, and that map. A core file would take a second process.

#include "platform.h"

#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace nomos::platform {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : _number(number) {}
  ~Descriptor() {
    if (_number >= 0) close(_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return _number; }

 private:
  int _number;
};

bool writeAll(int file, const char* bytes, std::size_t byteCount) {
  while (byteCount != 0) {
    const ssize_t written = write(file, bytes, byteCount);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes += written;
    byteCount -= static_cast<std::size_t>(written);
  }
  return true;
}

bool writeHead(int file, int kind) {
  char line[128];
  const int length =
      std::snprintf(line, sizeof line, "nosProcessDump(%d), process %ld, thread %ld\n\nCalls:\n",
                    kind, static_cast<long>(getpid()), syscall(SYS_gettid));
  return writeAll(file, line, static_cast<std::size_t>(length));
}

void writeCalls(int file) {
  constexpr int kMostCalls = 128;
  void* calls[kMostCalls];
  backtrace_symbols_fd(calls, backtrace(calls, kMostCalls), file);
}

bool copyMap(int file) {
  constexpr char kHead[] = "\nMemory map:\n";
  const Descriptor map(open("/proc/self/maps", O_RDONLY | O_CLOEXEC));
  if (map.number() < 0 || !writeAll(file, kHead, sizeof kHead - 1)) return false;
  for (;;) {
    char bytes[4096];
    const ssize_t count = read(map.number(), bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    if (!writeAll(file, bytes, static_cast<std::size_t>(count))) return false;
  }
}

}  // namespace

const unsigned kFileExists = EEXIST;

unsigned processNumber() {
  return static_cast<unsigned>(getpid());
}

void findTemporaryDirectory(char* buffer, unsigned size) {
  const char* const folder = std::getenv("TMPDIR");
  std::snprintf(buffer, size, "%s", folder != nullptr && folder[0] != '\0' ? folder : "/tmp");
}

unsigned writeProcessDump(const char* path, int kind) {
  // The folder is often everybody's: what lies there already is not written to, be it a link.
  const Descriptor file(open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.number() < 0) return static_cast<unsigned>(errno);
  if (writeHead(file.number(), kind)) {
    writeCalls(file.number());
    if (copyMap(file.number())) return 0;
  }
  const int error = errno;
  unlink(path);
  return static_cast<unsigned>(error);
}

}  // namespace nomos::platform
