// The syntax of the commands on values that the arguments or a table give: nomtool decimal 1 / 3,
// nomtool date 2460315, and of the one that puts event boxes under load.
#include "commandsyntax.h"

namespace nomtool {
namespace {

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

void declareNumbers(const CommandSyntax& syntax) {
  const auto [table, tableOptions] = declareCommand<TableOptions>(
      syntax, "table", "Figures of the numeric columns of a text file", tableCommand);
  table->add_option("FILE", tableOptions.file, "Delimited text with a header row")->required();
  table->add_option("-d,--delimiter", tableOptions.delimiter,
                    "The character between fields, or tab (default: comma)");
  table->add_option("-c,--column", tableOptions.columns, "Take this column; may be repeated")
      ->allow_extra_args(false);
  table->add_flag("--json", tableOptions.json, "Print JSON");
  table->footer(kTableText);

  const auto [decimal, decimalOptions] = declareCommand<DecimalOptions>(
      syntax, "decimal", "One exact operation on two decimals", decimalCommand);
  decimal->add_option("A", decimalOptions.left, "The left operand")->required();
  decimal->add_option("OP", decimalOptions.operation, "The operation")->required();
  decimal->add_option("B", decimalOptions.right, "The right operand")->required();
  decimal->add_flag("--json", decimalOptions.json, "Print JSON");
  decimal->footer(kDecimalText);
}

int dateOrWorldCommand(const DateOptions& options, std::ostream& out, std::ostream& err) {
  return (options.date == "world" ? worldCommand : dateCommand)(options, out, err);
}

void declareForms(const CommandSyntax& syntax) {
  const auto [message, messageOptions] = declareCommand<MessageOptions>(
      syntax, "message", "The texts of status numbers", messageCommand);
  message->add_option("N", messageOptions.numbers, "Status numbers")->required();
  message->add_flag("--json", messageOptions.json, "Print JSON");

  const auto [formats, formatsOptions] = declareCommand<FormatsOptions>(
      syntax, "formats", "Formats of parameters, tables of types", formatsCommand);
  formats->add_flag("--json", formatsOptions.json, "Print JSON");

  const auto [date, dateOptions] =
      declareCommand<DateOptions>(syntax, "date", "A date in every form", dateOrWorldCommand);
  date->add_option("DATE", dateOptions.date, "A day number, now, world, or a text")->required();
  date->add_option("-l,--locale", dateOptions.locale, "Read the text as in de-CH or 2055");
  date->add_flag("--json", dateOptions.json, "Print JSON");
  date->footer(kDateText);

  const auto [oid, oidOptions] =
      declareCommand<OidOptions>(syntax, "oid", "An object identifier in every style", oidCommand);
  oid->add_option("HEX", oidOptions.bytes, "Its 12, 18 or 22 bytes")->required();
  oid->add_flag("--json", oidOptions.json, "Print JSON");

  const auto [param, paramOptions] =
      declareCommand<ParamOptions>(syntax, "param", "A parameter built from a text", paramCommand);
  param->add_option("FORMAT", paramOptions.format, "Its format")->required();
  param->add_option("TEXT", paramOptions.text, "Its value")->transform(asGiven);
  param->add_flag("--json", paramOptions.json, "Print JSON");
  param->footer(kParamText);

  const auto [uri, uriOptions] =
      declareCommand<UriOptions>(syntax, "uri", "A server URI in its components", uriCommand);
  uri->add_option("TEXT", uriOptions.text, "The server URI")->required();
  uri->add_flag("--node", uriOptions.node, "Read a node specification instead");
  uri->add_flag("--json", uriOptions.json, "Print JSON");
}

void declareBoxes(const CommandSyntax& syntax) {
  constexpr unsigned kMost = 1'000'000;
  const auto [boxes, options] =
      declareCommand<BoxesOptions>(syntax, "boxes", "Event boxes under load", boxesCommand);
  boxes->add_option("-p,--producers", options.producers, "Threads that dispatch (2)")
      ->check(CLI::Range(0u, 64u));
  boxes->add_option("-b,--boxes", options.boxes, "Boxes with a receiver each (2)")
      ->check(CLI::Range(1u, 64u));
  boxes->add_option("-t,--timers", options.timers, "Timers in each box (1000)")
      ->check(CLI::Range(0u, kMost));
  boxes->add_option("-s,--schedules", options.schedules, "Delayed memos in each box (1000)")
      ->check(CLI::Range(0u, kMost));
  boxes->add_option("--seconds", options.seconds, "How long (2)")->check(CLI::Range(0.0, 3600.0));
  boxes->add_flag("--json", options.json, "Print JSON");
  boxes->footer(kBoxesText);
}

}  // namespace

void declareValues(const CommandSyntax& syntax) {
  declareNumbers(syntax);
  declareForms(syntax);
  declareBoxes(syntax);
}

}  // namespace nomtool
