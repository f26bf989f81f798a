// The whole of nomtool as one function of its arguments and output streams.
#ifndef NOMTOOL_COMMANDLINE_H
#define NOMTOOL_COMMANDLINE_H

#include "commands.h"

#include <ostream>
#include <string>
#include <vector>

namespace nomtool {

// Runs nomtool with the arguments behind the program's name. Returns the exit status.
int run(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

}  // namespace nomtool

#endif  // NOMTOOL_COMMANDLINE_H
