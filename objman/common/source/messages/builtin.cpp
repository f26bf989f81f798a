// The rows of the built-in table, from the list in sys/messages.h. On Windows the same list gives
// the message-table resource instead, and the rows only mark the module that holds it.
#include "builtin.h"

#include "nomos/status.h"

#include "sys/messages.h"

#include <iterator>

namespace nomutil::messages {
namespace {

#define NOMUTIL_MESSAGE_ROW(name, number, text) \
  {messageIdentifier(number, kSeverity, kFacility), sizeof(text) - 1, text},
constexpr NosMessageRow kRows[] = {NOMUTIL_MESSAGE_LIST(NOMUTIL_MESSAGE_ROW)};
#undef NOMUTIL_MESSAGE_ROW

constexpr bool rowsAscend() {
  for (std::size_t row = 1; row < std::size(kRows); ++row) {
    if (kRows[row - 1].identifier >= kRows[row].identifier) return false;
  }
  return true;
}
static_assert(rowsAscend(), "the list is in ascending order, each number once");
static_assert(kRows[0].identifier == 0x61000000u);

// The operating-system layer lies below the list and has constants of its own.
static_assert(kNosInvalidParameterValue == kInvalidParameterValue);
static_assert(kNosStringTooLong == kStringTooLong);
static_assert(kNosBinaryTooLong == kBinaryTooLong);
static_assert(kNosStringUtf8TooLong == kStringUtf8TooLong);
static_assert(kNosMemoryAllocationFailed == kMemoryAllocationFailed);

constexpr NosMessageIndex kIndex(kRows);

}  // namespace

constinit const NosMessageModule kBuiltInMessages = {kRows, kRows, kIndex.slots, kIndex.kSlotShift};

}  // namespace nomutil::messages
