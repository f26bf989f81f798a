// Compression and checksums: values as self-describing compressed blocks, zlib's one-shot
// functions, and CRC-32. docs/formats/compressedblock.md shows the block.
//
// zlib is not linked: the first function that needs it loads the library "zlib1" (nomos/dlldesc.h).
// Every function may be called from any thread at any time, but for those of ZLibDesc that say
// otherwise. Nothing throws.
#ifndef NOMUTIL_SYS_COMPRESS_H
#define NOMUTIL_SYS_COMPRESS_H

#include "nomos/dlldesc.h"
#include "sys/build.h"
#include "sys/params.h"

#include <atomic>
#include <cstdint>

// ---- CRC-32 ----

// The CRC-32 of IEEE 802.3 (reflected, polynomial EDB88320) over *length bytes, starting from the
// value *crc as it is: nothing is inverted. The usual CRC-32 starts from FFFFFFFF and inverts the
// result ("123456789" gives CBF43926); to go on with it, hand the value over as it came. A length
// of 0 gives *crc. Only reads through its pointers. REQUIRES: no pointer is null; data, which may
// be null for a length of 0, holds *length bytes.
NOMUTIL_API unsigned compute_CRC32(void* data, unsigned* length, unsigned* crc);

// ---- Compressed blocks ----
// The target is a parameter with a data handler (formats 5, 25, 33 and 54; any other gives 1000).
// A status of the handler ends the operation and is returned as it stands. What was appended before
// a failure stays in the target. source and block must not lie in the target's value.
//
// Without zlib, or with one that lacks an entry, the first call returns 1006 or 1008 and appends
// nothing. After a library that was not found, a later compression appends its header byte, logs
// the missing entry and returns 1409; an expansion logs it and returns 1410.

// Methods: the low byte is the letter, the rest the level: 'z' + 256 * 9 compresses best, 'z' alone
// only stores. zlib knows the levels 0 to 9.
inline constexpr int kCompressZlib = 'z';
inline constexpr int kCompressRetired = 'P';  // appends the byte 10 and gives 1112
inline constexpr int kCompressLevelUnit = 256;

// Appends the bytes of source as one block. 1002, and nothing appended, for another letter; 1409,
// with a line in the log, when zlib fails. Whether source is text is of no account.
NOMUTIL_API int doAltCompress(bool isString, const unsigned char* source, unsigned length,
                              int method, DskParam* target);

// Expands a block and appends the result, as characters when isString is true, else as bytes.
// Characters that the block says are wider than a byte, or in another byte order than the first
// one, replace the text of the target instead, each by its low byte; the target stays as it was
// when the expansion fails. 1112 for a block of the retired method; 1002 for another method but
// zlib's, for no bytes, and for characters of a width other than 1, 2 and 4; 1410, with a line in
// the log, for a stream that is damaged or cut, of which everything up to the fault is appended,
// and for one beyond the limit below.
NOMUTIL_API int doAltUncompress(bool isString, unsigned char* block, unsigned length,
                                DskParam* target);

// Limits what doAltUncompress expands one block to, in bytes before characters are narrowed, so
// that a small block from outside cannot take all memory. A block that is larger gives 1410; what
// lies beyond the limit is neither appended nor expanded. It holds for the process, from the next
// call on. 0 is no limit. kUncompressLimitOfConfiguration, the state at the start, is what the key
// "UncompressLimit" of section "NomCompress" of the global configuration file says, as in 64M: no
// limit when it is missing. It is read once, when it is first needed; a value that is no number is
// logged, and counts as stringToUInteger64 takes it.
inline constexpr std::uint64_t kUncompressLimitOfConfiguration = 0xFFFFFFFFFFFFFFFF;
NOMUTIL_API void doSetUncompressLimit(std::uint64_t byteCount);

// The interface before this one; both do nothing and return 1112.
NOMUTIL_API int doCompress(bool isString, const unsigned char* source, unsigned length,
                           DskParam* target);
NOMUTIL_API int doUncompress(bool isString, unsigned char* block, unsigned length, DskParam* target,
                             unsigned* expandedLength);

// ---- zlib ----

