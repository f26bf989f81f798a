// The commands of nomtool. Results go to `out`; what is refused, and why, goes to `err`. Each
// command returns the exit status of the program.
#ifndef NOMTOOL_COMMANDS_H
#define NOMTOOL_COMMANDS_H

#include <ostream>
#include <string>
#include <vector>

namespace nomtool {

enum ExitStatus : int {
  kExitDone = 0,
  kExitRefused = 1,  // some of the data was refused or rounded
  kExitUsage = 2,    // wrong usage, a file that cannot be read, output that cannot be written
};

struct TableOptions {
  std::string file;
  std::string delimiter = ",";       // one byte, or "\t" or "tab"
  std::vector<std::string> columns;  // the columns to take; empty: those that look numeric
  bool json = false;
};

struct DecimalOptions {
  std::string left;
  std::string operation;
  std::string right;
  bool json = false;
};

struct MessageOptions {
  std::vector<std::string> numbers;
  bool json = false;
};

struct FormatsOptions {
  bool json = false;
};

struct DateOptions {
  std::string date;
  bool json = false;
};

struct OidOptions {
  std::string bytes;
  bool json = false;
};

struct ParamOptions {
  std::string format;
  std::string text;
  bool json = false;
};

struct BoxesOptions {
  unsigned producers = 2;
  unsigned boxes = 2;
  unsigned timers = 1'000;     // in each box
  unsigned schedules = 1'000;  // in each box
  double seconds = 2;
  bool json = false;
};

// The figures of the numeric columns of a delimited file.
int tableCommand(const TableOptions& options, std::ostream& out, std::ostream& err);

// One exact operation on two decimals.
int decimalCommand(const DecimalOptions& options, std::ostream& out, std::ostream& err);

// The texts of status numbers.
int messageCommand(const MessageOptions& options, std::ostream& out, std::ostream& err);

// The formats of parameters and the tables of the type system.
int formatsCommand(const FormatsOptions& options, std::ostream& out, std::ostream& err);

// A day number, or now, in every form.
int dateCommand(const DateOptions& options, std::ostream& out, std::ostream& err);

// The bytes of an object identifier in every style.
int oidCommand(const OidOptions& options, std::ostream& out, std::ostream& err);

// A parameter built from a text: its bytes, its text and its binary image.
int paramCommand(const ParamOptions& options, std::ostream& out, std::ostream& err);

// Event boxes under load: rates, latencies, lateness of timers.
int boxesCommand(const BoxesOptions& options, std::ostream& out, std::ostream& err);

}  // namespace nomtool

#endif  // NOMTOOL_COMMANDS_H
