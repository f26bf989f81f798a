// The thread's locale.

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
