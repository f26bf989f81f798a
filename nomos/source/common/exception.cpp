// NomException: its destructor anchors the type information in this library, so that the
// exception is caught across library borders.

#include "nomos/exception.h"

NomException::~NomException() = default;

const char* NomException::what() const noexcept {
  return "nomos: a failure with a message number";
}
