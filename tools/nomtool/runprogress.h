// How far a command on a large file is: a bar with bytes, percent and rate on a terminal, lines
// otherwise; and the user's wish to stop it. All of it comes through the callbacks of a utility.
#ifndef NOMTOOL_RUNPROGRESS_H
#define NOMTOOL_RUNPROGRESS_H

#include "progress.h"

#include "sys/dbcallback.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

namespace nomtool {

// The user has stopped the command.
class Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

// One at a time, used by one thread. While it lives, an interrupt (Ctrl-C) or the wish to terminate
// does not end the program, but makes reach() throw.
class RunProgress : public DbCallbackHandler {
 public:
  // A quiet one shows nothing, and stops all the same.
  RunProgress(std::ostream& err, bool isQuiet);
  ~RunProgress();
  RunProgress(const RunProgress&) = delete;
  RunProgress& operator=(const RunProgress&) = delete;

  // Begins "pack FILE"; without a size only a terminal shows anything.
  void begin(const char* operation, const std::string& file, std::optional<std::uint64_t> size);
  // So many bytes are done. Throws Interrupted.
  void reach(std::uint64_t bytes);
  // The line of the terminal is free.
  void end() { _bar.reset(); }

  // What an interrupt does.
  static void interrupt();

 private:
  static bool onBytes(DbCallbackHandler* handler, std::uint64_t bytes);
  static bool onPercent(DbCallbackHandler* handler, unsigned percent);
  static bool onHeartbeat(DbCallbackHandler* handler);

  std::ostream& _err;
  const bool _isQuiet;
  const bool _isTerminal;
  std::optional<Progress> _bar;
  std::uint64_t _shown = 0;
  void (*_former[2])(int);  // what an interrupt, and a wish to terminate, did before
};

}  // namespace nomtool

#endif  // NOMTOOL_RUNPROGRESS_H
