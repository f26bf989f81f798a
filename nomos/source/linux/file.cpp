// KoraFile on a file descriptor; the handle is the descriptor plus one, so that null means closed.
// Calls that a signal interrupts are made again.

#include "nomos/file.h"

#include "nomos/lasterror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

namespace {

int descriptorOf(void* handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)) - 1;
}

}  // namespace

KoraFile::~KoraFile() {
  close();
}

bool KoraFile::openReadOnly(const char* path) {
  close();
  int descriptor;
  do {
    descriptor = open(path, O_RDONLY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) {
    nosSetLastError(static_cast<unsigned>(errno));
    return false;
  }
  struct stat information;
  if (fstat(descriptor, &information) == 0 && S_ISDIR(information.st_mode)) {
    ::close(descriptor);
    nosSetLastError(EISDIR);
    return false;
  }
  _handle = reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor) + 1);
  return true;
}

std::int64_t KoraFile::read(void* buffer, std::uint32_t byteCount) {
  std::uint32_t done = 0;
  while (done < byteCount) {
    const ssize_t count =
        ::read(descriptorOf(_handle), static_cast<char*>(buffer) + done, byteCount - done);
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      nosSetLastError(static_cast<unsigned>(errno));
      return -1;
    }
    done += static_cast<std::uint32_t>(count);
  }
  return done;
}

void KoraFile::close() {
  if (_handle != nullptr) ::close(descriptorOf(_handle));
  _handle = nullptr;
}
