// A program of somebody else's: it knows the installed headers and libraries alone, is compiled
// as C++17, and includes a system header of the same folder name beside ours.
#include "sys/decimals.h"
#include "sys/messages.h"

#include <sys/types.h>

#include <cstdio>
#include <cstring>

int main() {
  DskDecimal tenth;
  DskDecimal fifth;
  DskDecimal sum;
  char text[64];
  if (!nomDecimalFromString("0.1", &tenth) || !nomDecimalFromString("0.2", &fifth) ||
      !nomDecimalAdd(&tenth, &fifth, &sum) ||
      !nomDecimalToString(&sum, text, sizeof text, sum.scaleFactor)) {
    return 1;
  }
  // 42 is not built in. Without the installed message file, everything later would be 5003.
  char message[64];
  const int unknown = nomGetMessageText(42, message, sizeof message);
  const int status = nomGetMessageText(kInvalidParameterValue, message, sizeof message);
  std::printf("0.1 + 0.2 = %s; 1002: %s\n", text, message);
  return std::strcmp(text, "0.3") == 0 && unknown == 1 && status == 0 &&
                 std::strcmp(message, "Invalid parameter value") == 0
             ? 0
             : 1;
}
