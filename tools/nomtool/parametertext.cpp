// Texts are stored by the rule of their format, and shown by the library's own conversion. Nothing
// is asked for that a format has not, since the library logs each refusal.
#include "parametertext.h"

#include "storednumber.h"
#include "valuetext.h"

#include "sys/decimals.h"
#include "sys/messages.h"

#include <cstdint>
#include <cstring>
#include <optional>

namespace nomtool {
namespace {

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

// Strings and binaries of every kind are set by the copies into a parameter.
int storeBytesOfText(BuiltParameter& built, const std::string& text, std::uint32_t characterCount) {
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

int storeCharacters(BuiltParameter& built, const std::string& text) {
  const PFormat format = built.parameter.header.format;
  const bool isUtf8 = format == DSKSTRINGUTF8BLOCK || format == DSKKORASTRINGUTF8;
  const ConvertedText characters =
      convert(IntlFormat::Utf8, text, isUtf8 ? IntlFormat::Utf8 : IntlFormat::CodePage);
  if (characters.status != kNoError) return characters.status;
  if (format != DSKCHARACTER)
    return storeBytesOfText(built, characters.text, characters.characterCount);
  if (characters.text.size() != 1) return kInvalidParameterValue;
  built.parameter.setValue(characters.text.front());
  return kNoError;
}

}  // namespace

unsigned formatOf(const std::string& name) {
  for (unsigned number = 1; number < 256; ++number) {
    const ParamFormatInfo* const format = findParamFormat(number);
    if (format != nullptr && (name == format->enumerator || name == std::to_string(number))) {
      return number;
    }
  }
  return 0;
}

ConvertedText convert(IntlFormat from, std::string_view text, IntlFormat to) {
  constexpr std::size_t kMostBytes = 3;  // of UTF-8 for a byte of the code page
  ConvertedText result{kNoError, std::string(kMostBytes * text.size(), '\0'), 0};
  std::uint32_t byteCount = 0;
  result.status = intlConvertString(
      from, text.data(), static_cast<std::uint32_t>(text.size()), to, result.text.data(),
      static_cast<std::uint32_t>(result.text.size()), byteCount, result.characterCount);
  result.text.resize(byteCount);
  return result;
}

int storeText(BuiltParameter& built, const std::string& text) {
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
      return bytes ? storeBytesOfText(built, *bytes, 0) : kInvalidParameterValue;
    }
    case DSKNULL:
      return text.empty() ? kNoError : kInvalidParameterValue;
    default:
      return storeCharacters(built, text);
  }
}

ConvertedText textOf(const DskParam& parameter, std::size_t inputSize) {
  if (parameter.header.format == DSKNULL) return {kNoError, "none", 0};
  // A binary takes 3 characters for each 2 of its input, and no other text is longer than its input
  // but those of numbers, of which the smallest reals have some 330 characters.
  std::string text(2 * inputSize + 512, '\0');
  const int status = paramToString(&parameter, text.data(), static_cast<unsigned>(text.size()));
  if (status != kNoError) return {status, {}, 0};
  return convert(IntlFormat::CodePage, text.c_str(), IntlFormat::Utf8);
}

}  // namespace nomtool
