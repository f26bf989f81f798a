// Dynamic objects in files, one in each: docs/formats/objectfile.md shows the bytes. A file is
// checked whole before anything of it is used, the values of its object too.
#ifndef NOMTOOL_OBJECTFILE_H
#define NOMTOOL_OBJECTFILE_H

#include "sys/dynaobj.h"

#include <memory>
#include <ostream>
#include <string>

namespace nomtool {

struct ObjectDeleter {
  void operator()(DynamicObject* object) const { DynamicObject::deleteInstance(object); }
};
using ObjectPointer = std::unique_ptr<DynamicObject, ObjectDeleter>;

// An object without properties. Throws runtime_error without memory.
ObjectPointer newObject(const DskObjectId& parent, DynamicObject::Kind kind);
DynamicObject::Kind kindOf(const DynamicObject& object);

// "-" is the standard input. Throws StreamFault, and RefusedInput for a file that is cut, damaged
// or followed by something, or whose images do not hold together.
ObjectPointer readObject(const std::string& path);

// "-" is the standard output. The file appears, or is replaced, when it is whole. Throws
// StreamFault, and Interrupted when the user has stopped the command.
void writeObject(const DynamicObject& object, const std::string& path, std::ostream& err);

}  // namespace nomtool

#endif  // NOMTOOL_OBJECTFILE_H
