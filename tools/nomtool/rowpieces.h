// A delimited text file in pieces of whole rows, as several threads work on it.
#ifndef NOMTOOL_ROWPIECES_H
#define NOMTOOL_ROWPIECES_H

#include "bytestream.h"
#include "rowscanner.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nomtool {

// A file whose rows cannot be taken: the file, the row, what is wrong, the message text.
class RefusedRow : public std::runtime_error {
 public:
  // The row counts from 1 below the header row, which is row 0.
  RefusedRow(const std::string& name, std::uint64_t row, const std::string& what);
  // No row of the file can be told from another.
  RefusedRow(const std::string& name, const std::string& what);
};

class RowPieces {
 public:
  // Reads the header row. Throws StreamFault and RefusedRow. REQUIRES: pieceBytes is not 0.
  RowPieces(const std::string& path, char delimiter, std::size_t pieceBytes);

  const std::vector<std::string>& names() const { return _names; }  // of the columns
  // isLastRowEnded is known behind the last piece.
  const TextForm& form() const { return _form; }
  bool isHeaderCanonical() const { return _isHeaderCanonical; }
  std::optional<std::uint64_t> size() const { return _reader.size(); }
  std::uint64_t offset() const { return _offset; }  // of what is not taken yet
  const std::string& fileName() const { return _reader.name(); }

  // Takes the next rows, of about pieceBytes or a single row that has more; false when there are
  // none.
  // Throws StreamFault, and std::length_error for a row of more than 64 MiB.
  bool next(std::string& piece);

 private:
  void _takeHeader();
  bool _fill();

  ByteReader _reader;
  const std::size_t _pieceBytes;
  TextForm _form;
  std::vector<std::string> _names;
  bool _isHeaderCanonical = true;
  bool _isAtEnd = false;
  std::uint64_t _offset = 0;
  std::string _rest;  // what was read and not taken
};

}  // namespace nomtool

#endif  // NOMTOOL_ROWPIECES_H
