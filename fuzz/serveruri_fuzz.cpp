// Any texts, each as a server URI and as a node specification. NUL ends a text; a byte above 127
// stands for one of the words below, so that most of what is tried is nearly right.
// Laws: a second reader finds the same in every field; a used parser finds what a new one finds;
// the offset lies inside the text; a failure has one log line, which does not show the text.
#include "serverurireference.h"

#include "nomos/testhooks.h"
#include "sys/miscutil.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using nomfuzz::Reference;

#define FIRST_UUID "0123abcd-4567-89EF-0000-abcdefABCDEF"
const std::string kWords[] = {"TCPIP",
                              "tcpipV6",
                              "TCPIPv4",
                              "TCPIPany",
                              "Hpsm",
                              "KoraLocal",
                              "File",
                              "MultiUser",
                              "://",
                              ":",
                              "/",
                              "?",
                              "[",
                              "]",
                              "[::1]",
                              "localhost",
                              FIRST_UUID,
                              "LocalPort",
                              "=",
                              "&",
                              FIRST_UUID "0",
                              "localinterface",
                              ",",
                              " ",
                              "\t",
                              "%",
                              "\x7F",
                              "\x01",
                              "\xE9",
                              "ffffffff-0000-1111-2222-333333333333",
                              "x",
                              "6005"};
#undef FIRST_UUID

std::string lines;

std::string resultOf(int status, int check, std::size_t offset) {
  return "status " + std::to_string(status) + ", check " + std::to_string(check) + ", offset " +
         std::to_string(offset);
}

std::string shown(const ServerURIParser& parser, int status) {
  std::string all = resultOf(status, parser.getErrorLine(), parser.getErrorOffset());
  all += std::string(" ") + parser._serverTypeName;
  for (const int number : {parser._schemaType, parser._serverType, parser._addressFamily}) {
    all += " " + std::to_string(number);
  }
  for (const KoraString<char>* text :
       {&parser._schemaName, &parser._host, &parser._port, &parser._firstUuid, &parser._secondUuid,
        &parser._localInterface, &parser._localPort, &parser._connectionText}) {
    all += "|" + std::string(text->data(), text->length());
  }
  return all;
}

std::string expectedOf(bool isNode, const std::string& text, std::string& expectedLine) {
  Reference reference;
  reference.text = text;
  Reference::Failure result{0, 0, text.size()};
  try {
    isNode ? reference.node() : reference.uri();
    // What is consumed of a good keyword is nothing.
    if (reference.type == 1) result.offset = 0;
  } catch (const Reference::Failure& thrown) {
    result = thrown;
    if (isNode) result.status = 3510;
  }
  std::string all = resultOf(result.status, result.check, result.offset);
  const char* const function = isNode ? "parseServerNodeSpecifications" : "parseServerURI";
  expectedLine =
      result.status == 0 ? "" : std::string("ServerURIParser::") + function + ": " + all + "\n";
  all += " " + reference.typeName;
  for (const int number : {reference.type, reference.server, reference.family}) {
    all += " " + std::to_string(number);
  }
  for (const std::string* part :
       {&reference.schema, &reference.host, &reference.port, &reference.first, &reference.second,
        &reference.localInterface, &reference.localPort, &reference.connection}) {
    all += "|" + *part;
  }
  return all;
}

void expectSame(const std::string& expected, const std::string& found, const std::string& text) {
  if (expected == found) return;
  std::fprintf(stderr, "%s\nexpected %s\nfound    %s\n", text.c_str(), expected.c_str(),
               found.c_str());
  std::abort();
}

void check(bool isNode, const std::string& text) {
  std::string expectedLine;
  const std::string expected = expectedOf(isNode, text, expectedLine);
  // The exact block lets the sanitizers see what lies beyond.
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  static ServerURIParser used;
  ServerURIParser fresh;
  for (ServerURIParser* const parser : {&fresh, &used}) {
    lines.clear();
    const int status = isNode ? parser->parseServerNodeSpecifications(exact.data())
                              : parser->parseServerURI(exact.data());
    expectSame(expected, shown(*parser, status), text);
    expectSame(expectedLine, lines, text);
  }
  if (fresh.isValid() != (expected.find("status 0,") == 0)) std::abort();
  if (fresh.getErrorOffset() > text.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  nosSetLogSink([](void*, NosLogLevel, const char* line) { lines += std::string(line) + "\n"; },
                nullptr);
  std::string text;
  for (std::size_t i = 0; i <= size; ++i) {
    const unsigned code = i < size ? data[i] : 0;
    if (code >= 128) {
      text += kWords[(code - 128) % std::size(kWords)];
    } else if (code != 0) {
      text += static_cast<char>(code);
    } else {
      check(false, text);
      check(true, text);
      text.clear();
    }
  }
  return 0;
}
