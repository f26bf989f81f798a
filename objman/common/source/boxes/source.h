// The name under which this family reports broken contracts.
#ifndef NOMUTIL_BOXES_SOURCE_H
#define NOMUTIL_BOXES_SOURCE_H

namespace nomutil::boxes {

inline constexpr const char* kSource = "objman/common/source/boxes";

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_SOURCE_H
