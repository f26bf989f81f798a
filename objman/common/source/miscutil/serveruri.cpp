// The parser of server URIs. Every check is made where its component is read, and what was consumed
// until then is the offset that callers see: "TCPIP://host:6005" fails check 2417 at offset
// 17, since a '/' must follow the port.

#include "serveruri.h"
#include "uricharacters.h"

#include "sys/messages.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

using namespace nomutil::miscutil;

namespace {

constexpr const char* kInvalidServer = "<invalid>";
constexpr const char* kRemoteServer = "remoteServer";
constexpr const char* kLocalServer = "localServer";
constexpr const char* kReadOnlyServer = "localReadOnlyServer";

struct Keyword {
  std::string_view text;
  const char* serverTypeName;
  int serverType;
};
constexpr Keyword kKeywords[] = {
    {"MultiUser", kRemoteServer, ServerURIParser::ServerType_Remote},
    {"SingleUser", kLocalServer, ServerURIParser::ServerType_Local},
    {"ReadOnlyUser", kReadOnlyServer, ServerURIParser::ServerType_LocalReadOnly},
    {kRemoteServer, kRemoteServer, ServerURIParser::ServerType_Remote},
    {kLocalServer, kLocalServer, ServerURIParser::ServerType_Local},
    {kReadOnlyServer, kReadOnlyServer, ServerURIParser::ServerType_LocalReadOnly},
};

constexpr int kKeepFamily = -2;
struct Schema {
  std::string_view name;
  int schemaType;
  int addressFamily;
};
constexpr Schema kSchemas[] = {
    {"TCPIP", ServerURIParser::SchemaType_TCPIPany, 0},
    {"TCPIPany", ServerURIParser::SchemaType_TCPIPany, 0},
    {"TCPIPv4", ServerURIParser::SchemaType_TCPIPv4, 2},
    {"TCPIPv6", ServerURIParser::SchemaType_TCPIPv6, 23},
    {"HPSM", ServerURIParser::SchemaType_HPSM, kKeepFamily},
    {"KoraLocal", ServerURIParser::SchemaType_KoraLocal, kKeepFamily},
};

constexpr KoraInlineString ServerURIParser::*kTexts[] = {
    &ServerURIParser::_schemaName, &ServerURIParser::_host,
    &ServerURIParser::_port,       &ServerURIParser::_firstUuid,
    &ServerURIParser::_secondUuid, &ServerURIParser::_localInterface,
    &ServerURIParser::_localPort,  &ServerURIParser::_connectionText,
};

std::string_view viewOf(const KoraInlineString& text) {
  return {text.data(), text.length()};
}

std::uint32_t lengthOf(std::string_view text) {
  if (text.size() >= kKoraNoMaximum) throw NomException(kStringTooLong);
  return static_cast<std::uint32_t>(text.size());
}

constexpr std::size_t kUuidLength = 36;

}  // namespace

ServerURIParser::ServerURIParser() noexcept : _serverTypeName(kInvalidServer) {}

ServerURIParser::ServerURIParser(const ServerURIParser& other) noexcept : ServerURIParser() {
  *this = other;
}

ServerURIParser& ServerURIParser::operator=(const ServerURIParser& other) noexcept {
  try {
    for (const auto text : kTexts) this->*text = other.*text;
  } catch (const NomException&) {
    _initialise();
    return *this;
  }
  _schemaType = other._schemaType;
  _errorLine = other._errorLine;
  _errorOffset = other._errorOffset;
  _serverTypeName = other._serverTypeName;
  _addressFamily = other._addressFamily;
  _serverType = other._serverType;
  return *this;
}

ServerURIParser::~ServerURIParser() = default;

void ServerURIParser::_initialise() noexcept {
  for (const auto text : kTexts) {
    if ((this->*text).length() != 0) (this->*text).clear();
  }
  _schemaType = SchemaType_Invalid;
  _errorLine = 0;
  _errorOffset = 0;
  _serverTypeName = kInvalidServer;
  _addressFamily = -1;
  _serverType = ServerType_Invalid;
}

int ServerURIParser::parseServerURI(const char* text) noexcept {
  return _run("parseServerURI", [this, text] { return _parseURI(text); });
}

int ServerURIParser::_parseURI(const char* text) {
  if (text == nullptr || *text == '\0') return _fail(kUriNoText, kInvalidServerMode);
  if (_takeKeyword(text)) return kNoError;

  const char* position = text;
  int status = _copyUntil(position, kColon | kSlash | kQuestion, _schemaName);
  if (status != kNoError) return status;
  if (std::strncmp(position, "://", 3) != 0) return _fail(kUriNoSchemaEnd, kInvalidServerUri);
  _step(position, 3);
  if (equalsIgnoringCase(viewOf(_schemaName), "File")) return _parseFile(position);

  status = _classify(viewOf(_schemaName));
  if (status != kNoError) return status;
  // No type stands while the text may still prove invalid.
  const int schemaType = std::exchange(_schemaType, SchemaType_Invalid);
  status = _parseNetwork(position, schemaType);
  if (status != kNoError) return status;
  _serverTypeName = kRemoteServer;
  _serverType = ServerType_Remote;
  _schemaType = schemaType;
  _setConnectionText();
  return kNoError;
}

