// Profile files through inih. Its dialect is wider than the profile form: '#' starts a comment too,
// ':' ends a key, ';' behind a blank starts a comment even where the backends must still see the
// quotes around it, an indented line continues the value above. So the reader here takes the
// indentation away and masks the three signs. A line of more than the 198 characters that inih
// takes is handed over in pieces that it sees as continuations. Sections are recognised here too:
// of an empty one inih says nothing, and yet the first of its name counts.

#include "platform.h"

#include <ini.h>
#include <strings.h>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

namespace nomos::platform {
namespace {

// The mask of a sign is its place here, counted from 1.
constexpr char kMaskedSigns[] = ";:#";

// What some editors put in front of a file.
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string masked(std::string text) {
  for (char& character : text) {
    const char* const sign = std::strchr(kMaskedSigns, character);
    if (sign != nullptr && *sign != '\0') character = static_cast<char>(sign - kMaskedSigns + 1);
  }
  return text;
}

std::string unmasked(std::string text) {
  for (char& character : text) {
    if (character >= 1 && character <= 3) character = kMaskedSigns[character - 1];
  }
  return text;
}

struct Search {
  std::string section;  // masked, as is the key
  std::string key;
  std::ifstream file;
  std::string line{};           // what of the current line inih has not seen
  bool isContinuation = false;  // whether the piece that inih saw last goes on with a line
  bool isInSection = false;     // whether the current section is the one
  bool matches = false;         // whether the current line is the one
  bool found = false;
  std::string value{};
};

bool isBlank(char character) {
  return character == ' ' || character == '\t' || character == '\r';
}

// Where to cut a line: not beside a blank, which inih would trim.
std::size_t pieceLength(const std::string& line, std::size_t room) {
  if (line.size() <= room) return line.size();
  for (std::size_t end = room; end > 1; --end) {
    if (!isBlank(line[end - 1]) && !isBlank(line[end])) return end;
  }
  return room;
}

// Fetches the next line; false at the end of the search: a value once found is not looked for
// again, nor a section that has ended.
bool nextLine(Search& search) {
  if (search.found || !std::getline(search.file, search.line)) return false;
  std::string& line = search.line;
  if (line.starts_with(kUtf8Mark)) line.erase(0, kUtf8Mark.size());
  line.erase(0, std::min(line.find_first_not_of(" \t\r"), line.size()));
  line = line[0] == ';' ? std::string() : masked(line);
  if (line[0] == '[') {
    if (search.isInSection) return false;
    const std::size_t end = line.find(']');
    search.isInSection = end != line.npos &&
                         strcasecmp(line.substr(1, end - 1).c_str(), search.section.c_str()) == 0;
  }
  search.matches = false;
  return true;
}

// inih's fgets.
char* readPiece(char* text, int size, void* user) {
  auto& search = *static_cast<Search*>(user);
  search.isContinuation = !search.line.empty();
  if (!search.isContinuation && !nextLine(search)) return nullptr;
  char* out = text;
  if (search.isContinuation) *out++ = ' ';
  const std::size_t length = pieceLength(search.line, static_cast<std::size_t>(size) - 3);
  out = std::copy_n(search.line.data(), length, out);
  *out++ = '\n';
  *out = '\0';
  search.line.erase(0, length);
  return text;
}

// Called for every piece of a value.
int visit(void* user, const char*, const char* name, const char* value) {
  auto& search = *static_cast<Search*>(user);
  if (!search.isContinuation) {
    search.matches = search.isInSection && strcasecmp(name, search.key.c_str()) == 0;
    search.found = search.matches;
  }
  if (search.matches) search.value += value;
  return 1;
}

// Takes one pair of quotes off.
std::string unquoted(const std::string& value) {
  const bool isQuoted =
      value.size() >= 2 && (value[0] == '"' || value[0] == '\'') && value.back() == value[0];
  return isQuoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

bool readProfile(const char* file, const char* section, const char* key, char* buffer,
                 unsigned size) {
  Search search{masked(section), masked(key), std::ifstream(file, std::ios::binary)};
  if (ini_parse_stream(readPiece, &search, visit, &search) < 0 || !search.found) return false;
  const std::string value = unquoted(unmasked(search.value));
  const std::size_t length = std::min<std::size_t>(value.size(), size - 1);
  std::memcpy(buffer, value.data(), length);
  buffer[length] = '\0';
  return true;
}

}  // namespace nomos::platform
