// Dynamic objects: named, typed properties that are defined at run time and kept as byte images, so
// that an object is stored or shipped by copying its images and rebuilt by setting them.
// docs/formats/dynaobj.md shows the images byte for byte.
//
// Functions that return int return a status, 0 for success. An operation that fails leaves the
// object as it was, all of it, and returns
//   1000  for a format that a property or its target cannot have, with a log line
//   1002  for an image that does not hold together, or a length that the format does not have
//   1011  for a property that is not defined
//   1448  without memory
// and what its own comment names. Images may hold any bytes: nothing is read or written beyond
// them. Nothing throws. Any number of threads may read an object that none changes.
#ifndef NOMUTIL_SYS_DYNAOBJ_H
#define NOMUTIL_SYS_DYNAOBJ_H

#include "nomos/korastring.h"
#include "sys/build.h"
#include "sys/formatters.h"
#include "sys/params.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace nomutil::dynaobj {
class NameIndex;
struct Content;
struct Slot;
}  // namespace nomutil::dynaobj

// The description of a property, as it lies in an image.
//
//   offset  size  field
//        0   101  name       NUL-terminated, the rest zero
//      101     1  usage      0 when added
//      102     2  format
//      104     8  typeNumber
//      112     4  typeClass  the high 8 bits zero
//      116     4  slotOffset of the value in the values image
#pragma pack(push, 1)
struct PropertyDesc {
  char name[101];
  std::uint8_t usage;
  PFormat format;
  std::uint64_t typeNumber;
  std::uint32_t typeClass;
  std::uint32_t slotOffset;
};
#pragma pack(pop)
static_assert(sizeof(PropertyDesc) == 120 && offsetof(PropertyDesc, usage) == 101);
static_assert(offsetof(PropertyDesc, format) == 102 && offsetof(PropertyDesc, typeNumber) == 104);
static_assert(offsetof(PropertyDesc, typeClass) == 112);
static_assert(offsetof(PropertyDesc, slotOffset) == 116);

// Names are compared byte by byte. An index is that of a property in the order of addition, from 1.
class NOMUTIL_API DynamicObject {
 public:
  // The kinds of objects, as createInstance takes them.
  enum Kind : std::uint32_t { kKoraKind = 1, kRpsKind = 2 };

  static constexpr std::uint32_t kMaximumNameLength = 100;
  static constexpr std::uint32_t kFormatDescSize = 45;

  // An RpsDynamicObject for kRpsKind, a KoraDynamicObject for any other kind; null without memory.
  // deleteInstance destroys and releases it; null is ignored.
  static DynamicObject* createInstance(const DskObjectId& parent, Kind kind);
  static void deleteInstance(DynamicObject* object);

  virtual ~DynamicObject();

  // Bytes of a description.
  virtual std::uint32_t getPropertyDescSize() const = 0;

  // ---- The object ----

  // The parent that it was made with, by which its references are judged.
  const DskObjectId& getParentOid() const { return _parent; }

  // Counts every property that is added, every value and every usage that is set, modulo 2^32.
  std::uint32_t getRevision() const { return _revision; }
  void setRevision(std::uint32_t revision) { _revision = revision; }

  // Copies images, format descriptor and revision; the target keeps its parent. 1465 for a target
  // whose descriptions have another size, 1002 for null.
  int cloneSelf(DynamicObject* target) const;

  // Whether the parents agree (oidsAreEqual); nothing else is compared. Equal objects hash alike.
  bool operator==(const DynamicObject& other) const;
  bool operator!=(const DynamicObject& other) const { return !(*this == other); }
  std::uint32_t hash() const;

  // ---- Defining properties ----

  // Add a property with a null value. The type is the number and the class of an identifier; where
  // either is 0, it is that of the format. 1425 for a name of more than 100 characters, 1433 for
  // one that is defined, 1000 for a format other than 1, 3, 4, 6, 7, 8, 11, 16, 17, 18, 19, 21, 24,
  // 42, 44, 51, 52, 53 and 57, each with a log line. addReference adds one of format 24.
  int addAttribute(const char* name, const DskObjectId& type, PFormat format);
  int addAttribute(const char* name, PFormat format);
  int addReference(const char* name, const DskObjectId& type);

  // Add a property and set its value, or do neither. Without a format it is that of the value:
  // 1 for strings, 11 for binaries, 51 for UTF-8 strings.
  int addAndSetAttributeValue(const char* name, const DskParam* value);
  int addAndSetAttributeValue(const char* name, const DskParam* value, PFormat format);
  int addAndSetAttributeValue(const char* name, PFormat format, std::uint32_t length,
                              const void* bytes);

  // ---- Values as parameters ----

