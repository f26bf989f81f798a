// Packing reads the file twice: first to find the forms of the columns, the number of rows in each
// piece and the salt, then to make a block of each piece. Both run on the same pipeline.
#include "commands.h"

#include "checksum.h"
#include "pipeline.h"
#include "rowpieces.h"
#include "runcommand.h"
#include "runprogress.h"
#include "snapshot.h"
#include "storednumber.h"
#include "valuetext.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace nomtool {
namespace {

// What is known of the columns after some rows.
struct Survey {
  explicit Survey(std::size_t columnCount)
      : forms(columnCount, kAllForms), hasEmpty(columnCount, false) {}

  void add(const RowScanner& row);
  void add(const Survey& other);

  std::vector<ColumnForms> forms;
  std::vector<bool> hasEmpty;
  std::uint64_t rowCount = 0;
  std::uint64_t changedRows = 0;  // written in another way when they come back
};

void Survey::add(const RowScanner& row) {
  ++rowCount;
  if (!row.isCanonical()) ++changedRows;
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const std::string_view field = row.fields()[i];
    if (field.empty()) {
      hasEmpty[i] = true;
    } else {
      forms[i] = formsOf(field, forms[i]);
    }
  }
}

void Survey::add(const Survey& other) {
  rowCount += other.rowCount;
  changedRows += other.changedRows;
  for (std::size_t i = 0; i < forms.size(); ++i) {
    forms[i] &= other.forms[i];
    if (other.hasEmpty[i]) hasEmpty[i] = true;
  }
}

// The rows of a piece, those that are skipped counted as changed.
template <class Take>
void forEachRow(const std::string& piece, const TextForm& form, std::size_t columnCount,
                std::uint64_t& changedRows, std::string& fault, Take take) {
  RowScanner scanner(piece, form);
  while (scanner.next()) {
    if (scanner.isBlank() && columnCount > 1) {
      ++changedRows;
      continue;
    }
    if (scanner.fault() != nullptr) {
      fault = scanner.fault();
    } else if (scanner.fields().size() != columnCount) {
      fault =
          counted(scanner.fields().size(), "field") + " instead of " + std::to_string(columnCount);
    }
    if (!fault.empty()) return;
    take(scanner);
  }
}

struct SurveySlot {
  explicit SurveySlot(std::size_t columnCount) : survey(columnCount) {}
  std::string piece;
  Survey survey;
  std::string fault;
};

struct PackSlot {
  explicit PackSlot(const SnapshotSchema& schema) : builder(schema) {}
  void closeBlock(std::uint64_t rowEnd);

  std::string piece;
  std::uint64_t firstRow = 0;
  BlockBuilder builder;
  HeldBytes compressed{1u << 20};
  std::vector<std::pair<SnapshotBlock, std::string>> blocks;  // numbered when they are written
};

void PackSlot::closeBlock(std::uint64_t rowEnd) {
  if (builder.rowCount() == 0) return;
  SnapshotBlock block;
  block.firstRow = rowEnd - builder.rowCount();
  block.rowCount = builder.rowCount();
  block.expandedLength = static_cast<std::uint32_t>(builder.bytes().size());
  compressBlock(builder.bytes(), compressed);
  blocks.emplace_back(block, compressed.view());
  builder.clear();
}

class Packer {
 public:
  Packer(const PackOptions& options, char delimiter, std::ostream& err)
      : _options(options),
        _delimiter(delimiter),
        _workerCount(options.workers != 0 ? options.workers : defaultWorkerCount()),
        _slotCount(2 * _workerCount + 2),
        _progress(err, options.quiet) {}

  void run(std::ostream& out);

 private:
  void survey();
  void pack();
  void print(std::ostream& out) const;

  const PackOptions& _options;
  const char _delimiter;
  const unsigned _workerCount;
  const unsigned _slotCount;
  RunProgress _progress;
  std::optional<Survey> _survey;
  std::vector<std::uint64_t> _firstRows;  // of each piece, and behind the last
  SnapshotSchema _schema;
  SnapshotTrailer _trailer;
  std::uint64_t _written = 0;
};

void Packer::survey() {
  RowPieces pieces(_options.input, _delimiter, _options.blockBytes);
  const std::size_t columnCount = pieces.names().size();
  _progress.begin("survey", _options.input, pieces.size());
  _survey.emplace(columnCount);
  if (!pieces.isHeaderCanonical()) ++_survey->changedRows;
  const TextForm form = pieces.form();
  std::vector<SurveySlot> slots(_slotCount, SurveySlot(columnCount));
  const std::uint64_t rowsOffset = pieces.offset();
  std::uint64_t bytes = rowsOffset;
  Checksum rowSum;
  // A row that is too long is the fault of a last piece, so that the rows before it are counted.
  bool isTooLong = false;
  const auto read = [&](SurveySlot& slot) {
    if (isTooLong) return false;
    try {
      return pieces.next(slot.piece);
    } catch (const std::length_error& tooLong) {
      isTooLong = true;
      slot.piece.clear();
      slot.fault = tooLong.what();
      return true;
    }
  };
  runPipeline(_workerCount, _slotCount,
              {[&](unsigned i) { return read(slots[i]); },
               [&](unsigned i) {
                 SurveySlot& slot = slots[i];
                 slot.survey = Survey(columnCount);
                 forEachRow(slot.piece, form, columnCount, slot.survey.changedRows, slot.fault,
                            [&](const RowScanner& row) { slot.survey.add(row); });
               },
               [&](unsigned i) {
                 const SurveySlot& slot = slots[i];
                 _firstRows.push_back(_survey->rowCount);
                 _survey->add(slot.survey);
                 if (!slot.fault.empty()) {
                   throw RefusedRow(pieces.fileName(), _survey->rowCount + 1, slot.fault);
                 }
                 rowSum.add(slot.piece.data(), static_cast<std::uint32_t>(slot.piece.size()));
                 bytes += slot.piece.size();
                 _progress.reach(bytes);
                 return true;
               }});
  _firstRows.push_back(_survey->rowCount);
  _trailer.changedRows = _survey->changedRows;
  _progress.end();

  std::vector<ColumnForm> forms;
  bool hasAbsent = false;
  for (std::size_t i = 0; i < columnCount; ++i) {
    forms.push_back(firstForm(_survey->forms[i]));
    hasAbsent |= _survey->hasEmpty[i] && isFixed(forms.back());
  }
  // The same rows give the same salt; rows of fewer than 4 GiB and of another length never do.
  const std::uint64_t salt = rowSum.value() | (bytes - rowsOffset) << 32;
  try {
    _schema = SnapshotSchema(pieces.form(), pieces.names(), std::move(forms), hasAbsent, salt);
  } catch (const std::length_error& tooLong) {
    throw RefusedRow(pieces.fileName(), 0, tooLong.what());
  }
}

