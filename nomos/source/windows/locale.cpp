// The thread's locale: the system's own.

#include "nomos/locale.h"

#include <windows.h>

unsigned nosGetThreadLocale() {
  return GetThreadLocale();
}
void nosSetThreadLocale(unsigned locale) {
  SetThreadLocale(locale);
}
