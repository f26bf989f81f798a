// A dynamic object in a file (docs/formats/objectfile.md). `nomtool object define FILE age integer
// 42` adds a property of format 4 and sets its value. An object is read, changed and written back
// whole: what is refused leaves the file as it was.
#include "columnform.h"
#include "commands.h"
#include "objectfile.h"
#include "objectview.h"
#include "parametertext.h"
#include "runcommand.h"
#include "storednumber.h"
#include "valuetext.h"

#include "nomos/file.h"
#include "nomos/intl.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

// Refuses what the text says unless the status is 0.
void check(int status, const std::string& text) {
  if (status != kNoError) throw std::runtime_error(inQuotes(text) + ": " + messageText(status));
}

// The characters of the code page, unless it lacks one.
std::string codePageText(const std::string& text) {
  const ConvertedText held = convert(IntlFormat::Utf8, text, IntlFormat::CodePage);
  check(held.status, text);
  const bool comesBack = convert(IntlFormat::CodePage, held.text, IntlFormat::Utf8).text == text;
  check(comesBack ? kNoError : kInvalidParameterValue, text);
  return held.text;
}

// 2055.18, the number of the class and of the object, or 12 or 22 bytes of hexadecimal digits.
DskObjectId identifierOf(const std::string& text) {
  DskObjectId id{};
  if (const std::size_t point = text.find('.'); point != text.npos) {
    const auto classNumber = numberOf<std::uint32_t>(std::string_view(text).substr(0, point));
    const auto instance = numberOf<std::uint64_t>(std::string_view(text).substr(point + 1));
    const bool isRight = classNumber && instance && *classNumber <= 0xFFFFFF;
    check(isRight ? kNoError : kInvalidParameterValue, text);
    id.instanceId = *instance;
    std::memcpy(id.classId.bytes, &*classNumber, sizeof id.classId.bytes);
    return id;
  }
  const std::optional<std::string> bytes = bytesFromHex(text);
  const bool isRight =
      bytes && (bytes->size() == sizeof id || bytes->size() == sizeof(ShortDskObjectId));
  check(isRight ? kNoError : kInvalidParameterValue, text);
  std::memcpy(&id, bytes->data(), bytes->size());
  return id;
}

// A format by its number, its enumerator, or the name that show gives it; 0 for none.
PFormat formatOfProperty(const std::string& name) {
  unsigned number = formatOf(name);
  for (unsigned i = 1; number == 0 && i <= DSKTIMESTAMPOFFSET; ++i) {
    const bool isNamed = findParamFormat(i) != nullptr &&
                         nosStrcmpi(getParamFormatName(static_cast<PFormat>(i)), name.c_str()) == 0;
    if (isNamed) number = i;
  }
  // "Object" is that of references.
  const bool isReference = number == DSKOBJECTID && formatOf(name) == 0;
  return isReference ? DSKSHORTOBJECTID : static_cast<PFormat>(number);
}

// ---- Values ----

// The way of a value through a parameter of the property's format.
int setParameter(DynamicObject& object, const char* name, PFormat format, const std::string& text) {
  const auto built = std::make_unique<BuiltParameter>();
  DskParam& parameter = built->parameter;
  parameter.header.format = format;
  switch (format) {
    case DSKOBJECTID:
    case DSKSHORTOBJECTID:
      parameter.header.format = DSKOBJECTID;
      parameter.setValue(identifierOf(text));
      return object.setPropertyValue(name, &parameter);
    case DSKCSTRING:
    case DSKCHARACTER:
      codePageText(text);
      break;
    case DSKBINARY:
      parameter.header.format = DSKBINARYBLOCK;
      break;
    default:
      break;
  }
  check(storeText(*built, text), text);
  return object.setPropertyValue(name, &parameter);
}

// Dates may be written as 2024-01-05, timestamps as 2024-01-05 10:30:00.
int setText(DynamicObject& object, const char* name, const std::string& text) {
  PFormat format{};
  if (const int status = object.getPropertyFormat(name, format); status != kNoError) return status;
  if (format == DSKDATE || format == DSKTIMESTAMP) {
    const ColumnForms forms = formsOf(text, kAllForms);
    if (const ColumnForm form = firstForm(forms); forms != 0 && formatOf(form) == format) {
      const ValueBytes value = valueOf(form, text);
      return object.setPropertyValue(name, value.length, value.data());
    }
  }
  return setParameter(object, name, format, text);
}

void setProperty(DynamicObject& object, const ObjectOptions& options) {
  const std::string name = codePageText(options.name);
  if (options.value) check(setText(object, name.c_str(), *options.value), options.name);
  if (options.null) check(object.setPropertyValue(name.c_str(), 0, nullptr), options.name);
  if (options.usage) {
    const auto usage = static_cast<std::uint8_t>(*options.usage);
    check(object.setPropertyUsage(name.c_str(), usage), options.name);
  }
}

void defineProperty(DynamicObject& object, const ObjectOptions& options, PFormat format) {
  const DskObjectId type = options.type.empty() ? DskObjectId{} : identifierOf(options.type);
  const std::string name = codePageText(options.name);
  check(object.addAttribute(name.c_str(), type, format), options.name);
  setProperty(object, options);
}

// ---- Showing ----

std::string parentText(const DskObjectId& parent) {
  const DskObjectId none{};
  return std::memcmp(&parent, &none, sizeof none) == 0 ? "none" : OidFormatter().formatOid(parent);
}

const char* kindText(const DynamicObject& object) {
  return kindOf(object) == DynamicObject::kRpsKind ? "relational" : "ordinary";
}