  // A property of a fixed format gives the parameter its format, a reference DSKSHORTOBJECTID;
  // what the parameter held before is not released. A string, binary or UTF-8 property keeps the
  // format of a parameter of its family, which takes the value as by paramcpy (1035, 1091, 1124
  // when it is too long), and turns a DSKANY into 25, 33 or 54; any other parameter is refused with
  // 1000, as is null. A null string is read as an empty one, which isNull tells apart; a fixed
  // format is never null.
  int getPropertyValue(const char* name, DskParam* value) const;
  int getPropertyValue(std::uint32_t index, DskParam* value) const;
  int getPropertyValue(const char* name, DskParam* value, bool& isNull) const;
  int getPropertyValue(std::uint32_t index, DskParam* value, bool& isNull) const;

  // DSKNULL sets the null value. A fixed format takes that format alone, a reference an object
  // identifier, else 1426; a string or binary property any string, UTF-8 string, binary or
  // character byte by byte; a UTF-8 property a UTF-8 string. The value may lie in this object.
  // For a reference that names an object: 1013 to a sub-object; 1215 from a persistent parent to a
  // transient object; 1289 from a shared transient parent to one that is transient and not shared.
  int setPropertyValue(const char* name, const DskParam* value);
  int setPropertyValue(std::uint32_t index, const DskParam* value);

  // ---- Values as bytes ----
  // A string without its NUL, a UTF-8 string without its lengths, a reference as 12 bytes, any
  // other as it lies in its slot. Null bytes are a null string, binary or UTF-8 string.

  // The bytes, and the name, lie in the object until it changes.
  int getPropertyValue(const char* name, std::uint32_t& length, const unsigned char*& bytes) const;
  int getPropertyValue(std::uint32_t index, std::uint32_t& length,
                       const unsigned char*& bytes) const;
  int getPropertyValue(std::uint32_t index, const char*& name, PFormat& format,
                       std::uint32_t& length, const unsigned char*& bytes) const;

  // Null bytes with length 0 set the null value of any format. UTF-8 is verified and counted. The
  // bytes may lie in this object. With name and format the property at the index must have both:
  // 1011, 1426.
  int setPropertyValue(const char* name, std::uint32_t length, const void* bytes);
  int setPropertyValue(std::uint32_t index, std::uint32_t length, const void* bytes);
  int setPropertyValue(std::uint32_t index, const char* name, PFormat format, std::uint32_t length,
                       const void* bytes);

  // ---- All values as a list ----
  // A list is a DSKMEMORYADDRESS with the address of an array of ShortDskParam and, as its length,
  // the number of its entries.

  // Makes the first getPropertyCount() entries anew, in the order of addition, and list the list
  // of them. Strings, binaries and UTF-8 strings become handler parameters, which the caller
  // releases by paramDeleteKoraAny, and null ones DSKNULL. What the entries held before is not
  // released. After a failure no entry holds anything.
  // REQUIRES: paramArraySize is at least getPropertyCount(); else it is reported and 1002.
  int copyToDskParamList(DskParam* list, ShortDskParam* array, std::uint32_t paramArraySize) const;

  // Sets the values of all properties, or of none. 1000 for a parameter that is no list.
  // REQUIRES: the list has at least getPropertyCount() entries; else it is reported and 1002.
  int copyFromDskParamList(const DskParam* list);

  // ---- Properties ----

  // The number of whole descriptions; as a parameter a DSKINTEGER.
  std::uint32_t getPropertyCount() const;
  int getPropertyCount(DskParam* count) const;

  // The name with its NUL. An index that is not defined gives 1011 with a log line, and an empty
  // text; a name that size does not hold 1035, and its beginning.
  int getPropertyName(std::uint32_t index, char* buffer, std::uint32_t size) const;
  // As a DSKINTEGER.
  int getPropertyIndex(const char* name, DskParam* index) const;

  // Any number, which the library keeps and does not interpret; 0 when the property was added.
  int getPropertyUsage(const char* name, std::uint8_t& usage) const;
  int getPropertyUsage(std::uint32_t index, std::uint8_t& usage) const;
  int setPropertyUsage(const char* name, std::uint8_t usage);

  // The type as instanceId and classId of an identifier whose other fields are 0.
  int getPropertyType(const char* name, DskObjectId& type) const;
  int getPropertyType(std::uint32_t index, DskObjectId& type) const;
  int getPropertyFormat(const char* name, PFormat& format) const;
  int getPropertyFormat(std::uint32_t index, PFormat& format) const;

  // ---- Images ----

  // As they are stored and shipped, until the object changes.
  const KoraString<unsigned char>& getPropertyDescriptions() const { return _descriptions; }
  const KoraString<unsigned char>& getValues() const { return _values; }
  const KoraString<unsigned char>& getLongValues() const { return _longValues; }

  // Take any bytes, which are checked when they are used. The revision stays. 1002 for null bytes
  // with a length.
  int setPropertyDescriptions(const void* bytes, std::uint32_t length);
  int setValues(const void* bytes, std::uint32_t length);
  int setLongValues(const void* bytes, std::uint32_t length);

  // Empty all images, or those of the values alone, without which no value is read or set (1002);
  // a property that is added then gets the first slot, which an old one may have as well. The
  // revision stays.
  void clear();
  void clearValues();

  // ---- Format descriptor ----