// zlib's compress2 and uncompress: *destLength is the room of dest, and then what was written.
// Return zlib's own code (0, -5 when dest is too small, -3 for damaged data ...); 1006 or 1008 when
// zlib cannot be loaded; -1, with the last error 1008, for an entry that is missing ever since.
// Another pointer that is null for a length other than 0 gives -2. REQUIRES: destLength is not
// null.
NOMUTIL_API int doZlibCompress(unsigned char* dest, unsigned* destLength,
                               const unsigned char* source, unsigned sourceLength, int level);
NOMUTIL_API int doZlibUncompress(unsigned char* dest, unsigned* destLength,
                                 const unsigned char* source, unsigned sourceLength);

// Loads zlib now. 0, or the status of a failure, which is told once: 1006 for a library that is not
// there gives 0 from then on, since its operations fail one by one.
NOMUTIL_API int doZlibInit();

// zlib's own stream record, which has the platform's size, since zlib counts in unsigned long.
struct ZLibStream {
  const unsigned char* nextIn;
  unsigned availableIn;
  unsigned long totalIn;
  unsigned char* nextOut;
  unsigned availableOut;
  unsigned long totalOut;
  const char* message;
  void* state;
  void* (*allocate)(void* opaque, unsigned items, unsigned size);
  void (*release)(void* opaque, void* address);
  void* opaque;
  int dataType;
  unsigned long adler;
  unsigned long reserved;
};
static_assert(sizeof(void*) == 8 && (sizeof(unsigned long) == 4 || sizeof(unsigned long) == 8));
static_assert(sizeof(ZLibStream) == (sizeof(unsigned long) == 4 ? 88 : 112));

// The library "zlib1" and its entry points. Threads may race for its first use: each then loads for
// itself, with the same result.
class NOMUTIL_API ZLibDesc : public DllDesc {
 public:
  // Loads nothing yet. logsFailures: a missing entry point is logged, one line for each.
  explicit ZLibDesc(bool logsFailures) noexcept;
  ~ZLibDesc() override;

  // The one that the functions above use; it logs failures.
  static ZLibDesc& processWide() noexcept;

  // Loads the library and looks its entry points up unless both were tried before. False, with the
  // last error set to the status, when this fails, and ever after for a library that lacks an entry
  // point; a library that is not found fails once.
  bool isProcLoaded() noexcept;

  // Makes the next use load again. REQUIRES: no other thread uses the descriptor.
  void allowLibReload() noexcept;

  // Looks the nine entry points up. 0, 1006 when the library is not loaded, 1008 when an entry
  // point is missing.
  int loadEntryPoints() noexcept;

  // Each calls zlib's function of that name; without it, returns -1 and sets the last error to
  // 1008. The lengths are as in doZlibCompress.
  int uncompress(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                 unsigned sourceLength) noexcept;
  int deflate(ZLibStream* stream, int flush) noexcept;
  int inflate(ZLibStream* stream, int flush) noexcept;
  int inflateInit_(ZLibStream* stream, const char* version, int streamSize) noexcept;
  int deflateInit_(ZLibStream* stream, int level, const char* version, int streamSize) noexcept;
  int compress2(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                unsigned sourceLength, int level) noexcept;
  int inflateEnd(ZLibStream* stream) noexcept;
  int deflateEnd(ZLibStream* stream) noexcept;

  // The version as it was when zlib was first found, "" when it could not be kept; null, with the
  // last error 1008, without the entry point. Lives as long as the descriptor.
  const char* zlibVersion() noexcept;

 private:
  static constexpr unsigned kEntryCount = 9;
  using Entry = void (*)();

  void _init() noexcept;
  void _keepVersion() noexcept;
  template <class Function, class... Arguments>
  int _call(unsigned index, Arguments... arguments) const noexcept;

  std::atomic<char*> _version;  // on XHeap::library()
  std::atomic<std::int32_t> _entryStatus;
  const bool _logsFailures;
  std::atomic<bool> _isLoadAttempted;
  std::atomic<bool> _isResolved;
  std::atomic<Entry> _entries[kEntryCount];
};

#endif  // NOMUTIL_SYS_COMPRESS_H