// Texts stand in quotes, so that an empty one and one that says null can be told.
std::string shownValue(const PropertyView& property) {
  if (property.isNull) return "null";
  const bool isText = property.format == DSKCSTRING || property.format == DSKSTRINGUTF8BLOCK;
  return isText ? inQuotes(property.text) : oneLine(property.text);
}

void printProperties(const std::vector<PropertyView>& properties, std::ostream& out) {
  std::vector<std::vector<std::string>> rows = {
      {"index", "name", "format", "usage", "type", "value"}};
  for (const PropertyView& property : properties) {
    rows.push_back({std::to_string(rows.size()), oneLine(property.name),
                    getParamFormatName(property.format), std::to_string(property.usage),
                    property.type, shownValue(property)});
  }
  printColumns(rows, out);
}

// Of bytes that end in many zeros the first of those is shown, and ".." for the others.
std::size_t shownOf(std::string_view bytes) {
  constexpr std::size_t kFewestHidden = 16;
  const std::size_t last = bytes.find_last_not_of('\0');
  const std::size_t shown = (last == bytes.npos ? 0 : last + 1) + 1;
  return shown + kFewestHidden <= bytes.size() ? shown : bytes.size();
}

void printField(std::string_view bytes, const ImageField& field, int digits, std::ostream& out) {
  constexpr std::size_t kLine = 16;
  constexpr std::size_t kWidth = 3 * kLine + 1;
  const std::string_view held = bytes.substr(field.offset, field.length);
  const std::size_t shown = shownOf(held);
  for (std::size_t at = 0; at < shown; at += kLine) {
    const std::size_t count = std::min(kLine, shown - at);
    char offset[24];
    intlSnprintf(offset, sizeof offset, "%0*I64x", digits,
                 static_cast<unsigned long long>(field.offset + at));
    std::string line = std::string(offset) + "  " + hexOf(held.data() + at, count);
    if (at + count == shown && shown < held.size()) line += " ..";
    if (at == 0) {
      line.resize(static_cast<std::size_t>(digits) + 2 + kWidth + 2, ' ');
      line += oneLine(field.meaning);
    }
    out << line << '\n';
  }
}

void printImages(const std::vector<ImageView>& images, std::ostream& out) {
  for (const ImageView& image : images) {
    out << '\n' << image.name << ", " << image.bytes.size() << " bytes\n";
    int digits = 2;
    while (image.bytes.size() >> (4 * digits) != 0) ++digits;
    for (const ImageField& field : image.fields) printField(image.bytes, field, digits, out);
  }
}

Json jsonOf(const DynamicObject& object, bool withImages) {
  Json json = {{"parent", parentText(object.getParentOid())},
               {"kind", kindText(object)},
               {"revision", object.getRevision()},
               {"properties", Json::array()}};
  for (const PropertyView& property : propertiesOf(object)) {
    Json row = {{"name", property.name},
                {"format", getParamFormatName(property.format)},
                {"formatNumber", property.format},
                {"usage", property.usage},
                {"type", property.type}};
    row["value"] = property.isNull ? Json() : Json(property.text);
    row["bytes"] =
        property.isNull ? Json() : Json(hexOf(property.bytes.data(), property.bytes.size()));
    json["properties"].push_back(row);
  }
  if (!withImages) return json;
  for (const ImageView& image : imagesOf(object)) {
    Json fields = Json::array();
    for (const auto& [offset, length, meaning] : image.fields) {
      fields.push_back({{"offset", offset},
                        {"bytes", hexOf(image.bytes.data() + offset, length)},
                        {"meaning", meaning}});
    }
    json["images"].push_back({{"name", image.name}, {"fields", fields}});
  }
  return json;
}

void show(const DynamicObject& object, const ObjectOptions& options, std::ostream& out) {
  if (options.json) {
    // Texts from outside may be no UTF-8.
    out << jsonOf(object, options.images).dump(2, ' ', false, Json::error_handler_t::replace)
        << '\n';
    return;
  }
  out << "parent    " << parentText(object.getParentOid()) << "\nkind      " << kindText(object)
      << "\nrevision  " << object.getRevision() << "\n\n";
  printProperties(propertiesOf(object), out);
  if (options.images) printImages(imagesOf(object), out);
}

void makeObject(const ObjectOptions& options, std::ostream& err) {
  const DskObjectId parent = options.parent.empty() ? DskObjectId{} : identifierOf(options.parent);
  const auto kind = options.relational ? DynamicObject::kRpsKind : DynamicObject::kKoraKind;
  writeObject(*newObject(parent, kind), options.file, err);
}

}  // namespace

int objectCommand(const ObjectOptions& options, std::ostream& out, std::ostream& err) {
  const bool isNew = options.action == "new";
  if (isNew && options.file != "-" && KoraFile().openReadOnly(options.file.c_str())) {
    err << "nomtool: " << options.file << " exists\n";
    return kExitUsage;
  }
  const bool isDefine = options.action == "define";
  const PFormat format = isDefine ? formatOfProperty(options.format) : PFormat{};
  if (isDefine && format == PFormat{}) {
    err << "nomtool: " << inQuotes(options.format) << " is no format; see nomtool formats\n";
    return kExitUsage;
  }
  if (options.action == "set" && !options.value && !options.null && !options.usage) {
    err << "nomtool: a value, --null or --usage is needed\n";
    return kExitUsage;
  }
  return runCommand(err, [&] {
    if (isNew) return makeObject(options, err);
    const ObjectPointer object = readObject(options.file);
    if (options.action == "show") return show(*object, options, out);
    isDefine ? defineProperty(*object, options, format) : setProperty(*object, options);
    writeObject(*object, options.file, err);
  });
}

}  // namespace nomtool
