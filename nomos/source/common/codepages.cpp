// The single-byte code page: chosen by the configuration or a test hook, tabulated once and kept.

#include "codepages.h"

#include "nomos/mutex.h"
#include "nomos/profile.h"
#include "nomos/testhooks.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace nomos {
namespace {

using platform::CodePage;

// Tables once loaded stay: readers hold references to them without a lock.
struct Loaded {
  CodePage table;
  unsigned askedFor;
  Loaded* next;
};

constinit ThreadMutex codePageMutex("NosCodePage");
Loaded* loaded NOMOS_GUARDED_BY(codePageMutex) = nullptr;
std::atomic<const CodePage*> current{nullptr};

const CodePage* findOrLoad(unsigned number) NOMOS_REQUIRES(codePageMutex) {
  for (const Loaded* entry = loaded; entry != nullptr; entry = entry->next) {
    if (entry->askedFor == number) return &entry->table;
  }
  auto* const entry = new (std::nothrow) Loaded{};
  if (entry == nullptr) return nullptr;
  if (!platform::loadCodePage(number, entry->table)) {
    delete entry;
    return nullptr;
  }
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

const CodePage* loadConfigured() NOMOS_REQUIRES(codePageMutex) {
  const CodePage* table = findOrLoad(configuredNumber());
  if (table == nullptr) table = findOrLoad(0);
  if (table != nullptr) return table;
  // No system code page is single-byte, or the memory is exhausted: bytes are Latin-1 characters
  // without classes.
  static constinit const CodePage latin1 = [] {
    CodePage page{28591, {}, {}, {}};
    for (unsigned byte = 0; byte < 256; ++byte) {
      page.character[byte] = byte;
      page.lower[byte] = static_cast<std::uint8_t>(byte);
    }
    return page;
  }();
  return &latin1;
}

}  // namespace

const CodePage& currentCodePage() {
  const CodePage* table = current.load(std::memory_order_acquire);
  if (table == nullptr) {
    ThreadMutexHold hold(codePageMutex);
    table = current.load(std::memory_order_relaxed);
    if (table == nullptr) {
      table = loadConfigured();
      current.store(table, std::memory_order_release);
    }
  }
  return *table;
}

bool encodeCharacter(const CodePage& codePage, std::uint32_t character, unsigned char& byte) {
  // Most characters of a Latin code page stand at their own number.
  if (character < 256 && codePage.character[character] == character) {
    byte = static_cast<unsigned char>(character);
    return true;
  }
  for (unsigned i = 128; i < 256; ++i) {
    if (codePage.character[i] == character) {
      byte = static_cast<unsigned char>(i);
      return true;
    }
  }
  byte = '?';
  return false;
}

}  // namespace nomos

bool nosSetCodePage(unsigned codePage) {
  ThreadMutexHold hold(nomos::codePageMutex);
  const nomos::platform::CodePage* const table =
      codePage == 0 ? nomos::loadConfigured() : nomos::findOrLoad(codePage);
  if (table == nullptr) return false;
  nomos::current.store(table, std::memory_order_release);
  return true;
}
