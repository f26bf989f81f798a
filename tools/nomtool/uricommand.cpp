// A server URI, or a node specification, in its components; or where and why it is wrong:
//
//   TCPIP://db server:6005/
//             ^
//   control character or blank inside a component (check 2420 at offset 10)
//   Invalid server URI (3524)
#include "commands.h"
#include "markedtext.h"
#include "storednumber.h"

#include "sys/messages.h"
#include "sys/miscutil.h"

#include <nlohmann/json.hpp>
#include <string>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

const char* wordsOf(int check) {
  switch (check) {
#define NOMTOOL_CHECK_WORDS(name, number, words) \
  case number:                                   \
    return words;
    NOMUTIL_URI_CHECK_LIST(NOMTOOL_CHECK_WORDS)
#undef NOMTOOL_CHECK_WORDS
    default:
      return "an identifier is not 8-4-4-4-12 hexadecimal digits";
  }
}

Json componentsOf(const ServerURIParser& parser) {
  Json all = {{"server", parser._serverTypeName}};
  const auto add = [&all](const char* name, const KoraString<char>& text) {
    if (text.length() != 0) all[name] = std::string(text.data(), text.length());
  };
  add("schema", parser._schemaName);
  add("host", parser._host);
  add(parser.isTCP() ? "port" : "path", parser._port);
  add("first", parser._firstUuid);
  add("second", parser._secondUuid);
  add("interface", parser._localInterface);
  add("localPort", parser._localPort);
  if (parser._addressFamily >= 0) all["family"] = parser._addressFamily;
  add("connection", parser._connectionText);
  return all;
}

}  // namespace

int uriCommand(const UriOptions& options, std::ostream& out, std::ostream& err) {
  ServerURIParser parser;
  const char* const text = options.text.c_str();
  const int status =
      options.node ? parser.parseServerNodeSpecifications(text) : parser.parseServerURI(text);
  const int check = parser.getErrorLine();
  const unsigned offset = parser.getErrorOffset();
  if (options.json) {
    Json result = {{"status", status}};
    if (status == kNoError) {
      result.update(componentsOf(parser));
    } else {
      result.update({{"check", check},
                     {"offset", offset},
                     {"words", wordsOf(check)},
                     {"message", messageText(status)}});
    }
    out << result.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    return status == kNoError ? kExitDone : kExitRefused;
  }
  if (status != kNoError) {
    err << marked(text, offset) << wordsOf(check) << " (check " << check << " at offset " << offset
        << ")\n"
        << messageText(status) << '\n';
    return kExitRefused;
  }
  const Json components = componentsOf(parser);
  for (const auto& [name, value] : components.items()) {
    out << name << std::string(12 - name.size(), ' ')
        << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
