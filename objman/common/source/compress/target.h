// The parameter that receives a result, reached through the codes of its data handler, those for
// characters or those for bytes.
#ifndef NOMUTIL_COMPRESS_TARGET_H
#define NOMUTIL_COMPRESS_TARGET_H

#include "nomos/korastring.h"
#include "sys/params.h"

#include <cstdint>

namespace nomutil::compress {

class Target {
 public:
  Target(DskParam* parameter, bool isString) noexcept
      : _parameter(parameter), _isString(isString) {}

  // The object behind the library's own handler, which may be written in place; null for a foreign
  // handler, for a parameter that the handler refuses, and when there is no memory for the object.
  KoraBytes* held() const noexcept;

  // Each returns the handler's status, or 1000 for a parameter without a handler.
  // An append that the library's own handler has no memory for gives 1448, though the handler says
  // 0 when it lacks even the object.
  int append(const unsigned char* bytes, std::uint32_t length) const noexcept;
  int getLength(std::uint32_t& length) const noexcept;
  int setLength(std::uint32_t length) const noexcept;
  int getText(unsigned char*& text) const noexcept;

 private:
  enum Code : std::uint8_t;
  PFormat _format() const noexcept;
  bool _hasHandler() const noexcept;
  bool _isOurs() const noexcept;
  void* _item() const noexcept;
  int _call(Code characterCode, Code byteCode, unsigned char*& data,
            std::uint32_t& count) const noexcept;

  DskParam* _parameter;
  bool _isString;
};

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_TARGET_H
