// Identifiers of objects and handles, and their texts; names of volatilities; free slot numbers.
// docs/formats/objectid.md shows the records byte for byte.
//
// A formatter owns the buffer of its text, which is valid until its next call: one formatter serves
// one thread at a time. Nothing is reported; a text that is longer than the buffer is cut.
#ifndef NOMUTIL_SYS_FORMATTERS_H
#define NOMUTIL_SYS_FORMATTERS_H

#include "sys/build.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

// ---- Records ----

// A class number of 24 bits, low byte first; 0 is the null class. Where an identifier has a
// lifetime, bits 0 to 21 are the class and bits 22 and 23 its code: 1 transient, 3 shared
// transient.
struct ClassID {
  std::uint8_t bytes[3];

  std::uint32_t number() const {
    std::uint16_t low;  // read as one, since a compiler builds it from single bytes otherwise
    std::memcpy(&low, bytes, sizeof low);
    return low | std::uint32_t{bytes[2]} << 16;
  }
};
inline constexpr ClassID kNullClassID{};

//   offset  size  field
//        0     8  instanceId
//        8     3  classId
//       11     1  qualifier      shown ahead of the identifier when it is not 0
//       12     3  parentClassId  the owning class; null for an object that stands alone
//       15     1  level          of a sub-object
//       16     2  subId
//       18     4  edition
#pragma pack(push, 1)
struct DskObjectId {
  std::uint64_t instanceId;
  ClassID classId;
  std::uint8_t qualifier;
  ClassID parentClassId;
  std::uint8_t level;
  std::uint16_t subId;
  std::uint32_t edition;
};
// Its first 12 bytes, and its first 18.
struct ShortDskObjectId {
  std::uint64_t instanceId;
  ClassID classId;
  std::uint8_t qualifier;
};
struct OidKey {
  std::uint64_t instanceId;
  ClassID classId;
  std::uint8_t qualifier;
  ClassID parentClassId;
  std::uint8_t level;
  std::uint16_t subId;
};

// A handle as far as it is shown: the low half of value, two numbers and three tags.
struct DskHandle {
  std::uint64_t value;
  std::uint16_t first;
  std::uint16_t second;
  std::uint8_t tags[3];
  std::uint8_t unused;
};
#pragma pack(pop)
static_assert(sizeof(ClassID) == 3 && sizeof(DskObjectId) == 22);
static_assert(offsetof(DskObjectId, classId) == 8 && offsetof(DskObjectId, qualifier) == 11);
static_assert(offsetof(DskObjectId, parentClassId) == 12 && offsetof(DskObjectId, level) == 15);
static_assert(offsetof(DskObjectId, subId) == 16 && offsetof(DskObjectId, edition) == 18);
static_assert(offsetof(ShortDskObjectId, classId) == 8 && sizeof(ShortDskObjectId) == 12);
static_assert(offsetof(ShortDskObjectId, qualifier) == 11 && offsetof(OidKey, classId) == 8);
static_assert(offsetof(OidKey, qualifier) == 11 && offsetof(OidKey, parentClassId) == 12);
static_assert(offsetof(OidKey, level) == 15 && offsetof(OidKey, subId) == 16);
static_assert(sizeof(OidKey) == 18 && sizeof(DskHandle) == 16);
static_assert(offsetof(DskHandle, first) == 8 && offsetof(DskHandle, second) == 10);
static_assert(offsetof(DskHandle, tags) == 12);
static_assert(std::is_trivially_copyable_v<DskObjectId> && std::is_trivially_copyable_v<OidKey>);
static_assert(std::is_trivially_copyable_v<ShortDskObjectId>);
static_assert(std::is_trivially_copyable_v<DskHandle>);

// Whether two identifiers name the same object: the instance, both classes, the level and the 32
// bits at offset 16 count; the qualifier and the last two bytes do not.
NOMUTIL_API bool oidsAreEqual(const DskObjectId& left, const DskObjectId& right);

// ---- Identifiers as text ----

// [class.instance:edition (lifetime)], as in "[2048.17:3 (t)]"; with the parent behind the instance
// where there is one, and with level and sub-object number where the level is not 0. A qualifier is
// shown ahead of it all: "#7#[2048.17]".
class NOMUTIL_API OidFormatter {
 public:
  OidFormatter() = default;
  OidFormatter(const OidFormatter&) = default;
  OidFormatter& operator=(const OidFormatter&) = default;

