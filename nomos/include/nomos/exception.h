// NomException carries a message number through the libraries; none crosses a public function
// of nomutil.
#ifndef NOMOS_EXCEPTION_H
#define NOMOS_EXCEPTION_H

#include "nomos/export.h"

#include <exception>

class NOMOS_API NomException : public std::exception {
 public:
  // Carries the number of a message.
  explicit NomException(int number) noexcept : _number(number) {}
  ~NomException() override;

  // The message number, as in 1035.
  int number() const noexcept { return _number; }

  // A fixed text; the message store turns the number into the text for people.
  const char* what() const noexcept override;

 private:
  int _number;
};

#endif  // NOMOS_EXCEPTION_H
