// What of the optional libraries is there, and which configuration is in force. Each library is
// looked for as the library itself looks, so that what is found here is found there.
#include "commands.h"

#include "nomos/dlldesc.h"
#include "nomos/file.h"
#include "nomos/profile.h"
#include "sys/messages.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kTextSize = 1024;

// One optional library. foundAs is empty for one that does not load.
struct Finding {
  std::string library;
  std::string foundAs;
  std::string path;
  std::string version;  // empty when the library does not tell
  std::string without;  // what works when it is missing
};

// A library with an entry that gives its version as text.
Finding probe(const char* library, const char* name, const char* versionEntry,
              const char* without) {
  Finding finding{library, "", "", "", without};
  DllDesc description(name);
  if (description.load() != kNoError) return finding;
  char text[kTextSize];
  description.copyFileName(text, sizeof text);
  finding.foundAs = text;
  description.copyPath(text, sizeof text);
  finding.path = text;
  void* const entry = description.getMethod(versionEntry, false);
  if (entry != nullptr) finding.version = reinterpret_cast<const char* (*)()>(entry)();
  return finding;
}

Finding probeLocales() {
  Finding finding{"locales", "", "", "",
                  "dates in English and the code page 1252 are read and written, no others"};
  char path[kTextSize], version[kTextSize];
  if (nosDescribeLocaleLibrary(path, sizeof path, version, sizeof version)) {
    finding.path = path;
    finding.version = version;
    finding.foundAs = finding.path.substr(finding.path.find_last_of("/\\") + 1);
  }
  return finding;
}

std::vector<Finding> probeAll() {
  return {
      probe("zlib", "zlib1", "zlibVersion", "everything but compressing and uncompressing works"),
      probe("GEOS", "geos_c", "GEOSversion", "everything but geometry works"), probeLocales()};
}

// What the configuration file says, and what comes of it.
struct Configuration {
  std::string file;
  bool isThere;
  std::string language;   // the key as it stands, or eng
  std::string directory;  // of message files
  std::string failure;    // why texts are not in that language; empty when they are
};

Configuration readConfiguration() {
  Configuration found;
  found.file = getGlbIniFileName();
  found.isThere = KoraFile().openReadOnly(found.file.c_str());
  char text[kTextSize];
  getIniFileStringParam("KoraClient", "Language", "eng", text, sizeof text, found.file.c_str());
  found.language = text;
  const auto directory = static_cast<unsigned>(kMessageDirectory);
  const int status = nomGetMessageText(directory, text, sizeof text);
  (status == kNoError ? found.directory : found.failure) = text;
  return found;
}

Json asJson(const std::vector<Finding>& findings, const Configuration& configuration) {
  Json libraries = Json::array();
  for (const Finding& each : findings) {
    libraries.push_back({{"library", each.library},
                         {"found", !each.foundAs.empty()},
                         {"foundAs", each.foundAs},
                         {"version", each.version},
                         {"path", each.path},
                         {"without", each.without}});
  }
  return {{"libraries", libraries},
          {"configuration", {{"file", configuration.file}, {"exists", configuration.isThere}}},
          {"messages",
           {{"language", configuration.language},
            {"directory", configuration.directory},
            {"failure", configuration.failure}}}};
}

std::string padded(const std::string& text, std::size_t width) {
  return text + std::string(text.size() < width ? width - text.size() : 0, ' ') + "  ";
}

void printText(const std::vector<Finding>& findings, const Configuration& configuration,
               std::ostream& out) {
  for (const Finding& each : findings) {
    out << padded(each.library, 13);
    if (each.foundAs.empty()) {
      out << "missing: " << each.without << '\n';
    } else {
      out << each.foundAs << (each.version.empty() ? "" : ", version " + each.version) << '\n'
          << padded("", 13) << each.path << '\n';
    }
  }
  out << padded("configuration", 13) << configuration.file
      << (configuration.isThere ? "" : " (not there)") << '\n'
      << padded("language", 13) << configuration.language << '\n';
  if (configuration.failure.empty()) {
    out << padded("messages", 13) << configuration.directory << '\n';
  }
}

}  // namespace

int doctorCommand(const DoctorOptions& options, std::ostream& out, std::ostream& err) {
  const std::vector<Finding> findings = probeAll();
  const Configuration configuration = readConfiguration();
  if (options.json) {
    out << asJson(findings, configuration).dump(2, ' ', false, Json::error_handler_t::replace)
        << '\n';
  } else {
    printText(findings, configuration, out);
  }
  if (configuration.failure.empty()) return kExitDone;
  err << "language " << configuration.language << ": " << configuration.failure << '\n';
  return kExitRefused;
}

}  // namespace nomtool
