// Node specifications, the same facts as a network URI with commas between them, as in
// "TCPIP, host, 6005, eth0, 7000", and the one that is kept for the process.

#include "serveruri.h"
#include "uricharacters.h"

#include "sys/messages.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

using namespace nomutil::miscutil;

namespace {

constexpr std::uint32_t kLongestKept = kKoraNoMaximum - 1;

// Usable before main, and never destroyed: it is given back until the process ends.
KoraString<char>& keptSpecification() {
  alignas(KoraString<char>) static unsigned char place[sizeof(KoraString<char>)];
  static KoraString<char>& kept = *new (place) KoraString<char>;
  return kept;
}

}  // namespace

int ServerURIParser::parseServerNodeSpecifications(const char* text) noexcept {
  return _run("parseServerNodeSpecifications", [this, text] {
    return _parseNode(text) == kNoError ? kNoError : kInvalidNetworkSpecification;
  });
}

int ServerURIParser::_parseNode(const char* text) {
  if (text == nullptr || *text == '\0') return _fail(kUriNodeNoText, kInvalidNetworkSpecification);
  const char* position = text;
  _skipSpaces(position);
  const unsigned schemaStart = _errorOffset;
  int status = _copyUntil(position, kComma, _schemaName);
  if (status != kNoError) return status;
  _step(position);
  status = _classify({_schemaName.data(), _schemaName.length()});
  if (status != kNoError) {
    _errorOffset = schemaStart;
    return status;
  }
  _skipSpaces(position);

  const int schemaType = std::exchange(_schemaType, SchemaType_Invalid);
  const bool isPath = isLocalSchema(schemaType);
  status =
      isPath ? _copyUntil(position, kComma | kEnd, _port) : _parseNodeNetwork(position, schemaType);
  if (status != kNoError) return status;
  _skipSpaces(position);
  if (*position != '\0') {
    return _fail(isPath ? kUriNodeTextAfterPath : kUriNodeTextAtEnd, kInvalidNetworkSpecification);
  }
  _schemaType = schemaType;
  _setConnectionText();
  return kNoError;
}

int ServerURIParser::_parseNodeNetwork(const char*& position, int schemaType) {
  if (schemaType != SchemaType_TCPIPv4 && schemaType != SchemaType_TCPIPv6 &&
      schemaType != SchemaType_TCPIPany) {
    return _fail(kUriNodeNoNetwork, kInvalidNetworkSpecification);
  }
  constexpr HostForm kHost = {kComma, kComma, kUriNodeBracketNotIPv6, kUriNodeBracketOpen};
  int status = _parseHost(position, schemaType, kHost);
  if (status != kNoError) return status;
  if (*position != ',') return _fail(kUriNodeNoPort, kInvalidNetworkSpecification);

  // The port, and where commas follow, what is set of this side.
  for (KoraInlineString* field : {&_port, &_localInterface, &_localPort}) {
    _step(position);
    _skipSpaces(position);
    status = _copyUntil(position, kComma | kEnd, *field);
    if (status != kNoError || *position == '\0') return status;
  }
  _step(position);
  return kNoError;
}

void incSaveServerNodeSpecifications(const char* text) {
  KoraString<char>& kept = keptSpecification();
  const std::size_t length = text == nullptr ? 0 : std::strlen(text);
  try {
    if (length > kLongestKept) throw NomException(kStringTooLong);
    kept.set(text, static_cast<std::uint32_t>(length));
  } catch (const NomException&) {
    kept.clear();
  }
}

const char* incRestoreServerNodeSpecifications() {
  const KoraString<char>& kept = keptSpecification();
  return kept.length() == 0 ? nullptr : kept.data();
}
