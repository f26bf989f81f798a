// A parameter of a format, built from a text: its bytes, its text, its binary image. The command
// line and the output are UTF-8; strings lie in the parameter as characters of the code page, but
// those of the UTF-8 formats. `nomtool param DSKINTEGER -1` shows the value ff ff ff ff, the text
// -1, and an image that is the value. Nothing is asked for that a format has not, since the library
// logs each refusal.
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "nomos/intl.h"
#include "sys/decimals.h"
#include "sys/messages.h"
#include "sys/params.h"

#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

// The number of a format that is given by its number or its enumerator; 0 for none.
unsigned formatOf(const std::string& name) {
  for (unsigned number = 1; number < 256; ++number) {
    const ParamFormatInfo* const format = findParamFormat(number);
    if (format != nullptr && (name == format->enumerator || name == std::to_string(number))) {
      return number;
    }
  }
  return 0;
}

// A parameter and the memory that its value lies in.
struct Built {
  DskParam parameter = DskParam::allZero();
  std::string memory;

  ~Built() { paramDeleteKoraAny(&parameter); }
};

// Numbers separated by commas, each stored as its T at the place that follows from the types.
template <class... Ts>
int storeNumbers(DskParam& parameter, std::string_view text) {
  unsigned char* to = parameter.value;
  int status = kNoError;
  unsigned left = sizeof...(Ts);
  const auto storeOne = [&](auto zero) {
    const std::size_t comma = --left == 0 ? text.size() : text.find(',');
    const auto number = numberOf<decltype(zero)>(text.substr(0, comma));
    if (!number || (left != 0 && comma == std::string_view::npos)) {
      status = kInvalidParameterValue;
      return;
    }
    std::memcpy(to, &*number, sizeof *number);
    to += sizeof *number;
    if (left != 0) text.remove_prefix(comma + 1);
  };
  (..., (status == kNoError ? storeOne(Ts{}) : void()));
  return status;
}

int storeBytes(DskParam& parameter, const std::string& digits, std::size_t size) {
  const std::optional<std::string> bytes = bytesFromHex(digits);
  if (!bytes || bytes->size() != size) return kInvalidParameterValue;
  std::memcpy(parameter.value, bytes->data(), size);
  return kNoError;
}

struct Converted {
  int status;
  std::string text;
  std::uint32_t characterCount;
};

Converted convert(IntlFormat from, std::string_view text, IntlFormat to) {
  constexpr std::size_t kMostBytes = 3;  // of UTF-8 for a byte of the code page
  Converted result{kNoError, std::string(kMostBytes * text.size(), '\0'), 0};
  std::uint32_t byteCount = 0;
  result.status = intlConvertString(
      from, text.data(), static_cast<std::uint32_t>(text.size()), to, result.text.data(),
      static_cast<std::uint32_t>(result.text.size()), byteCount, result.characterCount);
  result.text.resize(byteCount);
  return result;
}

// Strings and binaries of every kind are set by the copies into a parameter.
int storeText(Built& built, const std::string& text, std::uint32_t characterCount) {
  DskParam& parameter = built.parameter;
  const auto length = static_cast<std::uint32_t>(text.size());
  built.memory.assign(text.size() + 1, '\0');
  char* const room = built.memory.data();
  auto* const bytes = reinterpret_cast<unsigned char*>(room);
  switch (parameter.header.format) {
    case DSKCSTRING:
    case DSKCSTRING2:
      std::memcpy(room, text.data(), text.size());
      parameter.setValue(room);
      return kNoError;
    case DSKSTRINGBLOCK:
      parameter.setValue(DskStringBlock{room, 0, 0, length});
      break;
    case DSKBINARYBLOCK:
      parameter.setValue(DskBinaryBlock{bytes, 0, 0, length});
      break;
    case DSKSTRINGUTF8BLOCK:
      parameter.setValue(StringUtf8Info{bytes, 0, 0, length});
      break;
    case DSKANY:
      // Its first value, characters, makes it a string.
      parameter.setValue(DskHandlerValue{koraDataHandler, nullptr, &parameter});
      return paramcpy(&parameter, text.c_str(), length);
    case DSKKORASTRING:
    case DSKKORABINARY:
    case DSKKORASTRINGUTF8:
      parameter.setValue(DskHandlerValue{koraDataHandler, nullptr, &parameter});
      break;
    default:
      break;
  }
  return paramcpy(&parameter, static_cast<const void*>(text.data()), length, characterCount);
}

int storeCharacters(Built& built, const std::string& text) {
  const PFormat format = built.parameter.header.format;
  const bool isUtf8 = format == DSKSTRINGUTF8BLOCK || format == DSKKORASTRINGUTF8;
  const Converted characters =
      convert(IntlFormat::Utf8, text, isUtf8 ? IntlFormat::Utf8 : IntlFormat::CodePage);
  if (characters.status != kNoError) return characters.status;
  if (format != DSKCHARACTER) return storeText(built, characters.text, characters.characterCount);
  if (characters.text.size() != 1) return kInvalidParameterValue;
  built.parameter.setValue(characters.text.front());
  return kNoError;
}

