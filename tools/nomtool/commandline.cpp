// The command line: commands, options, help and exit statuses. The parser fills the options of the
// command that the arguments name, and that command runs. `nomtool decimal 1 / 3` ends with status
// 0, `nomtool decimal 1 / 0` with 1, `nomtool decimal 1` with 2.
#include "commandline.h"

#include "storednumber.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace nomtool {
namespace {

constexpr const char* kExitText =
    "Exit status: 0 done; 1 some of the data was refused or rounded (the error stream says "
    "which);\n"
    "2 wrong usage, a file that cannot be read, or output that cannot be written.";

constexpr const char* kTableText =
    "The file is read as RFC 4180 has it, with a header row; blank lines are skipped. A column is\n"
    "numeric when at least half of its fields that are not empty are numbers; --column chooses\n"
    "columns by name instead. A number is an optional sign and digits with at most one point, "
    "blanks\n"
    "around it aside. A field that is no number, or is outside the 23 digits of a stored decimal, "
    "is\n"
    "refused; a row of the wrong width is refused as a whole; an empty field counts as missing.\n"
    "Numbers and texts pass through parameters; what does not arrive as it was sent is refused.\n"
    "Every figure is that of the stored values: a field that storing rounds is reported with the\n"
    "value stored. The sum is exact; the mean is cut after 23 places and the table shows it "
    "rounded\n"
    "to four places more than the sum has (--json shows all). Decimals in JSON are strings.";

constexpr const char* kDecimalText =
    "OP is one of: + - x (or *) /  // (integer quotient)  % (remainder)  cmp (-1, 0 or 1).\n"
    "The result is exact; / is cut after 23 places. A result outside the 23 digits of a stored\n"
    "decimal is refused; one that storing would round is printed exactly, with a note on the "
    "error\n"
    "stream.";

constexpr const char* kParamText =
    "FORMAT is a number or an enumerator of nomtool formats. TEXT is a number, true or false, a\n"
    "character, a string in UTF-8; numbers with commas between them for DSKPOINT (x,y),\n"
    "DSKTIMESTAMP (date,time), DSKTIMESTAMPOFFSET (date,time,bias), DSKMEMORYADDRESS "
    "(address,length)\n"
    "and the dotted numbers (DSKDOTTEDPAIR, DSKNUMBERANDPAIR, DSKDOTTEDTRIPLE) in the order of "
    "their\n"
    "bytes; pairs of hexadecimal digits for binaries and object identifiers; empty for DSKNULL. "
    "A\n"
    "DSKANY becomes the DSKKORASTRING that it is given.";

constexpr const char* kBoxesText =
    "Each box has a receiver of its own, and timers and schedules of 1 to 2,000 ms that start "
    "anew\n"
    "when they arrive. Producers dispatch to all boxes in turn as fast as they can; events that\n"
    "meet in a box count as one receive. Latency is the time from a dispatch to its receipt, of "
    "one\n"
    "dispatch a millisecond; lateness counts from the beginning of the millisecond that was due.\n"
    "With --producers 0 it shows the timers of an idle machine.";

constexpr const char* kStreamText =
    "FILE is read in pieces, so that any size takes the same memory; - or nothing is the standard\n"
    "input. The output goes to the standard output, or to the file of -o, which appears, or is\n"
    "replaced, when it is whole: until then it is NAME.part and a number beside it.";

constexpr const char* kBase64Text =
    "Lines hold 76 characters and end with CR LF, but for the last, which has no end. Decoding\n"
    "skips what is not of the alphabet, and ends with the padding.";

constexpr const char* kPlainText =
    "The output is printable ASCII, tabs and line ends: &eacute; for a character that the table "
    "of\n"
    "nomtool entities names, else its code point, as &#xE9;; & and ; become &amp; and &semi;.\n"
    "--markup escapes what XML needs, and leaves no control character.";

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

constexpr const char* kEntitiesText =
    "NAME is a name, in which case counts, or a code point: 233 or U+E9, of which the first "
    "entity\n"
    "is shown.";

constexpr const char* kNumberText =
    "NUMBER is decimal digits with one of the letters B K M G T P behind them for 1024 to the "
    "power\n"
    "of 0 to 5. A fraction is dropped, and what is beyond 64 bits becomes the largest number. The\n"
    "table shows the value, its shortest form with a letter, and its digits by logarithm.";

constexpr const char* kDateText =
    "A text is a date in English, and a time behind it or none: 25/12/2023, December 25 2023, "
    "10:30\n"
    "pm. With --locale the order, the names and the calendar of the date are those of the "
    "locale.\n"
    "Where a text is wrong, a mark shows how far it was read.\n"
    "world writes each day of 2024 in the short, long and full pattern of every locale that the\n"
    "system has, or of the one of --locale, reads it back, and shows of how many days that gives "
    "the\n"
    "date again, and where not, the first text and where its reader stops.";

constexpr const char* kGeometryText =
    "WKT is a geometry as well-known text: \"POLYGON ((0 0, 2 0, 2 1, 0 0))\". OP is one of:\n"
    "union intersection difference symdifference; distance; contains within disjoint intersects\n"
    "touches crosses overlaps equals. Lengths and areas are in the units of the coordinates, on "
    "the\n"
    "plane. What GEOS cannot tell of a geometry is unknown.";

constexpr const char* kDoctorText =
    "Each optional library is shown with the name it was found under, its version and its path, "
    "or\n"
    "with what works without it. A missing one is no failure; message texts that are not in the\n"
    "language of the configuration are.";

constexpr const char* kObjectText =
    "FORMAT is a name of nomtool formats, such as String, Integer, Object (a reference) or\n"
    "StringUtf8, or its number or enumerator. VALUE is written as in nomtool param; a date also "
    "as\n"
    "2024-01-05, a timestamp as \"2024-01-05 10:30:00\". ID names an object or a type by class "
    "and\n"
    "number, as 2055.18, or is 12 or 22 bytes in hexadecimal digits. A VALUE that begins with -\n"
    "and is no number stands behind --.\n"
    "FILE is one object and its checksum; - is the standard input and output. It is replaced when\n"
    "the change is whole. One that is cut or damaged is refused.";

struct Options {
  TableOptions table;
  DecimalOptions decimal;
  MessageOptions message;
  FormatsOptions formats;
  DateOptions date;
  OidOptions oid;
  ParamOptions param;
  BoxesOptions boxes;
  UriOptions uri;
  Base64Options base64;
  PlainOptions plain;
  EntitiesOptions entities;
  NumberOptions number;
  CrcOptions crc;
  CompressOptions compress;
  UncompressOptions uncompress;
  PackOptions pack;
  InspectOptions inspect;
  UnpackOptions unpack;
  GeometryOptions geometry;
  DoctorOptions doctor;
  ObjectOptions object;
};

// The parser takes -5 for an option; behind one more blank, with which it goes through the parser,
// it is an operand like any other.
bool isGuarded(std::string_view argument) {
  argument = trimmed(argument);
  if (!argument.starts_with('-')) return false;
  argument = argument.substr(argument.starts_with("-.") ? 2 : 1);
  return !argument.empty() && argument.front() >= '0' && argument.front() <= '9';
}

// The operand as it was given, for those in which a blank counts.
std::string asGiven(const std::string& argument) {
  return isGuarded(argument) ? argument.substr(1) : argument;
}

CLI::App* declareStreams(CLI::App& app, const char* name, const char* description,
                         StreamOptions& streams, const char* text) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("FILE", streams.input, "The input (default: -)");
  command->add_option("-o,--output", streams.output, "The output (default: -)");
  command->footer(std::string(kStreamText) + '\n' + text);
  return command;
}