bool ServerURIParser::_takeKeyword(std::string_view text) noexcept {
  for (const Keyword& keyword : kKeywords) {
    if (!equalsIgnoringCase(text, keyword.text)) continue;
    _serverTypeName = keyword.serverTypeName;
    _serverType = keyword.serverType;
    _schemaType = SchemaType_NonURI;
    return true;
  }
  return false;
}

int ServerURIParser::_parseFile(const char* position) {
  const int status = _copyUntil(position, kQuestion | kEnd, _port);
  if (status != kNoError) return status;
  if (*position == '?') _step(position);
  _skipSpaces(position);
  if (*position != '\0') return _fail(kUriTextAfterFile, kInvalidServerUri);
  _serverTypeName = kLocalServer;
  _serverType = ServerType_Local;
  _schemaType = SchemaType_LocalServer;
  return kNoError;
}

int ServerURIParser::_parseNetwork(const char* position, int schemaType) {
  constexpr HostForm kHost = {kColon | kSlash | kQuestion, kSlash | kQuestion, kUriBracketNotIPv6,
                              kUriBracketOpen};
  const unsigned hostStart = _errorOffset;
  int status = _parseHost(position, schemaType, kHost);
  if (status != kNoError) return status;
  if (isLocalSchema(schemaType) && !equalsIgnoringCase(viewOf(_host), "localhost")) {
    _errorOffset = hostStart;
    return _fail(kUriNotLocalhost, kInvalidServerUri);
  }

  if (*position != ':') return _fail(kUriNoPort, kInvalidServerUri);
  _step(position);
  status = _copyUntil(position, kSlash | kQuestion, _port);
  if (status != kNoError) return status;

  if (*position != '/') return _fail(kUriNoIdentifier, kInvalidServerUri);
  _step(position);
  status = _parseIdentifier(position, _firstUuid);
  if (status == kNoError && *position == '/') {
    _step(position);
    status = _parseIdentifier(position, _secondUuid);
  }
  if (status != kNoError || *position == '\0') return status;

  if (*position != '?') return _fail(kUriTextAfterIdentifiers, kInvalidServerUri);
  _step(position);
  return *position == '\0' ? kNoError : _parseParameters(position, schemaType);
}

int ServerURIParser::_parseHost(const char*& position, int schemaType, const HostForm& form) {
  if (*position != '[') return _copyUntil(position, form.terminators, _host);
  if (schemaType != SchemaType_TCPIPv6) return _fail(form.notIPv6, kInvalidServerUri);
  const unsigned start = _errorOffset;
  const int status = _copyUntil(position, kBracket | form.bracketTerminators, _host);
  if (status != kNoError) return status;
  if (*position != ']') {
    _errorOffset = start;
    return _fail(form.bracketOpen, kInvalidServerUri);
  }
  _host.append(position, 1);
  _step(position);
  return kNoError;
}

// A good identifier is found by its form; any other is read for what is wrong with it.
int ServerURIParser::_parseIdentifier(const char*& position, KoraInlineString& output) {
  constexpr unsigned kEnds = kSlash | kQuestion | kEnd;
  if (_validateUUID(position) == kNoError && (marksOf(position[kUuidLength]) & kEnds) != 0) {
    output.set(position, kUuidLength);
    _step(position, kUuidLength);
    return kNoError;
  }
  const unsigned start = _errorOffset;
  const int status = _copyUntil(position, kEnds, output);
  if (status != kNoError) return status;
  _errorOffset = start;
  return kInvalidServerUri;
}

int ServerURIParser::_parseParameters(const char*& position, int schemaType) {
  for (;;) {
    const unsigned start = _errorOffset;
    std::string_view name;
    int status = _scanUntil(position, kEquals, name);
    if (status != kNoError) return status;
    const bool isInterface = equalsIgnoringCase(name, "LocalInterface");
    const bool isKnown = isInterface || equalsIgnoringCase(name, "LocalPort");
    if (isLocalSchema(schemaType) || !isKnown) {
      _errorOffset = start;
      return _fail(kUriUnknownParameter, kInvalidServerUri);
    }
    _step(position);

    status = _copyUntil(position, kAmpersand | kEnd, isInterface ? _localInterface : _localPort);
    if (status != kNoError || *position == '\0') return status;
    if (*position != '&') return _fail(kUriNoParameterEnd, kInvalidServerUri);
    _step(position);
  }
}

