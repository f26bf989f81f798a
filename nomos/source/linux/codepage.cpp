// Code pages through ICU, and the module behind which it lies: libnomos_icu.so beside this library,
// opened when it is first needed. Without the module Windows-1252 remains.

#include "linux/icumodule.h"
#include "linux/libraryfolder.h"
#include "platform.h"

#include <dlfcn.h>
#include <cstring>
#include <new>
#include <string>

namespace nomos::platform {
namespace {

constexpr unsigned kDefault = 1252;

using Loader = bool (*)(unsigned number, CodePage* table);

// Null without the module.
void* openModule() noexcept {
  try {
    const std::string folder = libraryFolder();
    // A name without a folder would be looked for wherever the loader looks.
    if (folder.empty()) return nullptr;
    return dlopen((folder + "libnomos_icu.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

Loader findLoader() noexcept {
  void* const entry = findIcuEntry("nomosIcuLoadCodePage");
  Loader loader;
  static_assert(sizeof loader == sizeof entry);
  std::memcpy(&loader, &entry, sizeof loader);
  return loader;
}

// The bytes 80 to 9F of Windows-1252; 0 stands for the five that have no character of their own.
constexpr std::uint16_t kSpecials[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void fillWindows1252(CodePage& table) {
  table.number = kDefault;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const bool special = byte >= 0x80 && byte < 0xA0 && kSpecials[byte - 0x80] != 0;
    table.character[byte] = special ? kSpecials[byte - 0x80] : byte;
    table.lower[byte] = static_cast<std::uint8_t>(byte);
    const bool upper = (byte >= 'A' && byte <= 'Z') ||
                       (byte >= 0xC0 && byte <= 0xDE && byte != 0xD7) || byte == 0x8A ||
                       byte == 0x8C || byte == 0x8E || byte == 0x9F;
    const bool lower = (byte >= 'a' && byte <= 'z') || (byte >= 0xDF && byte != 0xF7) ||
                       byte == 0x83 || byte == 0x9A || byte == 0x9C || byte == 0x9E ||
                       byte == 0xAA || byte == 0xB5 || byte == 0xBA;
    const bool uncased = byte == 0x88;  // the modifier letter circumflex
    const bool digit = byte >= '0' && byte <= '9';
    table.classes[byte] =
        static_cast<std::uint8_t>((upper ? kAlpha | kUpper : 0) | (lower ? kAlpha | kLower : 0) |
                                  (digit ? kDigit : 0) | (uncased ? kAlpha : 0));
    if (upper) {
      table.lower[byte] = static_cast<std::uint8_t>(byte == 0x9F                  ? 0xFF
                                                    : byte >= 0x80 && byte < 0xA0 ? byte + 0x10
                                                                                  : byte + 0x20);
    }
  }
}

}  // namespace

void* findIcuEntry(const char* name) noexcept {
  static void* const module = openModule();
  return module != nullptr ? dlsym(module, name) : nullptr;
}

bool loadCodePage(unsigned number, CodePage& table) {
  static const Loader loader = findLoader();
  if (number == 0) number = kDefault;
  if (loader != nullptr) return loader(number, &table);
  if (number != kDefault) return false;
  fillWindows1252(table);
  return true;
}

}  // namespace nomos::platform