void declareTexts(CLI::App& app, Options& options) {
  CLI::App* base64 = declareStreams(app, "base64", "Bytes as base64 text, or back",
                                    options.base64.streams, kBase64Text);
  base64->add_flag("-d,--decode", options.base64.decode, "Decode");
  base64->add_flag("--one-line", options.base64.oneLine, "Encode without line ends");

  CLI::App* plain =
      declareStreams(app, "plain", "UTF-8 as plain ASCII text", options.plain.streams, kPlainText);
  plain->add_flag("--markup", options.plain.markup, "Escape markup");

  CLI::App* entities = app.add_subcommand("entities", "Named character entities");
  entities->add_option("NAME", options.entities.entities, "Show these alone");
  entities->add_flag("--json", options.entities.json, "Print JSON");
  entities->footer(kEntitiesText);

  CLI::App* number = app.add_subcommand("number", "Byte counts such as 10K");
  number->add_option("NUMBER", options.number.numbers, "Byte counts")->required();
  number->add_flag("--json", options.number.json, "Print JSON");
  number->footer(kNumberText);
}

void declareObjects(CLI::App& app, Options& options) {
  ObjectOptions& object = options.object;
  CLI::App* group = app.add_subcommand("object", "A dynamic object in a file");
  group->require_subcommand(1);
  group->footer(kObjectText);
  const auto declare = [&](const char* action, const char* description) {
    CLI::App* command = group->add_subcommand(action, description);
    command->add_option("FILE", object.file, "The file of the object")->required();
    command->callback([&object, action] { object.action = action; });
    return command;
  };
  CLI::App* make = declare("new", "Make an object without properties");
  make->add_option("--parent", object.parent, "The object that it belongs to: an ID");
  make->add_flag("--relational", object.relational, "Of the kind with larger descriptions");

  CLI::App* define = declare("define", "Add a property, and set its value or none");
  CLI::App* set = declare("set", "Set the value of a property");
  for (CLI::App* command : {define, set}) {
    command->add_option("NAME", object.name, "Its name")->required()->transform(asGiven);
    if (command == define) command->add_option("FORMAT", object.format, "Its format")->required();
    CLI::Option* value = command->add_option("VALUE", object.value, "Its value");
    value->transform(asGiven);
    CLI::Option* usage = command->add_option("--usage", object.usage, "Its usage, 0 to 255");
    usage->check(CLI::Range(0u, 255u));
    if (command == define) command->add_option("--type", object.type, "Its type: an ID");
    if (command == set) command->add_flag("--null", object.null, "No value")->excludes(value);
  }

  CLI::App* show = declare("show", "Show the properties");
  show->add_flag("--images", object.images, "Show the bytes too, field by field");
  show->add_flag("--json", object.json, "Print JSON");
}