int ServerURIParser::setSchemaName(const char* name) noexcept {
  const int status = _classify(name == nullptr ? std::string_view() : name);
  if (status != kNoError) {
    nomLog("ServerURIParser::setSchemaName: status %d, check %d", status, _errorLine);
  }
  return status;
}

int ServerURIParser::_classify(std::string_view name) noexcept {
  if (name.empty()) {
    _schemaType = SchemaType_Invalid;
    return _fail(kUriNoSchemaName, kInvalidServerMode);
  }
  for (const Schema& schema : kSchemas) {
    if (!equalsIgnoringCase(name, schema.name)) continue;
    _schemaType = schema.schemaType;
    if (schema.addressFamily != kKeepFamily) _addressFamily = schema.addressFamily;
    _serverType = ServerType_Remote;
    _serverTypeName = kRemoteServer;
    return kNoError;
  }
  _serverTypeName = kInvalidServer;
  _schemaType = SchemaType_Invalid;
  _serverType = ServerType_Invalid;
  return _fail(kUriUnknownSchema, kInvalidServerMode);
}

void ServerURIParser::buildConnectionText() noexcept {
  try {
    _setConnectionText();
  } catch (const NomException&) {
    _connectionText.clear();
  }
}

void ServerURIParser::_setConnectionText() {
  _connectionText.clear();
  if (isNonURI()) return;
  if (isLocalSchema(_schemaType)) {
    _connectionText = _port;
    return;
  }
  if (!isTCP()) {
    NOMUTIL_ASSERT_TEXT("objman/common/source/miscutil", false, "0");
    return;
  }
  const KoraInlineString* const parts[] = {&_host, &_port, &_localInterface, &_localPort};
  const bool hasPort = _localPort.length() != 0;
  const std::size_t count = hasPort ? 4 : _localInterface.length() != 0 ? 3 : 2;
  std::uint64_t length = count - 1;
  for (std::size_t i = 0; i < count; ++i) length += parts[i]->length();
  if (length >= kKoraNoMaximum) throw NomException(kStringTooLong);
  _connectionText.resize(static_cast<std::uint32_t>(length));
  char* to = _connectionText.data();
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) *to++ = ',';
    std::memcpy(to, parts[i]->data(), parts[i]->length());
    to += parts[i]->length();
  }
}

int ServerURIParser::_copyUntil(const char*& position, unsigned terminators,
                                KoraInlineString& output) {
  std::string_view component;
  const int status = _scanUntil(position, terminators, component);
  output.set(component.data(), lengthOf(component));
  return status;
}

// The order of the checks is that of a reader who looks at one character after the other: one that
// is a blank, then a terminator, then refused.
int ServerURIParser::_scanUntil(const char*& position, unsigned terminators,
                                std::string_view& component) noexcept {
  const char* end = position;
  const unsigned stops = terminators | kEnd | kBlank | kRefused;
  unsigned marks;
  while (((marks = marksOf(*end)) & stops) == 0) ++end;
  component = {position, static_cast<std::size_t>(end - position)};
  _step(position, component.size());
  if ((marks & kBlank) != 0) return _fail(kUriBlankInComponent, kInvalidServerUri);
  if ((marks & terminators) == 0) {
    return _fail((marks & kEnd) != 0 ? kUriEndInComponent : kUriSignInComponent, kInvalidServerUri);
  }
  return component.empty() ? _fail(kUriEmptyComponent, kInvalidServerUri) : kNoError;
}

void ServerURIParser::_skipSpaces(const char*& position) noexcept {
  while (*position == ' ' || *position == '\t') _step(position);
}

void ServerURIParser::_step(const char*& position, std::size_t count) noexcept {
  position += count;
  _errorOffset += static_cast<unsigned>(count);
}

// RFC 4122, section 3: groups of 8, 4, 4, 4 and 12 hexadecimal digits. The text may be shorter.
int ServerURIParser::_validateUUID(const char* text) noexcept {
  if (std::memchr(text, '\0', kUuidLength) != nullptr) return kInvalidServerUri;
  const bool hasDashes = text[8] == '-' && text[13] == '-' && text[18] == '-' && text[23] == '-';
  const bool isUuid = hasDashes && areHexDigits(text, text + 4) &&
                      areHexDigits(text + 9, text + 14) && areHexDigits(text + 19, text + 24) &&
                      areHexDigits(text + 28, text + 32);
  return isUuid ? kNoError : kInvalidServerUri;
}

int ServerURIParser::_fail(int check, int status) noexcept {
  _errorLine = check;
  return status;
}