  // Its 45 bytes, which belong to the object.
  const unsigned char* getFormatDesc() const { return _formatDesc; }
  std::uint32_t getFormatDescSize() const { return kFormatDescSize; }

  // 1465, with a log line, when version, format or character size differ from this object's; 1002
  // for null. REQUIRES: formatDesc has 45 bytes.
  int checkFormat(const unsigned char* formatDesc) const;
  // 1 for single-byte characters; 0 for null. REQUIRES: formatDesc has 45 bytes.
  static std::uint8_t getCharacterSize(const unsigned char* formatDesc);

 protected:
  // descSize is what getPropertyDescSize returns, at least 120.
  DynamicObject(const DskObjectId& parent, std::uint32_t descSize);
  // Without memory a new object is empty, and an assigned one stays as it was.
  DynamicObject(const DynamicObject& other);
  DynamicObject& operator=(const DynamicObject& other);

  // What the public operations call with the description of the property, which lies in this
  // object's image and whose name is terminated. Nothing of the value has been checked.
  virtual int _getPropertyValue(const PropertyDesc& property, DskParam* value) const;
  virtual int _getPropertyValue(const PropertyDesc& property, DskParam* value, bool& isNull) const;
  virtual int _setPropertyValue(const PropertyDesc& property, const DskParam* value);
  virtual int _setPropertyValue(const PropertyDesc& property, std::uint32_t length,
                                const void* bytes);

 private:
  const PropertyDesc* _findPropertyDescriptor(const char* name) const;
  const PropertyDesc* _findPropertyDescriptor(std::uint32_t index) const;
  const PropertyDesc* _findPropertyDescriptor(const char* name, std::size_t length) const;
  const PropertyDesc* _findShortName(const char* name) const;
  const PropertyDesc* _findAnyName(const char* name) const;
  const nomutil::dynaobj::NameIndex* _makeNameIndex() const;
  void _dropNameIndex();
  void _forgetNames();

  int _addProperty(const char* name, const DskObjectId& type, PFormat format);
  template <class Set>
  int _addAndSet(const char* name, PFormat format, Set set);
  int _setNullPropertyValue(const PropertyDesc& property);
  int _checkReference(const DskObjectId& target) const;
  int _findContent(const PropertyDesc& property, nomutil::dynaobj::Content& content) const;
  int _getOtherValue(const PropertyDesc& property, DskParam* value, bool& isNull) const;
  int _getPropertyBytes(const PropertyDesc* property, std::uint32_t& length,
                        const unsigned char*& bytes) const;
  int _getAnyPropertyBytes(const char* name, std::uint32_t& length,
                           const unsigned char*& bytes) const;
  int _findSlot(const PropertyDesc& property, nomutil::dynaobj::Slot& slot) const;
  int _storeContent(const PropertyDesc& property, const nomutil::dynaobj::Content& content);
  int _storeFixed(const PropertyDesc& property, const void* bytes);
  int _copyImages(const DynamicObject& source);
  bool _isInGrowingImage(const void* bytes) const;

  DskObjectId _parent;
  unsigned char _formatDesc[kFormatDescSize];
  mutable std::atomic<std::uint8_t> _searches{0};  // without an index of names
  std::uint32_t _revision = 0;
  const std::uint32_t _descSize;
  KoraString<unsigned char> _descriptions;
  KoraString<unsigned char> _values;
  KoraString<unsigned char> _longValues;
  // Small images of values lie in the object: making and releasing them is most of what rebuilding
  // it costs.
  static constexpr std::uint32_t kRoom = 200;
  alignas(std::uint64_t) unsigned char _valuesRoom[kRoom];
  alignas(std::uint64_t) unsigned char _longValuesRoom[kRoom];
  mutable std::atomic<nomutil::dynaobj::NameIndex*> _index{nullptr};
};

// The ordinary kind.
class NOMUTIL_API KoraDynamicObject : public DynamicObject {
 public:
  static constexpr std::uint32_t kDescSize = 120;

  // An object without properties.
  explicit KoraDynamicObject(const DskObjectId& parent) : DynamicObject(parent, kDescSize) {}
  KoraDynamicObject(const KoraDynamicObject&) = default;
  KoraDynamicObject& operator=(const KoraDynamicObject&) = default;
  ~KoraDynamicObject() override;
  std::uint32_t getPropertyDescSize() const override;
};

// The relational kind: its descriptions begin as those of the ordinary kind, and the bytes behind
// are 0.
class NOMUTIL_API RpsDynamicObject : public DynamicObject {
 public:
  static constexpr std::uint32_t kDescSize = 260;

  // An object without properties.
  explicit RpsDynamicObject(const DskObjectId& parent) : DynamicObject(parent, kDescSize) {}
  RpsDynamicObject(const RpsDynamicObject&) = default;
  RpsDynamicObject& operator=(const RpsDynamicObject&) = default;
  ~RpsDynamicObject() override;
  std::uint32_t getPropertyDescSize() const override;
};

#endif  // NOMUTIL_SYS_DYNAOBJ_H
