// A second reader of server URIs and node specifications: it takes the text one character after the
// other, and throws at the first that is wrong. Slow, and without regard to memory.
#ifndef NOMUTIL_FUZZ_SERVERURIREFERENCE_H
#define NOMUTIL_FUZZ_SERVERURIREFERENCE_H

#include <cctype>
#include <cstddef>
#include <string>

namespace nomfuzz {

inline std::string lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return text;
}

struct Reference {
  struct Failure {
    int status, check;
    std::size_t offset;
  };

  std::string text, schema, host, port, first, second, localInterface, localPort, connection;
  std::string typeName = "<invalid>";
  int type = 0, family = -1, server = 0;
  std::size_t position = 0;

  char next() const { return position < text.size() ? text[position] : '\0'; }
  [[noreturn]] void fail(int check) const { failAt(check, position); }
  [[noreturn]] static void failAt(int check, std::size_t offset) {
    throw Failure{3524, check, offset};
  }
  void skip() {
    while (next() == ' ' || next() == '\t') ++position;
  }

  void copy(const std::string& set, bool endAllowed, std::string& output) {
    for (output.clear();; output += text[position++]) {
      if (position == text.size()) {
        if (!endAllowed) fail(2417);
        break;
      }
      const auto code = static_cast<unsigned char>(text[position]);
      if (code <= 32) fail(2420);
      if (set.find(text[position]) != set.npos) break;
      if (code == '%' || code == ',' || code == 127) fail(2426);
    }
    if (output.empty()) fail(2437);
  }

  int classify(std::size_t offset) {
    const std::string name = lower(schema);
    const bool any = name == "tcpip" || name == "tcpipany";
    const int found = any                 ? 5
                      : name == "tcpipv4" ? 3
                      : name == "tcpipv6" ? 4
                      : name == "hpsm"    ? 7
                                          : 8;
    if (found == 8 && name != "koralocal") throw Failure{1017, 2506, offset};
    if (found < 6) family = any ? 0 : found == 3 ? 2 : 23;
    server = 1;
    typeName = "remoteServer";
    return found;
  }

  void readHost(int found, const std::string& ends, const std::string& bracketEnds, int notIPv6,
                int open) {
    const std::size_t start = position;
    if (next() != '[') return copy(ends, false, host);
    if (found != 4) fail(notIPv6);
    copy("]" + bracketEnds, false, host);
    if (next() != ']') failAt(open, start);
    host += text[position++];
  }

  void identifier(std::string& output) {
    const std::size_t start = position;
    copy("/?", true, output);
    std::string shape = output;
    for (char& c : shape) {
      c = std::isxdigit(static_cast<unsigned char>(c)) ? 'h' : c == '-' ? '-' : '?';
    }
    if (shape != "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh") failAt(0, start);
  }

  void uri() {
    if (text.empty()) throw Failure{1017, 2546, 0};
    const char* const keywords[][2] = {
        {"multiuser", "remoteServer"},           {"singleuser", "localServer"},
        {"readonlyuser", "localReadOnlyServer"}, {"remoteserver", "remoteServer"},
        {"localserver", "localServer"},          {"localreadonlyserver", "localReadOnlyServer"}};
    for (int i = 0; i < 6; ++i) {
      if (lower(text) != keywords[i][0]) continue;
      typeName = keywords[i][1];
      server = i % 3 + 1;
      type = 1;
      return;
    }
    copy(":/?", false, schema);
    if (text.substr(position, 3) != "://") fail(2601);
    position += 3;
    if (lower(schema) == "file") return file();
    const int found = classify(position);
    network(found);
    type = found;
    connect();
  }

  void file() {
    copy("?", true, port);
    if (next() == '?') ++position;
    skip();
    if (position < text.size()) fail(2618);
    typeName = "localServer";
    server = type = 2;
  }

  void network(int found) {
    const std::size_t start = position;
    readHost(found, ":/?", "/?", 2643, 2652);
    if (found >= 7 && lower(host) != "localhost") failAt(2670, start);
    if (next() != ':') fail(2676);
    ++position;
    copy("/?", false, port);
    if (next() != '/') fail(2686);
    ++position;
    identifier(first);
    if (next() == '/') {
      ++position;
      identifier(second);
    }
    if (position == text.size()) return;
    if (next() != '?') fail(2760);
    bool more = ++position < text.size();
    while (more) more = parameter(found);
  }

  bool parameter(int found) {
    const std::size_t start = position;
    std::string name;
    copy("=", false, name);
    name = lower(name);
    if (found >= 7 || (name != "localinterface" && name != "localport")) failAt(2743, start);
    ++position;
    copy("&", true, name == "localport" ? localPort : localInterface);
    return position++ < text.size();
  }

  void node() {
    if (text.empty()) throw Failure{3510, 2780, 0};
    skip();
    const std::size_t start = position;
    copy(",", false, schema);
    const int found = classify(start);
    ++position;
    skip();
    if (found >= 7) {
      copy(",", true, port);
    } else {
      readHost(found, ",", ",", 2824, 2833);
      if (next() != ',') fail(2849);
      std::string* const fields[] = {&port, &localInterface, &localPort};
      for (int i = 0; i < 3 && next() == ','; ++i) {
        ++position;
        skip();
        copy(",", true, *fields[i]);
      }
      if (next() == ',') ++position;
    }
    skip();
    if (position < text.size()) fail(found >= 7 ? 2816 : 2895);
    type = found;
    connect();
  }

  void connect() {
    connection = type >= 7 ? port : host + "," + port;
    if (type < 7 && !(localInterface + localPort).empty()) connection += "," + localInterface;
    if (type < 7 && !localPort.empty()) connection += "," + localPort;
  }
};

}  // namespace nomfuzz

#endif  // NOMUTIL_FUZZ_SERVERURIREFERENCE_H
