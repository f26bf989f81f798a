// The locale of the calling thread: the system's own, which other code of the thread follows too.
// 1033, English of the United States, on a system of that language.

#include "nomos/locale.h"

#include <windows.h>

unsigned nosGetThreadLocale() {
  return GetThreadLocale();
}
void nosSetThreadLocale(unsigned locale) {
  SetThreadLocale(locale);
}
