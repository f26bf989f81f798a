// The reader of message files, to which the fuzz program adds laws on any bytes, and the lookup of
// message texts, each test on a store of its own: fresh, with a configuration file and a message
// directory made for it.
#include "messages/messagestore.h"

#include "messages/messagefile.h"

#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include "sys/messages.h"

#include "support/recorder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace nomutil::messages {
namespace {

// The message lines of a file as "number=text;".
std::string readLines(const std::string& bytes) {
  std::string lines;
  MessageFileReader reader(bytes);
  for (MessageLine line; reader.next(line);) {
    lines += std::to_string(line.number) + '=' + std::string(line.text) + ';';
  }
  return lines;
}

TEST(MessageFile, ReadsLinesByItsGrammar) {
  const std::tuple<std::string, std::string, const char*> kRows[] = {
      {"\n\r\n \t\v\f\r\n// 1 \"a\"\n \t//\n4 \"d\"", "4=d;", "blank lines and comments"},
      {"/* 2 \"b\" */ 3 \"c\"\n/ 5 \"e\"\n*/ 6 \"f\"\n", "0=e;0=f;", "which end with their line"},
      {"7 \"g\"\r\n8\"h\"", "7=g;8=h;", "CR LF; a last line without LF"},
      {"9 \"a \"quoted\" word\" // end\n", "9=a \"quoted\" word;", "first to last quote"},
      {"10\n11 \"\n12 \"\"\n", "10=;11=;12=;", "lines that give no text"},
      {" \t+13 \"i\"\n-14 \"j\"\n", "13=i;-14=j;", "leading blanks and signs"},
      {"- 15 \"k\"\n+-16 \"l\"\nx17 \"m\"\n", "0=k;0=l;0=m;", "no digits, no number"},
      {"99999999999999999999999999 \"a\"\n-2147483649 \"b\"\n", "2147483647=a;-2147483648=b;",
       "both clamped"},
      {std::string("18 \"o\0p\"\n19 \"q\"\n", 16), "18=;19=q;", "NUL ends its line"},
  };
  for (const auto& [bytes, lines, note] : kRows) EXPECT_EQ(readLines(bytes), lines) << note;
}

using Answer = std::pair<int, std::string>;

constexpr int kLowest = -2147483647 - 1;

// Looks a number up in a buffer of `size` bytes (0: unlimited), behind which nothing may change.
Answer lookUp(MessageStore& store, int number, unsigned size = 400, int severity = kSeverity,
              unsigned facility = kFacility) {
  std::string bytes(1200, '\x7F');
  const int status =
      store.copyText(static_cast<unsigned>(number), bytes.data(), size, severity, facility);
  const std::size_t end = size == 0 ? std::string_view(bytes.data()).size() + 1 : size;
  EXPECT_EQ(bytes.find_first_not_of('\x7F', end), bytes.npos) << number << " wrote too far";
  return {status, bytes.data()};
}

// Points at the text of a number, from a buffer with text of its own.
Answer pointAt(MessageStore& store, int number) {
  char buffer[] = "........ own text";
  char* text = buffer;
  const int status = store.pointAtText(static_cast<unsigned>(number), &text);
  return {status, text};
}

class MessageStoreTest : public testing::Test {
 protected:
  MessageStoreTest() {
    std::filesystem::create_directory(_folder);
    nosSetGlbIniFileName((_folder / "nomutil.ini").string().c_str());
    nosSetInstallDirectory(_folder.string().c_str());
  }
  ~MessageStoreTest() override {
    nosSetGlbIniFileName(nullptr);
    nosSetInstallDirectory(nullptr);
    std::filesystem::remove_all(_folder);
  }

  void setLanguage(const std::string& value) {
    std::ofstream(_folder / "nomutil.ini") << "[KoraClient]\nLanguage=" << value << '\n';
  }
  void writeMessages(const std::string& language, std::string_view bytes) {
    setLanguage(language);
    std::ofstream(_folder / ("kormsgs." + language), std::ios::binary) << bytes;
  }
  std::string directory() const { return (_folder / "").make_preferred().string(); }
  // What every lookup gives after a failed load; the text has room for 99 characters.
  Answer loadError(const std::string& before, const std::string& after) const {
    return {5003, (before + directory() + after).substr(0, 99)};
  }

