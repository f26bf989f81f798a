// nomtool uri: the components of a good text; of a bad one the text, a caret under the failing
// character, the check in words and the message.
#include "commandline.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace nomtool {
namespace {

using Outcome = std::tuple<int, std::string, std::string>;  // exit status, results, refusals

Outcome runUri(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "uri");
  std::ostringstream out, err;
  const int status = run(arguments, out, err);
  return {status, out.str(), err.str()};
}

const std::string kUuid = "0123abcd-4567-89EF-0000-abcdefABCDEF";
const std::string kBlank = "control character or blank inside a component (check 2420 at offset ";

TEST(UriCommand, ShowsTheComponents) {
  EXPECT_EQ(runUri({"tcpipv6://[fe80::1]:6005/" + kUuid + "?LocalPort=7"}),
            Outcome(0,
                    "server      remoteServer\nschema      tcpipv6\nhost        [fe80::1]\n"
                    "port        6005\nfirst       " +
                        kUuid + "\nlocalPort   7\nfamily      23\nconnection  [fe80::1],6005,,7\n",
                    ""));
  EXPECT_EQ(runUri({"HPSM, a/b", "--node"}),
            Outcome(0,
                    "server      remoteServer\nschema      HPSM\npath        a/b\n"
                    "connection  a/b\n",
                    ""));
  EXPECT_EQ(runUri({"File:///a/b", "--json"}),
            Outcome(0,
                    "{\n  \"status\": 0,\n  \"server\": \"localServer\",\n  \"schema\": \"File\",\n"
                    "  \"path\": \"/a/b\"\n}\n",
                    ""));
}

// The caret counts characters of UTF-8, not bytes, and stays under a text that is cut.
TEST(UriCommand, PointsAtWhatIsWrong) {
  const std::string uriRefused = "Invalid server URI (3524)\n";
  EXPECT_EQ(
      runUri({"TCPIP://db\x01server:6005/"}),
      Outcome(1, "", "TCPIP://db?server:6005/\n          ^\n" + kBlank + "10)\n" + uriRefused));
  EXPECT_EQ(runUri({"--node", "TCPIP,h,1,\xC3\xA9 ,2"}),
            Outcome(1, "",
                    "TCPIP,h,1,\xC3\xA9 ,2\n           ^\n" + kBlank +
                        "12)\nInvalid network specification (3510)\n"));
  EXPECT_EQ(runUri({"TCPIP://h:1/" + kUuid.substr(1)}),
            Outcome(1, "",
                    "TCPIP://h:1/123abcd-4567-89EF-00...\n            ^\n"
                    "an identifier is not 8-4-4-4-12 hexadecimal digits (check 0 at offset 12)\n" +
                        uriRefused));
  const std::string before(50, 'b'), after(20, 'a');
  EXPECT_EQ(runUri({"File://bbb" + before + "%" + after}),
            Outcome(1, "",
                    "..." + before + "%" + after.substr(1) + "...\n" + std::string(53, ' ') +
                        "^\n'%', ',' or DEL inside a component (check 2426 at offset 60)\n" +
                        uriRefused));
  EXPECT_EQ(runUri({"", "--json"}),
            Outcome(1,
                    "{\n  \"status\": 1017,\n  \"check\": 2546,\n  \"offset\": 0,\n"
                    "  \"words\": \"null or empty URI\",\n"
                    "  \"message\": \"Invalid server mode (1017)\"\n}\n",
                    ""));
}

}  // namespace
}  // namespace nomtool
