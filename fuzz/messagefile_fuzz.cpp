// The message-file reader on any bytes. Every text lies inside the input, on one line and between
// quotes; a table built from the lines gives the first text of each number; and reading ends.
#include "messages/filetable.h"
#include "messages/messagefile.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomutil::messages;
  const std::string bytes(data, data + size);
  MessageFileReader reader(bytes);
  FileTable table;
  std::unordered_map<std::int32_t, std::string> firstTexts;
  const char* position = bytes.data();
  for (MessageLine line; reader.next(line);) {
    if (line.text.empty()) continue;
    const char* end = line.text.data() + line.text.size();
    require(line.text.data() > position && end < bytes.data() + bytes.size());
    require(line.text.data()[-1] == '"' && *end == '"');
    require(line.text.find_first_of(std::string("\n\0", 2)) == line.text.npos);
    position = end;
    require(table.add(line.number, line.text));
    firstTexts.emplace(line.number, line.text);
  }
  require(table.empty() == firstTexts.empty());
  for (const auto& [number, text] : firstTexts) require(table.find(number) == text);
  return 0;
}
