// The commands of nomtool. Results go to `out`; what is refused, and why, goes to `err`. Each
// command returns the exit status of the program.
#ifndef NOMTOOL_COMMANDS_H
#define NOMTOOL_COMMANDS_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace nomtool {

enum ExitStatus : int {
  kExitDone = 0,
  kExitRefused = 1,        // some of the data was refused or rounded
  kExitUsage = 2,          // wrong usage, a file that cannot be read, output that cannot be written
  kExitInterrupted = 130,  // by the user, as shells count it
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
  std::string locale;  // a name or an identifier; empty: texts are English
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

// Files; "-" is the standard input or output.
struct StreamOptions {
  std::string input = "-";
  std::string output = "-";
};

struct Base64Options {
  StreamOptions streams;
  bool decode = false;
  bool oneLine = false;
};

struct PlainOptions {
  StreamOptions streams;
  bool markup = false;
};

struct CrcOptions {
  std::vector<std::string> files;
  bool json = false;
};

struct CompressOptions {
  StreamOptions streams;
  int level = 6;  // 0 to 9
};

struct UncompressOptions {
  StreamOptions streams;
};

struct EntitiesOptions {
  std::vector<std::string> entities;  // names or code points; empty: the whole table
  bool json = false;
};

struct NumberOptions {
  std::vector<std::string> numbers;
  bool json = false;
};

struct GeometryOptions {
  std::string left;
  std::string operation;  // empty: tell of the one geometry
  std::string right;
  bool json = false;
};

struct DoctorOptions {
  bool json = false;
};

struct UriOptions {
  std::string text;
  bool node = false;  // a node specification
  bool json = false;
};

struct PackOptions {
  std::string input;
  std::string output;
  std::string delimiter = ",";     // one byte, or "\t" or "tab"
  unsigned workers = 0;            // 0: one for each processor
  unsigned blockBytes = 1u << 19;  // of text, about
  bool quiet = false;
};

struct InspectOptions {
  std::string input;
  unsigned workers = 0;
  bool quiet = false;
  bool json = false;
};

struct UnpackOptions {
  std::string input;
  std::string output = "-";
  unsigned workers = 0;
  bool salvage = false;
  bool quiet = false;
};

// What there is to do with the object of a file, and with its property of a name.
struct ObjectOptions {
  std::string action;  // new, define, set or show
  std::string file;
  std::string parent;  // of a new object: an identifier; empty: none
  bool relational = false;
  std::string name;
  std::string format;
  std::string type;  // of a property: an identifier; empty: that of the format
  std::optional<std::string> value;
  bool null = false;
  std::optional<unsigned> usage;
  bool images = false;
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

// A day number, now, or a text, in every form.
int dateCommand(const DateOptions& options, std::ostream& out, std::ostream& err);

// Dates of a year in the patterns of all locales, or of one, read back. The date does not matter.
int worldCommand(const DateOptions& options, std::ostream& out, std::ostream& err);

// The bytes of an object identifier in every style.
int oidCommand(const OidOptions& options, std::ostream& out, std::ostream& err);

// A parameter built from a text: its bytes, its text and its binary image.
int paramCommand(const ParamOptions& options, std::ostream& out, std::ostream& err);

// Event boxes under load: rates, latencies, lateness of timers.
int boxesCommand(const BoxesOptions& options, std::ostream& out, std::ostream& err);

// A stream as base64 text, or back.
int base64Command(const Base64Options& options, std::ostream& out, std::ostream& err);

// A stream of UTF-8 as plain text.
int plainCommand(const PlainOptions& options, std::ostream& out, std::ostream& err);

// Named character entities.
int entitiesCommand(const EntitiesOptions& options, std::ostream& out, std::ostream& err);

// Byte counts with a suffix.
int numberCommand(const NumberOptions& options, std::ostream& out, std::ostream& err);

// The CRC-32 of files.
int crcCommand(const CrcOptions& options, std::ostream& out, std::ostream& err);

// A stream as a file of compressed blocks, or back.
int compressCommand(const CompressOptions& options, std::ostream& out, std::ostream& err);
int uncompressCommand(const UncompressOptions& options, std::ostream& out, std::ostream& err);

// What GEOS tells of one geometry, or makes of two.
int geometryCommand(const GeometryOptions& options, std::ostream& out, std::ostream& err);

// The optional libraries, and the configuration in force.
int doctorCommand(const DoctorOptions& options, std::ostream& out, std::ostream& err);

// A server URI in its components, or where and why it is wrong.
int uriCommand(const UriOptions& options, std::ostream& out, std::ostream& err);

// Snapshots of delimited files: made, looked into, and turned back into text.
int packCommand(const PackOptions& options, std::ostream& out, std::ostream& err);
int inspectCommand(const InspectOptions& options, std::ostream& out, std::ostream& err);
int unpackCommand(const UnpackOptions& options, std::ostream& out, std::ostream& err);

// A dynamic object in a file: made, changed, shown.
int objectCommand(const ObjectOptions& options, std::ostream& out, std::ostream& err);

}  // namespace nomtool

#endif  // NOMTOOL_COMMANDS_H
