// The syntax of the commands on files of any size: nomtool compress FILE -o BLOCKS, nomtool pack
// TABLE SNAPSHOT; and what all those have that go from one stream to another.
#include "commandsyntax.h"

namespace nomtool {
namespace {

constexpr const char* kStreamText =
    "FILE is read in pieces, so that any size takes the same memory; - or nothing is the standard\n"
    "input. The output goes to the standard output, or to the file of -o, which appears, or is\n"
    "replaced, when it is whole: until then it is NAME.part and a number beside it.";

constexpr const char* kBlocksText =
    "The compressed file is a signature, blocks of at most 1 MiB, each behind its lengths, and "
    "the\n"
    "CRC-32 of everything; a block is a zlib stream behind one byte. What is cut or damaged is "
    "refused.";

constexpr const char* kPackText =
    "The file is read as RFC 4180 has it, with a header row, twice. A column is boolean, integer,\n"
    "decimal, date, timestamp, text (UTF-8) or bytes: the first in which each of its fields comes\n"
    "back as it is. Quotes that are not needed, blank lines and line ends of another kind do not;\n"
    "they are counted. A row of the wrong width is refused, and nothing is written. The snapshot\n"
    "appears, or is replaced, when it is whole.";

constexpr const char* kUnpackText =
    "The text goes to the standard output, or to the file that is named, which appears, or is\n"
    "replaced, when it is whole. A snapshot that is cut or damaged is refused; --salvage writes "
    "the\n"
    "rows of the blocks that are not, tells which are lost, and ends with status 1.";

void declareBlocks(const CommandSyntax& syntax) {
  const auto [crc, crcOptions] =
      declareCommand<CrcOptions>(syntax, "crc", "The CRC-32 of files", crcCommand);
  crc->add_option("FILE", crcOptions.files, "Files; - is the standard input")->required();
  crc->add_flag("--json", crcOptions.json, "Print JSON");
  crc->footer("CRC-32 of IEEE 802.3, as gzip has it: cbf43926 for the nine bytes 123456789.");

  const auto [compress, compressOptions] = declareCommand<CompressOptions>(
      syntax, "compress", "Bytes as compressed blocks", compressCommand);
  declareStreams(*compress, compressOptions.streams, kBlocksText);
  compress->add_option("-l,--level", compressOptions.level, "0 (stored) to 9 (smallest); 6")
      ->check(CLI::Range(0, 9));

  const auto [uncompress, uncompressOptions] = declareCommand<UncompressOptions>(
      syntax, "uncompress", "Compressed blocks as the bytes they were", uncompressCommand);
  declareStreams(*uncompress, uncompressOptions.streams, kBlocksText);
}

// What the commands on snapshots have in common.
template <class Options>
DeclaredCommand<Options> declareSnapshot(const CommandSyntax& syntax, const char* name,
                                         const char* description,
                                         int (*run)(const Options&, std::ostream&, std::ostream&)) {
  const auto [command, options] = declareCommand<Options>(syntax, name, description, run);
  command->add_option("-j,--workers", options.workers, "Threads that work (one for each processor)")
      ->check(CLI::Range(1u, 64u));
  command->add_flag("-q,--quiet", options.quiet, "Show no progress");
  return {command, options};
}

void declareSnapshots(const CommandSyntax& syntax) {
  const auto [pack, packOptions] = declareSnapshot<PackOptions>(
      syntax, "pack", "A text file of columns as a snapshot", packCommand);
  pack->add_option("FILE", packOptions.input, "Delimited text with a header row")->required();
  pack->add_option("SNAPSHOT", packOptions.output, "The snapshot")->required();
  pack->add_option("-d,--delimiter", packOptions.delimiter,
                   "The character between fields, or tab (default: comma)");
  pack->add_option("-b,--block", packOptions.blockBytes, "Bytes of text in a block (524288)")
      ->check(CLI::Range(1u, 1u << 24));
  pack->footer(kPackText);

  const auto [inspect, inspectOptions] =
      declareSnapshot<InspectOptions>(syntax, "inspect", "What is in a snapshot", inspectCommand);
  inspect->add_option("SNAPSHOT", inspectOptions.input, "The snapshot")->required();
  inspect->add_flag("--json", inspectOptions.json, "Print JSON");

  const auto [unpack, unpackOptions] = declareSnapshot<UnpackOptions>(
      syntax, "unpack", "A snapshot as a text file again", unpackCommand);
  unpack->add_option("SNAPSHOT", unpackOptions.input, "The snapshot")->required();
  unpack->add_option("FILE", unpackOptions.output, "The text file (default: -)");
  unpack->add_flag("--salvage", unpackOptions.salvage, "Skip what is damaged");
  unpack->footer(kUnpackText);
}

}  // namespace

void declareStreams(CLI::App& command, StreamOptions& streams, const char* text) {
  command.add_option("FILE", streams.input, "The input (default: -)");
  command.add_option("-o,--output", streams.output, "The output (default: -)");
  command.footer(std::string(kStreamText) + '\n' + text);
}

void declareFiles(const CommandSyntax& syntax) {
  declareBlocks(syntax);
  declareSnapshots(syntax);
}

}  // namespace nomtool
