// The single-byte code page: chosen by the configuration or a test hook, tabulated once and kept.
// One that the platform lacks gives way to the system's, and that one to Latin-1.

#include "codepages.h"

#include "nomos/log.h"
#include "nomos/mutex.h"
#include "nomos/profile.h"
#include "nomos/testhooks.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <new>
#include <numeric>

namespace nomos {
namespace {

// Tables once loaded stay: readers hold references to them without a lock.
struct Loaded {
  IndexedCodePage table;
  unsigned askedFor;
  Loaded* next;
};

constinit ThreadMutex codePageMutex("NosCodePage");
Loaded* loaded NOMOS_GUARDED_BY(codePageMutex) = nullptr;
std::atomic<const IndexedCodePage*> current{nullptr};

// All code takes the bytes below 80 for ASCII: pages where the letters lie elsewhere (EBCDIC) are
// of no use. The control characters may differ, as they do in the pages of DOS.
bool extendsAscii(const platform::CodePage& table) {
  for (unsigned byte = 0x20; byte < 0x7F; ++byte) {
    if (table.character[byte] != byte) return false;
  }
  return true;
}

void indexCharacters(IndexedCodePage& table) {
  std::iota(std::begin(table.byCharacter), std::end(table.byCharacter), std::uint8_t{128});
  std::stable_sort(std::begin(table.byCharacter), std::end(table.byCharacter),
                   [&table](std::uint8_t left, std::uint8_t right) {
                     return table.character[left] < table.character[right];
                   });
}

const IndexedCodePage* findOrLoad(unsigned number) NOMOS_REQUIRES(codePageMutex) {
  for (const Loaded* entry = loaded; entry != nullptr; entry = entry->next) {
    if (entry->askedFor == number) return &entry->table;
  }
  auto* const entry = new (std::nothrow) Loaded{};
  if (entry == nullptr) return nullptr;
  if (!platform::loadCodePage(number, entry->table) || !extendsAscii(entry->table)) {
    delete entry;
    return nullptr;
  }
  indexCharacters(entry->table);
  entry->askedFor = number;
  entry->next = loaded;
  loaded = entry;
  return &entry->table;
}

// The code page that the configuration names; 0, the system's, when it names none.
unsigned configuredNumber() {
  char value[16];
  getIniFileStringParam("KoraClient", "CodePage", "", value, sizeof value, getGlbIniFileName());
  return static_cast<unsigned>(std::strtoul(value, nullptr, 10));
}

// refused receives the configured number when the page is not to be had, else 0.
const IndexedCodePage* loadConfigured(unsigned& refused) NOMOS_REQUIRES(codePageMutex) {
  const unsigned number = configuredNumber();
  const IndexedCodePage* table = findOrLoad(number);
  refused = table == nullptr ? number : 0;
  if (table == nullptr) table = findOrLoad(0);
  if (table != nullptr) return table;
  // No system code page is single-byte, or the memory is exhausted: bytes are Latin-1 characters
  // without classes.
  static constinit const IndexedCodePage latin1 = [] {
    IndexedCodePage page{{28591, {}, {}, {}}, {}};
    for (unsigned byte = 0; byte < 256; ++byte) {
      page.character[byte] = byte;
      page.lower[byte] = static_cast<std::uint8_t>(byte);
      if (byte >= 128) page.byCharacter[byte - 128] = static_cast<std::uint8_t>(byte);
    }
    return page;
  }();
  return &latin1;
}

// Called without the lock, because a log sink may ask for the code page.
void report(unsigned refused) {
  if (refused != 0) {
    nomLog("CodePage %u is no single-byte page that this system has: its own is used", refused);
  }
}

}  // namespace

const IndexedCodePage& currentCodePage() {
  const IndexedCodePage* table = current.load(std::memory_order_acquire);
  if (table == nullptr) {
    unsigned refused = 0;
    {
      ThreadMutexHold hold(codePageMutex);
      table = current.load(std::memory_order_relaxed);
      if (table == nullptr) {
        table = loadConfigured(refused);
        current.store(table, std::memory_order_release);
      }
    }
    report(refused);
  }
  return *table;
}

bool encodeCharacter(const IndexedCodePage& codePage, std::uint32_t character,
                     unsigned char& byte) {
  // Most characters of a Latin code page stand at their own number.
  if (character < 256 && codePage.character[character] == character) {
    byte = static_cast<unsigned char>(character);
    return true;
  }
  const auto* const end = std::end(codePage.byCharacter);
  const auto* const found =
      std::lower_bound(std::begin(codePage.byCharacter), end, character,
                       [&codePage](std::uint8_t candidate, std::uint32_t wanted) {
                         return codePage.character[candidate] < wanted;
                       });
  const bool isThere = found != end && codePage.character[*found] == character;
  byte = isThere ? *found : '?';
  return isThere;
}

}  // namespace nomos

bool nosSetCodePage(unsigned codePage) {
  unsigned refused = 0;
  {
    ThreadMutexHold hold(nomos::codePageMutex);
    const nomos::IndexedCodePage* const table =
        codePage == 0 ? nomos::loadConfigured(refused) : nomos::findOrLoad(codePage);
    if (table == nullptr) return false;
    nomos::current.store(table, std::memory_order_release);
  }
  nomos::report(refused);
  return true;
}
