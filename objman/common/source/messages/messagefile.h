// The message file: one text a line, `1002 "Invalid parameter value"`, between comments and blank
// lines. docs/formats/messagefile.md describes it.
#ifndef NOMUTIL_MESSAGES_MESSAGEFILE_H
#define NOMUTIL_MESSAGES_MESSAGEFILE_H

#include <cstdint>
#include <string_view>

namespace nomutil::messages {

struct MessageLine {
  std::int32_t number;
  std::string_view text;  // empty when the line gives none and is to be ignored
};

// Reads the bytes of a message file line by line. The bytes must outlive the reader and the texts
// that it gives.
class MessageFileReader {
 public:
  explicit MessageFileReader(std::string_view bytes) noexcept : _rest(bytes) {}

  // Gives the next message line, with or without a text; false when there is none left.
  bool next(MessageLine& line) noexcept;

 private:
  std::string_view _rest;
};

}  // namespace nomutil::messages

#endif  // NOMUTIL_MESSAGES_MESSAGEFILE_H