void declareLibraries(CLI::App& app, Options& options) {
  CLI::App* geometry = app.add_subcommand("geometry", "A geometry, or two combined");
  geometry->add_option("WKT", options.geometry.left, "A geometry")->required();
  CLI::Option* operation = geometry->add_option("OP", options.geometry.operation, "The operation");
  CLI::Option* right = geometry->add_option("WKT2", options.geometry.right, "Another geometry");
  operation->needs(right);
  geometry->add_flag("--json", options.geometry.json, "Print JSON");
  geometry->footer(kGeometryText);

  CLI::App* doctor = app.add_subcommand("doctor", "Optional libraries and the configuration");
  doctor->add_flag("--json", options.doctor.json, "Print JSON");
  doctor->footer(kDoctorText);
}

CLI::App* declareSnapshot(CLI::App& app, const char* name, const char* description,
                          unsigned& workers, bool& quiet) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("-j,--workers", workers, "Threads that work (one for each processor)")
      ->check(CLI::Range(1u, 64u));
  command->add_flag("-q,--quiet", quiet, "Show no progress");
  return command;
}

void declareSnapshots(CLI::App& app, Options& options) {
  CLI::App* pack = declareSnapshot(app, "pack", "A text file of columns as a snapshot",
                                   options.pack.workers, options.pack.quiet);
  pack->add_option("FILE", options.pack.input, "Delimited text with a header row")->required();
  pack->add_option("SNAPSHOT", options.pack.output, "The snapshot")->required();
  pack->add_option("-d,--delimiter", options.pack.delimiter,
                   "The character between fields, or tab (default: comma)");
  pack->add_option("-b,--block", options.pack.blockBytes, "Bytes of text in a block (524288)")
      ->check(CLI::Range(1u, 1u << 24));
  pack->footer(kPackText);

  CLI::App* inspect = declareSnapshot(app, "inspect", "What is in a snapshot",
                                      options.inspect.workers, options.inspect.quiet);
  inspect->add_option("SNAPSHOT", options.inspect.input, "The snapshot")->required();
  inspect->add_flag("--json", options.inspect.json, "Print JSON");

  CLI::App* unpack = declareSnapshot(app, "unpack", "A snapshot as a text file again",
                                     options.unpack.workers, options.unpack.quiet);
  unpack->add_option("SNAPSHOT", options.unpack.input, "The snapshot")->required();
  unpack->add_option("FILE", options.unpack.output, "The text file (default: -)");
  unpack->add_flag("--salvage", options.unpack.salvage, "Skip what is damaged");
  unpack->footer(kUnpackText);
}

