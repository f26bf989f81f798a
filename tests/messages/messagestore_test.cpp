// The lookup of message texts, each test on a store of its own: fresh, with a configuration file
// and a message directory made for it.
#include "messages/messagestore.h"

#include "nomos/testhooks.h"

#include "sys/messages.h"

#include "support/recorder.h"

#include <gtest/gtest.h>

#include <barrier>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace nomutil::messages {
namespace {

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

TEST_F(MessageStoreTest, GivesTheBuiltInTexts) {
  MessageStore store(kBuiltInMessages);
  std::istringstream rows(
      "0=No error;1=Undefined message number;1000=Invalid parameter type;1002=Invalid parameter "
      "value;1006=Library not found;1008=Entry point not in library;1112=Feature has been "
      "deprecated;1409=Compress operation failed;1410=Uncompress operation failed;1420=Base64 "
      "Decoding failed;1422=Result of expression overflows Decimal precision;1448=A memory "
      "allocation request failed;3018=A database memory allocation request failed;"
      "3111=Insufficient system resources;5003=Requested file not found;");
  for (std::string number, text; getline(rows, number, '=') && getline(rows, text, ';');) {
    EXPECT_EQ(lookUp(store, std::stoi(number)), (Answer{0, text}));
  }
  EXPECT_TRUE(recorder.takeBoxes().empty()) << "no file is looked for";
}

TEST_F(MessageStoreTest, LooksInTheBuiltInTableThenInTheFile) {
  const Answer empty = loadError("file ", "kormsgs.fra is empty");
  const std::string longText(350, 'x'), kept(299, 'x'), longOne = "1 \"" + longText + '"';
  const std::string beyond = "70000 \"beyond\"", none = "1002\n1 \"\"";
  const std::tuple<const char*, std::string, int, unsigned, Answer, const char*> kRows[] = {
      {"eng", beyond, 42, 32, {-100, ""}, "no room for the NUL"},
      {"eng", beyond, 42, 33, {1, "42      Undefined message number"}, "just enough"},
      {"eng", beyond, kLowest, 33, {1, "-2147483648 Undefined message nu"}, "bounded"},
      {"eng", beyond, kLowest, 0, {1, "-2147483648 Undefined message number"}, "whole"},
      {"eng", beyond, 66536, 99, {1, "66536   Undefined message number"}, "not its low bits"},
      {"eng", beyond, -64536, 99, {1, "-64536  Undefined message number"}, "nor here"},
      {"eng", beyond, 70000, 99, {0, "beyond"}, "the message file is asked"},
      {"eng", beyond, -32001, 3, {0, directory().substr(0, 2)}, "the directory"},
      {"fra", "", 1002, 0, empty, "no line"},
      {"fra", "// 1002 \"a\"\n\n/* 1 */\n", 1002, 0, empty, "no message line"},
      {"fra", none, 1002, 0, {1, "1002    1       Undefined message number"}, "no text"},
      {"fra", none, 99999999, 0, {0, "End"}, "marks the file as read"},
      {"fra", "7 \"first\"\n7 \"second\"\n", 7, 0, {0, "first"}, "the first wins"},
      {"fra", "0 \"a\"", 0, 0, {0, "No error"}, "whatever the file says"},
      {"fra", "1 \"Non\"", 42, 11, {-100, ""}, "the made-up end is shorter here"},
      {"fra", longOne, 1, 0, {0, longText}, "no bound"},
      {"fra", longOne, 42, 308, {1, "42      " + kept}, "299 characters are kept"},
      {"fra", longOne, kLowest, 0, {1, "-2147483648 " + kept}, "the longest of all"},
  };
  for (const auto& [language, file, number, size, answer, note] : kRows) {
    writeMessages(language, file);
    MessageStore store(kBuiltInMessages);
    EXPECT_EQ(lookUp(store, number, size), answer) << number << ": " << note;
    EXPECT_EQ(lookUp(store, number, size), answer) << number << " again: " << note;
  }
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

// After the first failure every lookup gives the error, also one that the box itself makes.
TEST_F(MessageStoreTest, AnswersEverythingWithTheErrorOfAFailedLoad) {
  MessageStore store(kBuiltInMessages);
  const auto onBox = [](void* shown, const char* text, const char* title) {
    EXPECT_STREQ(title, "KORA Resource");
    EXPECT_EQ(lookUp(*static_cast<MessageStore*>(shown), 1002), (Answer{5003, text}));
  };
  nosSetMessageBoxSink(onBox, &store);
  EXPECT_EQ(lookUp(store, 1002).first, 0);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      Undefined message number"}));
  const Answer error = loadError("file ", "kormsgs.eng is missing");
  writeMessages("eng", "42 \"comes too late\"\n");
  for (const int number : {42, 1002, 0, 1, -32001}) EXPECT_EQ(lookUp(store, number), error);
  EXPECT_EQ(lookUp(store, 1002, 6), (Answer{5003, "file "}));
  EXPECT_EQ(pointAt(store, 1002), error);
}

TEST_F(MessageStoreTest, ReadsTheLanguageFromTheConfiguration) {
  const std::tuple<const char*, int, const char*> kRows[] = {
      {"<default>", 0, "kormsgs.<de"},  {"<Default>", 0, "kormsgs.<De"}, {"ENG", 0, "kormsgs.ENG"},
      {"english", 5003, "kormsgs.eng"}, {"deu", 5003, "kormsgs.deu"},    {"fr", 5003, "kormsgs.fr"},
  };
  for (const auto& [language, status, file] : kRows) {
    setLanguage(language);
    MessageStore store(kBuiltInMessages);
    const Answer error = loadError("file ", std::string(file) + " is missing");
    EXPECT_EQ(lookUp(store, 1002).first, status) << language;
    lookUp(store, 42);
    EXPECT_EQ(lookUp(store, 1002), error) << language;
    const auto shown = recorder.takeBoxes();
    EXPECT_TRUE(shown.size() == 1 && shown[0].text == error.second) << language;
  }
}

// The allocations, each of which fails in its turn: the bytes of the file (twice when it has more
// than 64 KiB, as the last one), the entries, a text a line, and again the entries for lines 3001
// and 4502, where the table grows.
TEST_F(MessageStoreTest, ReportsExhaustedMemoryAndKeepsEveryLine) {
  const std::uint64_t before = nosAllocatedBlocks();
  const Answer error = loadError("Memory allocation failure loading file ", "kormsgs.fra");
  const std::tuple<int, std::uint64_t, std::uint64_t> kLinesFirstAndLastFailure[] = {
      {0, 1, 3}, {2, 1, 4}, {3000, 3002, 3002}, {3001, 3000, 3004}, {4502, 4500, 4507}};
  for (const auto& [lineCount, firstFailure, lastFailure] : kLinesFirstAndLastFailure) {
    std::string bytes = "1\n";
    for (int line = 1; line <= lineCount; ++line) {
      bytes += std::to_string(line) + " \"line " + std::to_string(line) + "\"\n";
    }
    writeMessages("fra", bytes);
    for (std::uint64_t failure = firstFailure; failure <= lastFailure; ++failure) {
      MessageStore store(kBuiltInMessages);
      nosFailAllocation(failure);
      EXPECT_EQ(lookUp(store, 1), error) << lineCount << " lines, allocation " << failure;
      nosFailAllocation(0);
      ASSERT_EQ(nosAllocatedBlocks(), before) << lineCount << " lines, allocation " << failure;
    }
    MessageStore store(kBuiltInMessages);
    nosFailAllocation(lastFailure + 1);  // which is never asked for
    for (int line = 1; line <= lineCount; ++line) {
      EXPECT_EQ(lookUp(store, line), (Answer{0, "line " + std::to_string(line)}));
    }
    nosFailAllocation(0);
  }
  EXPECT_EQ(nosAllocatedBlocks(), before) << "after stores with all lines";
}

// A table without message 1, but with texts of 0 to 199 characters under random numbers, some of
// which meet in the index.
TEST_F(MessageStoreTest, CopiesTextsOfEveryLengthAndFallsBackForMessageOneToo) {
  std::mt19937 random(1);
  std::string text;
  for (int i = 0; i < 199; ++i) text += static_cast<char>('!' + i % 90);
  NosMessageRow rows[200];
  for (std::uint32_t length = 0; length < 200; ++length) {
    const auto number = static_cast<std::uint32_t>(300 * (length + 1) + random() % 300);
    rows[length] = {messageIdentifier(number, 1, 256), length, text.c_str() + 199 - length};
  }
  const NosMessageIndex index(rows);
  // The test object lies in no module, so that on Windows there is no resource.
  const NosMessageModule module = {this, rows, index.slots, index.kSlotShift};
  writeMessages("eng", "1 \"unknown\"\n");
  MessageStore store(module);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      unknown"}));
  if (nosReadableRows(module) == nullptr) return;
  for (const auto& row : rows) {
    const auto number = static_cast<int>(row.identifier & 0xFFFF);
    for (const unsigned size : {0u, row.length + 1, row.length, 1u}) {
      const std::string kept = std::string(row.text).substr(0, size - 1);
      EXPECT_EQ(lookUp(store, number, size), (Answer{0, kept})) << row.length << ", " << size;
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
  for (int round = 0; round < 100; ++round) {
    const bool isFailing = round < 50;
    if (round == 50) writeMessages("eng", "42 \"only in the file\"\n");
    MessageStore store(kBuiltInMessages);
    std::barrier start(8);
    const auto body = [&] {
      start.arrive_and_wait();
      EXPECT_TRUE(isFailing || lookUp(store, 1002).second == "Invalid parameter value");
      const Answer answer = lookUp(store, 42);
      EXPECT_TRUE(isFailing ? answer.first != 0 : answer == (Answer{0, "only in the file"}));
      EXPECT_EQ(lookUp(store, 1002).first, isFailing ? 5003 : 0);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back(body);
    for (std::thread& thread : threads) thread.join();
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
