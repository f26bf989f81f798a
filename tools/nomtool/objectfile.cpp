// The file is the header below, the images of the descriptions, the values and the long values, and
// the CRC-32 of all that. An object without properties takes 99 bytes.
#include "objectfile.h"

#include "bytestream.h"
#include "checksum.h"
#include "runprogress.h"
#include "storednumber.h"
#include "transfer.h"

#include "nomos/intl.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace nomtool {
namespace {

constexpr std::string_view kSignature = "NOMOBJ1\n";

//   offset  size  field
//        0     8  signature
//        8     4  kind               1 ordinary, 2 relational
//       12     4  revision
//       16    22  parent
//       38     4  descriptionLength  of the images, in bytes
//       42     4  valueLength
//       46     4  longValueLength
//       50    45  formatDesc
#pragma pack(push, 1)
struct FileHeader {
  char signature[8];
  std::uint32_t kind;
  std::uint32_t revision;
  DskObjectId parent;
  std::uint32_t descriptionLength;
  std::uint32_t valueLength;
  std::uint32_t longValueLength;
  unsigned char formatDesc[DynamicObject::kFormatDescSize];
};
#pragma pack(pop)
static_assert(sizeof(FileHeader) == 95 && offsetof(FileHeader, kind) == 8);
static_assert(offsetof(FileHeader, revision) == 12 && offsetof(FileHeader, parent) == 16);
static_assert(offsetof(FileHeader, descriptionLength) == 38);
static_assert(offsetof(FileHeader, valueLength) == 42);
static_assert(offsetof(FileHeader, longValueLength) == 46);
static_assert(offsetof(FileHeader, formatDesc) == 50);

std::string_view viewOf(const KoraString<unsigned char>& image) {
  return {reinterpret_cast<const char*>(image.data()), image.length()};
}

// What goes into the checksum on its way from or to a file.
class SummedReader {
 public:
  explicit SummedReader(const std::string& path) : _reader(path) {}

  // A length from the file is believed piece by piece only, as far as there are bytes.
  std::string read(std::uint32_t byteCount) {
    constexpr std::uint32_t kPiece = std::uint32_t{1} << 20;
    std::string bytes;
    while (bytes.size() < byteCount) {
      const std::size_t before = bytes.size();
      bytes.resize(before + std::min<std::size_t>(kPiece, byteCount - before));
      const std::size_t count = _reader.read(bytes.data() + before, bytes.size() - before);
      _offset += count;
      refuseUnless(before + count == bytes.size(), _offset, "the file is cut");
    }
    _sum.add(bytes.data(), byteCount);
    return bytes;
  }

  // What is behind all that was read.
  void checkEnd() {
    const std::uint32_t expected = _sum.value();
    const std::uint64_t place = _offset;
    const std::string sum = read(sizeof expected);
    refuseUnless(std::memcmp(sum.data(), &expected, sizeof expected) == 0, place,
                 "the checksum differs");
    char more;
    refuseUnless(_reader.read(&more, 1) == 0, _offset, "something follows the end");
  }

  void check(int status, std::uint64_t offset, const std::string& what) const {
    if (status != 0) throw RefusedInput(_reader.name(), offset, what.c_str(), status);
  }
  void refuseUnless(bool isRight, std::uint64_t offset, const char* what) const {
    check(isRight ? kNoError : kInvalidParameterValue, offset, what);
  }

 private:
  ByteReader _reader;
  Checksum _sum;
  std::uint64_t _offset = 0;
};

// Whether name and value of a property lie in the images.
int checkProperty(const DynamicObject& object, std::uint32_t index) {
  const char* name = nullptr;
  PFormat format{};
  std::uint32_t length = 0;
  const unsigned char* bytes = nullptr;
  const int status = object.getPropertyValue(index, name, format, length, bytes);
  if (status != kNoError || format != DSKSTRINGUTF8BLOCK || bytes == nullptr) return status;
  std::uint32_t characterCount = 0;
  return intlStringUTF8VerifyCountchars(bytes, length, characterCount);
}

}  // namespace

ObjectPointer newObject(const DskObjectId& parent, DynamicObject::Kind kind) {
  ObjectPointer object(DynamicObject::createInstance(parent, kind));
  if (object == nullptr) throw std::runtime_error(messageText(kMemoryAllocationFailed));
  return object;
}

DynamicObject::Kind kindOf(const DynamicObject& object) {
  return object.getPropertyDescSize() == RpsDynamicObject::kDescSize ? DynamicObject::kRpsKind
                                                                     : DynamicObject::kKoraKind;
}

ObjectPointer readObject(const std::string& path) {
  SummedReader reader(path);
  FileHeader header;
  std::string start = reader.read(sizeof header.signature);
  reader.refuseUnless(start == kSignature, 0, "no object file");
  start += reader.read(sizeof header - sizeof header.signature);
  std::memcpy(&header, start.data(), sizeof header);
  const std::string descriptions = reader.read(header.descriptionLength);
  const std::string values = reader.read(header.valueLength);
  const std::string longValues = reader.read(header.longValueLength);
  reader.checkEnd();

  const auto kind = static_cast<DynamicObject::Kind>(header.kind);
  reader.refuseUnless(kind == DynamicObject::kKoraKind || kind == DynamicObject::kRpsKind,
                      offsetof(FileHeader, kind), "a wrong kind");
  ObjectPointer object = newObject(header.parent, kind);
  reader.check(object->checkFormat(header.formatDesc), offsetof(FileHeader, formatDesc),
               "a wrong format");
  const std::uint32_t descSize = object->getPropertyDescSize();
  reader.refuseUnless(header.descriptionLength % descSize == 0,
                      offsetof(FileHeader, descriptionLength), "a wrong length");
  int status = object->setPropertyDescriptions(descriptions.data(), header.descriptionLength);
  if (status == kNoError) status = object->setValues(values.data(), header.valueLength);
  if (status == kNoError) status = object->setLongValues(longValues.data(), header.longValueLength);
  reader.check(status, sizeof header, "the images");
  object->setRevision(header.revision);
  for (std::uint32_t index = 1; index <= object->getPropertyCount(); ++index) {
    reader.check(checkProperty(*object, index), sizeof header + std::uint64_t{index - 1} * descSize,
                 "property " + std::to_string(index));
  }
  return object;
}

void writeObject(const DynamicObject& object, const std::string& path, std::ostream& err) {
  const std::string_view images[] = {viewOf(object.getPropertyDescriptions()),
                                     viewOf(object.getValues()), viewOf(object.getLongValues())};
  FileHeader header;
  kSignature.copy(header.signature, sizeof header.signature);
  header.kind = kindOf(object);
  header.revision = object.getRevision();
  header.parent = object.getParentOid();
  header.descriptionLength = static_cast<std::uint32_t>(images[0].size());
  header.valueLength = static_cast<std::uint32_t>(images[1].size());
  header.longValueLength = static_cast<std::uint32_t>(images[2].size());
  std::memcpy(header.formatDesc, object.getFormatDesc(), sizeof header.formatDesc);

  RunProgress progress(err, true);
  ByteWriter writer(path);
  Checksum sum;
  const auto write = [&](const void* bytes, std::size_t byteCount) {
    sum.add(bytes, static_cast<std::uint32_t>(byteCount));
    writer.write({static_cast<const char*>(bytes), byteCount});
  };
  write(&header, sizeof header);
  for (const std::string_view image : images) write(image.data(), image.size());
  const std::uint32_t value = sum.value();
  writer.write({reinterpret_cast<const char*>(&value), sizeof value});
  progress.reach(0);
  writer.commit();
}

}  // namespace nomtool
