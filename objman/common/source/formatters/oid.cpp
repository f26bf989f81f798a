// Identifiers as text. The parts of every style are the same: a qualifier, a prefix, numbers with
// separators between them, an edition, a lifetime, a suffix; a style says how wide the numbers are
// and what separates them.

#include "oiddigits.h"

#include "sys/formatters.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::formatters {
namespace {

constexpr std::uint32_t kClassBits = 0x3FFFFF;
constexpr unsigned kLifetimeShift = 22;
constexpr std::uint32_t kAllBits = 0xFFFFFF;

// The least digits of each number; 1 is unpadded. The parent's width depends on what follows it.
struct Layout {
  unsigned classWidth, instanceWidth, lastParentWidth, parentWidth, levelWidth, subIdWidth,
      editionWidth;
  bool parentLends;  // a class of 0 takes the lifetime of its parent
};
constexpr Layout kPlain = {1, 1, 1, 1, 1, 1, 1, true};
constexpr Layout kNewer = {7, 20, 7, 7, 3, 5, 10, false};
constexpr Layout kOlder = {5, 10, 3, 5, 3, 3, 10, false};

struct Parts {
  std::uint32_t classId, parentClassId;
  std::uint64_t instanceId;
  std::uint8_t level;
  std::uint16_t subId;
  std::uint32_t edition;
};

char* put(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

char* put(char* to, char character) {
  *to = character;
  return to + 1;
}

char* putLifetime(char* to, std::uint32_t code, bool isLong) {
  if (code == 1) return isLong ? put(to, " (transient)") : put(to, " (t)");
  if (code == 3) return isLong ? put(to, " (shared transient)") : put(to, " (s)");
  return to;
}

// The longest text and its NUL take 79, and its numbers, which are stored with up to 7 bytes behind
// them, end at least 17 before that.
constexpr std::uint32_t kRoom = OidFormatter::kBufferSize;

// REQUIRES: room for kRoom characters. Returns the end.
template <const Layout& kLayout>
char* putOid(char* to, const OidFormatter& formatter, const Parts& parts, char separator) {
  const std::uint32_t mask = formatter.lifetimeBits ? kClassBits : kAllBits;
  const std::uint32_t classId = parts.classId & mask;
  const std::uint32_t parent = parts.parentClassId & mask;
  *to = '[';
  to += formatter.brackets;
  to = putShort<kLayout.classWidth>(to, classId);
  to = putLong<kLayout.instanceWidth>(put(to, separator), parts.instanceId);
  if (formatter.alwaysFull || (parts.parentClassId != 0 && parts.level != 0)) {
    to = putShort<kLayout.parentWidth>(put(to, separator), parent);
    to = putShort<kLayout.levelWidth>(put(to, separator), parts.level);
    to = putShort<kLayout.subIdWidth>(put(to, separator), parts.subId);
  } else if (parts.parentClassId != 0) {
    to = putShort<kLayout.lastParentWidth>(put(to, separator), parent);
  }
  if (formatter.showEdition && parts.edition != 0) {
    to = putLong<kLayout.editionWidth>(put(to, ':'), parts.edition);
  }
  if (formatter.lifetimeBits) {
    const bool takesParent = kLayout.parentLends && classId == 0;
    const std::uint32_t code =
        (takesParent ? parts.parentClassId : parts.classId) >> kLifetimeShift;
    to = putLifetime(to, code, formatter.longLifetimeNames);
  }
  *to = ']';
  return to + formatter.brackets;
}

// Stores what fits with its NUL; length comes in as the capacity and goes out as the characters.
void store(std::string_view text, char* output, std::uint32_t& length) {
  if (length == 0) return;
  const auto stored = static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), length - 1));
  std::memcpy(output, text.data(), stored);
  output[stored] = '\0';
  length = stored;
}

template <const Layout& kLayout>
[[gnu::noinline]] void renderShort(const OidFormatter& formatter, Parts parts, char separator,
                                   char* output, std::uint32_t& length) {
  char text[kRoom];
  const char* const end = putOid<kLayout>(text, formatter, parts, separator);
  store({text, static_cast<std::size_t>(end - text)}, output, length);
}

template <const Layout& kLayout>
inline void render(const OidFormatter& formatter, const Parts& parts, char separator, char* output,
                   std::uint32_t& length) {
  if (length < kRoom) return renderShort<kLayout>(formatter, parts, separator, output, length);
  char* const end = putOid<kLayout>(output, formatter, parts, separator);
  *end = '\0';
  length = static_cast<std::uint32_t>(end - output);
}

// A text without separators of its own, with `separator` in place of each dot.
void storeSeparated(std::string_view text, std::string_view separator, char* output,
                    std::uint32_t& length) {
  if (length == 0) return;
  char* to = output;
  std::size_t room = length - 1;
  const auto append = [&](std::string_view part) {
    const std::size_t stored = std::min(part.size(), room);
    to = put(to, part.substr(0, stored));
    room -= stored;
  };
  for (;;) {
    const std::size_t dot = text.find('.');
    append(text.substr(0, dot));
    if (dot == text.npos) break;
    append(separator);
    text.remove_prefix(dot + 1);
  }
  *to = '\0';
  length = static_cast<std::uint32_t>(to - output);
}

// A class as the word of its three bytes and the one that follows them, qualifier or level.
constexpr std::size_t kClassWord = 8;
constexpr std::size_t kParentWord = 12;
constexpr std::size_t kSubIdWord = 16;