int store(Built& built, const std::string& text) {
  DskParam& parameter = built.parameter;
  switch (parameter.header.format) {
    case DSKINTEGER:
      return storeNumbers<std::int32_t>(parameter, text);
    case DSKINTEGER64:
    case DSKTIMESTAMPINTERVAL:
      return storeNumbers<std::int64_t>(parameter, text);
    case DSKBYTE:
      return storeNumbers<std::uint8_t>(parameter, text);
    case DSKDATE:
    case DSKTIME:
      return storeNumbers<std::uint32_t>(parameter, text);
    case DSKTIMESTAMP:
      return storeNumbers<std::uint32_t, std::uint32_t>(parameter, text);
    case DSKTIMESTAMPOFFSET:
      return storeNumbers<std::uint32_t, std::uint32_t, std::int32_t>(parameter, text);
    case DSKPOINT:
      return storeNumbers<std::int32_t, std::int32_t>(parameter, text);
    case DSKMEMORYADDRESS:
      return storeNumbers<std::uint64_t, std::uint32_t>(parameter, text);
    case DSKDOTTEDPAIR:
    case DSKDOTTEDPAIR2:
      return storeNumbers<std::uint32_t, std::uint16_t>(parameter, text);
    case DSKNUMBERANDPAIR:
      return storeNumbers<std::uint32_t, std::uint32_t, std::uint16_t>(parameter, text);
    case DSKDOTTEDTRIPLE:
      return storeNumbers<std::uint64_t, std::uint32_t, std::uint16_t, std::uint8_t>(parameter,
                                                                                     text);
    case DSKSHORTREAL:
      return storeNumbers<float>(parameter, text);
    case DSKREAL:
      return storeNumbers<double>(parameter, text);
    case DSKBOOLEAN:
      parameter.setValue(text == "true");
      return text == "true" || text == "false" ? kNoError : kInvalidParameterValue;
    case DSKDECIMAL: {
      const StoredNumber number = storeNumber(text);
      parameter.setValue(number.stored);
      return number.status;
    }
    case DSKOBJECTID:
    case DSKSHORTOBJECTID:
      return storeBytes(parameter, text, findParamFormat(parameter.header.format)->valueSize);
    case DSKBINARY:
    case DSKKORABINARY:
    case DSKBINARYBLOCK: {
      const std::optional<std::string> bytes = bytesFromHex(text);
      return bytes ? storeText(built, *bytes, 0) : kInvalidParameterValue;
    }
    case DSKNULL:
      return text.empty() ? kNoError : kInvalidParameterValue;
    default:
      return storeCharacters(built, text);
  }
}

bool hasImage(const DskParam& parameter) {
  switch (parameter.header.format) {
    case DSKBINARY:
    case DSKSHORTREAL:
    case DSKSHORTOBJECTID:
    case DSKKORASTRING:
    case DSKNULL:
    case DSKMEMORYADDRESS:
      return false;
    default:
      return std::string_view(findParamFormat(parameter.header.format)->family) != "rendered";
  }
}

std::string imageOf(const DskParam& parameter) {
  if (!hasImage(parameter)) return "none";
  ShortDskParam view = ShortDskParam::allZero();
  paramAsBinary(&view, reinterpret_cast<const ShortDskParam*>(&parameter));
  const auto block = view.getValue<DskBinaryBlock>();
  return hexOf(block.data, block.length);
}

// The bytes of the value. Those of pointers are left out: they differ from one run to the next.
std::string valueOf(const DskParam& parameter) {
  const PFormat format = parameter.header.format;
  const ParamFormatInfo& info = *findParamFormat(format);
  if (!info.fitsShortParam) {
    unsigned length = 0;
    paramBytesLen(&parameter, &length);
    return hexOf(parameter.value, offsetof(DskString, data) + std::size_t{length});
  }
  const std::string_view family = info.family;
  const bool isPlain = family == "fixed" || family == "rendered" || family == "null";
  return isPlain && format != DSKCSTRING2 ? hexOf(parameter.value, info.valueSize) : "pointers";
}

// The text of a value that was given in inputSize bytes.
Converted textOf(const DskParam& parameter, std::size_t inputSize) {
  if (parameter.header.format == DSKNULL) return {kNoError, "none", 0};
  // A binary takes 3 characters for each 2 of its input, and no other text is longer than its input
  // but those of numbers, of which the smallest reals have some 330 characters.
  std::string text(2 * inputSize + 512, '\0');
  const int status = paramToString(&parameter, text.data(), static_cast<unsigned>(text.size()));
  if (status != kNoError) return {status, {}, 0};
  return convert(IntlFormat::CodePage, text.c_str(), IntlFormat::Utf8);
}

}  // namespace

int paramCommand(const ParamOptions& options, std::ostream& out, std::ostream& err) {
  const unsigned format = formatOf(options.format);
  if (format == 0) {
    err << "nomtool: " << inQuotes(options.format) << " is no format; see nomtool formats\n";
    return kExitUsage;
  }
  const auto built = std::make_unique<Built>();
  built->parameter.header.format = static_cast<PFormat>(format);
  int status = store(*built, options.text);
  Converted text{};
  if (status == kNoError) {
    text = textOf(built->parameter, options.text.size());
    status = text.status;
  }
  if (status != kNoError) {
    err << inQuotes(options.text) << ": " << messageText(status) << '\n';
    return kExitRefused;
  }

  // A DSKANY has become what it holds.
  const DskParam& parameter = built->parameter;
  const nlohmann::ordered_json forms = {
      {"format", findParamFormat(parameter.header.format)->enumerator},
      {"header", hexOf(&parameter, sizeof(DskParamHeader))},
      {"value", valueOf(parameter)},
      {"text", text.text},
      {"image", imageOf(parameter)}};
  if (options.json) {
    out << forms.dump(2) << '\n';
    return kExitDone;
  }
  for (const auto& [name, value] : forms.items()) {
    out << name << std::string(8 - name.size(), ' ') << value.get<std::string>() << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