  nomtest::Recorder recorder;
  const std::filesystem::path _folder = std::filesystem::temp_directory_path() /
                                        ("messages" + std::to_string(std::random_device()()));
};

TEST_F(MessageStoreTest, LooksInTheBuiltInTableThenInTheFile) {
  const Answer empty = loadError("file ", "kormsgs.fra is empty");
  const std::string longText(350, 'x'), kept(299, 'x'), longOne = "1 \"" + longText + '"';
  const std::string beyond = "70000 \"beyond\"", none = "1002\n1 \"\"";
  const std::tuple<const char*, std::string, int, unsigned, Answer, const char*> kRows[] = {
      {"eng", beyond, 1, 25, {0, "Undefined message number"}, "just enough"},
      {"eng", beyond, 5003, 23, {0, "Requested file not fou"}, "cut to the buffer"},
      {"eng", beyond, 0, 1, {0, ""}, "room for the NUL only"},
      {"eng", beyond, 42, 32, {-100, ""}, "no room for the NUL"},
      {"eng", beyond, 42, 33, {1, "42      Undefined message number"}, "just enough"},
      {"eng", beyond, kLowest, 33, {1, "-2147483648 Undefined message nu"}, "bounded"},
      {"eng", beyond, 66536, 99, {1, "66536   Undefined message number"}, "not its low bits"},
      {"eng", beyond, -64536, 99, {1, "-64536  Undefined message number"}, "nor here"},
      {"eng", beyond, 70000, 99, {0, "beyond"}, "the message file is asked"},
      {"eng", beyond, -32001, 3, {0, directory().substr(0, 2)}, "the directory"},
      {"fra", "// 1002 \"a\"\n\n/* 1 */\n", 1002, 0, empty, "no message line"},
      {"fra", none, 1002, 0, {1, "1002    1       Undefined message number"}, "no text"},
      {"fra", none, 99999999, 0, {0, "End"}, "marks the file as read"},
      {"fra", "7 \"first\"\n7 \"second\"\n", 7, 0, {0, "first"}, "the first wins"},
      {"fra", "0 \"a\"", 0, 0, {0, "No error"}, "whatever the file says"},
      {"fra", "1 \"Non\"", 42, 11, {-100, ""}, "the made-up end is shorter here"},
      {"fra", longOne, 1, 0, {0, longText}, "no bound"},
      {"fra", longOne, kLowest, 0, {1, "-2147483648 " + kept}, "299 characters are kept"},
  };
  for (const auto& [language, file, number, size, answer, note] : kRows) {
    writeMessages(language, file);
    MessageStore store(kBuiltInMessages);
    EXPECT_EQ(lookUp(store, number, size), answer) << number << ": " << note;
    EXPECT_EQ(lookUp(store, number, size), answer) << number << " again: " << note;
  }
}

// Neither a language that the table does not have nor a number; systems tell them apart or not.
TEST(MessageTable, TellsWhatItLacks) {
  char text[2] = "?";
  for (const auto& [number, language] : {std::pair(1002u, 1036u), {42u, 0u}}) {
    const std::uint32_t identifier = messageIdentifier(number, kSeverity, kFacility);
    nosSetLastError(0);
    EXPECT_FALSE(nosFormatModuleMessage(kBuiltInMessages, identifier, language, text, 2));
    const unsigned error = nosGetLastError();
    EXPECT_TRUE(error == 317 || error == 1815) << error;
  }
  EXPECT_STREQ(text, "?");
}

TEST_F(MessageStoreTest, PointsOnlyIntoALoadedFile) {
  writeMessages("eng", "0 \"from the file\"\n1002 \"from the file too\"\n");
  MessageStore store(kBuiltInMessages);
  // The blank behind the number takes the place of its NUL.
  EXPECT_EQ(pointAt(store, 1002), (Answer{1, "1002     own text"})) << "nothing is loaded yet";
  EXPECT_EQ(pointAt(store, kLowest), (Answer{1, "-2147483648  text"}));
  EXPECT_EQ(pointAt(store, -32001), (Answer{0, directory()}));
  EXPECT_EQ(lookUp(store, 42).first, 1) << "loads the file";
  EXPECT_EQ(pointAt(store, 0), (Answer{0, "from the file"}));
  EXPECT_EQ(lookUp(store, 1002), (Answer{0, "Invalid parameter value"})) << "built in comes first";
  EXPECT_EQ(lookUp(store, 1002, 0, 2), (Answer{0, "from the file too"})) << "another severity";
  EXPECT_EQ(lookUp(store, 1002, 0, 1, 257), (Answer{0, "from the file too"})) << "facility";
}

// A load that fails is told in a box, after which every lookup gives the error, also one that the
// box itself makes.
TEST_F(MessageStoreTest, AnswersEverythingWithTheErrorOfAFailedLoad) {
  using Shown = std::pair<MessageStore*, std::string>;
  const auto onBox = [](void* to, const char* text, const char* title) {
    auto& [store, all] = *static_cast<Shown*>(to);
    EXPECT_EQ(lookUp(*store, 1002), (Answer{5003, text}));
    all += std::string(title) + ": " + text;
  };
  const std::tuple<const char*, int, const char*> kLanguages[] = {
      {"<default>", 0, "kormsgs.<de"},  {"<Default>", 0, "kormsgs.<De"}, {"ENG", 0, "kormsgs.ENG"},
      {"english", 5003, "kormsgs.eng"}, {"deu", 5003, "kormsgs.deu"},    {"fr", 5003, "kormsgs.fr"},
  };
  for (const auto& [language, status, file] : kLanguages) {
    setLanguage(language);
    MessageStore store(kBuiltInMessages);
    Shown shown = {&store, ""};
    nosSetMessageBoxSink(onBox, &shown);
    EXPECT_EQ(lookUp(store, 1002).first, status) << language;
    EXPECT_EQ(lookUp(store, 42).first, status == 0 ? 1 : 5003) << language;
    const Answer error = loadError("file ", std::string(file) + " is missing");
    if (status != 0) std::ofstream(_folder / file) << "42 \"comes too late\"\n";
    for (const int number : {42, 1002, 0, 1, -32001}) EXPECT_EQ(lookUp(store, number), error);
    EXPECT_EQ(lookUp(store, 1002, 6), (Answer{5003, "file "}));
    EXPECT_EQ(pointAt(store, 1002), error);
    EXPECT_EQ(shown.second, "KORA Resource: " + error.second);
  }
}

// The allocations, each of which fails in its turn: the bytes of the file (twice when it has more
// than 64 KiB), the entries, a text a line, and again the entries for lines 3001 and 4502, where
// the table grows. The one behind the last is never asked for.
TEST_F(MessageStoreTest, ReportsExhaustedMemoryAndKeepsEveryLine) {
  const std::uint64_t before = nosAllocatedBlocks();
  const Answer error = loadError("Memory allocation failure loading file ", "kormsgs.fra");
  const std::pair<int, std::vector<std::uint64_t>> kLinesAndFailures[] = {
      {0, {1, 2, 3, 4}}, {4502, {1, 2, 3, 4, 3003, 3004, 3005, 4505, 4506, 4507, 4508}}};
  for (const auto& [lineCount, failures] : kLinesAndFailures) {
    std::string bytes = "1\n";
    for (int i = 1; i <= lineCount; ++i) bytes += std::to_string(i) + " \"message line\"\n";
    writeMessages("fra", bytes);
    for (const std::uint64_t failure : failures) {
      MessageStore store(kBuiltInMessages);
      nosFailAllocation(failure);
      const bool isLast = failure == failures.back();
      EXPECT_EQ(lookUp(store, 1) == error, !isLast)
          << lineCount << " lines, allocation " << failure;
      nosFailAllocation(0);
      EXPECT_EQ(nosAllocatedBlocks() == before, !isLast) << "allocation " << failure;
      for (int line = isLast ? lineCount : 0; line > 0; --line) {
        EXPECT_EQ(lookUp(store, line), (Answer{0, "message line"})) << line;
      }
    }
    EXPECT_EQ(nosAllocatedBlocks(), before) << "after the last store";
  }
}

// A table without message 1, but with texts of 0 to 199 characters under random numbers, some of
// which meet in the index.
TEST_F(MessageStoreTest, CopiesTextsOfEveryLengthAndFallsBackForMessageOneToo) {
  std::mt19937 random(1);
  std::string text;
  for (int i = 0; i < 199; ++i) text += static_cast<char>('!' + i % 90);
  NosMessageRow rows[200];
  for (unsigned length = 0; length < 200; ++length) {
    const auto number = static_cast<std::uint32_t>(300 * (length + 1) + random() % 300);
    rows[length] = {messageIdentifier(number, 1, 256), length, text.c_str() + 199 - length};
  }
  const NosMessageIndex index(rows);
  // The test object lies in no module, so that on Windows there is no resource.
  const NosMessageModule module = {this, rows, index.slots, index.kSlotShift};
  writeMessages("eng", "1 \"unknown\"\n");
  MessageStore store(module);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      unknown"}));
  for (const auto& row : rows) {
    const auto number = static_cast<int>(row.identifier & 0xFFFF);
    for (const unsigned size : {0u, row.length + 1, row.length, 1u}) {
      if (nosReadableRows(module) == nullptr) continue;
      const std::string kept = std::string(row.text).substr(0, size - 1);
      EXPECT_EQ(lookUp(store, number, size), (Answer{0, kept})) << row.length << ", " << size;
      if (number < 0x8000) continue;
      EXPECT_EQ(lookUp(store, number - 0x10000, size), (Answer{0, kept})) << "with its sign";
    }
  }
}

// The file that the build makes for the installation directory holds every built-in text.
TEST_F(MessageStoreTest, FindsItsOwnFileInTheBuildTree) {
  nosSetInstallDirectory(nullptr);
  MessageStore store(kBuiltInMessages);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      Undefined message number"}));
  EXPECT_TRUE(recorder.takeBoxes().empty()) << "the file is missing";
#define NOMUTIL_NUMBER(name, number, text) number,
  for (const int number : {NOMUTIL_MESSAGE_LIST(NOMUTIL_NUMBER)}) {
    EXPECT_EQ(pointAt(store, number), lookUp(store, number));
  }
#undef NOMUTIL_NUMBER
}

// The first lookups of a store by eight threads that start together: of a number that is built in,
// and of one that is not, which makes one thread load the file, or fail, while the others go on.
TEST_F(MessageStoreTest, ServesTheFirstLookupsOfManyThreads) {
  for (int round = 0; round < 400; ++round) {
    const bool isFailing = round < 200;
    if (round == 200) writeMessages("eng", "42 \"only in the file\"\n");
    MessageStore store(kBuiltInMessages);
    nomtest::inThreads(8, [&](unsigned) {
      EXPECT_TRUE(isFailing || lookUp(store, 1002).second == "Invalid parameter value");
      const Answer answer = lookUp(store, 42);
      EXPECT_TRUE(isFailing ? answer.first != 0 : answer == (Answer{0, "only in the file"}));
      EXPECT_EQ(lookUp(store, 1002).first, isFailing ? 5003 : 0);
    });
    EXPECT_EQ(recorder.takeBoxes().size(), isFailing ? 1u : 0u);
  }
}

// The exported functions refuse null with a report instead of writing through it.
TEST_F(MessageStoreTest, ExportedFunctionsReportNull) {
  EXPECT_EQ(nomGetMessageText(1002, nullptr, 10), kNoRoom);
  EXPECT_EQ(NomGetMessageText(1002, nullptr), kNoRoom);
  char* text = nullptr;
  EXPECT_EQ(NomGetMessageText(77777, &text), 1);
  EXPECT_EQ(recorder.takeExpressions(), "buffer != nullptr; text != nullptr; *text != nullptr");
}

}  // namespace
}  // namespace nomutil::messages
