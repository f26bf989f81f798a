// A binary that the library appends to: the target of a compression or an expansion.
#ifndef NOMTOOL_HELDBYTES_H
#define NOMTOOL_HELDBYTES_H

#include "sys/params.h"

#include <cstdint>
#include <string_view>

namespace nomtool {

class HeldBytes {
 public:
  // With room for so many bytes at first.
  explicit HeldBytes(std::uint32_t room) {
    constexpr PUsage kHeld = 2;
    paramCreateKoraBinary(&_parameter, nullptr, 0, room, kHeld);
  }
  ~HeldBytes() { paramDeleteKoraBinary(&_parameter); }
  HeldBytes(const HeldBytes&) = delete;
  HeldBytes& operator=(const HeldBytes&) = delete;

  DskParam* parameter() { return &_parameter; }

  // Until the parameter changes.
  std::string_view view() {
    unsigned char* bytes = nullptr;
    std::uint32_t length = 0;
    DerefBinary(&_parameter, &bytes, &length);
    return {reinterpret_cast<const char*>(bytes), length};
  }

  // Keeps the memory.
  void clear() {
    constexpr std::uint8_t kResize = 35;
    std::uint32_t length = 0;
    koraDataHandler(kResize, &_parameter, nullptr, &length);
  }

 private:
  DskParam _parameter;
};

}  // namespace nomtool

#endif  // NOMTOOL_HELDBYTES_H
