// What ends a command on large files early, as lines on the error stream and an exit status.
#ifndef NOMTOOL_RUNCOMMAND_H
#define NOMTOOL_RUNCOMMAND_H

#include <functional>
#include <ostream>

namespace nomtool {

// Runs what may throw. Returns the exit status.
int runCommand(std::ostream& err, const std::function<void()>& work);

}  // namespace nomtool

#endif  // NOMTOOL_RUNCOMMAND_H
