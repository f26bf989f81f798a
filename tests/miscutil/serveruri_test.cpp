// Server URIs and node specifications: tables of texts. In them '_' is a blank, '^' a TAB, '~' a
// DEL,
// '#' and '$' are two identifiers and "-" is nothing. A failure is shown as status:check@offset.
// The fuzz target holds the parser against a second reader, in every field.

#include "nomos/testhooks.h"
#include "sys/miscutil.h"

#include "recorder.h"
#include "rows.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <string>
#include <vector>

namespace {

const std::map<char, std::string> kSigns = {{'_', " "},
                                            {'^', "\t"},
                                            {'~', "\x7F"},
                                            {'#', "0123abcd-4567-89EF-0000-abcdefABCDEF"},
                                            {'$', "ffffffff-0000-1111-2222-333333333333"}};

std::string textOf(const std::string& word) {
  std::string text;
  for (const char c : word == "-" ? "" : word) {
    const auto sign = kSigns.find(c);
    text += sign == kSigns.end() ? std::string(1, c) : sign->second;
  }
  return text;
}

int parse(ServerURIParser& parser, bool isNode, const std::string& text) {
  // The exact block lets the sanitizers see what lies beyond.
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  return isNode ? parser.parseServerNodeSpecifications(exact.data())
                : parser.parseServerURI(exact.data());
}

std::string failure(int status, const ServerURIParser& parser) {
  return std::to_string(status) + ":" + std::to_string(parser.getErrorLine()) + "@" +
         std::to_string(parser.getErrorOffset());
}

// All that a parser tells.
std::string shown(const ServerURIParser& parser) {
  std::string all = failure(0, parser) + " " + parser._serverTypeName;
  for (const int number : {parser._schemaType, parser._serverType, parser._addressFamily})
    all += " " + std::to_string(number);
  for (const KoraString<char>* text :
       {&parser._schemaName, &parser._host, &parser._port, &parser._firstUuid, &parser._secondUuid,
        &parser._localInterface, &parser._localPort, &parser._connectionText})
    all += "|" + std::string(text->data(), text->length());
  return all;
}

class ServerURI : public testing::Test {
 protected:
  // The connection text of a good one, its port for a File URI.
  void expectOutcomes(bool isNode, const std::string& table) {
    const auto outcome = [isNode](const nomtest::Row& row) {
      ServerURIParser parser;
      const int status = parse(parser, isNode, textOf(row[0]));
      EXPECT_EQ(status == 0, parser.isValid()) << row[0];
      if (status != 0) return failure(status, parser);
      const auto& result = parser.isLocalServer() ? parser._port : parser._connectionText;
      return result.length() == 0 ? "-" : std::string(result.data(), result.length());
    };
    nomtest::expectRows(2, outcome, table);
  }

