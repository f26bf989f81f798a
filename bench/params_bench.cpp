// Parameters beside their peers.
//
//   copy     between short parameters of one format, and of all fixed formats in a random order
//            (mixed). Peers are assignments between two std::variant of the same kinds:
//            "variantCall", which can also hold a std::string, as a parameter can, in a function
//            that is called, as paramcpy is; "variantText", the same inlined; "variant", inlined
//            and without the string, which is plain bytes.
//   held     a string of 20 characters made, read and released, copied to a buffer (copied) or
//            looked at in place (viewed), beside GVariant. stdstring is the same with the
//            std::string of a std::variant.
//   copyin   20 characters to an inline string, a block and a held string that exist already,
//   copyout  and from them, beside the std::string of a std::variant.
//   equal    paramsAreEqual of two equal values of a format in memory of their own, and
//   render   paramToString of one, for each format that has it; without peers. Strings and binaries
//            have 20 elements. The counter allocations is the memory taken in a call.
//
// Before anything is timed, all sides have to give the same values.

#include "nomos/heap.h"
#include "nomos/testhooks.h"
#include "sys/decimals.h"
#include "sys/formatters.h"
#include "sys/params.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace {

std::uint64_t newCalls = 0;

}  // namespace

// Not inlined, as those of the standard library are not.
[[gnu::noinline]] void* operator new(std::size_t byteCount) {
  ++newCalls;
  if (void* const block = std::malloc(byteCount != 0 ? byteCount : 1)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

// ---- Copies of fixed formats ----

// The value of a format as a kind of its own.
template <PFormat kFormat, std::size_t kSize>
struct Bytes {
  static constexpr PFormat kind = kFormat;
  std::array<unsigned char, kSize> bytes;
};
template <PFormat kFormat, class T>
struct Number {
  static constexpr PFormat kind = kFormat;
  T number;
};
using Point = Number<DSKPOINT, std::array<std::int32_t, 2>>;
using TimeStamp = Number<DSKTIMESTAMP, std::array<std::uint32_t, 2>>;
using TimeStampOffset = Number<DSKTIMESTAMPOFFSET, std::array<std::uint32_t, 3>>;

template <class... More>
using VariantOf = std::variant<
    Number<DSKBOOLEAN, bool>, Number<DSKCHARACTER, char>, Number<DSKBYTE, std::uint8_t>,
    Number<DSKINTEGER, std::int32_t>, Number<DSKINTEGER64, std::int64_t>,
    Number<DSKSHORTREAL, float>, Number<DSKREAL, double>, Number<DSKDATE, std::uint32_t>,
    Number<DSKTIME, std::uint32_t>, TimeStamp, Number<DSKTIMESTAMPINTERVAL, std::int64_t>,
    TimeStampOffset, Point, Bytes<DSKDECIMAL, sizeof(DskDecimal)>, Bytes<DSKOBJECTID, 22>,
    Bytes<DSKSHORTOBJECTID, 12>, Bytes<DSKMEMORYADDRESS, 12>, Bytes<DSKNULL, 32>, More...>;
using Variant = VariantOf<>;
using VariantText = VariantOf<std::string>;
static_assert(std::is_trivially_copyable_v<Variant>);
constexpr std::size_t kFixedKinds = std::variant_size_v<Variant>;

// What a side needs: a value of the kind at kIndex from bytes, a copy, and the bytes of a value.
struct Ours {
  using Value = ShortDskParam;
  template <class Kind>
  static void set(Value& value, const unsigned char* bytes) {
    value = ShortDskParam(Kind::kind, 2, 0);
    std::memcpy(value.value, bytes, sizeof(Kind));
  }
  static void copy(Value& target, const Value& source) { paramcpy(&target, &source); }
  static std::string bytesOf(const Value& value) {
    const auto* const first = reinterpret_cast<const char*>(value.value);
    return {first, findParamFormat(value.header.format)->valueSize};
  }
};

template <class Any>
struct Peer {
  using Value = Any;
  template <class Kind>
  static void set(Value& value, const unsigned char* bytes) {
    std::memcpy(&value.template emplace<Kind>(), bytes, sizeof(Kind));
  }
  static void copy(Value& target, const Value& source) { target = source; }
  static std::string bytesOf(const Value& value) {
    return std::visit(
        [](const auto& held) {
          return std::string(reinterpret_cast<const char*>(&held), sizeof held);
        },
        value);
  }
};

struct CalledPeer : Peer<VariantText> {
  [[gnu::noinline]] static void copy(Value& target, const Value& source) { target = source; }
};

template <class Side>
using Setter = void (*)(typename Side::Value& value, const unsigned char* bytes);

template <class Side, std::size_t... kIndex>
constexpr std::array<Setter<Side>, kFixedKinds> settersOf(std::index_sequence<kIndex...>) {
  return {&Side::template set<std::variant_alternative_t<kIndex, Variant>>...};
}
template <std::size_t... kIndex>
constexpr std::array<PFormat, kFixedKinds> formatsOf(std::index_sequence<kIndex...>) {
  return {std::variant_alternative_t<kIndex, Variant>::kind...};
}
constexpr auto kFormats = formatsOf(std::make_index_sequence<kFixedKinds>());

// Values of one kind, or of all in a random order: more than a branch predictor learns.
template <class Side>
struct Values {
  explicit Values(std::size_t kind) : source(kind < kFixedKinds ? 256 : 4096), target(source) {
    constexpr auto kSetters = settersOf<Side>(std::make_index_sequence<kFixedKinds>());
    std::mt19937 random(7);
    for (auto& value : source) {
      unsigned char bytes[32];
      for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random() % 2);
      kSetters[kind < kFixedKinds ? kind : random() % kFixedKinds](value, bytes);
    }
  }
  void copyAll() {
    for (std::size_t i = 0; i < source.size(); ++i) Side::copy(target[i], source[i]);
  }
  std::vector<typename Side::Value> source, target;
};

template <class Side>
bool givesOurCopies(const char* name) {
  for (std::size_t kind = 0; kind <= kFixedKinds; ++kind) {
    Values<Ours> ours(kind);
    Values<Side> theirs(kind);
    ours.copyAll();
    theirs.copyAll();
    for (std::size_t i = 0; i < ours.source.size(); ++i) {
      if (Ours::bytesOf(ours.target[i]) == Side::bytesOf(theirs.target[i])) continue;
      std::cerr << "copy/" << name << ": kind " << kind << ", value " << i << " differs\n";
      return false;
    }
  }
  return true;
}

template <class Side>
void registerCopies(const std::string& name) {
  for (std::size_t kind = 0; kind <= kFixedKinds; ++kind) {
    const auto values = std::make_shared<Values<Side>>(kind);
    const auto loop = [values](benchmark::State& state) {
      const auto* const source = values->source.data();
      auto* const target = values->target.data();
      const std::size_t mask = values->source.size() - 1;
      std::size_t i = 0;
      for (auto unused : state) {
        Side::copy(target[i], source[i]);
        benchmark::ClobberMemory();
        i = (i + 1) & mask;
      }
    };
    const std::string mix =
        kind < kFixedKinds ? findParamFormat(kFormats[kind])->enumerator : "mixed";
    benchmark::RegisterBenchmark(("copy/" + name + "/" + mix).c_str(), loop);
  }
}

// ---- Strings ----

constexpr unsigned kLength = 20;
constexpr std::size_t kTexts = 256;
using Text = char[kLength + 1];

const Text* texts() {
  static const auto all = [] {
    auto made = std::make_unique<Text[]>(kTexts);
    std::mt19937 random(8);
    for (std::size_t i = 0; i < kTexts; ++i) {
      for (unsigned at = 0; at < kLength; ++at) {
        made[i][at] = static_cast<char>('a' + random() % 26);
      }
    }
    return made;
  }();
  return all.get();
}

// Times run(text, out) over all texts.
template <class Run>
void registerRun(const std::string& name, Run run) {
  const auto loop = [run](benchmark::State& state) mutable {
    const Text* const all = texts();
    char out[64];
    std::size_t i = 0;
    for (auto unused : state) {
      run(all[i], out);
      benchmark::DoNotOptimize(out);
      benchmark::ClobberMemory();
      i = (i + 1) % kTexts;
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), loop);
}

// Whether run brings every text to out.
template <class Run>
bool isExact(const std::string& name, Run run) {
  for (std::size_t i = 0; i < kTexts; ++i) {
    char out[64] = "";
    run(texts()[i], out);
    if (std::strcmp(out, texts()[i]) == 0) continue;
    std::cerr << name << " gives " << out << " for " << texts()[i] << "\n";
    return false;
  }
  return true;
}

// Keeps a place where a text lies, so that it is found and not read.
void look(const char* text, char* out) {
  std::memcpy(out, &text, sizeof text);
}

void copyGVariant(const char* text, char* out) {
  GVariant* const value = g_variant_ref_sink(g_variant_new_string(text));
  gsize length = 0;
  const char* const held = g_variant_get_string(value, &length);
  std::memcpy(out, held, length + 1);
  g_variant_unref(value);
}
void viewGVariant(const char* text, char* out) {
  GVariant* const value = g_variant_ref_sink(g_variant_new_string(text));
  look(g_variant_get_string(value, nullptr), out);
  g_variant_unref(value);
}

void copyStdString(const char* text, char* out) {
  VariantText value(std::in_place_type<std::string>, text, kLength);
  const std::string& held = *std::get_if<std::string>(&value);
  std::memcpy(out, held.c_str(), held.size() + 1);
}
void viewStdString(const char* text, char* out) {
  const VariantText value(std::in_place_type<std::string>, text, kLength);
  look(std::get_if<std::string>(&value)->c_str(), out);
}

void copyHeld(const char* text, char* out) {
  ShortDskParam value;
  paramCreateKoraString(value, text, kLength, kKoraNoMaximum, 2);
  unsigned bytes = 0;
  unsigned characters = 0;
  paramcpy(out, value, 64, bytes, characters);
  paramDeleteKoraString(value);
}
void viewHeld(const char* text, char* out) {
  ShortDskParam value;
  paramCreateKoraString(value, text, kLength, kKoraNoMaximum, 2);
  char* held = nullptr;
  DerefString(value, &held);
  look(held, out);
  paramDeleteKoraString(value);
}

void registerHeld() {
  registerRun("held/ours/copied", copyHeld);
  registerRun("held/ours/viewed", viewHeld);
  registerRun("held/gvariant/copied", copyGVariant);
  registerRun("held/gvariant/viewed", viewGVariant);
  registerRun("stdstring/variantText/copied", copyStdString);
  registerRun("stdstring/variantText/viewed", viewStdString);
}

// Values that exist already: put and get are one copy each.
struct Parameter {
  explicit Parameter(PFormat format) : value(format, 0, 0) {
    if (format == DSKSTRINGBLOCK) value.setValue(DskStringBlock{block, 0, 0, kLength});
    if (format == DSKKORASTRING) paramCreateKoraString(&value, "", 0, kKoraNoMaximum, 2);
  }
  Parameter(const Parameter&) = delete;
  Parameter& operator=(const Parameter&) = delete;
  ~Parameter() { paramDeleteKoraAny(&value); }

  void put(const char* text) { paramcpy(&value, text, kLength); }
  void get(char* out) const {
    unsigned bytes = 0;
    unsigned characters = 0;
    paramcpy(out, &value, 64, bytes, characters);
  }
  DskParam value;
  char block[kLength + 1];
};
struct StdString {
  explicit StdString(PFormat) : value(std::in_place_type<std::string>) {}
  void put(const char* text) { std::get_if<std::string>(&value)->assign(text, kLength); }
  void get(char* out) const {
    const std::string& held = *std::get_if<std::string>(&value);
    std::memcpy(out, held.c_str(), held.size() + 1);
  }
  VariantText value;
};

template <class Side>
bool registerCopiesOfText(const std::string& name, PFormat format, const std::string& mix) {
  const auto side = std::make_shared<Side>(format);
  const std::string behind = "/" + name + "/" + mix;
  registerRun("copyin" + behind, [side](const char* text, char*) { side->put(text); });
  registerRun("copyout" + behind, [side](const char*, char* out) { side->get(out); });
  return isExact(mix, [side](const char* text, char* out) {
    side->put(text);
    side->get(out);
  });
}

bool registerCopiesOfTexts() {
  const std::pair<PFormat, const char*> mixes[] = {
      {DSKSTRING, "inline"}, {DSKSTRINGBLOCK, "block"}, {DSKKORASTRING, "held"}};
  for (const auto& [format, mix] : mixes) {
    if (!registerCopiesOfText<Parameter>("ours", format, mix) ||
        !registerCopiesOfText<StdString>("variantText", format, mix)) {
      return false;
    }
  }
  return true;
}

// ---- Equality and text ----

// Runs of operator new and of XHeap::allocate in run(). The heap tells how many by when it fails.
template <class Run>
std::uint64_t allocationsIn(Run run) {
  constexpr std::uint64_t kArmed = 100'000;
  const std::uint64_t newBefore = newCalls;
  nosFailAllocation(kArmed);
  run();
  const std::uint64_t ofNew = newCalls - newBefore;
  std::uint64_t left = 1;
  while (void* const block = XHeap::library().allocate(1)) {
    XHeap::library().release(block);
    ++left;
  }
  return ofNew + kArmed - left;
}

// Values of one format, all different but for characters, booleans and bytes. Two of the same
// number are equal and lie in memory of their own.
struct FormatValues {
  static constexpr std::size_t kCount = 64;

  explicit FormatValues(PFormat format) : values(kCount, DskParam(format, 0, 0)), memory(kCount) {
    for (std::size_t i = 0; i < kCount; ++i) {
      std::memcpy(memory[i], texts()[i], sizeof(Text));
      set(values[i], memory[i], static_cast<std::uint32_t>(i));
    }
  }
  FormatValues(const FormatValues&) = delete;
  FormatValues& operator=(const FormatValues&) = delete;
  ~FormatValues() {
    for (DskParam& value : values) paramDeleteKoraAny(&value);
  }

  static void set(DskParam& value, char* text, std::uint32_t number);

  struct Copy {
    char text[kLength + 1];
    operator char*() { return text; }
  };
  std::vector<DskParam> values;
  std::vector<Copy> memory;
};

void FormatValues::set(DskParam& value, char* text, std::uint32_t number) {
  auto* const bytes = reinterpret_cast<unsigned char*>(text);
  const std::uint32_t date = 2'460'315 + 97 * number;
  const std::uint32_t time = 50'829'042 + 500'009 * number;
  const ClassID classId{{0, 8, 0}};
  std::memset(value.value, 0, sizeof value.value);
  switch (value.header.format) {
    case DSKCSTRING:
    case DSKCSTRING2:
      return value.setValue(text);
    case DSKSTRING:
    case DSKBINARY:
      paramcpy(&value, static_cast<const void*>(text), kLength);
      return;
    case DSKSTRINGBLOCK:
    case DSKBINARYBLOCK:
      return value.setValue(DskBinaryBlock{bytes, 0, kLength, kLength});
    case DSKSTRINGUTF8BLOCK:
      return value.setValue(StringUtf8Info{bytes, kLength, kLength, kLength});
    case DSKKORASTRING:
      paramCreateKoraString(&value, text, kLength, kKoraNoMaximum, 0);
      return;
    case DSKKORABINARY:
      paramCreateKoraBinary(&value, bytes, kLength, kKoraNoMaximum, 0);
      return;
    case DSKKORASTRINGUTF8: {
      const StringUtf8Info info{bytes, kLength, kLength, kLength};
      paramCreateKoraStringUtf8(&value, &info, kKoraNoMaximum, 0);
      return;
    }
    case DSKOBJECTID:
    case DSKSHORTOBJECTID:
      return value.setValue(DskObjectId{1'000'003ull * (number + 1), classId, 0, {}, 0, 0, 0});
    case DSKCHARACTER:
    case DSKBOOLEAN:
    case DSKBYTE:
      return value.setValue(value.header.format == DSKBOOLEAN ? '\1' : text[0]);
    case DSKDATE:
      return value.setValue(date);
    case DSKTIME:
      return value.setValue(time);
    case DSKTIMESTAMP:
      return value.setValue(std::array{date, time});
    case DSKTIMESTAMPOFFSET:
      return value.setValue(std::array{date, time, 0u - 780});
    case DSKTIMESTAMPINTERVAL:
      return value.setValue(std::int64_t{93'784'005} * (number + 1));
    case DSKDECIMAL: {
      DskDecimal stored{};
      (Decimal(static_cast<int>(1'234'567 + 97 * number)) / Decimal(100))
          .decimalToDskDecimal(stored, 255);
      return value.setValue(stored);
    }
    case DSKSHORTREAL:
      return value.setValue(static_cast<float>(number) / 100 + 12345);
    case DSKREAL:
      return value.setValue(number / 100.0 + 12345);
    default:
      return value.setValue(std::array{1000 + number, number, number, number});
  }
}

// The formats whose equality is decided; the others are only rendered.
bool hasEquality(PFormat format) {
  return format != DSKSHORTOBJECTID &&
         std::strcmp(findParamFormat(format)->family, "rendered") != 0;
}

struct FormatSides {
  explicit FormatSides(PFormat format) : left(format), right(format) {}

  bool areEqual(std::size_t i, std::size_t j) const {
    bool equal = false;
    return paramsAreEqual(&left.values[i], &right.values[j], &equal) == 0 && equal;
  }
  const char* render(std::size_t i) {
    return paramToString(&left.values[i], text, sizeof text) == 0 ? text : "";
  }

  FormatValues left, right;
  char text[128];
};

template <class Call>
void registerCalls(const std::string& name, Call call) {
  const auto loop = [call](benchmark::State& state) {
    state.counters["allocations"] = static_cast<double>(allocationsIn([&call] {
                                      for (std::size_t i = 0; i < FormatValues::kCount; ++i)
                                        benchmark::DoNotOptimize(call(i));
                                    })) /
                                    FormatValues::kCount;
    std::size_t i = 0;
    for (auto unused : state) {
      benchmark::DoNotOptimize(call(i));
      benchmark::ClobberMemory();
      i = (i + 1) % FormatValues::kCount;
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), loop);
}

// Every value equals its other self, and another one where its text is the same.
bool isExact(FormatSides& sides, const std::string& name, bool compares) {
  for (std::size_t i = 0; i < FormatValues::kCount; ++i) {
    const std::string text = sides.render(i);
    const std::size_t next = (i + 1) % FormatValues::kCount;
    const bool sameText = text == sides.render(next);
    if (!text.empty() &&
        (!compares || (sides.areEqual(i, i) && sides.areEqual(i, next) == sameText))) {
      continue;
    }
    std::cerr << name << ": value " << i << ", " << text << ", is not what it should be\n";
    return false;
  }
  return true;
}

bool registerEqualityAndText() {
  for (unsigned number = 0; number < 256; ++number) {
    const ParamFormatInfo* const info = findParamFormat(number);
    if (info == nullptr || number == DSKANY || number == DSKNULL) continue;
    const auto format = static_cast<PFormat>(number);
    const auto sides = std::make_shared<FormatSides>(format);
    const std::string name = info->enumerator;
    const bool compares = hasEquality(format);
    if (!isExact(*sides, name, compares)) return false;
    if (compares) {
      registerCalls("equal/ours/" + name, [sides](std::size_t i) { return sides->areEqual(i, i); });
    }
    registerCalls("render/ours/" + name, [sides](std::size_t i) { return sides->render(i); });
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!givesOurCopies<CalledPeer>("variantCall") || !givesOurCopies<Peer<Variant>>("variant") ||
      !givesOurCopies<Peer<VariantText>>("variantText") || !isExact("ours", copyHeld) ||
      !isExact("gvariant", copyGVariant) || !isExact("variantText", copyStdString) ||
      !registerCopiesOfTexts() || !registerEqualityAndText()) {
    return 1;
  }
  registerHeld();
  registerCopies<Ours>("ours");
  registerCopies<CalledPeer>("variantCall");
  registerCopies<Peer<Variant>>("variant");
  registerCopies<Peer<VariantText>>("variantText");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
