// The command line: the parser finds the command that the arguments name and fills its options, and
// that command runs. `nomtool decimal 1 / 3` ends with status 0, `nomtool decimal 1 / 0` with 1,
// `nomtool decimal 1` with 2.
#include "commandline.h"

#include "commandsyntax.h"
#include "storednumber.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace nomtool {
namespace {

constexpr const char* kExitText =
    "Exit status: 0 done; 1 some of the data was refused or rounded (the error stream says "
    "which);\n"
    "2 wrong usage, a file that cannot be read, or output that cannot be written.";

// The parser takes -5 for an option; behind one more blank, with which it goes through the parser,
// it is an operand like any other.
bool isGuarded(std::string_view argument) {
  argument = trimmed(argument);
  if (!argument.starts_with('-')) return false;
  argument = argument.substr(argument.starts_with("-.") ? 2 : 1);
  return !argument.empty() && argument.front() >= '0' && argument.front() <= '9';
}

}  // namespace

std::string asGiven(const std::string& argument) {
  return isGuarded(argument) ? argument.substr(1) : argument;
}

int run(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  CLI::App app("nomtool puts the utility library to work on real data.", "nomtool");
  // An argument such as /data/table.csv or // is never an option, on Windows neither.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", "nomtool " NOMTOOL_VERSION);
  app.require_subcommand(1);
  app.footer(kExitText);
  ChosenCommand chosen;
  const CommandSyntax syntax{app, chosen};
  declareValues(syntax);
  declareTexts(syntax);
  declareFiles(syntax);
  declareObjects(syntax);
  for (std::string& argument : arguments) {
    if (isGuarded(argument)) argument.insert(0, " ");
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? kExitDone : kExitUsage;
  }

  const int status = chosen(out, err);
  if (!out.flush()) {
    err << "nomtool: the output cannot be written\n";
    return kExitUsage;
  }
  return status;
}

}  // namespace nomtool
