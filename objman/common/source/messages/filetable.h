// The texts of a message file in memory: an array of entries, a number and its text each, in file
// order, with room for 3,000 at first. It is filled once and searched from the start, which is
// fast enough: texts of numbers are looked up when something has failed.
#ifndef NOMUTIL_MESSAGES_FILETABLE_H
#define NOMUTIL_MESSAGES_FILETABLE_H

#include <cstdint>
#include <string_view>

namespace nomutil::messages {

// Entries and texts lie on XHeap and belong to the table. A table that no thread changes any more
// may be read by all.
class FileTable {
 public:
  constexpr FileTable() noexcept = default;
  ~FileTable();
  FileTable(const FileTable&) = delete;
  FileTable& operator=(const FileTable&) = delete;

  // Adds a number with a copy of its text. False, and no change, when the memory is exhausted.
  bool add(std::int32_t number, std::string_view text);

  void clear();

  bool empty() const { return _count == 0; }

  // The text of the first entry with the number; null when there is none.
  char* find(std::int32_t number) const;

 private:
  struct Entry {
    char* text;
    std::int32_t number;
  };

  bool _grow();

  Entry* _entries = nullptr;
  std::uint32_t _count = 0;
  std::uint32_t _capacity = 0;
};

}  // namespace nomutil::messages

#endif  // NOMUTIL_MESSAGES_FILETABLE_H
