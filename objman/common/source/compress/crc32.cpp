// CRC-32: the choice of the inner loop, and the public function.

#include "crc32kernels.h"

#include "sys/compress.h"

#include <algorithm>

namespace nomutil::compress {
namespace {

constexpr char kSource[] = "objman/common/source/compress";

std::uint32_t update(std::uint32_t crc, const std::uint8_t* bytes, std::size_t length) {
  static const auto chosen = (*std::ranges::find_if(allCrc32Kernels(), [](const auto* each) {
                               return each->isUsable();
                             }))->update;
  return chosen(crc, bytes, length);
}

}  // namespace

std::span<const Crc32Kernel* const> allCrc32Kernels() {
  static constexpr const Crc32Kernel* kAll[] = {&kAvx512Crc32, &kClmulCrc32, &kPortableCrc32};
  return kAll;
}

}  // namespace nomutil::compress

using namespace nomutil::compress;

unsigned compute_CRC32(void* data, unsigned* length, unsigned* crc) {
  NOMUTIL_REQUIRE(kSource, length != nullptr && crc != nullptr);
  if (length == nullptr || crc == nullptr) return 0;
  NOMUTIL_REQUIRE(kSource, data != nullptr || *length == 0);
  if (data == nullptr) return *crc;
  return update(*crc, static_cast<const std::uint8_t*>(data), *length);
}
