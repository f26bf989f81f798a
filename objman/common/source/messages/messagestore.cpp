// Initialisation, loading and lookup, and the exported functions over the library's one store.
//
// 1002 is copied from the built-in table in place, "Invalid parameter value", without a call. 42 is
// in no table, so that the first lookup of it loads the message file; its text is then made up,
// "42      Undefined message number", with status 1.
#include "messagestore.h"

#include "messagefile.h"

#include "nomos/directory.h"
#include "nomos/file.h"
#include "nomos/heap.h"
#include "nomos/intl.h"
#include "nomos/log.h"
#include "nomos/profile.h"

#include "sys/messages.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace nomutil::messages {
namespace {

constexpr const char* kSource = "objman/common/source/messages";
constexpr const char* kSection = "KoraClient";
constexpr const char* kLanguageKey = "Language";
constexpr const char* kFileName = "kormsgs.";  // and a language code
constexpr const char* kBoxTitle = "KORA Resource";
constexpr std::uint32_t kEnglish = 1033;

// "%-7d" of any number, a blank.
constexpr unsigned kNumberSize = 12;
// What a short number takes of a made-up text: 7 characters and a blank.
constexpr unsigned kPrefixLength = 8;

struct HeapRelease {
  void operator()(char* block) const { XHeap::library().release(block); }
};
using HeapText = std::unique_ptr<char, HeapRelease>;

int copyBounded(char* buffer, unsigned size, const char* text) {
  std::size_t length = std::strlen(text);
  if (size != 0) length = std::min<std::size_t>(length, size - 1);
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
  return kNoError;
}

constexpr std::uint32_t kBlock = 16;

struct Block {
  std::uint64_t low;
  std::uint64_t high;
};
static_assert(sizeof(Block) == kBlock);

void copyBlock(char* target, const char* source, std::uint32_t offset) {
  Block block;
  std::memcpy(&block, source + offset, kBlock);
  std::memcpy(target + offset, &block, kBlock);
}

// Copies the text of an identifier if it stands in its first slot, fits, and has a usual length:
// with its NUL, one to four blocks, of which the last ones end with the text and overlap the first.
// False otherwise, and nothing is done.
bool tryCopyRow(const NosMessageModule& module, std::uint32_t identifier, char* buffer,
                unsigned size) {
  const std::uint32_t number = nosFirstRow(module, identifier);
  if (number == 0) return false;
  const auto [rowIdentifier, length, text] = module.rows[number - 1];
  const std::uint32_t last = length + 1 - kBlock;  // wraps around for a shorter text
  if (rowIdentifier != identifier || size - 1 < length || last > 3 * kBlock) return false;
  copyBlock(buffer, text, 0);
  copyBlock(buffer, text, last);
  if (last > kBlock) {
    copyBlock(buffer, text, kBlock);
    copyBlock(buffer, text, last - kBlock);
  }
  return true;
}

enum class ReadResult { Complete, Unreadable, OutOfMemory };

// Reads the rest of a file into a block of its own.
ReadResult readAll(KoraFile& file, HeapText& bytes, std::size_t& byteCount) {
  constexpr std::uint32_t kFirstCapacity = 1u << 16;
  std::size_t capacity = 0;
  for (byteCount = 0;;) {
    if (byteCount == capacity) {
      capacity = capacity == 0 ? kFirstCapacity : 2 * capacity;
      HeapText larger(static_cast<char*>(XHeap::library().allocate(capacity)));
      if (larger == nullptr) return ReadResult::OutOfMemory;
      if (byteCount != 0) std::memcpy(larger.get(), bytes.get(), byteCount);
      bytes = std::move(larger);
    }
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    const auto room = static_cast<std::uint32_t>(std::min(capacity - byteCount, kMost));
    const std::int64_t count = file.read(bytes.get() + byteCount, room);
    if (count < 0) return ReadResult::Unreadable;
    if (count == 0) return ReadResult::Complete;
    byteCount += static_cast<std::size_t>(count);
  }
}

}  // namespace

// The short way, for nearly every lookup: the built-in table has the text. It calls nothing; what
// it does not settle goes the long way from the start.
int MessageStore::copyText(unsigned number, char* buffer, unsigned size, int severity,
                           unsigned facility) {
  const NosMessageModule* rows = _view.load(std::memory_order_acquire)->rows;
  // A test behind the other: all in one, the compiler makes flags and joins them.
  if (rows == nullptr || number > 0xFFFF) {
    return _copyText(number, buffer, size, severity, facility);
  }
  if (buffer != nullptr) [[likely]] {
    const std::uint32_t identifier = messageIdentifier(number, severity, facility);
    if (tryCopyRow(*rows, identifier, buffer, size)) [[likely]] {
      return kNoError;
    }
  }
  return _copyText(number, buffer, size, severity, facility);
}

