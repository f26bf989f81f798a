// The syntax of the commands on texts: nomtool base64 FILE -o TEXT, nomtool entities eacute,
// nomtool number 10K.
#include "commandsyntax.h"

namespace nomtool {
namespace {

constexpr const char* kBase64Text =
    "Lines hold 76 characters and end with CR LF, but for the last, which has no end. Decoding\n"
    "skips what is not of the alphabet, and ends with the padding.";

constexpr const char* kPlainText =
    "The output is printable ASCII, tabs and line ends: &eacute; for a character that the table "
    "of\n"
    "nomtool entities names, else its code point, as &#xE9;; & and ; become &amp; and &semi;.\n"
    "--markup escapes what XML needs, and leaves no control character.";

constexpr const char* kEntitiesText =
    "NAME is a name, in which case counts, or a code point: 233 or U+E9, of which the first "
    "entity\n"
    "is shown.";

constexpr const char* kNumberText =
    "NUMBER is decimal digits with one of the letters B K M G T P behind them for 1024 to the "
    "power\n"
    "of 0 to 5. A fraction is dropped, and what is beyond 64 bits becomes the largest number. The\n"
    "table shows the value, its shortest form with a letter, and its digits by logarithm.";

}  // namespace

void declareTexts(const CommandSyntax& syntax) {
  const auto [base64, base64Options] = declareCommand<Base64Options>(
      syntax, "base64", "Bytes as base64 text, or back", base64Command);
  declareStreams(*base64, base64Options.streams, kBase64Text);
  base64->add_flag("-d,--decode", base64Options.decode, "Decode");
  base64->add_flag("--one-line", base64Options.oneLine, "Encode without line ends");

  const auto [plain, plainOptions] =
      declareCommand<PlainOptions>(syntax, "plain", "UTF-8 as plain ASCII text", plainCommand);
  declareStreams(*plain, plainOptions.streams, kPlainText);
  plain->add_flag("--markup", plainOptions.markup, "Escape markup");

  const auto [entities, entitiesOptions] = declareCommand<EntitiesOptions>(
      syntax, "entities", "Named character entities", entitiesCommand);
  entities->add_option("NAME", entitiesOptions.entities, "Show these alone");
  entities->add_flag("--json", entitiesOptions.json, "Print JSON");
  entities->footer(kEntitiesText);

  const auto [number, numberOptions] =
      declareCommand<NumberOptions>(syntax, "number", "Byte counts such as 10K", numberCommand);
  number->add_option("NUMBER", numberOptions.numbers, "Byte counts")->required();
  number->add_flag("--json", numberOptions.json, "Print JSON");
  number->footer(kNumberText);
}

}  // namespace nomtool
