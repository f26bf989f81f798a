// What ends a command on large files early, as lines on the error stream and an exit status.
#ifndef NOMTOOL_RUNCOMMAND_H
#define NOMTOOL_RUNCOMMAND_H

#include <functional>
#include <ostream>
#include <string>

namespace nomtool {

// Runs what may throw. Returns the exit status.
int runCommand(std::ostream& err, const std::function<void()>& work);

// Throws std::runtime_error, "FILE: zlib: Library not found (1006); see nomtool doctor", when work
// on a file cannot begin. REQUIRES: the file is a path or "-", the standard input.
void requireZlib(const std::string& file);

}  // namespace nomtool

#endif  // NOMTOOL_RUNCOMMAND_H
