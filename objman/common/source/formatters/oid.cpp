// Identifiers as text. The parts of every style are the same: a qualifier, a prefix, numbers with
// separators between them, an edition, a lifetime, a suffix; a style says how wide the numbers are
// and what separates them.

#include "nomos/digits.h"
#include "sys/formatters.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::formatters {
namespace {

using nomos::putNumber;
using nomos::putPadded;

constexpr std::uint32_t kClassBits = 0x3FFFFF;
constexpr unsigned kLifetimeShift = 22;
constexpr std::uint32_t kAllBits = 0xFFFFFF;

// The least digits of each number; 1 is unpadded. The parent's width depends on what follows it.
struct Layout {
  unsigned classWidth, instanceWidth, lastParentWidth, parentWidth, levelWidth, subIdWidth,
      editionWidth;
};
constexpr Layout kPlain = {1, 1, 1, 1, 1, 1, 1};
constexpr Layout kNewer = {7, 20, 7, 7, 3, 5, 10};
constexpr Layout kOlder = {5, 10, 3, 5, 3, 3, 10};

struct Parts {
  std::uint32_t classId, parentClassId;
  std::uint64_t instanceId;
  std::uint8_t level;
  std::uint16_t subId;
  std::uint32_t edition;
};

struct Style {
  const Layout& layout;
  std::string_view separator;
  bool parentLends;  // a class of 0 takes the lifetime of its parent
};

char* put(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

std::string_view lifetimeOf(const OidFormatter& formatter, const Parts& parts, const Style& style) {
  if (!formatter.lifetimeBits) return "";
  const bool takesParent = style.parentLends && (parts.classId & kClassBits) == 0;
  switch ((takesParent ? parts.parentClassId : parts.classId) >> kLifetimeShift) {
    case 1:
      return formatter.longLifetimeNames ? " (transient)" : " (t)";
    case 3:
      return formatter.longLifetimeNames ? " (shared transient)" : " (s)";
    default:
      return "";
  }
}

// Everything but the separators: 81 for the widest identifier.
constexpr std::size_t kWidest = 96;
// A longer separator leaves no room for what follows it.
constexpr std::size_t kSeparatorRoom = OidFormatter::kBufferSize;
constexpr std::size_t kScratch = kWidest + 4 * kSeparatorRoom;

// REQUIRES: room for kWidest characters and four separators. Returns the end.
char* putOid(char* to, const OidFormatter& formatter, const Parts& parts, const Style& style) {
  const Layout& layout = style.layout;
  const std::uint32_t mask = formatter.lifetimeBits ? kClassBits : kAllBits;
  const std::uint32_t parent = parts.parentClassId & mask;
  if (formatter.brackets) *to++ = '[';
  to = putPadded(to, parts.classId & mask, layout.classWidth);
  to = putPadded(put(to, style.separator), parts.instanceId, layout.instanceWidth);
  if (formatter.alwaysFull || (parts.parentClassId != 0 && parts.level != 0)) {
    to = putPadded(put(to, style.separator), parent, layout.parentWidth);
    to = putPadded(put(to, style.separator), parts.level, layout.levelWidth);
    to = putPadded(put(to, style.separator), parts.subId, layout.subIdWidth);
  } else if (parts.parentClassId != 0) {
    to = putPadded(put(to, style.separator), parent, layout.lastParentWidth);
  }
  if (formatter.showEdition && parts.edition != 0) {
    *to++ = ':';
    to = putPadded(to, parts.edition, layout.editionWidth);
  }
  to = put(to, lifetimeOf(formatter, parts, style));
  if (formatter.brackets) *to++ = ']';
  return to;
}

// Stores what fits with its NUL; length comes in as the capacity and goes out as the characters.
void store(std::string_view text, char* output, std::uint32_t& length) {
  if (length == 0) return;
  const auto stored = static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), length - 1));
  std::memcpy(output, text.data(), stored);
  output[stored] = '\0';
  length = stored;
}

void render(const OidFormatter& formatter, const Parts& parts, const Style& style, char* output,
            std::uint32_t& length) {
  char scratch[kScratch];
  const char* const end = putOid(scratch, formatter, parts, style);
  store({scratch, static_cast<std::size_t>(end - scratch)}, output, length);
}

