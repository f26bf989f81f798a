// Identifiers as text. The parts of every style are the same: a qualifier, a prefix, numbers with
// separators between them, an edition, a lifetime, a suffix; a style says how wide the numbers are
// and what separates them.

#include "oiddigits.h"

#include "sys/formatters.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <typeinfo>

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

char* put(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

char* put(char* to, char character) {
  *to = character;
  return to + 1;
}

// The codes 1 and 3 are shown. The short names are stored whatever the code is and counted where it
// is odd: a branch on it could not be foreseen.
char* putLifetime(char* to, std::uint32_t code, bool isLong) {
  if (isLong) {
    if (code == 1) return put(to, " (transient)");
    return code == 3 ? put(to, " (shared transient)") : to;
  }
  std::memcpy(to, code == 1 ? " (t)" : " (s)", 4);
  return to + (code & 1) * 4;
}

// The longest text and its NUL take 79, and the numbers in it, stored with up to 3 bytes behind
// their last digits, end well before that.
constexpr std::uint32_t kRoom = OidFormatter::kBufferSize;

// REQUIRES: room for kRoom characters. Returns the end.
template <const Layout& kLayout>
inline char* putOid(char* to, const OidFormatter& formatter, const DskObjectId& oid,
                    char separator) {
  const std::uint32_t mask = formatter.lifetimeBits ? kClassBits : kAllBits;
  const std::uint32_t classId = oid.classId.number();
  *to = '[';
  to += formatter.brackets;
  to = putPadded<kLayout.classWidth>(to, classId & mask);
  to = putPadded<kLayout.instanceWidth>(put(to, separator), oid.instanceId);
  const std::uint32_t parent = oid.parentClassId.number();
  const bool hasParent = parent != kNullClassID.number();
  if (formatter.alwaysFull || (hasParent && oid.level != 0)) {
    to = putPadded<kLayout.parentWidth>(put(to, separator), parent & mask);
    to = putPadded<kLayout.levelWidth>(put(to, separator), oid.level);
    to = putPadded<kLayout.subIdWidth>(put(to, separator), oid.subId);
  } else if (hasParent) {
    to = putPadded<kLayout.lastParentWidth>(put(to, separator), parent & mask);
  }
  if (formatter.showEdition && oid.edition != 0) {
    to = putPadded<kLayout.editionWidth>(put(to, ':'), oid.edition);
  }
  if (formatter.lifetimeBits) {
    const bool takesParent = kLayout.parentLends && (classId & kClassBits) == 0;
    const std::uint32_t code = (takesParent ? parent : classId) >> kLifetimeShift;
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
inline void render(const OidFormatter& formatter, const DskObjectId& oid, char separator,
                   char* output, std::uint32_t& length) {
  char scratch[kRoom];
  char* const start = length >= kRoom ? output : scratch;
  const char* const end = putOid<kLayout>(start, formatter, oid, separator);
  const auto count = static_cast<std::uint32_t>(end - start);
  if (start == scratch) return store({scratch, count}, output, length);
  output[count] = '\0';
  length = count;
}

inline void renderRelational(const RelationalDbOidFormatter& formatter, const DskObjectId& oid,
                             char* output, std::uint32_t& length) {
  switch (formatter.version) {
    case RelationalDbOidFormatter::kOlderLayout:
      return render<kOlder>(formatter, oid, '.', output, length);
    case RelationalDbOidFormatter::kNewerLayout:
      return render<kNewer>(formatter, oid, '.', output, length);
  }
  store("", output, length);
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

// Puts a qualifier ahead of the text in a buffer of kRoom characters. What a class derived
// elsewhere stored counts, whatever length it gave. Not inlined, since every identifier would then
// pay for its frame.
[[gnu::noinline]] void qualify(std::uint8_t qualifier, char* buffer, std::uint32_t& length) {
  char text[kRoom + 1];
  std::memcpy(text, buffer, kRoom);
  text[kRoom] = '\0';
  char* const to = put(putNumber(put(buffer, '#'), qualifier), '#');
  const auto ahead = static_cast<std::uint32_t>(to - buffer);
  length = kRoom - ahead;
  store(text, to, length);
  length += ahead;
}

// The field or fields at an offset as one number.
template <class T>
T load(const DskObjectId& oid, std::size_t offset) {
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(&oid) + offset, sizeof value);
  return value;
}

}  // namespace
}  // namespace nomutil::formatters

using namespace nomutil::formatters;

// The bytes 8 to 15 are both classes, the qualifier (the fourth byte) and the level.
bool oidsAreEqual(const DskObjectId& left, const DskObjectId& right) {
  constexpr std::uint64_t kAllButQualifier = 0xFFFFFFFF00FFFFFF;
  constexpr std::size_t kClasses = offsetof(DskObjectId, classId);
  constexpr std::size_t kSubId = offsetof(DskObjectId, subId);
  const auto differ = load<std::uint64_t>(left, kClasses) ^ load<std::uint64_t>(right, kClasses);
  return left.instanceId == right.instanceId && (differ & kAllButQualifier) == 0 &&
         load<std::uint32_t>(left, kSubId) == load<std::uint32_t>(right, kSubId);
}

OidFormatter::~OidFormatter() = default;

void OidFormatter::doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                               std::uint8_t level, std::uint16_t subId, std::uint32_t edition,
                               char* output, std::uint32_t& outputLength) {
  render<kPlain>(*this, {instanceId, classId, 0, parentClassId, level, subId, edition}, '.', output,
                 outputLength);
}

