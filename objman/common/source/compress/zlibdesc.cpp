// The zlib loader: nine entry points, looked up by name in the library "zlib1" on first use. What
// threads may write at the same time is atomic, and each of them writes the same.

#include "nomos/heap.h"
#include "nomos/lasterror.h"
#include "nomos/log.h"
#include "sys/compress.h"
#include "sys/messages.h"

#include <cstring>
#include <iterator>
#include <string_view>

namespace {

enum EntryIndex : unsigned {
  kUncompress,
  kDeflate,
  kInflate,
  kInflateInit,
  kDeflateInit,
  kCompress2,
  kInflateEnd,
  kDeflateEnd,
  kZlibVersion,
};

constexpr const char* kEntryNames[] = {"uncompress",   "deflate",      "inflate",
                                       "inflateInit_", "deflateInit_", "compress2",
                                       "inflateEnd",   "deflateEnd",   "zlibVersion"};
static_assert(kEntryNames[kZlibVersion] == std::string_view("zlibVersion"));

using StreamEnd = int(ZLibStream*);
using StreamStep = int(ZLibStream*, int);
using InflateInit = int(ZLibStream*, const char*, int);
using DeflateInit = int(ZLibStream*, int, const char*, int);
using Uncompress = int(unsigned char*, unsigned long*, const unsigned char*, unsigned long);
using Compress2 = int(unsigned char*, unsigned long*, const unsigned char*, unsigned long, int);
using ZlibVersion = const char*();

ZLibDesc processWideZlib(true);

}  // namespace

ZLibDesc::ZLibDesc(bool logsFailures) noexcept
    : DllDesc("zlib1"),
      _entryStatus(kNoError),
      _logsFailures(logsFailures),
      _isLoadAttempted(false),
      _isResolved(false) {
  _init();
}

ZLibDesc::~ZLibDesc() {
  XHeap::library().release(_version);
  _init();
}

ZLibDesc& ZLibDesc::processWide() noexcept {
  return processWideZlib;
}

void ZLibDesc::_init() noexcept {
  static_assert(std::size(kEntryNames) == kEntryCount);
  for (std::atomic<Entry>& entry : _entries) entry = nullptr;
  _version = nullptr;
}

bool ZLibDesc::isProcLoaded() noexcept {
  const bool isAttempted = _isLoadAttempted.load(std::memory_order_acquire);
  int status = kNoError;
  if (isAttempted && _isResolved.load(std::memory_order_acquire)) {
    // Without a library each operation fails by itself.
    if (isLoaded()) status = _entryStatus;
  } else {
    if (!isAttempted) {
      load();
      _isResolved = false;
      _isLoadAttempted.store(true, std::memory_order_release);
    }
    status = loadEntryPoints();
    _entryStatus = status;
    _isResolved.store(true, std::memory_order_release);
  }
  if (status == kNoError) return true;
  nosSetLastError(static_cast<unsigned>(status));
  return false;
}

void ZLibDesc::allowLibReload() noexcept {
  _isLoadAttempted = false;
}

int ZLibDesc::loadEntryPoints() noexcept {
  if (!isLoaded()) {
    // Those of a library that has been unloaded are void.
    for (std::atomic<Entry>& entry : _entries) entry = nullptr;
    return kLibraryNotFound;
  }
  int status = kNoError;
  for (unsigned i = 0; i < kEntryCount; ++i) {
    void* const address = getMethod(kEntryNames[i], false);
    _entries[i].store(reinterpret_cast<Entry>(address), std::memory_order_release);
    if (address != nullptr) continue;
    status = kEntryPointNotInLibrary;
    if (_logsFailures) {
      nomLog("ZLibDesc: Unable to get address of '%s' in '%s', O/S Error %d.", kEntryNames[i],
             name(), static_cast<int>(nosGetLastError()));
    }
  }
  _keepVersion();
  return status;
}

// Copies zlib's version once; forgets the copy when zlib does not tell its version.
void ZLibDesc::_keepVersion() noexcept {
  const Entry entry = _entries[kZlibVersion];
  if (entry == nullptr) {
    XHeap::library().release(_version.exchange(nullptr));
    return;
  }
  if (_version != nullptr) return;
  const char* const text = reinterpret_cast<ZlibVersion*>(entry)();
  const std::size_t size = std::strlen(text) + 1;
  auto* const copy = static_cast<char*>(XHeap::library().allocate(size));
  if (copy == nullptr) return;
  std::memcpy(copy, text, size);
  char* none = nullptr;
  if (!_version.compare_exchange_strong(none, copy)) XHeap::library().release(copy);
}

template <class Function, class... Arguments>
int ZLibDesc::_call(unsigned index, Arguments... arguments) const noexcept {
  const Entry entry = _entries[index].load(std::memory_order_acquire);
  if (entry != nullptr) return reinterpret_cast<Function*>(entry)(arguments...);
  nosSetLastError(kEntryPointNotInLibrary);
  return -1;
}

int ZLibDesc::uncompress(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                         unsigned sourceLength) noexcept {
  unsigned long length = *destLength;
  const int code = _call<Uncompress>(kUncompress, dest, &length, source, sourceLength);
  *destLength = static_cast<unsigned>(length);
  return code;
}

int ZLibDesc::deflate(ZLibStream* stream, int flush) noexcept {
  return _call<StreamStep>(kDeflate, stream, flush);
}

int ZLibDesc::inflate(ZLibStream* stream, int flush) noexcept {
  return _call<StreamStep>(kInflate, stream, flush);
}

int ZLibDesc::inflateInit_(ZLibStream* stream, const char* version, int streamSize) noexcept {
  return _call<InflateInit>(kInflateInit, stream, version, streamSize);
}

int ZLibDesc::deflateInit_(ZLibStream* stream, int level, const char* version,
                           int streamSize) noexcept {
  return _call<DeflateInit>(kDeflateInit, stream, level, version, streamSize);
}

int ZLibDesc::compress2(unsigned char* dest, unsigned* destLength, const unsigned char* source,
                        unsigned sourceLength, int level) noexcept {
  unsigned long length = *destLength;
  const int code = _call<Compress2>(kCompress2, dest, &length, source, sourceLength, level);
  *destLength = static_cast<unsigned>(length);
  return code;
}

int ZLibDesc::inflateEnd(ZLibStream* stream) noexcept {
  return _call<StreamEnd>(kInflateEnd, stream);
}

int ZLibDesc::deflateEnd(ZLibStream* stream) noexcept {
  return _call<StreamEnd>(kDeflateEnd, stream);
}

const char* ZLibDesc::zlibVersion() noexcept {
  if (_entries[kZlibVersion] == nullptr) {
    nosSetLastError(kEntryPointNotInLibrary);
    return nullptr;
  }
  const char* const version = _version;
  return version != nullptr ? version : "";
}
