// Where the server is: the server URI of a client or node, its comma-separated node specification,
// a node specification kept for the process, and the server settings of the configuration.
//
//   uri      = keyword / "File://" path [ "?" blanks ]
//            / schema "://" host ":" port "/" uuid [ "/" uuid ] [ "?" [ settings ] ]
//   settings = setting *( "&" setting )           setting = name "=" value
//   node     = blanks tcp "," host "," port [ "," interface [ "," port [ "," ] ] ] blanks
//            / blanks path-schema "," path        where blanks may follow each comma
//
// Keywords, schemas, names and "localhost" are taken in letters of any case. A component has at
// least one character; up to its terminator none may be a blank, a control character, DEL, '%' or
// ','. Characters above 127 are taken as they are. Blanks stand at the end of a node specification
// behind a comma alone.
#ifndef NOMUTIL_SYS_MISCUTIL_H
#define NOMUTIL_SYS_MISCUTIL_H

#include "nomos/korastring.h"
#include "sys/build.h"

#include <cstddef>
#include <string_view>

struct DskParam;

// The checks that a text can fail: X(constant without its kUri, number, words). An identifier that
// is no UUID fails none of these; its check number is 0. 2754 and 2898 are never seen: what comes
// before them lets nothing through.
#define NOMUTIL_URI_CHECK_LIST(X)                                                      \
  X(EndInComponent, 2417, "the text ends inside a component that needs a terminator")  \
  X(BlankInComponent, 2420, "control character or blank inside a component")           \
  X(SignInComponent, 2426, "'%', ',' or DEL inside a component")                       \
  X(EmptyComponent, 2437, "empty component, parameter name or value")                  \
  X(NoSchemaName, 2455, "null or empty schema name")                                   \
  X(UnknownSchema, 2506, "unknown schema name")                                        \
  X(NoText, 2546, "null or empty URI")                                                 \
  X(NoSchemaEnd, 2601, "schema not followed by \"://\"")                               \
  X(TextAfterFile, 2618, "text after a file path and its '?'")                         \
  X(BracketNotIPv6, 2643, "'[' host for a schema other than \"TCPIPv6\"")              \
  X(BracketOpen, 2652, "bracketed host not closed by ']'")                             \
  X(NotLocalhost, 2670, "host other than \"localhost\" for \"HPSM\" or \"KoraLocal\"") \
  X(NoPort, 2676, "no ':' after the host")                                             \
  X(NoIdentifier, 2686, "no '/' after the port")                                       \
  X(UnknownParameter, 2743, "parameter unknown, or not allowed for the schema")        \
  X(NoParameterEnd, 2754, "parameter value not followed by '&' or the end")            \
  X(TextAfterIdentifiers, 2760, "identifiers not followed by '?' or the end")          \
  X(NodeNoText, 2780, "null or empty node specification")                              \
  X(NodeTextAfterPath, 2816, "text after the path of a node specification")            \
  X(NodeBracketNotIPv6, 2824,                                                          \
    "'[' host in a node specification for a schema other than \"TCPIPv6\"")            \
  X(NodeBracketOpen, 2833, "bracketed host of a node specification not closed by ']'") \
  X(NodeNoPort, 2849, "no ',' after the host of a node specification")                 \
  X(NodeTextAtEnd, 2895, "text after the last field of a node specification")          \
  X(NodeNoNetwork, 2898, "schema of a node specification neither a local nor a TCP one")

// kUriEndInComponent and so on.
#define NOMUTIL_URI_CHECK_CONSTANT(name, number, words) inline constexpr int kUri##name = number;
NOMUTIL_URI_CHECK_LIST(NOMUTIL_URI_CHECK_CONSTANT)
#undef NOMUTIL_URI_CHECK_CONSTANT

// Reads one text at a time. A failure comes with a log line that tells the check and the offset and
// nothing of the text, which may hold what is private. Nothing throws: a parser for whose texts the
// heap is exhausted is as a new one, and a function that returns a status returns 1448, or 1035 for
// a component of 4 GiB. A parser belongs to one thread at a time.
class NOMUTIL_API ServerURIParser {
 public:
  static constexpr int SchemaType_Invalid = 0;
  static constexpr int SchemaType_NonURI = 1;  // a keyword
  static constexpr int SchemaType_LocalServer = 2;
  static constexpr int SchemaType_TCPIPv4 = 3;
  static constexpr int SchemaType_TCPIPv6 = 4;
  static constexpr int SchemaType_TCPIPany = 5;
  static constexpr int SchemaType_HPSM = 7;
  static constexpr int SchemaType_KoraLocal = 8;

  static constexpr int ServerType_Invalid = 0;
  static constexpr int ServerType_Remote = 1;
  static constexpr int ServerType_Local = 2;
  static constexpr int ServerType_LocalReadOnly = 3;

