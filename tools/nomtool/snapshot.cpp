// All numbers are little-endian. The CRC-32 of a header, a block or the trailer covers what stands
// before it and, of a block, its bytes; it is checked before anything else is believed.
#include "snapshot.h"

#include "checksum.h"
#include "storednumber.h"

#include "sys/compress.h"
#include "sys/messages.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <set>

namespace nomtool {
namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::string_view kSignature = "NOMSNP1\n";
constexpr std::string_view kAbsentName = "absent fields";
constexpr std::size_t kFixedHeaderSize = 32;
constexpr std::size_t kChecksumSize = 4;
constexpr char kBlockOfBytes = 9;               // the first byte of a compressed block of bytes
constexpr std::uint64_t kMostExpansion = 1032;  // bytes that one of a deflate stream can give
constexpr const char* kWrongHeader = "a wrong header";
constexpr std::uint32_t kReturnsFlag = 1;
constexpr std::uint32_t kLastRowEndedFlag = 2;
constexpr std::uint32_t kMarkFlag = 4;
constexpr std::uint32_t kAbsentFlag = 8;

template <class T>
void putNumber(std::string& bytes, T number) {
  char room[sizeof number];
  std::memcpy(room, &number, sizeof number);
  bytes.append(room, sizeof room);
}

template <class T>
T numberAt(std::string_view bytes, std::size_t offset) {
  T number{};
  std::memcpy(&number, bytes.data() + offset, sizeof number);
  return number;
}

std::uint32_t checksumOf(std::string_view bytes, std::string_view more = {}) {
  Checksum sum;
  sum.add(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  sum.add(more.data(), static_cast<std::uint32_t>(more.size()));
  return sum.value();
}

void appendChecksum(std::string& bytes) {
  putNumber(bytes, checksumOf(bytes));
}

bool endsWithChecksum(std::string_view bytes) {
  const std::size_t length = bytes.size() - kChecksumSize;
  return numberAt<std::uint32_t>(bytes, length) == checksumOf(bytes.substr(0, length));
}

void refuseUnless(bool isRight, const char* what) {
  if (!isRight) throw DamagedSnapshot(what);
}

void check(int status) {
  if (status != 0) throw std::runtime_error(messageText(status));
}

std::string_view viewOf(const KoraString<unsigned char>& image) {
  return {reinterpret_cast<const char*>(image.data()), image.length()};
}

// A row's object is known by its number, from 1.
DskObjectId identifierOf(std::uint64_t row) {
  DskObjectId id{};
  id.instanceId = row + 1;
  return id;
}

void setImage(int (DynamicObject::*set)(const void*, std::uint32_t), DynamicObject& object,
              std::string_view bytes) {
  check((object.*set)(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
}

// The properties have the names of the columns, as far as names of properties can be so.
std::string propertyName(const std::string& column, std::size_t index,
                         std::set<std::string>& taken) {
  const bool isName = !column.empty() && column.size() <= DynamicObject::kMaximumNameLength &&
                      column.find('\0') == column.npos && column != kAbsentName;
  const std::string number = "column " + std::to_string(index + 1);
  std::string name = isName && !taken.contains(column) ? column : number;
  for (unsigned i = 2; !taken.insert(name).second; ++i) name = number + ' ' + std::to_string(i);
  return name;
}

}  // namespace

DamagedSnapshot::DamagedSnapshot(const char* what)
    : DamagedSnapshot(what, kInvalidParameterValue) {}

DamagedSnapshot::DamagedSnapshot(const char* what, int status)
    : std::runtime_error(what + (": " + messageText(status))) {}

SnapshotSchema::SnapshotSchema(const TextForm& form, std::vector<std::string> names,
                               std::vector<ColumnForm> forms, bool hasAbsent, std::uint64_t salt)
    : _form(form),
      _names(std::move(names)),
      _forms(std::move(forms)),
      _hasAbsent(hasAbsent),
      _salt(salt) {
  _describe();
  if (_descriptions.size() > kMostHeaderText) {
    throw std::length_error(std::to_string(_names.size()) +
                            " columns are more than a snapshot can describe");
  }
  if (firstLine().size() > kMostHeaderText) {
    throw std::length_error("the names of the columns take more than 16 MiB");
  }
}

void SnapshotSchema::_describe() {
  KoraDynamicObject object(identifierOf(0));
  std::set<std::string> taken;
  for (std::size_t i = 0; i < _forms.size(); ++i) {
    const std::string name = propertyName(_names[i], i, taken);
    check(object.addAttribute(name.c_str(), formatOf(_forms[i])));
    check(object.setPropertyUsage(name.c_str(), static_cast<std::uint8_t>(_forms[i])));
  }
  if (_hasAbsent) check(object.addAttribute(kAbsentName.data(), DSKBINARY));
  _descriptions = viewOf(object.getPropertyDescriptions());
  _emptyValues = viewOf(object.getValues());
}

std::string SnapshotSchema::firstLine() const {
  std::string text;
  for (std::size_t i = 0; i < _names.size(); ++i) {
    if (i != 0) text += _form.delimiter;
    appendField(text, _names[i], _form.delimiter);
  }
  return text;
}

std::string SnapshotSchema::header() const {
  const std::string text = firstLine();
  std::string bytes(kSignature);
  putNumber(bytes, (_form.hasReturns ? kReturnsFlag : 0) |
                       (_form.isLastRowEnded ? kLastRowEndedFlag : 0) |
                       (_form.hasMark ? kMarkFlag : 0) | (_hasAbsent ? kAbsentFlag : 0));
  putNumber(bytes, std::uint32_t{static_cast<unsigned char>(_form.delimiter)});
  putNumber(bytes, static_cast<std::uint32_t>(text.size()));
  putNumber(bytes, static_cast<std::uint32_t>(_descriptions.size()));
  putNumber(bytes, _salt);
  const KoraDynamicObject object(identifierOf(0));
  bytes.append(reinterpret_cast<const char*>(object.getFormatDesc()), object.getFormatDescSize());
  bytes += text;
  bytes += _descriptions;
  appendChecksum(bytes);
  return bytes;
}

std::optional<std::size_t> SnapshotSchema::headerLength(std::string_view bytes) {
  if (bytes.size() < kFixedHeaderSize) return std::nullopt;
  refuseUnless(bytes.substr(0, kSignature.size()) == kSignature, "no snapshot");
  const auto text = numberAt<std::uint32_t>(bytes, 16);
  const auto descriptions = numberAt<std::uint32_t>(bytes, 20);
  refuseUnless(text <= kMostHeaderText && descriptions <= kMostHeaderText, kWrongHeader);
  return kFixedHeaderSize + DynamicObject::kFormatDescSize + text + descriptions + kChecksumSize;
}

SnapshotSchema SnapshotSchema::fromHeader(std::string_view bytes) {
  refuseUnless(endsWithChecksum(bytes), "the checksum of the header differs");
  SnapshotSchema schema;
  const auto flags = numberAt<std::uint32_t>(bytes, 8);
  const auto delimiter = numberAt<std::uint32_t>(bytes, 12);
  schema._form = {static_cast<char>(delimiter), (flags & kMarkFlag) != 0,
                  (flags & kReturnsFlag) != 0, (flags & kLastRowEndedFlag) != 0};
  schema._hasAbsent = (flags & kAbsentFlag) != 0;
  schema._salt = numberAt<std::uint64_t>(bytes, 24);
  const std::string_view formatDesc =
      bytes.substr(kFixedHeaderSize, DynamicObject::kFormatDescSize);
  const KoraDynamicObject object(identifierOf(0));
  const int status = object.checkFormat(reinterpret_cast<const unsigned char*>(formatDesc.data()));
  if (status != 0) throw DamagedSnapshot("objects of another format", status);

  const std::size_t textOffset = kFixedHeaderSize + formatDesc.size();
  const std::string_view text = bytes.substr(textOffset, numberAt<std::uint32_t>(bytes, 16));
  RowScanner scanner(text, schema._form);
  if (scanner.next()) {
    schema._names.assign(scanner.fields().begin(), scanner.fields().end());
  } else {
    schema._names.emplace_back();  // the only column, without a name
  }
  schema._descriptions = bytes.substr(textOffset + text.size(), numberAt<std::uint32_t>(bytes, 20));
  schema._readDescriptions();
  // A mark is no part of a name.
  refuseUnless(schema._form.hasMark || !text.starts_with(kTextMark), kWrongHeader);
  // The first line is written as it would be, and no flag is unknown.
  refuseUnless(isDelimiter(schema._form.delimiter) && schema.header() == bytes, kWrongHeader);
  return schema;
}

// The descriptions are those that the names and the forms give, and nothing else.
void SnapshotSchema::_readDescriptions() {
  const std::string descriptions = _descriptions;
  KoraDynamicObject object(identifierOf(0));
  const int status = object.setPropertyDescriptions(
      descriptions.data(), static_cast<std::uint32_t>(descriptions.size()));
  if (status != 0) throw DamagedSnapshot(kWrongHeader, status);
  for (std::uint32_t i = 1; i <= _names.size(); ++i) {
    std::uint8_t usage = 0;
    refuseUnless(object.getPropertyUsage(i, usage) == 0 && usage < kColumnFormCount, kWrongHeader);
    _forms.push_back(static_cast<ColumnForm>(usage));
  }
  _describe();
  refuseUnless(_descriptions == descriptions, kWrongHeader);
}

std::string blockMark(std::uint64_t salt) {
  std::string mark("NBLK");
  putNumber(mark, salt);
  return mark;
}

std::string trailerMark(std::uint64_t salt) {
  std::string mark("NEND");
  putNumber(mark, salt);
  return mark;
}

std::string sealedBlockHeader(std::uint64_t salt, SnapshotBlock block, std::string_view bytes) {
  std::string header = blockMark(salt);
  putNumber(header, block.number);
  putNumber(header, block.firstRow);
  putNumber(header, block.rowCount);
  putNumber(header, block.expandedLength);
  putNumber(header, static_cast<std::uint32_t>(bytes.size()));
  putNumber(header, checksumOf(header, bytes));
  return header;
}

std::string trailerBytes(std::uint64_t salt, const SnapshotTrailer& trailer) {
  std::string bytes = trailerMark(salt);
  putNumber(bytes, trailer.blockCount);
  putNumber(bytes, trailer.rowCount);
  putNumber(bytes, trailer.sourceBytes);
  putNumber(bytes, trailer.changedRows);
  appendChecksum(bytes);
  return bytes;
}

SnapshotBlock blockFrom(std::string_view header) {
  const SnapshotBlock block = {
      numberAt<std::uint32_t>(header, 12), numberAt<std::uint64_t>(header, 16),
      numberAt<std::uint32_t>(header, 24), numberAt<std::uint32_t>(header, 28),
      numberAt<std::uint32_t>(header, 32), numberAt<std::uint32_t>(header, 36)};
  refuseUnless(block.expandedLength <= kMostBlockBytes && block.length <= kMostBlockBytes,
               "a wrong length");
  refuseUnless(block.number + 1 != 0 && block.firstRow + block.rowCount >= block.firstRow,
               "a wrong number");
  return block;
}

SnapshotTrailer trailerFrom(std::string_view bytes) {
  refuseUnless(endsWithChecksum(bytes), "the checksum of the trailer differs");
  return {numberAt<std::uint32_t>(bytes, 12), numberAt<std::uint64_t>(bytes, 16),
          numberAt<std::uint64_t>(bytes, 24), numberAt<std::uint64_t>(bytes, 32)};
}

bool isIntact(std::string_view header, std::string_view bytes) {
  const std::size_t length = kBlockHeaderSize - kChecksumSize;
  return numberAt<std::uint32_t>(header, length) == checksumOf(header.substr(0, length), bytes);
}

void BlockBuilder::clear() {
  _bytes.clear();
  _rowCount = 0;
}

bool BlockBuilder::add(std::uint64_t row, const std::vector<std::string_view>& fields) {
  const std::vector<ColumnForm>& forms = _schema.forms();
  KoraDynamicObject object(identifierOf(row));
  setImage(&DynamicObject::setPropertyDescriptions, object, _schema.descriptions());
  setImage(&DynamicObject::setValues, object, _schema.emptyValues());
  _absent.assign((forms.size() + 7) / 8, '\0');
  for (std::uint32_t i = 0; i < forms.size(); ++i) {
    if (fields[i].empty() && isFixed(forms[i])) {
      _absent[i / 8] = static_cast<char>(_absent[i / 8] | 1 << i % 8);
      continue;
    }
    const ValueBytes value = valueOf(forms[i], fields[i]);
    check(object.setPropertyValue(i + 1, value.length, value.data()));
  }
  if (_schema.hasAbsent()) {
    check(object.setPropertyValue(static_cast<std::uint32_t>(forms.size()) + 1,
                                  static_cast<std::uint32_t>(_absent.size()), _absent.data()));
  }
  const std::string_view values = viewOf(object.getValues());
  const std::string_view longValues = viewOf(object.getLongValues());
  const std::size_t length = 4 + values.size() + longValues.size();
  if (_rowCount != 0 && _bytes.size() + length > _fullBytes) return false;
  putNumber(_bytes, static_cast<std::uint32_t>(longValues.size()));
  _bytes += values;
  _bytes += longValues;
  ++_rowCount;
  return true;
}

void visitRows(const SnapshotSchema& schema, const SnapshotBlock& block, std::string_view bytes,
               RowVisitor& visitor) {
  const std::vector<ColumnForm>& forms = schema.forms();
  const auto columnCount = static_cast<std::uint32_t>(forms.size());
  const std::size_t valuesLength = schema.emptyValues().size();
  std::size_t at = 0;
  for (std::uint32_t row = 0; row < block.rowCount; ++row) {
    refuseUnless(bytes.size() - at >= 4 + valuesLength, "a row is cut");
    const auto longLength = numberAt<std::uint32_t>(bytes, at);
    at += 4;
    refuseUnless(bytes.size() - at - valuesLength >= longLength, "a row is cut");
    KoraDynamicObject object(identifierOf(block.firstRow + row));
    setImage(&DynamicObject::setPropertyDescriptions, object, schema.descriptions());
    setImage(&DynamicObject::setValues, object, bytes.substr(at, valuesLength));
    setImage(&DynamicObject::setLongValues, object, bytes.substr(at + valuesLength, longLength));
    at += valuesLength + longLength;

    const unsigned char* value = nullptr;
    std::uint32_t length = 0;
    const unsigned char* absent = nullptr;
    if (schema.hasAbsent()) {
      const int status = object.getPropertyValue(columnCount + 1, length, absent);
      if (status != 0) throw DamagedSnapshot("a wrong row", status);
      refuseUnless(length == (columnCount + 7) / 8, "a wrong row");
    }
    for (std::uint32_t i = 0; i < columnCount; ++i) {
      const bool isAbsent = absent != nullptr && (absent[i / 8] >> i % 8 & 1) != 0;
      const int status = object.getPropertyValue(i + 1, length, value);
      if (status != 0) throw DamagedSnapshot("a wrong row", status);
      visitor.field(i, isAbsent, {reinterpret_cast<const char*>(value), length});
    }
    visitor.endRow();
  }
  refuseUnless(at == bytes.size(), "something follows the last row");
}

void compressBlock(std::string_view bytes, HeldBytes& block) {
  constexpr int kMethod = kCompressZlib + kCompressLevelUnit * 6;
  block.clear();
  check(doAltCompress(false, reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<unsigned>(bytes.size()), kMethod, block.parameter()));
}

void expandBlock(std::string_view block, std::uint32_t expandedLength, std::string& bytes) {
  refuseUnless(!block.empty() && block.front() == kBlockOfBytes, "the block has another form");
  refuseUnless(expandedLength <= kMostExpansion * block.size(), "a wrong length");
  // Room for what the block shall give and no more, whatever it would expand to.
  bytes.resize(expandedLength);
  unsigned length = expandedLength;
  const int result = doZlibUncompress(reinterpret_cast<unsigned char*>(bytes.data()), &length,
                                      reinterpret_cast<const unsigned char*>(block.data()) + 1,
                                      static_cast<unsigned>(block.size() - 1));
  if (result > 0) throw std::runtime_error(messageText(result));
  if (result < 0 || length != expandedLength) {
    throw DamagedSnapshot("the block cannot be expanded", kUncompressFailed);
  }
}

}  // namespace nomtool
