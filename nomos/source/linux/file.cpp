// KoraFile on a file descriptor; the handle is the descriptor plus one, so that null means closed.
// Calls that a signal interrupts are made again.

#include "nomos/file.h"

#include "nomos/lasterror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <string>

namespace {

int descriptorOf(void* handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)) - 1;
}

// Null for the result of a call that failed, whose reason it keeps.
void* handleOf(int descriptor) {
  if (descriptor < 0) nosSetLastError(static_cast<unsigned>(errno));
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor) + 1);
}

bool isDone(int result) {
  if (result < 0) nosSetLastError(static_cast<unsigned>(errno));
  return result >= 0;
}

int openDescriptor(const char* path, int flags) {
  int descriptor;
  do {
    descriptor = open(path, flags | O_CLOEXEC | O_NOCTTY, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

}  // namespace

KoraFile::~KoraFile() {
  close();
}

bool KoraFile::openReadOnly(const char* path) {
  close();
  _handle = handleOf(openDescriptor(path, O_RDONLY));
  if (_handle == nullptr) return false;
  struct stat information;
  if (fstat(descriptorOf(_handle), &information) != 0 || !S_ISDIR(information.st_mode)) return true;
  close();
  nosSetLastError(EISDIR);
  return false;
}

bool KoraFile::createNew(const char* path) {
  close();
  _handle = handleOf(openDescriptor(path, O_WRONLY | O_CREAT | O_EXCL));
  return _handle != nullptr;
}

bool KoraFile::openDevice(const char* path) {
  close();
  struct stat information;
  if (!isDone(stat(path, &information))) return false;
  if (S_ISREG(information.st_mode) || S_ISDIR(information.st_mode)) {
    nosSetLastError(S_ISREG(information.st_mode) ? EEXIST : EISDIR);
    return false;
  }
  _handle = handleOf(openDescriptor(path, O_WRONLY));
  return _handle != nullptr;
}

bool KoraFile::openStandard(NosStream stream) {
  close();
  _handle = handleOf(fcntl(static_cast<int>(stream), F_DUPFD_CLOEXEC, 0));
  return _handle != nullptr;
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

bool KoraFile::write(const void* buffer, std::uint32_t byteCount) {
  std::uint32_t done = 0;
  while (done < byteCount) {
    const ssize_t count =
        ::write(descriptorOf(_handle), static_cast<const char*>(buffer) + done, byteCount - done);
    if (count < 0 && errno == EINTR) continue;
    if (!isDone(count < 0 ? -1 : 0)) return false;
    done += static_cast<std::uint32_t>(count);
  }
  return true;
}

bool KoraFile::flush() {
  return isDone(fsync(descriptorOf(_handle)));
}

std::int64_t KoraFile::size() const {
  struct stat information;
  const bool isFile =
      isDone(fstat(descriptorOf(_handle), &information)) && S_ISREG(information.st_mode);
  return isFile ? information.st_size : -1;
}

void KoraFile::close() {
  if (_handle != nullptr) ::close(descriptorOf(_handle));
  _handle = nullptr;
}

bool nosReplaceFile(const char* from, const char* to) {
  struct stat former;
  if (stat(to, &former) == 0 && S_ISREG(former.st_mode) &&
      !isDone(chmod(from, former.st_mode & 07777))) {
    return false;
  }
  if (!isDone(std::rename(from, to))) return false;
  // The new name, too, shall lie on the disk; where a folder cannot be flushed, it comes later.
  const std::string path(to);
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == path.npos ? "." : path.substr(0, slash + 1);
  const int descriptor = openDescriptor(folder.c_str(), O_RDONLY | O_DIRECTORY);
  if (descriptor < 0) return true;
  fsync(descriptor);
  ::close(descriptor);
  return true;
}

bool nosDeleteFile(const char* path) {
  return isDone(unlink(path));
}

bool nosIsTerminal(NosStream stream) noexcept {
  return isatty(static_cast<int>(stream)) == 1;
}