  nomtest::Recorder _recorder;
};

TEST_F(ServerURI, GivesAConnectionTextOrTheCheckAndItsPlace) {
  expectOutcomes(false, R"(
      - 1017:2546@0                    singleuser -               localREADonlyServer -
      multiuser_ 3524:2420@9           MultiUserX 3524:2417@10    : 3524:2437@0
      TCPIP 3524:2417@5                TCPIP,x 3524:2426@5        TCP%IP://h 3524:2426@3
      TCPIP:/h:6005/# 3524:2601@5      TCPIP/h 3524:2601@5        TCPIP? 3524:2601@5
      _TCPIP://h:1/# 3524:2420@0       UDP://h:1/# 1017:2506@6    TCPIPv5://h:1/# 1017:2506@10
      tcpip://h:6005/# h,6005          TCPIPany://h:6005/#/$ h,6005   TCPIPv4://h:6005/#? h,6005
      TCPIPv6://[fe80::1]:6005/# [fe80::1],6005                   TCPIPv6://[]:1/# [],1
      TCPIPv6://h:1/# h,1              TCPIPv4://[fe80::1]:1/# 3524:2643@10
      TCPIP://[::1]:1/# 3524:2643@8    HPSM://[::1]:1/# 3524:2643@7
      TCPIPv6://[fe80/1]:1/# 3524:2652@10                         TCPIPv6://[fe80 3524:2417@15
      TCPIPv6://[fe80::1%eth0]:1/# 3524:2426@18                   TCPIPv6://[::1]x:1/# 3524:2676@15
      HPSM://LocalHost:a/# a           KoraLocal://localhost:a/#/$ a
      HPSM://server1:a/# 3524:2670@7   KoraLocal://localhos:a/# 3524:2670@12
      HPSM://localhost/a/# 3524:2676@16     TCPIP://h/# 3524:2676@9    TCPIP://h?x 3524:2676@9
      TCPIP://:1/# 3524:2437@8         TCPIP://host:6005 3524:2417@17
      TCPIP://h:/# 3524:2437@10        TCPIP://h:1?x=1 3524:2686@11   TCPIP://h:1:2/# h,1:2
      TCPIP://h:1/ 3524:2437@12        TCPIP://h:1/#/ 3524:2437@49   TCPIP://h:1/#/? 3524:2437@49
      TCPIP://h:1/#0 3524:0@12         TCPIP://h:1/0123abcd-4567-89EF-0000-abcdefABCDE 3524:0@12
      TCPIP://h:1/0123abcg-4567-89EF-0000-abcdefABCDEF 3524:0@12  TCPIP://h:1/#/#- 3524:0@49
      TCPIP://h:1/0123abcd4-567-89EF-0000-abcdefABCDEF 3524:0@12
      TCPIP://h:1/0123abcd_4567-89EF-0000-abcdefABCDEF 3524:2420@20
      TCPIP://h:1/#/#/ 3524:2760@85    TCPIP://h:1/#/#?_ 3524:2420@86
      TCPIP://h:1/#?LocalPort=7000 h,1,,7000            TCPIP://h:1/#?LOCALINTERFACE=eth0 h,1,eth0
      TCPIP://h:1/#?LocalPort=7&LocalInterface=e&LocalPort=8 h,1,e,8
      TCPIP://h:1/#?LocalPort=7?=/ h,1,,7?=/
      TCPIP://h:1/#?Foo=1 3524:2743@49         TCPIP://h:1/#?LocalPort=1&Foo=1 3524:2743@61
      TCPIP://h:1/#?LocalPort 3524:2417@58     TCPIP://h:1/#?LocalPort= 3524:2437@59
      TCPIP://h:1/#?=1 3524:2437@49            TCPIP://h:1/#?LocalPort=1& 3524:2417@61
      TCPIP://h:1/#?LocalPort=&LocalInterface=e 3524:2437@59
      HPSM://localhost:a/#? a                  HPSM://localhost:a/#?LocalPort=1 3524:2743@56
      HPSM://localhost:a/#?x 3524:2417@57
      file://c:\db c:\db               FILE:///a/b?_^ /a/b        File://a? a
      File://c:\my_db 3524:2420@12     File:// 3524:2437@7        File://?x 3524:2437@7
      File://a?x 3524:2618@9           File://a?_x 3524:2618@10   File://a??_ 3524:2618@9
      TCPIP://h~:1/# 3524:2426@9)");
}

TEST_F(ServerURI, ReadsNodeSpecificationsWithBlanksBehindCommas) {
  expectOutcomes(true, R"(
      - 3510:2780@0                    _ 3510:2417@1              TCPIP 3510:2417@5
      _^TCPIP,^host,_6005 host,6005    ,h,1 3510:2437@0           TCPIP_,h,1 3510:2420@5
      TC%IP,h,1 3510:2426@2            _UDP,h,1 3510:2506@1       _File,h,1 3510:2506@1
      TCPIP,host,6005, 3510:2437@16    TCPIP,host,6005_ 3510:2420@15
      TCPIP,_host,_6005,_,_7000 3510:2437@19      TCPIP,host,6005,eth0,7000, host,6005,eth0,7000
      TCPIP,h,1,e h,1,e                TCPIP,h,1,e, 3510:2437@12  TCPIP,h,1,e,2,_^ h,1,e,2
      TCPIP,h,1,e,2,,  3510:2895@14    TCPIP,h,1,e,2,_x 3510:2895@15
      TCPIP,h 3510:2417@7              TCPIP,,1 3510:2437@6       TCPIP,h, 3510:2437@8
      TCPIP,[::1],1 3510:2824@6        TCPIPv6,_[::1],1 [::1],1   TCPIPv6,[::1,1 3510:2833@8
      TCPIPv6,[::1 3510:2417@12        TCPIPv6,[::1]_,1 3510:2849@13    TCPIPv4,a:/?b,1 a:/?b,1
      TCPIPv6,[a:/?b],1 [a:/?b],1
      HPSM,a/b a/b                     KoraLocal,^_a a            HPSM,a, 3510:2816@6
      HPSM, 3510:2437@5                HPSM,a_ 3510:2420@6        HPSM,~ 3510:2426@5)");
}

// RFC 4122, section 3.
TEST_F(ServerURI, ChecksEveryPlaceOfAnIdentifier) {
  ServerURIParser parser;
  for (std::size_t place = 0; place < 36; ++place) {
    const bool isDash = place == 8 || place == 13 || place == 18 || place == 23;
    for (int code = 1; code < 256; ++code) {
      std::string text = textOf("TCPIP://h:1/#");
      text[12 + place] = static_cast<char>(code);
      const bool isGood = isDash ? code == '-' : std::isxdigit(code) != 0;
      EXPECT_EQ(parse(parser, false, text) == 0, isGood) << text;
      // Others have checks of their own.
      if (isGood || std::isgraph(code) == 0 || text.find_first_of("%,/?", 12) != text.npos)
        continue;
      EXPECT_EQ(failure(3524, parser), "3524:0@12") << text;
    }
  }
}

TEST_F(ServerURI, NeverShowsTheTextInTheLog) {
  ServerURIParser parser;
  parser.parseServerURI("TCPIP://secret host");
  parser.parseServerNodeSpecifications("secret,host");
  parser.setSchemaName("secret");
  std::string all;
  for (const auto& line : _recorder.takeLines()) all += line.text + "\n";
  EXPECT_EQ(all,
            "ServerURIParser::parseServerURI: status 3524, check 2420, offset 14\n"
            "ServerURIParser::parseServerNodeSpecifications: status 3510, check 2506, offset 0\n"
            "ServerURIParser::setSchemaName: status 1017, check 2506\n");
}

// Status, check, schema type, server type, family, what the server is called, predicates.
TEST_F(ServerURI, ClassifiesSchemaNames) {
  const auto classified = [](const nomtest::Row& row) {
    ServerURIParser parser;
    parser._schemaType = parser._serverType = 9;
    const int status = parser.setSchemaName(row[0] == "-" ? nullptr : textOf(row[0]).c_str());
    std::string all;
    for (const int number :
         {status, parser._errorLine, parser._schemaType, parser._serverType, parser._addressFamily})
      all += std::to_string(number) + ",";
    all += parser._serverTypeName;
    for (const bool is : {parser.isTCP(), parser.isTCPv4(), parser.isTCPv6(), parser.isTCPany(),
                          parser.isHPSM(), parser.isKoraLocal()})
      all += is ? '1' : '0';
    return all;
  };
  nomtest::expectRows(2, classified, R"(
      TCPip 0,0,5,1,0,remoteServer100100      TCPIPANY 0,0,5,1,0,remoteServer100100
      tcpipv4 0,0,3,1,2,remoteServer110000    TCPIPv6 0,0,4,1,23,remoteServer101000
      hpsm 0,0,7,1,-1,remoteServer000010      KORAlocal 0,0,8,1,-1,remoteServer000001
      TCPIP_ 1017,2506,0,0,-1,<invalid>000000 - 1017,2455,0,9,-1,<invalid>000000)");
}

TEST_F(ServerURI, AssertsASchemaTypeWithoutAConnectionText) {
  ServerURIParser parser;
  for (const int type : {0, 2, 6, 9}) {
    parse(parser, false, textOf("TCPIP://h:1/#"));
    parser._schemaType = type;
    parser.buildConnectionText();
    EXPECT_EQ(parser._connectionText.length(), 0u);
    const auto assertions = _recorder.takeAssertions();
    ASSERT_EQ(assertions.size(), 1u);
    EXPECT_EQ(assertions[0].file, "objman/common/source/miscutil");
    EXPECT_EQ(assertions[0].expression + assertions[0].kind, "0Assertion failed");
  }
}

TEST_F(ServerURI, IsCopiedWholeAndIsAsNewWhereTheHeapIsExhausted) {
  const std::string host(70, 'h'), fresh = "0:0@0 <invalid> 0 0 -1||||||||";
  const std::string uri = textOf("TCPIPv4://" + host + ":1/#?LocalPort=7");
  ServerURIParser parser;
  // The host and the connection text are on the heap.
  for (std::uint64_t n = 1; n <= 2; ++n) {
    ServerURIParser poor;
    nosFailAllocation(n);
    EXPECT_EQ(parse(poor, false, uri), 1448);
    EXPECT_EQ(shown(poor), fresh);
  }
  nosFailAllocation(0);
  ASSERT_EQ(parse(parser, false, uri), 0);
  const ServerURIParser copy(parser);
  nosFailAllocation(2);
  EXPECT_EQ(shown(ServerURIParser(parser)), fresh);
  nosFailAllocation(0);
  parse(parser, false, "x");
  EXPECT_EQ(shown(copy), "0:0@" + std::to_string(uri.size()) + " remoteServer 3 1 2|TCPIPv4|" +
                             host + "|1|" + textOf("#|||7|") + host + ",1,,7");
}

}  // namespace
