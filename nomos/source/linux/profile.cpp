// Profile files through inih. inih trims keys and values, and takes ';' and '#' at the start of a
// line, and ';' behind a blank, as comments. It takes an indented line as the continuation of the
// value above, and 198 characters as a line: so the reader here takes the indentation away, and
// hands a longer line over in pieces that inih sees as continuations.

#include "platform.h"

#include <ini.h>
#include <strings.h>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

namespace nomos::platform {
namespace {

struct Search {
  const char* section;
  const char* key;
  std::ifstream file;
  std::string line;             // what of the current line inih has not seen
  bool isContinuation = false;  // whether the piece that inih saw last goes on with a line
  bool matches = false;         // whether that line is the one
  bool found = false;
  std::string value;
};

bool isBlank(char character) {
  return character == ' ' || character == '\t' || character == '\r';
}

// Where to cut a line: not beside a blank, which inih would trim, nor before a comment sign.
std::size_t pieceLength(const std::string& line, std::size_t room) {
  if (line.size() <= room) return line.size();
  for (std::size_t end = room; end > 1; --end) {
    const char next = line[end];
    if (!isBlank(line[end - 1]) && !isBlank(next) && next != ';' && next != '#') return end;
  }
  return room;
}

// Takes off a line what inih must not see in pieces: indentation and a comment behind the value.
void prepare(std::string& line) {
  line.erase(0, std::min(line.find_first_not_of(" \t\r"), line.size()));
  for (std::size_t end = 1; end < line.size(); ++end) {
    if (line[end] == ';' && isBlank(line[end - 1])) line.resize(end);
  }
}

// inih's fgets.
char* readPiece(char* text, int size, void* user) {
  auto& search = *static_cast<Search*>(user);
  search.isContinuation = !search.line.empty();
  if (!search.isContinuation) {
    if (!std::getline(search.file, search.line)) return nullptr;
    search.matches = false;
    prepare(search.line);
  }
  char* out = text;
  if (search.isContinuation) *out++ = ' ';
  const std::size_t length = pieceLength(search.line, static_cast<std::size_t>(size) - 3);
  out = std::copy_n(search.line.data(), length, out);
  *out++ = '\n';
  *out = '\0';
  search.line.erase(0, length);
  return text;
}

// Called for every piece of a value; the first key that matches counts.
int visit(void* user, const char* section, const char* name, const char* value) {
  auto& search = *static_cast<Search*>(user);
  if (!search.isContinuation) {
    search.matches = !search.found && strcasecmp(section, search.section) == 0 &&
                     strcasecmp(name, search.key) == 0;
  }
  if (search.matches) {
    search.found = true;
    search.value += value;
  }
  return 1;
}

}  // namespace

bool readProfile(const char* file, const char* section, const char* key, char* buffer,
                 unsigned size) {
  Search search{section, key, std::ifstream(file, std::ios::binary), {}, false, false, false, {}};
  if (ini_parse_stream(readPiece, &search, visit, &search) < 0 || !search.found) return false;
  const std::size_t length = std::min<std::size_t>(search.value.size(), size - 1);
  std::memcpy(buffer, search.value.data(), length);
  buffer[length] = '\0';
  return true;
}

}  // namespace nomos::platform
