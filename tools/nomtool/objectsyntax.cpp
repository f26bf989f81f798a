// The syntax of the commands on geometries, the optional libraries and dynamic objects: nomtool
// object define FILE NAME FORMAT VALUE.
#include "commandsyntax.h"

namespace nomtool {
namespace {

constexpr const char* kGeometryText =
    "WKT is a geometry as well-known text: \"POLYGON ((0 0, 2 0, 2 1, 0 0))\". OP is one of:\n"
    "union intersection difference symdifference; distance; contains within disjoint intersects\n"
    "touches crosses overlaps equals. Lengths and areas are in the units of the coordinates, on "
    "the\n"
    "plane. What GEOS cannot tell of a geometry is unknown.";

constexpr const char* kDoctorText =
    "Each optional library is shown with the name it was found under, its version and its path, "
    "or\n"
    "with what works without it. A missing one is no failure; message texts that are not in the\n"
    "language of the configuration are.";

constexpr const char* kObjectText =
    "FORMAT is a name of nomtool formats, such as String, Integer, Object (a reference) or\n"
    "StringUtf8, or its number or enumerator. VALUE is written as in nomtool param; a date also "
    "as\n"
    "2024-01-05, a timestamp as \"2024-01-05 10:30:00\". ID names an object or a type by class "
    "and\n"
    "number, as 2055.18, or is 12 or 22 bytes in hexadecimal digits. A VALUE that begins with -\n"
    "and is no number stands behind --.\n"
    "FILE is one object and its checksum; - is the standard input and output. It is replaced when\n"
    "the change is whole. One that is cut or damaged is refused.";

void declareLibraries(const CommandSyntax& syntax) {
  const auto [geometry, geometryOptions] = declareCommand<GeometryOptions>(
      syntax, "geometry", "A geometry, or two combined", geometryCommand);
  geometry->add_option("WKT", geometryOptions.left, "A geometry")->required();
  CLI::Option* operation = geometry->add_option("OP", geometryOptions.operation, "The operation");
  CLI::Option* right = geometry->add_option("WKT2", geometryOptions.right, "Another geometry");
  operation->needs(right);
  geometry->add_flag("--json", geometryOptions.json, "Print JSON");
  geometry->footer(kGeometryText);

  const auto [doctor, doctorOptions] = declareCommand<DoctorOptions>(
      syntax, "doctor", "Optional libraries and the configuration", doctorCommand);
  doctor->add_flag("--json", doctorOptions.json, "Print JSON");
  doctor->footer(kDoctorText);
}

void declareObject(const CommandSyntax& syntax) {
  const auto declared =
      declareCommand<ObjectOptions>(syntax, "object", "A dynamic object in a file", objectCommand);
  CLI::App* const group = declared.command;
  ObjectOptions& object = declared.options;
  group->require_subcommand(1);
  group->footer(kObjectText);
  const auto declare = [&](const char* action, const char* description) {
    CLI::App* command = group->add_subcommand(action, description);
    command->add_option("FILE", object.file, "The file of the object")->required();
    command->callback([&object, action] { object.action = action; });
    return command;
  };
  CLI::App* make = declare("new", "Make an object without properties");
  make->add_option("--parent", object.parent, "The object that it belongs to: an ID");
  make->add_flag("--relational", object.relational, "Of the kind with larger descriptions");

  CLI::App* define = declare("define", "Add a property, and set its value or none");
  CLI::App* set = declare("set", "Set the value of a property");
  for (CLI::App* command : {define, set}) {
    command->add_option("NAME", object.name, "Its name")->required()->transform(asGiven);
    if (command == define) command->add_option("FORMAT", object.format, "Its format")->required();
    CLI::Option* value = command->add_option("VALUE", object.value, "Its value");
    value->transform(asGiven);
    CLI::Option* usage = command->add_option("--usage", object.usage, "Its usage, 0 to 255");
    usage->check(CLI::Range(0u, 255u));
    if (command == define) command->add_option("--type", object.type, "Its type: an ID");
    if (command == set) command->add_flag("--null", object.null, "No value")->excludes(value);
  }

  CLI::App* show = declare("show", "Show the properties");
  show->add_flag("--images", object.images, "Show the bytes too, field by field");
  show->add_flag("--json", object.json, "Print JSON");
}

}  // namespace

void declareObjects(const CommandSyntax& syntax) {
  declareLibraries(syntax);
  declareObject(syntax);
}

}  // namespace nomtool
