// A parameter of a format, built from a text: its bytes, its text, its binary image.
#include "commands.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/datetime.h"
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
  DskDataHandler handler = nullptr;

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

// Strings of every kind are set by the copies into a parameter.
int storeText(Built& built, const std::string& text) {
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
    case DSKKORASTRING:
    case DSKKORABINARY:
    case DSKKORASTRINGUTF8:
      parameter.setValue(DskHandlerValue{koraDataHandler, nullptr, &parameter});
      break;
    default:
      break;
  }
  return paramcpy(&parameter, static_cast<const void*>(text.data()), length);
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
    case DSKSHORTREAL:
      return storeNumbers<float>(parameter, text);
    case DSKREAL:
      return storeNumbers<double>(parameter, text);
    case DSKCHARACTER:
      parameter.setValue(text.empty() ? '\0' : text.front());
      return text.size() == 1 ? kNoError : kInvalidParameterValue;
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
      return bytes ? storeText(built, *bytes) : kInvalidParameterValue;
    }
    case DSKNULL:
      return text.empty() ? kNoError : kInvalidParameterValue;
    default:
      return storeText(built, text);
  }
}

// The image is a view of the value, or none.
std::string imageOf(const DskParam& parameter) {
  ShortDskParam view = ShortDskParam::allZero();
  if (paramAsBinary(&view, reinterpret_cast<const ShortDskParam*>(&parameter)) != kNoError) {
    return "none";
  }
  const auto block = view.getValue<DskBinaryBlock>();
  return hexOf(block.data, block.length);
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
  if (const int status = store(*built, options.text); status != kNoError) {
    err << inQuotes(options.text) << ": " << messageText(status) << '\n';
    return kExitRefused;
  }

  const ParamFormatInfo& info = *findParamFormat(format);
  unsigned length = 0;
  paramBytesLen(&built->parameter, &length);
  const std::size_t shown =
      info.fitsShortParam ? info.valueSize : offsetof(DskString, data) + std::size_t{length};
  char text[1024];
  const int status = paramToString(&built->parameter, text, sizeof text);
  // Pointers are left out: they differ from one run to the next.
  const bool isPlain = std::string_view(info.family) == "fixed" || format == DSKNULL;
  const bool hasPointer = !isPlain && info.fitsShortParam;
  nlohmann::ordered_json forms = {
      {"format", info.enumerator},
      {"header", hexOf(&built->parameter, sizeof(DskParamHeader))},
      {"value", hasPointer ? "pointers" : hexOf(built->parameter.value, shown)},
      {"text", status == kNoError ? std::string(text) : messageText(status)},
      {"image", imageOf(built->parameter)}};
  if (options.json) {
    out << forms.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return kExitDone;
  }
  for (const auto& [name, value] : forms.items()) {
    out << name << std::string(8 - name.size(), ' ') << value.get<std::string>() << '\n';
  }
  return kExitDone;
}

}  // namespace nomtool
