// Lines to the standard error stream and to a log file, each in one write so that lines of several
// threads do not mix. There is no window to show a message in.

#include "platform.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>
#include <cstring>

namespace {

bool writeLine(int descriptor, const char* line) {
  char end = '\n';
  const iovec parts[] = {{const_cast<char*>(line), std::strlen(line)}, {&end, 1}};
  return writev(descriptor, parts, 2) >= 0;
}

}  // namespace

namespace nomos::platform {

void writeErrorLine(const char* line) {
  writeLine(STDERR_FILENO, line);
}

bool appendLine(const char* path, const char* line) {
  const int descriptor = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (descriptor < 0) return false;
  const bool written = writeLine(descriptor, line);
  close(descriptor);
  return written;
}

bool showMessageBox(const char*, const char*) {
  return false;
}

}  // namespace nomos::platform
