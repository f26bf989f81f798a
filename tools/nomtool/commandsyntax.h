// How the commands are written: their names, their operands and options, which the parser fills,
// and their help. Each theme declares its commands in the order in which the help lists them.
#ifndef NOMTOOL_COMMANDSYNTAX_H
#define NOMTOOL_COMMANDSYNTAX_H

#include "commands.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace nomtool {

// The command that the arguments name, with its options. Returns the exit status.
using ChosenCommand = std::function<int(std::ostream& out, std::ostream& err)>;

// The parser, and where it leaves the command. Both stay where they are while it parses.
struct CommandSyntax {
  CLI::App& app;
  ChosenCommand& chosen;
};

// The syntax of one command, and its options, which live as long as the parser or the chosen
// command.
template <class Options>
struct DeclaredCommand {
  CLI::App* command;
  Options& options;
};

template <class Options>
DeclaredCommand<Options> declareCommand(const CommandSyntax& syntax, const char* name,
                                        const char* description,
                                        int (*run)(const Options&, std::ostream&, std::ostream&)) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = syntax.app.add_subcommand(name, description);
  command->callback([options, run, &chosen = syntax.chosen] {
    chosen = [options, run](std::ostream& out, std::ostream& err) {
      return run(*options, out, err);
    };
  });
  return {command, *options};
}

// An operand as it was given, for those in which a blank counts: -5 goes through the parser with a
// blank before it.
std::string asGiven(const std::string& argument);

void declareValues(const CommandSyntax& syntax);   // table, decimal, message ... boxes
void declareTexts(const CommandSyntax& syntax);    // base64, plain, entities, number
void declareFiles(const CommandSyntax& syntax);    // crc, compress, uncompress, pack ... unpack
void declareObjects(const CommandSyntax& syntax);  // geometry, doctor, object

// The operands of a command from a file or the standard input to another or the standard output,
// and its help, which the text ends.
void declareStreams(CLI::App& command, StreamOptions& streams, const char* text);

}  // namespace nomtool

#endif  // NOMTOOL_COMMANDSYNTAX_H
