// A decimal travels in a parameter: built from text, copied, compared, shown; and what a failure
// says. Exits with 1 when anything goes another way.
#include "sys/decimals.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstdio>

int main() {
  DskDecimal price;
  if (!nomDecimalFromString("19.90", &price)) return 1;
  ShortDskParam sent(DSKDECIMAL, 0, 0);
  sent.setValue(price);

  ShortDskParam received;
  bool equal = false;
  char text[64];
  if (paramcpy(&received, &sent) != kNoError ||
      paramsAreEqual(sent, received, &equal) != kNoError || !equal ||
      paramToString(received, text, sizeof text) != kNoError) {
    return 1;
  }
  std::printf("%s %s\n", getParamFormatName(received.header.format), text);

  DskParam name(DSKSTRING, 0, 0);
  const int status = paramcpy(&name, text, 513u);  // an inline string holds 512 characters
  nomGetMessageText(static_cast<unsigned>(status), text, sizeof text);
  std::printf("%d: %s\n", status, text);
  return status == kStringTooLong ? 0 : 1;
}