  // Renders into output, which has room for outputLength bytes; outputLength becomes the number of
  // characters stored, without the NUL. A room of 0 writes nothing.
  virtual void doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                           std::uint8_t level, std::uint16_t subId, std::uint32_t edition,
                           char* output, std::uint32_t& outputLength);
  virtual ~OidFormatter();

  // Render and return the buffer. A null pointer is "<nullptr>", in brackets where they are on.
  const char* formatOid(const DskObjectId& oid);
  const char* formatOid(const ShortDskObjectId& oid);
  const char* formatOid(const OidKey& oid);
  const char* formatOid(const DskObjectId* oid);
  const char* formatOid(const ShortDskObjectId* oid);
  const char* formatOid(const OidKey* oid);
  const char* formatNullPtr();

  // The text of the last call, and its characters without the NUL.
  const char* getBuffer() const { return buffer; }
  std::uint32_t getLength() const { return length; }

  static constexpr std::uint32_t kBufferSize = 80;

 protected:
  std::uint32_t length = 0;
  char buffer[kBufferSize] = {};

 public:
  bool lifetimeBits = true;        // show bits 22 and 23 of the class as a lifetime
  bool longLifetimeNames = false;  // " (transient)" instead of " (t)"
  bool brackets = true;
  bool showEdition = true;  // an edition of 0 is not shown
  bool alwaysFull = false;  // with parent, level and sub-object number whatever they are
};

// The zero-padded style of the relational mapping: "0002048.00000000000000000017" in the newer
// layout, "02048.0000000017" in the older. Lifetimes are on and the other flags off; the lifetime
// is that of the class alone.
class NOMUTIL_API RelationalDbOidFormatter : public OidFormatter {
 public:
  // The layouts.
  enum KoraVersion : std::uint32_t { kOlderLayout = 0, kNewerLayout = 1 };

  // A formatter of this layout.
  explicit RelationalDbOidFormatter(KoraVersion koraVersion);
  RelationalDbOidFormatter(const RelationalDbOidFormatter&) = default;
  RelationalDbOidFormatter& operator=(const RelationalDbOidFormatter&) = default;
  ~RelationalDbOidFormatter() override;

  // Of a version that has no layout the text is empty.
  void doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                   std::uint8_t level, std::uint16_t subId, std::uint32_t edition, char* output,
                   std::uint32_t& outputLength) override;

  KoraVersion version;
};

// The newer layout with another separator than '.'. The separator is not copied: it must live as
// long as the formatter; null is an empty one.
class NOMUTIL_API Custom_Separator_Relational_OID_Formatter : public RelationalDbOidFormatter {
 public:
  // The text stands wherever the layout has '.'.
  explicit Custom_Separator_Relational_OID_Formatter(const char* separatorText);
  Custom_Separator_Relational_OID_Formatter(const Custom_Separator_Relational_OID_Formatter&) =
      default;
  Custom_Separator_Relational_OID_Formatter& operator=(
      const Custom_Separator_Relational_OID_Formatter&) = default;
  ~Custom_Separator_Relational_OID_Formatter() override;

  void doFormatOid(ClassID classId, std::uint64_t instanceId, ClassID parentClassId,
                   std::uint8_t level, std::uint16_t subId, std::uint32_t edition, char* output,
                   std::uint32_t& outputLength) override;

  const char* separator;
};

// ---- Handles as text ----

// Value in hexadecimal, the two numbers, and the tags as capital letters or else two hexadecimal
// digits each: "1F-3-4-QW00". A null handle is "<null>".
class NOMUTIL_API DskHandleFormatter {
 public:
  // Renders and returns the buffer.
  const char* format(const DskHandle* handle);
  const char* getBuffer() const { return _buffer; }  // the text of the last call

  static constexpr std::uint32_t kBufferSize = 38;

 private:
  char _buffer[kBufferSize] = {};

 public:
  bool braces = false;  // "{1F-3-4-QW00}"
};

// ---- Volatility ----

// How often an object changes. The database's values are these plus one, with 0 for transparent.
enum ObjectVolatility : std::uint32_t { kVolatile = 0, kFrozen = 4, kStable = 8 };
enum DbObjectVolatility : std::uint32_t {
  kDbTransparent = 0,
  kDbVolatile = 1,
  kDbFrozen = 5,
  kDbStable = 9
};

// "Transparent", "Volatile", "Frozen", "Stable"; "Unknown" for any other value. Constant texts.
NOMUTIL_API const char* decodeVolatility(ObjectVolatility volatility);
NOMUTIL_API const char* decodeDbVolatility(DbObjectVolatility volatility);

// ---- Free slots ----

// The lowest free number of a set of slots numbered from 1 to slotCount. Copies share the marks.
// A finder without memory for its marks has none: every slot is free.
class NOMUTIL_API HoleFinder {
 public:
  // All slots are free.
  explicit HoleFinder(unsigned slotCount);
  HoleFinder(const HoleFinder&) = default;
  HoleFinder& operator=(const HoleFinder&) = default;
  ~HoleFinder();

  void markSlot(unsigned slot) const;  // any number outside 1 to slotCount is ignored
  unsigned getNextSlot() const;        // slotCount + 1 when all are taken

 private:
  std::shared_ptr<unsigned char[]> _marks;
  unsigned _slotCount;
};

#endif  // NOMUTIL_SYS_FORMATTERS_H
