// What is in a snapshot. Every block is expanded and every row read, in memory; the figures of the
// blocks are added up in their order.
#include "commands.h"

#include "pipeline.h"
#include "runcommand.h"
#include "runprogress.h"
#include "snapshotreader.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/decimals.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

namespace nomtool {
namespace {

struct ColumnFigures {
  void add(ColumnForm form, std::string_view value);
  void add(ColumnForm form, const ColumnFigures& other);

  std::uint64_t filled = 0;
  std::string smallest;  // values as bytes, with filled > 0
  std::string largest;
  Decimal sum = Decimal::Zero;  // of numbers
};

void ColumnFigures::add(ColumnForm form, std::string_view value) {
  if (filled == 0 || compareValues(form, value, smallest) < 0) smallest = value;
  if (filled == 0 || compareValues(form, value, largest) > 0) largest = value;
  ++filled;
  if (form == ColumnForm::kInteger) {
    std::int64_t number = 0;
    std::memcpy(&number, value.data(), std::min(value.size(), sizeof number));
    sum = sum + Decimal(number);
  } else if (form == ColumnForm::kDecimal) {
    DskDecimal number{};
    std::memcpy(&number, value.data(), std::min(value.size(), sizeof number));
    sum = sum + Decimal(number);
  }
}

void ColumnFigures::add(ColumnForm form, const ColumnFigures& other) {
  if (other.filled == 0) return;
  if (filled == 0 || compareValues(form, other.smallest, smallest) < 0) smallest = other.smallest;
  if (filled == 0 || compareValues(form, other.largest, largest) > 0) largest = other.largest;
  filled += other.filled;
  sum = sum + other.sum;
}

class FigureTaker final : public RowVisitor {
 public:
  FigureTaker(const SnapshotSchema& schema, std::vector<ColumnFigures>& figures)
      : _schema(schema), _figures(figures) {}

  // An empty text is a value, too, but none that the figures show.
  void field(std::size_t column, bool isAbsent, std::string_view value) override {
    const ColumnForm form = _schema.forms()[column];
    if (!isAbsent && (isFixed(form) || !value.empty())) _figures[column].add(form, value);
  }
  void endRow() override {}

 private:
  const SnapshotSchema& _schema;
  std::vector<ColumnFigures>& _figures;
};

struct Slot {
  SnapshotBlock block;
  std::string bytes;
  std::uint64_t offset = 0;
  std::string expanded;
  std::vector<ColumnFigures> figures;
};

struct Contents {
  std::vector<ColumnFigures> figures;
  std::uint64_t expandedBytes = 0;
};

Contents readContents(SnapshotReader& reader, const InspectOptions& options, std::ostream& err) {
  const SnapshotSchema& schema = reader.schema();
  const unsigned workerCount = options.workers != 0 ? options.workers : defaultWorkerCount();
  std::vector<Slot> slots(2 * workerCount + 2);
  Contents contents;
  contents.figures.resize(schema.names().size());
  RunProgress progress(err, options.quiet);
  progress.begin("inspect", options.input, reader.blocksEnd());
  runPipeline(
      workerCount, static_cast<unsigned>(slots.size()),
      {[&](unsigned i) { return reader.next(slots[i].block, slots[i].bytes, slots[i].offset); },
       [&](unsigned i) {
         Slot& slot = slots[i];
         slot.figures.assign(schema.names().size(), {});
         try {
           expandBlock(slot.bytes, slot.block.expandedLength, slot.expanded);
           FigureTaker taker(schema, slot.figures);
           visitRows(schema, slot.block, slot.expanded, taker);
         } catch (const DamagedSnapshot& damage) {
           throw RefusedSnapshot(reader.fileName(), placeOf(slot.block.number, slot.offset),
                                 damage.what());
         }
       },
       [&](unsigned i) {
         const Slot& slot = slots[i];
         for (std::size_t j = 0; j < contents.figures.size(); ++j) {
           contents.figures[j].add(schema.forms()[j], slot.figures[j]);
         }
         contents.expandedBytes += slot.expanded.size();
         progress.reach(slot.offset + kBlockHeaderSize + slot.block.length);
         return true;
       }});
  return contents;
}

std::string fieldOf(ColumnForm form, const std::string& value) {
  std::string text;
  return appendValue(text, form, value) ? text : "?";
}

double ratioOf(const SnapshotReader& reader) {
  return reader.offset() == 0 ? 0
                              : static_cast<double>(reader.trailer().sourceBytes) /
                                    static_cast<double>(reader.offset());
}

void printJson(const SnapshotReader& reader, const Contents& contents, std::ostream& out) {
  const SnapshotTrailer& trailer = reader.trailer();
  nlohmann::ordered_json json = {{"file", reader.fileName()},
                                 {"rows", trailer.rowCount},
                                 {"blocks", trailer.blockCount},
                                 {"sourceBytes", trailer.sourceBytes},
                                 {"imageBytes", contents.expandedBytes},
                                 {"bytes", reader.offset()},
                                 {"ratio", ratioOf(reader)},
                                 {"changedRows", trailer.changedRows}};
  for (std::size_t i = 0; i < contents.figures.size(); ++i) {
    const ColumnFigures& figures = contents.figures[i];
    const ColumnForm form = reader.schema().forms()[i];
    nlohmann::ordered_json column = {{"name", reader.schema().names()[i]},
                                     {"type", nameOf(form)},
                                     {"filled", figures.filled},
                                     {"empty", trailer.rowCount - figures.filled}};
    if (figures.filled != 0) {
      column["smallest"] = fieldOf(form, figures.smallest);
      column["largest"] = fieldOf(form, figures.largest);
      if (isNumber(form)) column["sum"] = decimalText(figures.sum);
    }
    json["columns"].push_back(std::move(column));
  }
  // Bytes that are no UTF-8 are shown as replacement characters.
  out << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void printTable(const SnapshotReader& reader, const Contents& contents, std::ostream& out) {
  const SnapshotTrailer& trailer = reader.trailer();
  std::ostringstream ratio;
  ratio << std::fixed << std::setprecision(2) << ratioOf(reader);
  out << reader.fileName() << ": " << counted(trailer.rowCount, "row") << " in "
      << counted(trailer.blockCount, "block") << '\n'
      << trailer.sourceBytes << " bytes of text, " << contents.expandedBytes << " of images, in "
      << reader.offset() << ": " << ratio.str() << " to 1\n";

  std::vector<std::vector<std::string>> rows = {
      {"column", "type", "filled", "empty", "smallest", "largest", "sum"}};
  for (std::size_t i = 0; i < contents.figures.size(); ++i) {
    const ColumnFigures& figures = contents.figures[i];
    const ColumnForm form = reader.schema().forms()[i];
    const bool isFilled = figures.filled != 0;
    rows.push_back({oneLine(reader.schema().names()[i]), nameOf(form),
                    std::to_string(figures.filled),
                    std::to_string(trailer.rowCount - figures.filled),
                    isFilled ? oneLine(fieldOf(form, figures.smallest)) : "",
                    isFilled ? oneLine(fieldOf(form, figures.largest)) : "",
                    isFilled && isNumber(form) ? decimalText(figures.sum) : ""});
  }
  printColumns(rows, out);
}

}  // namespace

int inspectCommand(const InspectOptions& options, std::ostream& out, std::ostream& err) {
  return runCommand(err, [&] {
    requireZlib(options.input);
    SnapshotReader reader(options.input, false);
    const Contents contents = readContents(reader, options, err);
    options.json ? printJson(reader, contents, out) : printTable(reader, contents, out);
  });
}

}  // namespace nomtool
