// Message tables as message-table resources, read by FormatMessageA. The module is found by an
// address inside of it; the rows that the caller has in its data are not read.
#include "nomos/messagetable.h"

#include <windows.h>

#include <cstring>

const NosMessageModule* nosReadableRows(const NosMessageModule&) {
  return nullptr;
}

bool nosFormatModuleMessage(const NosMessageModule& module, std::uint32_t identifier,
                            std::uint32_t language, char* buffer, std::uint32_t size) {
  HMODULE handle = nullptr;
  char* text = nullptr;
  DWORD length = 0;
  if (GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          static_cast<LPCSTR>(module.anchor), &handle) != 0) {
    // The text goes to a buffer that the system allocates: in one of the caller's that is too
    // small, the call would fail instead of cutting it.
    length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_HMODULE |
                           FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       handle, identifier, language, reinterpret_cast<LPSTR>(&text), 0, nullptr);
  }
  if (length == 0) {
    // A text that cannot be had for another reason, as in a module without a table, is not there.
    if (GetLastError() != kNosMessageLanguageNotFound) SetLastError(kNosMessageNotFound);
    return false;
  }
  const std::uint32_t kept = size != 0 && size <= length ? size - 1 : length;
  std::memcpy(buffer, text, kept);
  buffer[kept] = '\0';
  LocalFree(text);
  return true;
}
