// A server URI of 151 characters with two identifiers and two parameters, beside uriparser, which
// splits the same text and makes its list of parameters. Ours checks the identifiers, copies every
// component and builds the connection text; uriparser's components point into the text, but for the
// parameters. "fresh" includes making the parser, "node" is the node specification with the same
// facts, "bad" a URI that fails at its last character, without the log line's way out.

#include "nomos/testhooks.h"
#include "sys/miscutil.h"

#include <benchmark/benchmark.h>
#include <uriparser/Uri.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

namespace {

const std::string kUri =
    "TCPIPv4://db.data.example.net:6005/0123abcd-4567-89EF-0000-abcdefABCDEF/"
    "ffffffff-0000-1111-2222-333333333333?LocalInterface=192.168.10.2&LocalPort=7000";
const std::string kNode = "TCPIPv4, db.data.example.net, 6005, 192.168.10.2, 7000";

void ours(benchmark::State& state) {
  ServerURIParser parser;
  for (auto _ : state) {
    benchmark::DoNotOptimize(parser.parseServerURI(kUri.c_str()));
    benchmark::ClobberMemory();
  }
}

void oursFresh(benchmark::State& state) {
  for (auto _ : state) {
    ServerURIParser parser;
    benchmark::DoNotOptimize(parser.parseServerURI(kUri.c_str()));
    benchmark::ClobberMemory();
  }
}

void oursNode(benchmark::State& state) {
  ServerURIParser parser;
  for (auto _ : state) {
    benchmark::DoNotOptimize(parser.parseServerNodeSpecifications(kNode.c_str()));
    benchmark::ClobberMemory();
  }
}

void oursBad(benchmark::State& state) {
  nosSetLogSink([](void*, NosLogLevel, const char*) {}, nullptr);
  const std::string text = kUri + "%";
  ServerURIParser parser;
  for (auto _ : state) {
    benchmark::DoNotOptimize(parser.parseServerURI(text.c_str()));
    benchmark::ClobberMemory();
  }
  nosSetLogSink(nullptr, nullptr);
}

// The number of parameters, or -1.
int peer(const std::string& text) {
  UriUriA uri;
  const char* errorPosition;
  if (uriParseSingleUriA(&uri, text.c_str(), &errorPosition) != URI_SUCCESS) return -1;
  UriQueryListA* parameters;
  int count = 0;
  if (uriDissectQueryMallocA(&parameters, &count, uri.query.first, uri.query.afterLast) !=
      URI_SUCCESS) {
    count = -1;
  } else {
    uriFreeQueryListA(parameters);
  }
  uriFreeUriMembersA(&uri);
  return count;
}

void uriparser(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(peer(kUri));
}

bool bothRead() {
  ServerURIParser parser;
  return kUri.size() == 151 && peer(kUri) == 2 && parser.parseServerURI(kUri.c_str()) == 0 &&
         std::strcmp(parser._connectionText.data(), "db.data.example.net,6005,192.168.10.2,7000") ==
             0 &&
         parser.parseServerNodeSpecifications(kNode.c_str()) == 0;
}

}  // namespace

BENCHMARK(ours)->Name("serveruri/ours");
BENCHMARK(uriparser)->Name("serveruri/uriparser");
BENCHMARK(oursFresh)->Name("serverurifresh/ours");
BENCHMARK(uriparser)->Name("serverurifresh/uriparser");
BENCHMARK(oursNode)->Name("serverurinode/ours");
BENCHMARK(oursBad)->Name("serveruribad/ours");

int main(int argc, char** argv) {
  if (!bothRead()) {
    std::cerr << "the two do not read the same URI\n";
    return EXIT_FAILURE;
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
