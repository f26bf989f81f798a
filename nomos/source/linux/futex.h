// The futex calls: a wait on 32 bits, here always the low half of an eight-byte atomic word.
#ifndef NOMOS_SOURCE_LINUX_FUTEX_H
#define NOMOS_SOURCE_LINUX_FUTEX_H

#include <atomic>
#include <cstdint>
#include <ctime>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace nomos::platform {

template <class Word>
long futex(const std::atomic<Word>& word, int operation, std::uint32_t value,
           const timespec* limit = nullptr) {
  static_assert(sizeof(word) == 8 && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);
  return syscall(SYS_futex, &word, operation | FUTEX_PRIVATE_FLAG, value, limit, nullptr,
                 FUTEX_BITSET_MATCH_ANY);
}

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_LINUX_FUTEX_H