  ServerURIParser() noexcept;
  ServerURIParser(const ServerURIParser& other) noexcept;
  ServerURIParser& operator=(const ServerURIParser& other) noexcept;
  ~ServerURIParser();

  // Start anew and read a text that ends with NUL. Return 0; from a URI 1017 for a null or empty
  // text and for an unknown schema, else 3524; from a node specification 3510. After a failure
  // isValid is false, and the other fields hold what was read until then.
  // REQUIRES: text does not lie in this parser.
  int parseServerURI(const char* text) noexcept;
  int parseServerNodeSpecifications(const char* text) noexcept;

  // Sets the schema type, the address family and a remote server by the name of a network schema:
  // TCPIP, TCPIPany, TCPIPv4, TCPIPv6, HPSM or KoraLocal. Returns 0, or 1017 with schema type 0.
  int setSchemaName(const char* name) noexcept;

  // Sets _connectionText, which the transport takes: the path for HPSM and KoraLocal; host, port
  // and what is set of local interface and local port with commas between them for TCP, as in
  // "host,6005,,7000"; nothing for a keyword. Any other schema type is asserted and gives nothing.
  void buildConnectionText() noexcept;

  // What was read, by the schema type: a keyword is no URI.
  bool isValid() const { return _schemaType != SchemaType_Invalid; }
  bool isNonURI() const { return _schemaType == SchemaType_NonURI; }
  bool isLocalServer() const { return _schemaType == SchemaType_LocalServer; }
  bool isTCP() const { return isTCPv4() || isTCPv6() || isTCPany(); }
  bool isTCPv4() const { return _schemaType == SchemaType_TCPIPv4; }
  bool isTCPv6() const { return _schemaType == SchemaType_TCPIPv6; }
  bool isTCPany() const { return _schemaType == SchemaType_TCPIPany; }
  bool isHPSM() const { return _schemaType == SchemaType_HPSM; }
  bool isKoraLocal() const { return _schemaType == SchemaType_KoraLocal; }

  // The characters that were read before the failing one, or before the component that failed as a
  // whole: an identifier, a host, a parameter, the schema of a node specification.
  unsigned getErrorOffset() const { return _errorOffset; }
  // The number of the failed check, or 0.
  int getErrorLine() const { return _errorLine; }

  // What the last parse found, for callers to read.
  int _schemaType = SchemaType_Invalid;
  int _errorLine = 0;
  unsigned _errorOffset = 0;
  const char* _serverTypeName;  // "<invalid>", "remoteServer", "localServer", "localReadOnlyServer"
  KoraInlineString _schemaName;
  KoraInlineString _host;  // an IPv6 address with its brackets
  KoraInlineString _port;  // of a File URI and a local node specification the path
  KoraInlineString _firstUuid;
  KoraInlineString _secondUuid;
  KoraInlineString _localInterface;
  KoraInlineString _localPort;
  KoraInlineString _connectionText;
  int _addressFamily = -1;  // -1 unset, 0 any, 2 IPv4, 23 IPv6
  int _serverType = ServerType_Invalid;

 private:
  struct HostForm;

  void _initialise() noexcept;
  int _copyUntil(const char*& position, unsigned terminators, KoraInlineString& output);
  int _scanUntil(const char*& position, unsigned terminators, std::string_view& component) noexcept;
  void _skipSpaces(const char*& position) noexcept;
  void _step(const char*& position, std::size_t count = 1) noexcept;
  static int _validateUUID(const char* text) noexcept;
  int _fail(int check, int status) noexcept;
  template <class Parse>
  int _run(const char* function, Parse parse) noexcept;
  bool _takeKeyword(std::string_view text) noexcept;
  int _classify(std::string_view name) noexcept;
  int _parseURI(const char* text);
  int _parseFile(const char* position);
  int _parseNetwork(const char* position, int schemaType);
  int _parseHost(const char*& position, int schemaType, const HostForm& form);
  int _parseIdentifier(const char*& position, KoraInlineString& output);
  int _parseParameters(const char*& position, int schemaType);
  int _parseNode(const char* text);
  int _parseNodeNetwork(const char*& position, int schemaType);
  void _setConnectionText();
};

extern "C" {

// Keep a copy of a node specification for the process; null, and a text for which there is no
// memory, keep nothing. What is kept is given back until the next call of the first; null when it
// is empty. One thread at a time may call either.
NOMUTIL_API void incSaveServerNodeSpecifications(const char* text);
NOMUTIL_API const char* incRestoreServerNodeSpecifications();

}  // extern "C"

// Whether the key "EnhancedLocaleSupport" of section "KoraEnvironment" in the global configuration
// file is true, as a DSKBOOLEAN of usage 3; false without the key. The value goes into the
// parameter that result points to when result has format 30, by reference. Returns 0, or 1000 with
// a log line for a null result and a null reference.
NOMUTIL_API int getServerSettings(DskParam* result);

#endif  // NOMUTIL_SYS_MISCUTIL_H
