// The stand-by routines of the retired method: the identity, with a line in the log.

#include "standby.h"

#include "nomos/log.h"

namespace nomutil::compress {

int fakeImplode(const unsigned char* input, unsigned length, StandByWrite write, void* context) {
  nomInfo("compress: faking implode");
  write(context, input, length);
  return 0;
}

int fakeExplode(const unsigned char* input, unsigned length, StandByWrite write, void* context) {
  nomInfo("compress: faking explode");
  write(context, input, length);
  return 0;
}

}  // namespace nomutil::compress
