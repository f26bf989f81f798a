// The way of a value through parameters: into one, copied to another, and out again.
#ifndef NOMTOOL_PARAMETERCARRIER_H
#define NOMTOOL_PARAMETERCARRIER_H

#include "sys/decimals.h"
#include "sys/params.h"

#include <cstdint>
#include <string>

namespace nomtool {

// The functions return 0 when the value arrives as it was sent, 1002 when another one does, and
// the status of what failed on the way.
class ParameterCarrier {
 public:
  ParameterCarrier() { paramCreateKoraAny(_held, 0); }
  ParameterCarrier(const ParameterCarrier&) = delete;
  ParameterCarrier& operator=(const ParameterCarrier&) = delete;
  ~ParameterCarrier() { paramDeleteKoraAny(_held); }

  // Copied to a second parameter, and from there through its binary image to a third.
  int carry(const DskDecimal& value);

  // From a block to a held string, and out to memory.
  int carry(const std::string& text);

  std::uint64_t arrived() const { return _arrived; }

 private:
  int _judge(int status, bool equal);

  ShortDskParam _held;  // a held string from the first text on, which keeps its memory
  std::string _text;
  std::uint64_t _arrived = 0;
};

}  // namespace nomtool

#endif  // NOMTOOL_PARAMETERCARRIER_H