// The classes of this library are told by their type, so that only those derived elsewhere pay for
// taking the record apart and for the virtual call.
const char* OidFormatter::formatOid(const DskObjectId& oid) {
  length = kBufferSize;
  const std::type_info* const type = &typeid(*this);
  if (type == &typeid(OidFormatter)) {
    render<kPlain>(*this, oid, '.', buffer, length);
  } else if (type == &typeid(RelationalDbOidFormatter)) {
    renderRelational(static_cast<const RelationalDbOidFormatter&>(*this), oid, buffer, length);
  } else {
    doFormatOid(oid.classId, oid.instanceId, oid.parentClassId, oid.level, oid.subId, oid.edition,
                buffer, length);
  }
  if (oid.qualifier != 0) qualify(oid.qualifier, buffer, length);
  return buffer;
}

const char* OidFormatter::formatOid(const ShortDskObjectId& oid) {
  return formatOid(DskObjectId{oid.instanceId, oid.classId, oid.qualifier, {}, 0, 0, 0});
}

const char* OidFormatter::formatOid(const OidKey& oid) {
  return formatOid(DskObjectId{oid.instanceId, oid.classId, oid.qualifier, oid.parentClassId,
                               oid.level, oid.subId, 0});
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
  renderRelational(*this, {instanceId, classId, 0, parentClassId, level, subId, edition}, output,
                   outputLength);
}

Custom_Separator_Relational_OID_Formatter::Custom_Separator_Relational_OID_Formatter(
    const char* separatorText)
    : RelationalDbOidFormatter(kNewerLayout), separator(separatorText) {}

Custom_Separator_Relational_OID_Formatter::~Custom_Separator_Relational_OID_Formatter() = default;

void Custom_Separator_Relational_OID_Formatter::doFormatOid(
    ClassID classId, std::uint64_t instanceId, ClassID parentClassId, std::uint8_t level,
    std::uint16_t subId, std::uint32_t edition, char* output, std::uint32_t& outputLength) {
  const DskObjectId oid = {instanceId, classId, 0, parentClassId, level, subId, edition};
  const std::string_view text = separator != nullptr ? separator : "";
  if (text.size() == 1) return render<kNewer>(*this, oid, text[0], output, outputLength);
  char dotted[kRoom];
  const char* const end = putOid<kNewer>(dotted, *this, oid, '.');
  storeSeparated({dotted, static_cast<std::size_t>(end - dotted)}, text, output, outputLength);
}
