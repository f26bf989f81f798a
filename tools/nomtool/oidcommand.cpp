// The bytes of an object identifier in every style of the library's formatters. The 12 bytes
// 11 00 00 00 00 00 00 00 00 08 40 00 are instance 17 of the transient class 2048: "[2048.17 (t)]".
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/formatters.h"
#include "sys/messages.h"

#include <cstring>
#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

// A record of one of the three kinds, which its size tells.
template <class Record>
const char* format(OidFormatter& formatter, const std::string& bytes) {
  Record record;
  std::memcpy(&record, bytes.data(), sizeof record);
  return formatter.formatOid(record);
}

const char* formatBytes(OidFormatter& formatter, const std::string& bytes) {
  if (bytes.size() == sizeof(DskObjectId)) return format<DskObjectId>(formatter, bytes);
  if (bytes.size() == sizeof(OidKey)) return format<OidKey>(formatter, bytes);
  return format<ShortDskObjectId>(formatter, bytes);
}

}  // namespace

int oidCommand(const OidOptions& options, std::ostream& out, std::ostream& err) {
  const std::optional<std::string> bytes = bytesFromHex(options.bytes);
  if (!bytes || (bytes->size() != sizeof(DskObjectId) && bytes->size() != sizeof(OidKey) &&
                 bytes->size() != sizeof(ShortDskObjectId))) {
    err << inQuotes(options.bytes)
        << ": an identifier has 12, 18 or 22 bytes: " << messageText(kInvalidParameterValue)
        << '\n';
    return kExitRefused;
  }
  OidFormatter general;
  OidFormatter longNames;
  longNames.longLifetimeNames = true;
  OidFormatter full;
  full.alwaysFull = true;
  RelationalDbOidFormatter newer(RelationalDbOidFormatter::kNewerLayout);
  RelationalDbOidFormatter older(RelationalDbOidFormatter::kOlderLayout);
  Custom_Separator_Relational_OID_Formatter separated("_");
  nlohmann::ordered_json styles = {
      {"general", formatBytes(general, *bytes)}, {"long", formatBytes(longNames, *bytes)},
      {"full", formatBytes(full, *bytes)},       {"newer", formatBytes(newer, *bytes)},
      {"older", formatBytes(older, *bytes)},     {"separated", formatBytes(separated, *bytes)}};
  if (options.json) {
    out << styles.dump(2) << '\n';
    return kExitDone;
  }
  for (const auto& [name, text] : styles.items()) {
    out << name << std::string(11 - name.size(), ' ') << text.get<std::string>() << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
