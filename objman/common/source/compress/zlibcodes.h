// What zlib's functions take and return, as its interface numbers it.
#ifndef NOMUTIL_COMPRESS_ZLIBCODES_H
#define NOMUTIL_COMPRESS_ZLIBCODES_H

namespace nomutil::compress {

inline constexpr int kZOk = 0;
inline constexpr int kZStreamEnd = 1;
inline constexpr int kZNoFlush = 0;
inline constexpr int kZFinish = 4;

// The interface that ZLibStream is declared from. zlib compares its first digit, and the size.
inline constexpr char kZVersion[] = "1.2.8";

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_ZLIBCODES_H