template <class T>
T load(const void* record, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

ClassID classOf(std::uint32_t word) {
  return {{static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8),
           static_cast<std::uint8_t>(word >> 16)}};
}

}  // namespace
}  // namespace nomutil::formatters

using namespace nomutil::formatters;

// The bytes 8 to 15 are both classes, the qualifier (the fourth byte) and the level.
bool oidsAreEqual(const DskObjectId& left, const DskObjectId& right) {
  constexpr std::uint64_t kAllButQualifier = 0xFFFFFFFF00FFFFFF;
  const auto differ =
      load<std::uint64_t>(&left, kClassWord) ^ load<std::uint64_t>(&right, kClassWord);
  return left.instanceId == right.instanceId && (differ & kAllButQualifier) == 0 &&
         load<std::uint32_t>(&left, kSubIdWord) == load<std::uint32_t>(&right, kSubIdWord);
}

OidFormatter::~OidFormatter() = default;

void OidFormatter::doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                               std::uint8_t level, std::uint16_t subId, std::uint32_t edition,
                               char* output, std::uint32_t& outputLength) {
  render<kPlain>(*this,
                 {classId.number(), parentClassId.number(), instanceId, level, subId, edition}, '.',
                 output, outputLength);
}

const char* OidFormatter::_format(std::uint64_t instanceId, std::uint32_t classWord,
                                  std::uint32_t parentWord, std::uint16_t subId,
                                  std::uint32_t edition) {
  length = kBufferSize;
  doFormatOid(classOf(classWord), instanceId, classOf(parentWord),
              static_cast<std::uint8_t>(parentWord >> 24), subId, edition, buffer, length);
  const auto qualifier = static_cast<std::uint8_t>(classWord >> 24);
  if (qualifier != 0) _qualify(qualifier);
  return buffer;
}

// What a class derived elsewhere stored counts, whatever length it gave.
void OidFormatter::_qualify(std::uint8_t qualifier) {
  char text[kBufferSize + 1];
  std::memcpy(text, buffer, kBufferSize);
  text[kBufferSize] = '\0';
  char* const to = put(putShort<1>(put(buffer, '#'), qualifier), '#');
  const auto ahead = static_cast<std::uint32_t>(to - buffer);
  length = kBufferSize - ahead;
  store(text, to, length);
  length += ahead;
}

const char* OidFormatter::formatOid(const DskObjectId& oid) {
  return _format(oid.instanceId, load<std::uint32_t>(&oid, kClassWord),
                 load<std::uint32_t>(&oid, kParentWord), oid.subId, oid.edition);
}

const char* OidFormatter::formatOid(const ShortDskObjectId& oid) {
  return _format(oid.instanceId, load<std::uint32_t>(&oid, kClassWord), 0, 0, 0);
}

const char* OidFormatter::formatOid(const OidKey& oid) {
  return _format(oid.instanceId, load<std::uint32_t>(&oid, kClassWord),
                 load<std::uint32_t>(&oid, kParentWord), oid.subId, 0);
}

const char* OidFormatter::formatOid(const DskObjectId* oid) {
  return oid != nullptr ? formatOid(*oid) : formatNullPtr();
}

const char* OidFormatter::formatOid(const ShortDskObjectId* oid) {
  return oid != nullptr ? formatOid(*oid) : formatNullPtr();
}

const char* OidFormatter::formatOid(const OidKey* oid) {
  return oid != nullptr ? formatOid(*oid) : formatNullPtr();
}

const char* OidFormatter::formatNullPtr() {
  length = kBufferSize;
  store(brackets ? "[<nullptr>]" : "<nullptr>", buffer, length);
  return buffer;
}

RelationalDbOidFormatter::RelationalDbOidFormatter(KoraVersion koraVersion) : version(koraVersion) {
  brackets = false;
  showEdition = false;
}

RelationalDbOidFormatter::~RelationalDbOidFormatter() = default;

void RelationalDbOidFormatter::doFormatOid(ClassID classId, std::uint64_t instanceId,
                                           ClassID parentClassId, std::uint8_t level,
                                           std::uint16_t subId, std::uint32_t edition, char* output,
                                           std::uint32_t& outputLength) {
  const Parts parts = {classId.number(), parentClassId.number(), instanceId, level, subId, edition};
  switch (version) {
    case kOlderLayout:
      return render<kOlder>(*this, parts, '.', output, outputLength);
    case kNewerLayout:
      return render<kNewer>(*this, parts, '.', output, outputLength);
  }
  store({}, output, outputLength);
}

Custom_Separator_Relational_OID_Formatter::Custom_Separator_Relational_OID_Formatter(
    const char* separatorText)
    : RelationalDbOidFormatter(kNewerLayout), separator(separatorText) {}

Custom_Separator_Relational_OID_Formatter::~Custom_Separator_Relational_OID_Formatter() = default;

void Custom_Separator_Relational_OID_Formatter::doFormatOid(
    ClassID classId, std::uint64_t instanceId, ClassID parentClassId, std::uint8_t level,
    std::uint16_t subId, std::uint32_t edition, char* output, std::uint32_t& outputLength) {
  const Parts parts = {classId.number(), parentClassId.number(), instanceId, level, subId, edition};
  const std::string_view text = separator != nullptr ? separator : "";
  if (text.size() == 1) return render<kNewer>(*this, parts, text[0], output, outputLength);
  char dotted[kRoom];
  const char* const end = putOid<kNewer>(dotted, *this, parts, '.');
  storeSeparated({dotted, static_cast<std::size_t>(end - dotted)}, text, output, outputLength);
}