void Packer::pack() {
  RowPieces pieces(_options.input, _delimiter, _options.blockBytes);
  ByteWriter writer(_options.output);
  const std::size_t columnCount = _schema.names().size();
  const std::runtime_error changed(pieces.fileName() + ": the file changes while it is read");
  if (pieces.names() != _schema.names()) throw changed;
  _progress.begin("pack", _options.input, pieces.size());
  const auto write = [&](std::string_view bytes) {
    writer.write(bytes);
    _written += bytes.size();
  };
  write(_schema.header());
  std::vector<std::unique_ptr<PackSlot>> slots;
  for (unsigned i = 0; i < _slotCount; ++i) slots.push_back(std::make_unique<PackSlot>(_schema));
  std::size_t number = 0;
  _trailer.sourceBytes = pieces.offset();
  runPipeline(_workerCount, _slotCount,
              {[&](unsigned i) {
                 if (!pieces.next(slots[i]->piece)) return false;
                 if (number + 1 >= _firstRows.size()) throw changed;
                 slots[i]->firstRow = _firstRows[number++];
                 return true;
               },
               [&](unsigned i) {
                 PackSlot& slot = *slots[i];
                 slot.blocks.clear();
                 std::string fault;
                 std::uint64_t skipped = 0;
                 std::uint64_t row = slot.firstRow;
                 forEachRow(slot.piece, _schema.form(), columnCount, skipped, fault,
                            [&](const RowScanner& scanner) {
                              if (!slot.builder.add(row, scanner.fields())) {
                                slot.closeBlock(row);
                                slot.builder.add(row, scanner.fields());
                              }
                              ++row;
                            });
                 if (!fault.empty()) throw changed;
                 slot.closeBlock(row);
               },
               [&](unsigned i) {
                 PackSlot& slot = *slots[i];
                 _trailer.sourceBytes += slot.piece.size();
                 for (auto& [block, bytes] : slot.blocks) {
                   block.number = _trailer.blockCount++;
                   write(sealedBlockHeader(_schema.salt(), block, bytes));
                   write(bytes);
                   _trailer.rowCount += block.rowCount;
                 }
                 _progress.reach(_trailer.sourceBytes);
                 return true;
               }});
  if (_trailer.rowCount != _firstRows.back()) throw changed;
  write(trailerBytes(_schema.salt(), _trailer));
  writer.commit();
  _progress.end();
}

void Packer::print(std::ostream& out) const {
  out << outputName(_options.output) << ": " << counted(_trailer.rowCount, "row") << " in "
      << counted(_trailer.blockCount, "block") << ", " << _trailer.sourceBytes << " bytes in "
      << _written << '\n';
  if (_trailer.changedRows != 0) {
    out << counted(_trailer.changedRows, "row") << " will come back written in another way\n";
  }
}

void Packer::run(std::ostream& out) {
  requireZlib(_options.input);
  survey();
  pack();
  print(out);
}

// Why the files cannot be those of a run; empty when they can. A pipe that has a name is not
// opened: that would wait for its writer. Throws StreamFault.
std::string refusalOf(const PackOptions& options) {
  std::error_code ignored;
  if (isStandard(options.input) || std::filesystem::is_fifo(options.input, ignored) ||
      !ByteReader(options.input).size()) {
    return inputName(options.input) + ": a table is read twice, and must be a file";
  }
  if (std::filesystem::equivalent(options.input, options.output, ignored)) {
    return options.output + ": the snapshot would replace the table";
  }
  return "";
}

}  // namespace

int packCommand(const PackOptions& options, std::ostream& out, std::ostream& err) {
  const std::optional<char> delimiter = delimiterByte(options.delimiter);
  if (!delimiter) {
    err << "nomtool: " << inQuotes(options.delimiter) << " cannot be a delimiter\n";
    return kExitUsage;
  }
  std::string refusal;
  const int status = runCommand(err, [&] {
    refusal = refusalOf(options);
    // The summary is no part of a snapshot.
    std::ostream& summary = isStandard(options.output) ? err : out;
    if (refusal.empty()) Packer(options, *delimiter, err).run(summary);
  });
  if (refusal.empty()) return status;
  err << refusal << '\n';
  return kExitUsage;
}

}  // namespace nomtool