void declare(CLI::App& app, Options& options) {
  // An argument such as /data/table.csv or // is never an option, on Windows neither.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "nomtool " NOMTOOL_VERSION);
  app.require_subcommand(1);
  app.footer(kExitText);

  CLI::App* table = app.add_subcommand("table", "Figures of the numeric columns of a text file");
  table->add_option("FILE", options.table.file, "Delimited text with a header row")->required();
  table->add_option("-d,--delimiter", options.table.delimiter,
                    "The character between fields, or tab (default: comma)");
  table->add_option("-c,--column", options.table.columns, "Take this column; may be repeated")
      ->allow_extra_args(false);
  table->add_flag("--json", options.table.json, "Print JSON");
  table->footer(kTableText);

  CLI::App* decimal = app.add_subcommand("decimal", "One exact operation on two decimals");
  decimal->add_option("A", options.decimal.left, "The left operand")->required();
  decimal->add_option("OP", options.decimal.operation, "The operation")->required();
  decimal->add_option("B", options.decimal.right, "The right operand")->required();
  decimal->add_flag("--json", options.decimal.json, "Print JSON");
  decimal->footer(kDecimalText);

  CLI::App* message = app.add_subcommand("message", "The texts of status numbers");
  message->add_option("N", options.message.numbers, "Status numbers")->required();
  message->add_flag("--json", options.message.json, "Print JSON");

  CLI::App* formats = app.add_subcommand("formats", "Formats of parameters, tables of types");
  formats->add_flag("--json", options.formats.json, "Print JSON");

  CLI::App* date = app.add_subcommand("date", "A date in every form");
  date->add_option("DATE", options.date.date, "A day number, now, world, or a text")->required();
  date->add_option("-l,--locale", options.date.locale, "Read the text as in de-CH or 2055");
  date->add_flag("--json", options.date.json, "Print JSON");
  date->footer(kDateText);

  CLI::App* oid = app.add_subcommand("oid", "An object identifier in every style");
  oid->add_option("HEX", options.oid.bytes, "Its 12, 18 or 22 bytes")->required();
  oid->add_flag("--json", options.oid.json, "Print JSON");

  CLI::App* param = app.add_subcommand("param", "A parameter built from a text");
  param->add_option("FORMAT", options.param.format, "Its format")->required();
  param->add_option("TEXT", options.param.text, "Its value")->transform(asGiven);
  param->add_flag("--json", options.param.json, "Print JSON");
  param->footer(kParamText);

  CLI::App* uri = app.add_subcommand("uri", "A server URI in its components");
  uri->add_option("TEXT", options.uri.text, "The server URI")->required();
  uri->add_flag("--node", options.uri.node, "Read a node specification instead");
  uri->add_flag("--json", options.uri.json, "Print JSON");

  constexpr unsigned kMost = 1'000'000;
  CLI::App* boxes = app.add_subcommand("boxes", "Event boxes under load");
  boxes->add_option("-p,--producers", options.boxes.producers, "Threads that dispatch (2)")
      ->check(CLI::Range(0u, 64u));
  boxes->add_option("-b,--boxes", options.boxes.boxes, "Boxes with a receiver each (2)")
      ->check(CLI::Range(1u, 64u));
  boxes->add_option("-t,--timers", options.boxes.timers, "Timers in each box (1000)")
      ->check(CLI::Range(0u, kMost));
  boxes->add_option("-s,--schedules", options.boxes.schedules, "Delayed memos in each box (1000)")
      ->check(CLI::Range(0u, kMost));
  boxes->add_option("--seconds", options.boxes.seconds, "How long (2)")
      ->check(CLI::Range(0.0, 3600.0));
  boxes->add_flag("--json", options.boxes.json, "Print JSON");
  boxes->footer(kBoxesText);
}