int MessageStore::_copyText(unsigned number, char* buffer, unsigned size, int severity,
                            unsigned facility) {
  NOMUTIL_REQUIRE(kSource, buffer != nullptr);
  if (buffer == nullptr) return kNoRoom;
  const View* view = &_current();
  if (view->loadError != nullptr) {
    copyBounded(buffer, size, view->loadError);
    return kRequestedFileNotFound;
  }
  if (number == static_cast<unsigned>(kMessageDirectory)) {
    return copyBounded(buffer, size, view->directory);
  }
  if (number == kNoError) return copyBounded(buffer, size, "No error");
  if (view->builtIn) {
    if (_copyBuiltIn(number, buffer, size, severity, facility)) return kNoError;
    // When this load fails, the number at hand is merely not found: only later lookups give 5003.
    if (view->file == nullptr) view = &_loadFallback();
  }
  return _copyFromFile(*view, number, buffer, size);
}

int MessageStore::pointAtText(unsigned number, char** text) {
  NOMUTIL_REQUIRE(kSource, text != nullptr);
  if (text == nullptr) return kNoRoom;
  const View& view = _current();
  if (view.loadError != nullptr) {
    *text = view.loadError;
    return kRequestedFileNotFound;
  }
  if (number == static_cast<unsigned>(kMessageDirectory)) {
    *text = view.directory;
    return kNoError;
  }
  char* found = view.file == nullptr ? nullptr : view.file->find(static_cast<std::int32_t>(number));
  if (found != nullptr) {
    *text = found;
    return kNoError;
  }
  NOMUTIL_REQUIRE(kSource, *text != nullptr);
  if (*text == nullptr) return kUndefinedMessageNumber;
  const int length = intlSnprintf(*text, kNumberSize, "%-7d", static_cast<std::int32_t>(number));
  (*text)[length] = ' ';
  return kUndefinedMessageNumber;
}

inline const MessageStore::View& MessageStore::_current() {
  const View* view = _view.load(std::memory_order_acquire);
  return view != &kFresh ? *view : _initialise();
}

const MessageStore::View& MessageStore::_initialise() {
  const View* view = nullptr;
  {
    ThreadMutexHold hold(_lock);
    const View* made = _view.load(std::memory_order_relaxed);
    if (made != &kFresh) return *made;
    _readConfiguration();
    if (!_initialView.builtIn) _loadMessageFile(_initialView);
    _setNotFoundText(_initialView);
    view = &_initialView;
    _view.store(view, std::memory_order_release);
  }
  // Shown without the lock, because what shows it may look up texts itself.
  if (view->loadError != nullptr) nosMessageBox(view->loadError, kBoxTitle);
  return *view;
}

// The message file is loaded for a number that the built-in table lacks, once.
const MessageStore::View& MessageStore::_loadFallback() {
  const View* view = nullptr;
  {
    ThreadMutexHold hold(_lock);
    const View* current = _view.load(std::memory_order_relaxed);
    if (current != &_initialView) return *current;
    _fallbackView = _initialView;
    _loadMessageFile(_fallbackView);
    view = &_fallbackView;
    _view.store(view, std::memory_order_release);
  }
  if (view->loadError != nullptr) nosMessageBox(view->loadError, kBoxTitle);
  return *view;
}

void MessageStore::_readConfiguration() {
  const char* configuration = getGlbIniFileName();
  char language[64];
  getIniFileStringParam(kSection, kLanguageKey, "<default>", language, sizeof language,
                        configuration);
  _initialView.builtIn = nosStrcmpi(language, "<default>") == 0 || nosStrcmpi(language, "eng") == 0;
  if (_initialView.builtIn) _initialView.rows = nosReadableRows(_module);

  // The file name takes three characters of the key as it stands: an explicit "<default>" gives
  // kormsgs.<de.
  char code[4];
  getIniFileStringParam(kSection, kLanguageKey, "eng", code, sizeof code, configuration);

  nosGetEnv("KORALANGDIR", _directory, kPathSize);
  if (_directory[0] == '\0') nosGetInstallDirectory(_directory, kPathSize);
  nosNormaliseDirectory(_directory, kPathSize);
  intlSnprintf(_path, kPathSize, "%s%s%s", _directory, kFileName, code);
  _isPathWhole = std::strlen(_directory) + std::strlen(kFileName) + std::strlen(code) < kPathSize;
  _initialView.directory = _directory;
  _initialView.notFound = _notFound;
}

