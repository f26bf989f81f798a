// The exports that move texts and bytes between the caller's buffers and GEOS, and the messages of
// GEOS. A text of 30 characters in a buffer of 10 leaves its first 9 and a NUL there, and asks for
// a size of 31.
#include "loader.h"

#include "nomos/heap.h"
#include "nomos/intl.h"
#include "nomos/log.h"
#include "sys/messages.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

using namespace nomutil::geometry;

namespace {

constexpr const char* kSource = "objman/common/source/geometry";

constexpr unsigned kMessageSize = 256;
constexpr std::size_t kLocalTextSize = 255;

// Other threads may set them at any time; a message goes to whichever is there.
constinit std::atomic<GeometryMessageHandler> noticeHandler{nullptr};
constinit std::atomic<GeometryMessageHandler> errorHandler{nullptr};

// Formats a message of GEOS and hands it to the caller's handler.
void deliver(const std::atomic<GeometryMessageHandler>& to, const char* format, std::va_list values,
             char (&text)[kMessageSize]) {
  intlVsnprintf(text, kMessageSize, format, values);
  const GeometryMessageHandler handler = to.load(std::memory_order_relaxed);
  if (handler != nullptr) handler(text);
}

extern "C" void onNotice(const char* format, ...) {
  char text[kMessageSize];
  std::va_list values;
  va_start(values, format);
  deliver(noticeHandler, format, values, text);
  va_end(values);
  nomInfo("NOM_GEOS [NOTICE]: %s", text);
}

extern "C" void onError(const char* format, ...) {
  char text[kMessageSize];
  std::va_list values;
  va_start(values, format);
  deliver(errorHandler, format, values, text);
  va_end(values);
  nomLog("NOM_GEOS [ERROR]: %s", text);
}

// Copies what fits of a text of `length` characters and ends the whole buffer with a NUL.
void copyText(const char* text, std::size_t length, char* buffer, std::uint32_t size) {
  if (size == 0) return;
  std::memcpy(buffer, text, std::min<std::size_t>(length + 1, size));
  buffer[size - 1] = '\0';
}

struct HeapRelease {
  void operator()(char* block) const { XHeap::library().release(block); }
};

// GEOS sees a copy of the text.
GEOSGeometry* readCopy(EntryType<Export::GEOS_WKTReaderRead>::Function* entry, Context context,
                       GEOSWKTReader* reader, const char* text, std::uint32_t& status) {
  char local[kLocalTextSize];
  char* copy = local;
  const std::size_t size = std::strlen(text) + 1;
  std::unique_ptr<char, HeapRelease> block;
  if (size > sizeof local) {
    block.reset(static_cast<char*>(XHeap::library().allocate(size)));
    copy = block.get();
    if (copy == nullptr) {
      status = kMemoryAllocationFailed;
      return nullptr;
    }
  }
  std::memcpy(copy, text, size);
  GEOSGeometry* const geometry = entry(context, reader, copy);
  if (geometry == nullptr) status = kSpatialLibraryError;
  return geometry;
}

}  // namespace

int GEOS_GetVersion(char* buffer, std::uint32_t size) {
  auto* const entry = findEntry<Export::GEOS_GetVersion>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  const char* const version = entry();
  copyText(version, std::strlen(version), buffer, size);
  return kNoError;
}

GEOSContextHandle_t GEOS_Init(GeometryMessageHandler notice, GeometryMessageHandler error) {
  auto* const entry = findEntry<Export::GEOS_Init>();
  if (entry == nullptr) return nullptr;
  noticeHandler.store(notice, std::memory_order_relaxed);
  errorHandler.store(error, std::memory_order_relaxed);
  return entry(&onNotice, &onError);
}

GEOSGeometry* GEOS_WKTReaderRead(GEOSContextHandle_t context, GEOSWKTReader* reader,
                                 const char* text, std::uint32_t* status) {
  NOMUTIL_REQUIRE(kSource, status != nullptr);
  std::uint32_t unseen;
  std::uint32_t& outcome = status != nullptr ? *status : unseen;
  outcome = kNoError;
  auto* const entry = findEntry<Export::GEOS_WKTReaderRead>();
  if (entry == nullptr) {
    outcome = kEntryPointNotInLibrary;
    return nullptr;
  }
  if (text == nullptr) {
    outcome = kSpatialLibraryError;
    return nullptr;
  }
  return readCopy(entry, context, reader, text, outcome);
}

int GEOS_WKTWriterWrite(GEOSContextHandle_t context, GEOSWKTWriter* writer,
                        const GEOSGeometry* geometry, char* buffer, std::uint32_t* size) {
  NOMUTIL_REQUIRE(kSource, size != nullptr);
  if (size == nullptr) return kBufferSizeTooSmall;
  auto* const entry = findEntry<Export::GEOS_WKTWriterWrite>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  char* const text = entry(context, writer, geometry);
  if (text == nullptr) return kSpatialLibraryError;
  const std::size_t length = std::strlen(text);
  copyText(text, length, buffer, *size);
  GEOS_Free(context, text);
  if (length + 1 <= *size) return kNoError;
  *size = narrowChecked<std::uint32_t>(length + 1);
  return kBufferSizeTooSmall;
}

int GEOS_WKBWriterWrite(GEOSContextHandle_t context, GEOSWKBWriter* writer,
                        const GEOSGeometry* geometry, unsigned char* buffer, std::uint32_t* size) {
  NOMUTIL_REQUIRE(kSource, size != nullptr);
  if (size == nullptr) return kBufferSizeTooSmall;
  auto* const entry = findEntry<Export::GEOS_WKBWriterWrite>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  std::size_t length = 0;
  unsigned char* const image = entry(context, writer, geometry, &length);
  if (image == nullptr) return kSpatialLibraryError;
  const std::uint32_t room = *size;
  *size = narrowChecked<std::uint32_t>(length);
  // Part of the interface: an image that does not fit is not released.
  if (length > room) return kBufferSizeTooSmall;
  if (length != 0) std::memcpy(buffer, image, length);
  GEOS_Free(context, image);
  return kNoError;
}

int GEOS_GeometryType(GEOSContextHandle_t context, const GEOSGeometry* geometry, char* buffer,
                      std::uint32_t size) {
  auto* const entry = findEntry<Export::GEOS_GeometryType>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  char* const text = entry(context, geometry);
  if (text == nullptr) return kSpatialLibraryError;
  copyText(text, std::strlen(text), buffer, size);
  return GEOS_Free(context, text);
}
