// The locale of the calling thread, a variable of each thread: the system has none that others
// could set. 1033, English of the United States, until nosSetThreadLocale says otherwise.

#include "nomos/locale.h"

namespace {
thread_local unsigned threadLocale = 1033;
}

unsigned nosGetThreadLocale() {
  return threadLocale;
}
void nosSetThreadLocale(unsigned locale) {
  threadLocale = locale;
}