void MessageStore::_loadMessageFile(View& view) {
  const char* failure = _fillFileTable();
  if (failure == nullptr) {
    view.file = &_file;
    return;
  }
  _file.clear();
  intlSnprintf(_loadError, kLoadErrorSize, failure, _path);
  view.loadError = _loadError;
  view.builtIn = false;
  view.rows = nullptr;
}

// Returns null, or the format of the load error text.
const char* MessageStore::_fillFileTable() {
  constexpr const char* kMissing = "file %s is missing";
  constexpr const char* kOutOfMemory = "Memory allocation failure loading file %s";

  KoraFile file;
  // A path that was cut may be that of another file.
  if (!_isPathWhole || !file.openReadOnly(_path)) return kMissing;
  HeapText bytes;
  std::size_t byteCount = 0;
  switch (readAll(file, bytes, byteCount)) {
    case ReadResult::Complete:
      break;
    case ReadResult::Unreadable:
      return kMissing;
    case ReadResult::OutOfMemory:
      return kOutOfMemory;
  }

  MessageFileReader reader({bytes.get(), byteCount});
  MessageLine line;
  if (!reader.next(line)) return "file %s is empty";
  do {
    if (!line.text.empty() && !_file.add(line.number, line.text)) return kOutOfMemory;
  } while (reader.next(line));
  // A file without any text is not empty; this entry stands for its having been read.
  if (_file.empty() && !_file.add(99999999, "End")) return kOutOfMemory;
  return nullptr;
}

// The text of message 1, by the rules of every other lookup: in a message file that lacks it, it
// is the made-up text "1       Undefined message number".
void MessageStore::_setNotFoundText(View& view) {
  char text[kNotFoundSize];
  if (view.loadError != nullptr) {
    copyBounded(text, sizeof text, view.loadError);
  } else if (!view.builtIn ||
             !_copyBuiltIn(kUndefinedMessageNumber, text, sizeof text, kSeverity, kFacility)) {
    if (view.file == nullptr) _loadMessageFile(view);
    _copyFromFile(view, kUndefinedMessageNumber, text, sizeof text);
  }
  std::memcpy(_notFound, text, sizeof text);
}

bool MessageStore::_copyBuiltIn(unsigned number, char* buffer, unsigned size, int severity,
                                unsigned facility) const {
  // Identifiers have 16 bits for the number: one beyond them is no message, whatever they would
  // make of it.
  const auto value = static_cast<std::int32_t>(number);
  if (value < -0x8000 || value > 0xFFFF) return false;
  const std::uint32_t identifier = messageIdentifier(number, severity, facility);
  return nosFormatModuleMessage(_module, identifier, 0, buffer, size) ||
         nosFormatModuleMessage(_module, identifier, kEnglish, buffer, size);
}

int MessageStore::_copyFromFile(const View& view, unsigned number, char* buffer, unsigned size) {
  const auto value = static_cast<std::int32_t>(number);
  const char* text = view.file == nullptr ? nullptr : view.file->find(value);
  if (text != nullptr) return copyBounded(buffer, size, text);

  if (size != 0 && size <= std::strlen(view.notFound) + kPrefixLength) {
    buffer[0] = '\0';
    return kNoRoom;
  }
  intlSnprintf(buffer, size != 0 ? size : kNumberSize + kNotFoundSize, "%-7d %s", value,
               view.notFound);
  return kUndefinedMessageNumber;
}

namespace {

// The library's one store is never destroyed: texts are looked up until the process ends.
union ProcessStore {
  constexpr ProcessStore() noexcept : store(kBuiltInMessages) {}
  ~ProcessStore() {}
  MessageStore store;
};
constinit ProcessStore process;

}  // namespace
}  // namespace nomutil::messages

using namespace nomutil::messages;

// Each exported function calls the store itself: a call from one to another would go the long way
// through the library's export table.

int nomGetMessageText(unsigned number, char* buffer, unsigned size) {
  return process.store.copyText(number, buffer, size, kSeverity, kFacility);
}

int nomGetMessageResourceText(unsigned number, char* buffer, unsigned size, int severity,
                              unsigned facility) {
  return process.store.copyText(number, buffer, size, severity, facility);
}

int NomVBGetMessageText(unsigned number, char* buffer) {
  return process.store.copyText(number, buffer, 0, kSeverity, kFacility);
}

int NomGetMessageText(unsigned number, char** text) {
  return process.store.pointAtText(number, text);
}
