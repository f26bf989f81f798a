// Streams that fail are the machine's; what else is thrown is about the data.
#include "runcommand.h"

#include "bytestream.h"
#include "commands.h"
#include "runprogress.h"
#include "storednumber.h"

#include "sys/compress.h"
#include "sys/messages.h"

#include <stdexcept>

namespace nomtool {

int runCommand(std::ostream& err, const std::function<void()>& work) {
  try {
    work();
    return kExitDone;
  } catch (const Interrupted& stop) {
    err << stop.what() << "; no file was changed\n";
    return kExitInterrupted;
  } catch (const StreamFault& fault) {
    err << fault.what() << '\n';
    return kExitUsage;
  } catch (const std::exception& refused) {
    err << refused.what() << '\n';
    return kExitRefused;
  }
}

void requireZlib(const std::string& file) {
  const int status = ZLibDesc::processWide().load();
  if (status == kNoError) return;
  throw std::runtime_error(inputName(file) + ": zlib: " + messageText(status));
}

}  // namespace nomtool
