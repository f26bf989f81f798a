// Unpacking renders each block as text and writes the texts in the blocks' order. The end of a line
// stands before the next one, since the last may have none.
#include "commands.h"

#include "pipeline.h"
#include "runcommand.h"
#include "runprogress.h"
#include "snapshotreader.h"

namespace nomtool {
namespace {

class TextRenderer final : public RowVisitor {
 public:
  TextRenderer(const SnapshotSchema& schema, std::string& text) : _schema(schema), _text(text) {}

  void field(std::size_t column, bool isAbsent, std::string_view value) override {
    if (column == 0) _text += _schema.form().lineEnd();
    if (column != 0) _text += _schema.form().delimiter;
    if (isAbsent) return;
    const ColumnForm form = _schema.forms()[column];
    if (!isFixed(form)) {
      appendField(_text, value, _schema.form().delimiter);
      return;
    }
    if (!appendValue(_text, form, value)) throw DamagedSnapshot("a wrong value");
  }
  void endRow() override {}

 private:
  const SnapshotSchema& _schema;
  std::string& _text;
};

struct Slot {
  SnapshotBlock block;
  std::string bytes;
  std::uint64_t offset = 0;
  std::uint64_t endOffset = 0;
  std::string expanded;
  std::string text;
  std::string fault;
};

class Unpacker {
 public:
  Unpacker(const UnpackOptions& options, std::ostream& err)
      : _options(options),
        _err(err),
        _progress(err, options.quiet || isTerminal(options.output)),
        _reader(options.input, options.salvage),
        _writer(options.output) {}

  // True when nothing is lost.
  bool run();

 private:
  void render(Slot& slot);
  bool write(Slot& slot);
  void report(const std::string& loss);

  const UnpackOptions& _options;
  std::ostream& _err;
  RunProgress _progress;
  SnapshotReader _reader;
  ByteWriter _writer;
  bool _isWhole = true;
};

void Unpacker::render(Slot& slot) {
  slot.fault.clear();
  slot.text.clear();
  try {
    expandBlock(slot.bytes, slot.block.expandedLength, slot.expanded);
    TextRenderer renderer(_reader.schema(), slot.text);
    visitRows(_reader.schema(), slot.block, slot.expanded, renderer);
  } catch (const DamagedSnapshot& damage) {
    slot.fault = damage.what();
  }
}

void Unpacker::report(const std::string& loss) {
  _progress.end();
  _err << _reader.fileName() << ": " << loss << '\n';
  _isWhole = false;
}

bool Unpacker::write(Slot& slot) {
  if (!slot.fault.empty()) {
    const std::string place = placeOf(slot.block.number, slot.offset);
    if (!_options.salvage) throw RefusedSnapshot(_reader.fileName(), place, slot.fault);
    report(place + ": " + slot.fault + ": rows " + std::to_string(slot.block.firstRow + 1) +
           " to " + std::to_string(slot.block.firstRow + slot.block.rowCount) + " are lost");
  } else {
    _writer.write(slot.text);
  }
  _progress.reach(slot.endOffset);
  return true;
}

bool Unpacker::run() {
  const SnapshotSchema& schema = _reader.schema();
  const TextForm& form = schema.form();
  if (form.hasMark) _writer.write(kTextMark);
  _writer.write(schema.firstLine());

  const unsigned workerCount = _options.workers != 0 ? _options.workers : defaultWorkerCount();
  std::vector<Slot> slots(2 * workerCount + 2);
  _progress.begin("unpack", _options.input, _reader.blocksEnd());
  runPipeline(workerCount, static_cast<unsigned>(slots.size()),
              {[&](unsigned i) {
                 Slot& slot = slots[i];
                 const bool isBlock = _reader.next(slot.block, slot.bytes, slot.offset);
                 slot.endOffset = slot.offset + kBlockHeaderSize + slot.block.length;
                 return isBlock;
               },
               [&](unsigned i) { render(slots[i]); }, [&](unsigned i) { return write(slots[i]); }});
  for (const std::string& loss : _reader.losses()) report(loss);
  if (form.isLastRowEnded) _writer.write(form.lineEnd());
  _writer.commit();
  _progress.end();
  return _isWhole;
}

}  // namespace

int unpackCommand(const UnpackOptions& options, std::ostream& out, std::ostream& err) {
  // What the command wrote to the same place before comes first.
  out.flush();
  bool isWhole = true;
  const int status = runCommand(err, [&] {
    requireZlib(options.input);
    isWhole = Unpacker(options, err).run();
  });
  return status == kExitDone && !isWhole ? kExitRefused : status;
}

}  // namespace nomtool
