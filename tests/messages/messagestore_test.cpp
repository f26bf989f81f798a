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
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace nomutil::messages {
namespace {

struct Answer {
  int status;
  std::string text;
  bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << answer.status << " \"" << answer.text << '"';
}

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

  void write(const std::string& name, std::string_view bytes) {
    std::ofstream(_folder / name, std::ios::binary) << bytes;
  }
  void setLanguage(const std::string& value) {
    write("nomutil.ini", "[KoraClient]\nLanguage=" + value + "\n");
  }
  // A store that reads its texts from kormsgs.fra.
  std::unique_ptr<MessageStore> frenchStore(std::string_view bytes) {
    setLanguage("fra");
    write("kormsgs.fra", bytes);
    return std::make_unique<MessageStore>(kBuiltInMessages);
  }
  std::string directory() const { return (_folder / "").make_preferred().string(); }
  // The load error text, which has room for 99 characters.
  std::string loadError(const std::string& before, const std::string& after = "") const {
    return (before + directory() + after).substr(0, 99);
  }

  nomtest::Recorder recorder;

 private:
  std::filesystem::path _folder = std::filesystem::temp_directory_path() /
                                  ("messages" + std::to_string(std::random_device()()));
};

TEST_F(MessageStoreTest, GivesTheBuiltInTexts) {
  MessageStore store(kBuiltInMessages);
  const struct {
    int number;
    const char* text;
  } kRows[] = {
      {0, "No error"},
      {1, "Undefined message number"},
      {1000, "Invalid parameter type"},
      {1002, "Invalid parameter value"},
      {1006, "Library not found"},
      {1008, "Entry point not in library"},
      {1112, "Feature has been deprecated"},
      {1409, "Compress operation failed"},
      {1410, "Uncompress operation failed"},
      {1420, "Base64 Decoding failed"},
      {1422, "Result of expression overflows Decimal precision"},
      {1448, "A memory allocation request failed"},
      {3018, "A database memory allocation request failed"},
      {3111, "Insufficient system resources"},
      {4033, "Result of expression overflows Decimal precision"},
      {5003, "Requested file not found"},
      {kMessageDirectory, nullptr},
  };
  for (const auto& row : kRows) {
    const std::string text = row.text != nullptr ? row.text : directory();
    for (const unsigned size : {0u, 400u, 5u, 1u}) {
      const Answer expected = {0, size == 0 ? text : text.substr(0, size - 1)};
      EXPECT_EQ(lookUp(store, row.number, size), expected) << row.number << " in " << size;
    }
  }
  EXPECT_TRUE(recorder.takeBoxes().empty()) << "no file is looked for";
}

TEST_F(MessageStoreTest, MakesATextUpForUnknownNumbers) {
  write("kormsgs.eng", "70000 \"beyond the built-in table\"\n");
  MessageStore store(kBuiltInMessages);
  const struct {
    int number;
    unsigned size;
    Answer answer;
    const char* note;
  } kRows[] = {
      {42, 100, {1, "42      Undefined message number"}, "padded to 7 characters"},
      {42, 20, {-100, ""}, "too small"},
      {42, 32, {-100, ""}, "no room for the NUL"},
      {42, 33, {1, "42      Undefined message number"}, "just enough"},
      {42, 0, {1, "42      Undefined message number"}, "unlimited"},
      {-2147483647 - 1, 33, {1, "-2147483648 Undefined message nu"}, "a long number is bounded"},
      {-2147483647 - 1, 0, {1, "-2147483648 Undefined message number"}, "and whole without limit"},
      {65536 + 1000, 100, {1, "66536   Undefined message number"}, "not the 1000 of its low bits"},
      {1000 - 65536, 100, {1, "-64536  Undefined message number"}, "nor here"},
      {-100, 100, {1, "-100    Undefined message number"}, "65436, which has no text"},
      {70000, 100, {0, "beyond the built-in table"}, "the message file is asked"},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(lookUp(store, row.number, row.size), row.answer) << row.note;
  EXPECT_EQ(lookUp(store, 1000, 100, 2), (Answer{1, "1000    Undefined message number"}));
  EXPECT_EQ(lookUp(store, 31250, 100, 1, 257), (Answer{1, "31250   Undefined message number"}));
  EXPECT_EQ(lookUp(store, 0, 100, 2, 257), (Answer{0, "No error"})) << "0 in any facility";
}

TEST_F(MessageStoreTest, PointsOnlyIntoALoadedFile) {
  write("kormsgs.eng", "0 \"from the file\"\n1002 \"from the file too\"\n");
  MessageStore store(kBuiltInMessages);
  const auto pointAt = [&store](int number) {
    char buffer[] = "........ own text";
    char* text = buffer;
    const int status = store.pointAtText(static_cast<unsigned>(number), &text);
    return Answer{status, text};
  };
  EXPECT_EQ(pointAt(1002), (Answer{1,
                                   "1002    "
                                   " own text"}))
      << "nothing is loaded yet";
  EXPECT_EQ(pointAt(0), (Answer{1,
                                "0       "
                                " own text"}));
  EXPECT_EQ(pointAt(-2147483647 - 1), (Answer{1, "-2147483648  text"}));
  EXPECT_EQ(pointAt(kMessageDirectory), (Answer{0, directory()}));
  EXPECT_EQ(lookUp(store, 42).status, 1) << "loads the file";
  EXPECT_EQ(pointAt(1002), (Answer{0, "from the file too"}));
  EXPECT_EQ(pointAt(0), (Answer{0, "from the file"}));
  EXPECT_EQ(lookUp(store, 1002), (Answer{0, "Invalid parameter value"})) << "built in comes first";
}

// After the first failure every lookup gives the error, also one that the box itself makes.
TEST_F(MessageStoreTest, AnswersEverythingWithTheErrorOfAFailedLoad) {
  static MessageStore* asked;
  static int boxes;
  MessageStore store(kBuiltInMessages);
  asked = &store;
  boxes = 0;
  nosSetMessageBoxSink(
      [](void*, const char* text, const char* title) {
        EXPECT_STREQ(title, "KORA Resource");
        EXPECT_EQ(lookUp(*asked, 1002), (Answer{5003, text}));
        ++boxes;
      },
      nullptr);
  EXPECT_EQ(lookUp(store, 1002).status, 0);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      Undefined message number"}));
  const Answer error = {5003, loadError("file ", "kormsgs.eng is missing")};
  for (const int number : {42, 1002, 0, 1, kMessageDirectory})
    EXPECT_EQ(lookUp(store, number), error);
  EXPECT_EQ(lookUp(store, 1002, 6), (Answer{5003, "file "}));
  char* text = nullptr;
  EXPECT_EQ(store.pointAtText(1002, &text), 5003);
  EXPECT_EQ(text, error.text);
  write("kormsgs.eng", "42 \"comes too late\"\n");
  EXPECT_EQ(lookUp(store, 42), error) << "is not tried again";
  EXPECT_EQ(boxes, 1);
}

TEST_F(MessageStoreTest, ReadsTheLanguageFromTheConfiguration) {
  const struct {
    const char* language;
    bool builtIn;
    const char* file;
  } kRows[] = {
      {"<default>", true, "kormsgs.<de"}, {"<Default>", true, "kormsgs.<De"},
      {"ENG", true, "kormsgs.ENG"},       {"english", false, "kormsgs.eng"},
      {"deu", false, "kormsgs.deu"},      {"fr", false, "kormsgs.fr"},
  };
  for (const auto& row : kRows) {
    setLanguage(row.language);
    MessageStore store(kBuiltInMessages);
    const std::string error = loadError("file ", std::string(row.file) + " is missing");
    const Answer first = lookUp(store, 1002);
    EXPECT_EQ(first, row.builtIn ? (Answer{0, "Invalid parameter value"}) : (Answer{5003, error}))
        << row.language;
    lookUp(store, 42);
    EXPECT_EQ(lookUp(store, 1002), (Answer{5003, error})) << row.language;
    const auto shown = recorder.takeBoxes();
    ASSERT_EQ(shown.size(), 1u) << row.language;
    EXPECT_EQ(shown[0].text, error);
  }
}

TEST_F(MessageStoreTest, TakesTheMadeUpEndFromMessageOne) {
  const std::string longText(350, 'x');
  const std::string kept(299, 'x');
  const struct {
    std::string file;
    int number;
    unsigned size;
    Answer answer;
  } kRows[] = {
      {"2 \"b\"\n", 42, 100, {1, "42      1       Undefined message number"}},
      {"2 \"b\"\n", 1, 100, {1, "1       1       Undefined message number"}},
      {"2 \"b\"\n", 42, 40, {-100, ""}},
      {"1 \"Inconnu\"\n", 42, 16, {1, "42      Inconnu"}},
      {"1 \"Inconnu\"\n", 42, 15, {-100, ""}},
      {"1 \"" + longText + "\"\n", 1, 0, {0, longText}},
      {"1 \"" + longText + "\"\n", 42, 0, {1, "42      " + kept}},
      {"1 \"" + longText + "\"\n", 42, 308, {1, "42      " + kept}},
      {"1 \"" + longText + "\"\n", 42, 307, {-100, ""}},
      {"1 \"" + longText + "\"\n", -2147483647 - 1, 0, {1, "-2147483648 " + kept}},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(lookUp(*frenchStore(row.file), row.number, row.size), row.answer)
        << row.file << row.number << " in " << row.size;
  }
}

TEST_F(MessageStoreTest, TellsAnEmptyFileFromOneWithoutTexts) {
  const Answer empty = {5003, loadError("file ", "kormsgs.fra is empty")};
  EXPECT_EQ(lookUp(*frenchStore(""), 1002), empty);
  EXPECT_EQ(lookUp(*frenchStore("// 1002 \"a\"\n\n/* 1 */\n"), 1002), empty);
  const auto store = frenchStore("1002\n1 \"\"\n");
  EXPECT_EQ(lookUp(*store, 1002).status, 1);
  EXPECT_EQ(lookUp(*store, 99999999), (Answer{0, "End"})) << "marks the file as read";
}

// A table that grows twice: 3000, 4501, 6752 entries.
TEST_F(MessageStoreTest, KeepsEveryLineAndTheFirstOfANumber) {
  const std::uint64_t before = nosAllocatedBlocks();
  std::string bytes;
  for (int number = 1; number <= 5000; ++number) {
    bytes += std::to_string(number) + " \"text " + std::to_string(number) + "\"\n";
  }
  bytes += "7 \"a second text\"\n";
  auto store = frenchStore(bytes);
  for (const int number : {1, 7, 2999, 3000, 3001, 4501, 4502, 5000}) {
    EXPECT_EQ(lookUp(*store, number), (Answer{0, "text " + std::to_string(number)}));
  }
  store.reset();
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

// Every allocation fails in its turn, up to and past the first growth of the table.
TEST_F(MessageStoreTest, ReportsExhaustedMemory) {
  const std::uint64_t before = nosAllocatedBlocks();
  const Answer error = {5003, loadError("Memory allocation failure loading file ", "kormsgs.fra")};
  const std::pair<int, std::uint64_t> kFilesAndFirstFailures[] = {{0, 1}, {2, 1}, {3001, 2995}};
  for (const auto& [lineCount, firstFailure] : kFilesAndFirstFailures) {
    std::string bytes = "1\n";
    for (int line = 0; line < lineCount; ++line) bytes += "9 \"x\"\n";
    std::uint64_t failure = firstFailure;
    for (;; ++failure) {
      auto store = frenchStore(bytes);
      nosFailAllocation(failure);
      const Answer answer = lookUp(*store, 1002);
      nosFailAllocation(0);
      if (answer.status == 1) break;
      ASSERT_EQ(answer, error) << lineCount << " lines, allocation " << failure;
      EXPECT_EQ(lookUp(*store, 9), error);
      ASSERT_EQ(nosAllocatedBlocks(), before) << lineCount << " lines, allocation " << failure;
    }
    // The bytes of the file, the entries, a text a line, and once more the entries.
    const std::uint64_t least = lineCount == 0 ? 3 : lineCount == 2 ? 4 : 3004;
    EXPECT_GT(failure, least) << lineCount << " lines";
  }
}

TEST_F(MessageStoreTest, FallsBackForMessageOneToo) {
  static constexpr NosMessageRow kRow[] = {{0x610003E8, 3, "one"}};
  static constexpr NosMessageIndex kIndex(kRow);
  // The test object lies in no module, so that on Windows there is no resource either.
  const NosMessageModule module = {this, kRow, kIndex.slots, kIndex.kSlotBits};
  write("kormsgs.eng", "1 \"unknown\"\n");
  MessageStore store(module);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      unknown"}));
}

// The file that the build makes for the installation directory holds every built-in text.
TEST_F(MessageStoreTest, FindsItsOwnFileInTheBuildTree) {
  nosSetInstallDirectory(nullptr);
  MessageStore store(kBuiltInMessages);
  EXPECT_EQ(lookUp(store, 42), (Answer{1, "42      Undefined message number"}));
  EXPECT_TRUE(recorder.takeBoxes().empty());
  int count = 0;
#define NOMUTIL_COMPARE(name, number, builtIn)      \
  {                                                 \
    char* text = nullptr;                           \
    EXPECT_EQ(store.pointAtText(number, &text), 0); \
    EXPECT_STREQ(text, builtIn);                    \
    EXPECT_EQ(lookUp(store, number).text, builtIn); \
    ++count;                                        \
  }
  NOMUTIL_MESSAGE_LIST(NOMUTIL_COMPARE)
#undef NOMUTIL_COMPARE
  EXPECT_EQ(count, 32);
}

// Runs eight threads that start together.
template <class Body>
void inThreads(Body body) {
  std::barrier start(8);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&start, &body, thread] {
      start.arrive_and_wait();
      body(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The first lookups of a store by many threads: known numbers, and one that is not built in, which
// makes one of them load the file while the others go on.
TEST_F(MessageStoreTest, ServesTheFirstLookupsOfManyThreads) {
  write("kormsgs.eng", "42 \"only in the file\"\n");
  for (int round = 0; round < 25; ++round) {
    MessageStore store(kBuiltInMessages);
    inThreads([&store](int thread) {
      for (int lookup = 0; lookup < 4; ++lookup) {
        if ((thread + lookup) % 2 == 0) {
          EXPECT_EQ(lookUp(store, 42), (Answer{0, "only in the file"}));
        } else {
          EXPECT_EQ(lookUp(store, 1002), (Answer{0, "Invalid parameter value"}));
        }
      }
    });
  }
}

// The fallback is tried once, even when all threads need it together.
TEST_F(MessageStoreTest, ShowsOneFailureWhenManyThreadsFail) {
  for (int round = 0; round < 100; ++round) {
    MessageStore store(kBuiltInMessages);
    EXPECT_EQ(lookUp(store, 1002).status, 0);
    inThreads([&store](int) {
      EXPECT_TRUE(std::set<int>({1, 5003}).count(lookUp(store, 42).status));
      EXPECT_EQ(lookUp(store, 1002).status, 5003);
    });
    EXPECT_EQ(recorder.takeBoxes().size(), 1u);
  }
}

// The exported functions refuse null with a report instead of writing through it.
TEST_F(MessageStoreTest, ExportedFunctionsReportNull) {
  EXPECT_EQ(nomGetMessageText(1002, nullptr, 10), kNoRoom);
  EXPECT_EQ(NomGetMessageText(1002, nullptr), kNoRoom);
  EXPECT_EQ(recorder.takeExpressions(), "buffer != nullptr; text != nullptr");
}

}  // namespace
}  // namespace nomutil::messages
