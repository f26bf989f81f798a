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

struct Options {
  TableOptions table;
  DecimalOptions decimal;
  MessageOptions message;
  FormatsOptions formats;
  DateOptions date;
  OidOptions oid;
  ParamOptions param;
  BoxesOptions boxes;
};

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

  CLI::App* date = app.add_subcommand("date", "A day number in every form");
  date->add_option("N", options.date.date, "A day number, or now")->required();
  date->add_flag("--json", options.date.json, "Print JSON");

  CLI::App* oid = app.add_subcommand("oid", "An object identifier in every style");
  oid->add_option("HEX", options.oid.bytes, "Its 12, 18 or 22 bytes")->required();
  oid->add_flag("--json", options.oid.json, "Print JSON");

  CLI::App* param = app.add_subcommand("param", "A parameter built from a text");
  param->add_option("FORMAT", options.param.format, "Its format")->required();
  param->add_option("TEXT", options.param.text, "Its value");
  param->add_flag("--json", options.param.json, "Print JSON");
  param->footer(kParamText);

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

}  // namespace

int run(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  CLI::App app("nomtool puts the utility library to work on real data.", "nomtool");
  Options options;
  declare(app, options);
  // The parser takes -5 for an option; behind a blank it is an operand like any other.
  for (std::string& argument : arguments) {
    if (argument.starts_with('-') && numberSyntax(argument) == NumberSyntax::kNumber) {
      argument.insert(0, " ");
    }
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
  if (app.got_subcommand("date")) status = dateCommand(options.date, out, err);
  if (app.got_subcommand("oid")) status = oidCommand(options.oid, out, err);
  if (app.got_subcommand("param")) status = paramCommand(options.param, out, err);
  if (app.got_subcommand("boxes")) status = boxesCommand(options.boxes, out, err);
  if (!out.flush()) {
    err << "nomtool: the output cannot be written\n";
    return kExitUsage;
  }
  return status;
}

}  // namespace nomtool
