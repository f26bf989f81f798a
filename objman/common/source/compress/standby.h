// The two routines that stand by for the retired method of compression, of which the library has no
// program. Nothing calls them.
#ifndef NOMUTIL_COMPRESS_STANDBY_H
#define NOMUTIL_COMPRESS_STANDBY_H

namespace nomutil::compress {

using StandByWrite = void (*)(void* context, const unsigned char* bytes, unsigned length);

// Each logs what it fakes, hands its whole input to write as it is, and returns 0.
int fakeImplode(const unsigned char* input, unsigned length, StandByWrite write, void* context);
int fakeExplode(const unsigned char* input, unsigned length, StandByWrite write, void* context);

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_STANDBY_H
