// A parameter of a format, built from a text: its bytes, its text, its binary image. `nomtool param
// DSKINTEGER -1` shows the value ff ff ff ff, the text -1, and an image that is the value. Nothing
// is asked for that a format has not, since the library logs each refusal.
#include "commands.h"
#include "parametertext.h"
#include "storednumber.h"
#include "valuetext.h"

#include "sys/messages.h"
#include "sys/params.h"

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>

namespace nomtool {
namespace {

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

}  // namespace

int paramCommand(const ParamOptions& options, std::ostream& out, std::ostream& err) {
  const unsigned format = formatOf(options.format);
  if (format == 0) {
    err << "nomtool: " << inQuotes(options.format) << " is no format; see nomtool formats\n";
    return kExitUsage;
  }
  const auto built = std::make_unique<BuiltParameter>();
  built->parameter.header.format = static_cast<PFormat>(format);
  int status = storeText(*built, options.text);
  ConvertedText text{};
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
