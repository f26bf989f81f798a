// What the parsers of server URIs and of node specifications share.
#ifndef NOMUTIL_MISCUTIL_SERVERURI_H
#define NOMUTIL_MISCUTIL_SERVERURI_H

#include "nomos/exception.h"
#include "nomos/log.h"
#include "sys/miscutil.h"

// Where a host may end, and the checks of one in brackets.
struct ServerURIParser::HostForm {
  unsigned terminators;
  unsigned bracketTerminators;  // beside ']'
  int notIPv6;
  int bracketOpen;
};

// Starts anew, parses, and logs a failure.
template <class Parse>
int ServerURIParser::_run(const char* function, Parse parse) noexcept {
  _initialise();
  int status;
  try {
    status = parse();
  } catch (const NomException& failure) {
    _initialise();
    status = failure.number();
  }
  if (status != 0) {
    nomLog("ServerURIParser::%s: status %d, check %d, offset %u", function, status, _errorLine,
           _errorOffset);
  }
  return status;
}

namespace nomutil::miscutil {

// A schema whose server is on this machine: its connection text is a path.
inline bool isLocalSchema(int schemaType) {
  return schemaType == ServerURIParser::SchemaType_HPSM ||
         schemaType == ServerURIParser::SchemaType_KoraLocal;
}

}  // namespace nomutil::miscutil

#endif  // NOMUTIL_MISCUTIL_SERVERURI_H