void declareBlocks(CLI::App& app, Options& options) {
  CLI::App* crc = app.add_subcommand("crc", "The CRC-32 of files");
  crc->add_option("FILE", options.crc.files, "Files; - is the standard input")->required();
  crc->add_flag("--json", options.crc.json, "Print JSON");
  crc->footer("CRC-32 of IEEE 802.3, as gzip has it: cbf43926 for the nine bytes 123456789.");

  CLI::App* compress = declareStreams(app, "compress", "Bytes as compressed blocks",
                                      options.compress.streams, kBlocksText);
  compress->add_option("-l,--level", options.compress.level, "0 (stored) to 9 (smallest); 6")
      ->check(CLI::Range(0, 9));
  declareStreams(app, "uncompress", "Compressed blocks as the bytes they were",
                 options.uncompress.streams, kBlocksText);
}

}  // namespace

int run(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  CLI::App app("nomtool puts the utility library to work on real data.", "nomtool");
  Options options;
  declare(app, options);
  declareTexts(app, options);
  declareBlocks(app, options);
  declareSnapshots(app, options);
  declareLibraries(app, options);
  declareObjects(app, options);
  for (std::string& argument : arguments) {
    if (isGuarded(argument)) argument.insert(0, " ");
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kExitDone : kExitUsage;
  }

  int status = kExitDone;
  if (app.got_subcommand("table")) status = tableCommand(options.table, out, err);
  if (app.got_subcommand("decimal")) status = decimalCommand(options.decimal, out, err);
  if (app.got_subcommand("message")) status = messageCommand(options.message, out, err);
  if (app.got_subcommand("formats")) status = formatsCommand(options.formats, out, err);
  if (app.got_subcommand("date")) {
    status = (options.date.date == "world" ? worldCommand : dateCommand)(options.date, out, err);
  }
  if (app.got_subcommand("oid")) status = oidCommand(options.oid, out, err);
  if (app.got_subcommand("param")) status = paramCommand(options.param, out, err);
  if (app.got_subcommand("uri")) status = uriCommand(options.uri, out, err);
  if (app.got_subcommand("boxes")) status = boxesCommand(options.boxes, out, err);
  if (app.got_subcommand("base64")) status = base64Command(options.base64, out, err);
  if (app.got_subcommand("plain")) status = plainCommand(options.plain, out, err);
  if (app.got_subcommand("entities")) status = entitiesCommand(options.entities, out, err);
  if (app.got_subcommand("number")) status = numberCommand(options.number, out, err);
  if (app.got_subcommand("crc")) status = crcCommand(options.crc, out, err);
  if (app.got_subcommand("compress")) status = compressCommand(options.compress, out, err);
  if (app.got_subcommand("uncompress")) status = uncompressCommand(options.uncompress, out, err);
  if (app.got_subcommand("pack")) status = packCommand(options.pack, out, err);
  if (app.got_subcommand("inspect")) status = inspectCommand(options.inspect, out, err);
  if (app.got_subcommand("unpack")) status = unpackCommand(options.unpack, out, err);
  if (app.got_subcommand("geometry")) status = geometryCommand(options.geometry, out, err);
  if (app.got_subcommand("doctor")) status = doctorCommand(options.doctor, out, err);
  if (app.got_subcommand("object")) status = objectCommand(options.object, out, err);
  if (!out.flush()) {
    err << "nomtool: the output cannot be written\n";
    return kExitUsage;
  }
  return status;
}

}  // namespace nomtool