constexpr std::string_view kDot = ".";

std::string_view separatorOf(const char* text) {
  if (text == nullptr) return "";
  const void* const end = std::memchr(text, '\0', kSeparatorRoom);
  return {text, end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - text)
                               : kSeparatorRoom};
}

}  // namespace
}  // namespace nomutil::formatters

using namespace nomutil::formatters;

bool oidsAreEqual(const DskObjectId& left, const DskObjectId& right) {
  std::uint32_t leftBits;
  std::uint32_t rightBits;
  constexpr std::size_t kBitsOffset = offsetof(DskObjectId, subId);
  std::memcpy(&leftBits, reinterpret_cast<const char*>(&left) + kBitsOffset, sizeof leftBits);
  std::memcpy(&rightBits, reinterpret_cast<const char*>(&right) + kBitsOffset, sizeof rightBits);
  return left.instanceId == right.instanceId && left.classId.number() == right.classId.number() &&
         left.parentClassId.number() == right.parentClassId.number() && left.level == right.level &&
         leftBits == rightBits;
}

OidFormatter::~OidFormatter() = default;

void OidFormatter::doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                               std::uint8_t level, std::uint16_t subId, std::uint32_t edition,
                               char* output, std::uint32_t& outputLength) {
  render(*this, {classId.number(), parentClassId.number(), instanceId, level, subId, edition},
         {kPlain, kDot, true}, output, outputLength);
}

const char* OidFormatter::_format(ClassID classId, std::uint64_t instanceId, std::uint8_t qualifier,
                                  ClassID parentClassId, std::uint8_t level, std::uint16_t subId,
                                  std::uint32_t edition) {
  length = kBufferSize;
  if (qualifier == 0) {
    doFormatOid(classId, instanceId, parentClassId, level, subId, edition, buffer, length);
    return buffer;
  }
  char text[kBufferSize];
  std::uint32_t textLength = kBufferSize;
  doFormatOid(classId, instanceId, parentClassId, level, subId, edition, text, textLength);
  char whole[kBufferSize + 8];
  whole[0] = '#';
  char* const to = putNumber(whole + 1, qualifier);
  *to = '#';
  char* const end = put(to + 1, {text, textLength});
  store({whole, static_cast<std::size_t>(end - whole)}, buffer, length);
  return buffer;
}

const char* OidFormatter::formatOid(const DskObjectId& oid) {
  return _format(oid.classId, oid.instanceId, oid.qualifier, oid.parentClassId, oid.level,
                 oid.subId, oid.edition);
}

const char* OidFormatter::formatOid(const ShortDskObjectId& oid) {
  return _format(oid.classId, oid.instanceId, oid.qualifier, kNullClassID, 0, 0, 0);
}

const char* OidFormatter::formatOid(const OidKey& oid) {
  return _format(oid.classId, oid.instanceId, oid.qualifier, oid.parentClassId, oid.level,
                 oid.subId, 0);
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
  if (version != kOlderLayout && version != kNewerLayout) {
    store("", output, outputLength);
    return;
  }
  render(*this, {classId.number(), parentClassId.number(), instanceId, level, subId, edition},
         {version == kNewerLayout ? kNewer : kOlder, kDot, false}, output, outputLength);
}

Custom_Separator_Relational_OID_Formatter::Custom_Separator_Relational_OID_Formatter(
    const char* separatorText)
    : RelationalDbOidFormatter(kNewerLayout), separator(separatorText) {}

Custom_Separator_Relational_OID_Formatter::~Custom_Separator_Relational_OID_Formatter() = default;

void Custom_Separator_Relational_OID_Formatter::doFormatOid(
    ClassID classId, std::uint64_t instanceId, ClassID parentClassId, std::uint8_t level,
    std::uint16_t subId, std::uint32_t edition, char* output, std::uint32_t& outputLength) {
  render(*this, {classId.number(), parentClassId.number(), instanceId, level, subId, edition},
         {kNewer, separatorOf(separator), false}, output, outputLength);
}
