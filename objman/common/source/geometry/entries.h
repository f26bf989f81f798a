// The table of the exports: one row each, from which the exports themselves, the cache of entries
// and docs/geometry.md are made. The row of GEOS_Area reads: GEOS_Area forwards to
//   int GEOSArea_r(GEOSContextHandle_t, const GEOSGeometry*, double*)
// whose result is a success flag.
//
// The conventions, r being what the entry gives:
//   Value      stores r in one more argument; status 0
//   Count      the same; status 1345 when r is negative
//   Success    status 0 when r is not 0, else 1345
//   Zero       status 0 when r is 0, else 1345
//   Predicate  one more argument, a byte, becomes r == 1; status 1345 when r, without a sign, is 2
//              or more
//   Object     the result is r; one more argument becomes the status, 1345 when r is null
//   Release    status 0
//   Own        an export of its own body
// Without the entry the status is 1008.
#ifndef NOMUTIL_GEOMETRY_ENTRIES_H
#define NOMUTIL_GEOMETRY_ENTRIES_H

#include "sys/geometry.h"

#include <cstddef>

namespace nomutil::geometry {

// Short names for the rows.
using Context = GEOSContextHandle_t;
using Geometry = GEOSGeometry;
using Sequence = GEOSCoordSequence;
using EntryMessageHandler = void (*)(const char* format, ...);

// The formatter takes the stars in the rows for products.
// clang-format off
// X(convention, export, entry, result of the entry, arguments of the entry)
#define NOMUTIL_GEOMETRY_ENTRIES(X)                                                                \
  NOMUTIL_GEOMETRY_LIBRARY_ENTRIES(X)                                                              \
  NOMUTIL_GEOMETRY_OBJECT_ENTRIES(X)                                                               \
  NOMUTIL_GEOMETRY_QUESTION_ENTRIES(X)                                                             \
  NOMUTIL_GEOMETRY_NEW_ENTRIES(X)                                                                  \
  NOMUTIL_GEOMETRY_PART_ENTRIES(X)                                                                 \
  NOMUTIL_GEOMETRY_SEQUENCE_ENTRIES(X)

#define NOMUTIL_GEOMETRY_LIBRARY_ENTRIES(X)                                                        \
  X(Own, GEOS_GetVersion, GEOSversion, const char*, ())                                            \
  X(Own, GEOS_Init, initGEOS_r, Context, (EntryMessageHandler, EntryMessageHandler))               \
  X(Release, GEOS_Finish, finishGEOS_r, void, (Context))                                           \
  X(Object, GEOS_WKTReaderCreate, GEOSWKTReader_create_r, GEOSWKTReader*, (Context))               \
  X(Release, GEOS_WKTReaderDestroy, GEOSWKTReader_destroy_r, void, (Context, GEOSWKTReader*))      \
  X(Own, GEOS_WKTReaderRead, GEOSWKTReader_read_r, Geometry*,                                      \
    (Context, GEOSWKTReader*, const char*))                                                        \
  X(Object, GEOS_WKTWriterCreate, GEOSWKTWriter_create_r, GEOSWKTWriter*, (Context))               \
  X(Release, GEOS_WKTWriterDestroy, GEOSWKTWriter_destroy_r, void, (Context, GEOSWKTWriter*))      \
  X(Own, GEOS_WKTWriterWrite, GEOSWKTWriter_write_r, char*,                                        \
    (Context, GEOSWKTWriter*, const Geometry*))                                                    \
  X(Object, GEOS_WKBReaderCreate, GEOSWKBReader_create_r, GEOSWKBReader*, (Context))               \
  X(Release, GEOS_WKBReaderDestroy, GEOSWKBReader_destroy_r, void, (Context, GEOSWKBReader*))      \
  X(Object, GEOS_WKBReaderRead, GEOSWKBReader_read_r, Geometry*,                                   \
    (Context, GEOSWKBReader*, const unsigned char*, std::size_t))                                  \
  X(Object, GEOS_WKBWriterCreate, GEOSWKBWriter_create_r, GEOSWKBWriter*, (Context))               \
  X(Release, GEOS_WKBWriterDestroy, GEOSWKBWriter_destroy_r, void, (Context, GEOSWKBWriter*))      \
  X(Own, GEOS_WKBWriterWrite, GEOSWKBWriter_write_r, unsigned char*,                               \
    (Context, GEOSWKBWriter*, const Geometry*, std::size_t*))                                      \
  X(Release, GEOS_Free, GEOSFree_r, void, (Context, void*))

#define NOMUTIL_GEOMETRY_OBJECT_ENTRIES(X)                                                         \
  X(Release, GEOS_Destroy, GEOSGeom_destroy_r, void, (Context, Geometry*))                         \
  X(Own, GEOS_GeometryType, GEOSGeomType_r, char*, (Context, const Geometry*))                     \
  X(Value, GEOS_GetCoordinateDimensions, GEOSGeom_getCoordinateDimension_r, int,                   \
    (Context, const Geometry*))                                                                    \
  X(Value, GEOS_GetDimensions, GEOSGeom_getDimensions_r, int, (Context, const Geometry*))          \
  X(Value, GEOS_GetSRID, GEOSGetSRID_r, int, (Context, const Geometry*))                           \
  X(Release, GEOS_SetSRID, GEOSSetSRID_r, void, (Context, Geometry*, int))

#define NOMUTIL_GEOMETRY_QUESTION_ENTRIES(X)                                                       \
  X(Predicate, GEOS_HasZ, GEOSHasZ_r, char, (Context, const Geometry*))                            \
  X(Predicate, GEOS_IsEmpty, GEOSisEmpty_r, char, (Context, const Geometry*))                      \
  X(Predicate, GEOS_IsSimple, GEOSisSimple_r, char, (Context, const Geometry*))                    \
  X(Predicate, GEOS_IsRing, GEOSisRing_r, char, (Context, const Geometry*))                        \
  X(Predicate, GEOS_IsValid, GEOSisValid_r, char, (Context, const Geometry*))                      \
  X(Predicate, GEOS_Contains, GEOSContains_r, char, (Context, const Geometry*, const Geometry*))   \
  X(Predicate, GEOS_Within, GEOSWithin_r, char, (Context, const Geometry*, const Geometry*))       \
  X(Predicate, GEOS_Disjoint, GEOSDisjoint_r, char, (Context, const Geometry*, const Geometry*))   \
  X(Predicate, GEOS_Intersects, GEOSIntersects_r, char,                                            \
    (Context, const Geometry*, const Geometry*))                                                   \
  X(Predicate, GEOS_Touches, GEOSTouches_r, char, (Context, const Geometry*, const Geometry*))     \
  X(Predicate, GEOS_Crosses, GEOSCrosses_r, char, (Context, const Geometry*, const Geometry*))     \
  X(Predicate, GEOS_Overlaps, GEOSOverlaps_r, char, (Context, const Geometry*, const Geometry*))   \
  X(Predicate, GEOS_Equals, GEOSEquals_r, char, (Context, const Geometry*, const Geometry*))       \
  X(Predicate, GEOS_EqualsExact, GEOSEqualsExact_r, char,                                          \
    (Context, const Geometry*, const Geometry*, double))                                           \
  X(Success, GEOS_Area, GEOSArea_r, int, (Context, const Geometry*, double*))                      \
  X(Success, GEOS_Length, GEOSLength_r, int, (Context, const Geometry*, double*))                  \
  X(Success, GEOS_Distance, GEOSDistance_r, int,                                                   \
    (Context, const Geometry*, const Geometry*, double*))

#define NOMUTIL_GEOMETRY_NEW_ENTRIES(X)                                                            \
  X(Object, GEOS_Envelope, GEOSEnvelope_r, Geometry*, (Context, const Geometry*))                  \
  X(Object, GEOS_ConvexHull, GEOSConvexHull_r, Geometry*, (Context, const Geometry*))              \
  X(Object, GEOS_Boundary, GEOSBoundary_r, Geometry*, (Context, const Geometry*))                  \
  X(Object, GEOS_UnionCascaded, GEOSUnionCascaded_r, Geometry*, (Context, const Geometry*))        \
  X(Object, GEOS_PointOnSurface, GEOSPointOnSurface_r, Geometry*, (Context, const Geometry*))      \
  X(Object, GEOS_GetCentroid, GEOSGetCentroid_r, Geometry*, (Context, const Geometry*))            \
  X(Object, GEOS_Intersection, GEOSIntersection_r, Geometry*,                                      \
    (Context, const Geometry*, const Geometry*))                                                   \
  X(Object, GEOS_Difference, GEOSDifference_r, Geometry*,                                          \
    (Context, const Geometry*, const Geometry*))                                                   \
  X(Object, GEOS_SymDifference, GEOSSymDifference_r, Geometry*,                                    \
    (Context, const Geometry*, const Geometry*))                                                   \
  X(Object, GEOS_Union, GEOSUnion_r, Geometry*, (Context, const Geometry*, const Geometry*))       \
  X(Zero, GEOS_Normalize, GEOSNormalize_r, int, (Context, Geometry*))                              \
  X(Object, GEOS_Buffer, GEOSBuffer_r, Geometry*, (Context, const Geometry*, double, int))         \
  X(Object, GEOS_BufferWithStyle, GEOSBufferWithStyle_r, Geometry*,                                \
    (Context, const Geometry*, double, int, int, int, double))                                     \
  X(Object, GEOS_BufferSingleSided, GEOSSingleSidedBuffer_r, Geometry*,                            \
    (Context, const Geometry*, double, int, int, double, int))                                     \
  X(Object, GEOS_CreatePoint, GEOSGeom_createPoint_r, Geometry*, (Context, Sequence*))             \
  X(Object, GEOS_CreateLineString, GEOSGeom_createLineString_r, Geometry*, (Context, Sequence*))   \
  X(Object, GEOS_CreateLinearRing, GEOSGeom_createLinearRing_r, Geometry*, (Context, Sequence*))   \
  X(Object, GEOS_CreatePolygon, GEOSGeom_createPolygon_r, Geometry*,                               \
    (Context, Geometry*, Geometry**, unsigned))                                                    \
  X(Object, GEOS_CreateCollection, GEOSGeom_createCollection_r, Geometry*,                         \
    (Context, int, Geometry**, unsigned))

#define NOMUTIL_GEOMETRY_PART_ENTRIES(X)                                                           \
  X(Count, GEOS_GetNumGeometries, GEOSGetNumGeometries_r, int, (Context, const Geometry*))         \
  X(Object, GEOS_GetGeometryN, GEOSGetGeometryN_r, const Geometry*,                                \
    (Context, const Geometry*, int))                                                               \
  X(Count, GEOS_GetNumInteriorRings, GEOSGetNumInteriorRings_r, int, (Context, const Geometry*))   \
  X(Object, GEOS_GetInteriorRingN, GEOSGetInteriorRingN_r, const Geometry*,                        \
    (Context, const Geometry*, int))                                                               \
  X(Object, GEOS_GetExteriorRing, GEOSGetExteriorRing_r, const Geometry*,                          \
    (Context, const Geometry*))                                                                    \
  X(Count, GEOS_GetNumCoordinates, GEOSGetNumCoordinates_r, int, (Context, const Geometry*))       \
  X(Object, GEOS_GetCoordSequence, GEOSGeom_getCoordSeq_r, const Sequence*,                        \
    (Context, const Geometry*))

#define NOMUTIL_GEOMETRY_SEQUENCE_ENTRIES(X)                                                       \
  X(Object, GEOS_CoordSeq_Create, GEOSCoordSeq_create_r, Sequence*, (Context, unsigned, unsigned)) \
  X(Release, GEOS_CoordSeq_Destroy, GEOSCoordSeq_destroy_r, void, (Context, Sequence*))            \
  X(Success, GEOS_CoordSeq_GetSize, GEOSCoordSeq_getSize_r, int,                                   \
    (Context, const Sequence*, unsigned*))                                                         \
  X(Success, GEOS_CoordSeq_GetDimensions, GEOSCoordSeq_getDimensions_r, int,                       \
    (Context, const Sequence*, unsigned*))                                                         \
  X(Success, GEOS_CoordSeq_GetX, GEOSCoordSeq_getX_r, int,                                         \
    (Context, const Sequence*, unsigned, double*))                                                 \
  X(Success, GEOS_CoordSeq_GetY, GEOSCoordSeq_getY_r, int,                                         \
    (Context, const Sequence*, unsigned, double*))                                                 \
  X(Success, GEOS_CoordSeq_GetZ, GEOSCoordSeq_getZ_r, int,                                         \
    (Context, const Sequence*, unsigned, double*))                                                 \
  X(Success, GEOS_CoordSeq_GetOrdinate, GEOSCoordSeq_getOrdinate_r, int,                           \
    (Context, const Sequence*, unsigned, unsigned, double*))                                       \
  X(Success, GEOS_CoordSeq_SetX, GEOSCoordSeq_setX_r, int, (Context, Sequence*, unsigned, double)) \
  X(Success, GEOS_CoordSeq_SetY, GEOSCoordSeq_setY_r, int, (Context, Sequence*, unsigned, double)) \
  X(Success, GEOS_CoordSeq_SetZ, GEOSCoordSeq_setZ_r, int, (Context, Sequence*, unsigned, double)) \
  X(Success, GEOS_CoordSeq_SetOrdinate, GEOSCoordSeq_setOrdinate_r, int,                           \
    (Context, Sequence*, unsigned, unsigned, double))
// clang-format on

// Of the arguments of a row, NOMUTIL_NAMED makes parameters and NOMUTIL_GIVEN passes them on:
// (int, double) becomes "int a, double b" and "a, b". Seven are the most.
#define NOMUTIL_NAMED1(A) A a
#define NOMUTIL_NAMED2(A, B) A a, B b
#define NOMUTIL_NAMED3(A, B, C) A a, B b, C c
#define NOMUTIL_NAMED4(A, B, C, D) A a, B b, C c, D d
#define NOMUTIL_NAMED5(A, B, C, D, E) A a, B b, C c, D d, E e
#define NOMUTIL_NAMED6(A, B, C, D, E, F) A a, B b, C c, D d, E e, F f
#define NOMUTIL_NAMED7(A, B, C, D, E, F, G) A a, B b, C c, D d, E e, F f, G g
#define NOMUTIL_GIVEN1 a
#define NOMUTIL_GIVEN2 a, b
#define NOMUTIL_GIVEN3 a, b, c
#define NOMUTIL_GIVEN4 a, b, c, d
#define NOMUTIL_GIVEN5 a, b, c, d, e
#define NOMUTIL_GIVEN6 a, b, c, d, e, f
#define NOMUTIL_GIVEN7 a, b, c, d, e, f, g
#define NOMUTIL_EIGHTH(A, B, C, D, E, F, G, H, ...) H
#define NOMUTIL_NAMED(...)                                                               \
  __VA_OPT__(NOMUTIL_EIGHTH(__VA_ARGS__, NOMUTIL_NAMED7, NOMUTIL_NAMED6, NOMUTIL_NAMED5, \
                            NOMUTIL_NAMED4, NOMUTIL_NAMED3, NOMUTIL_NAMED2,              \
                            NOMUTIL_NAMED1, )(__VA_ARGS__))
#define NOMUTIL_GIVEN(...)                                                               \
  __VA_OPT__(NOMUTIL_EIGHTH(__VA_ARGS__, NOMUTIL_GIVEN7, NOMUTIL_GIVEN6, NOMUTIL_GIVEN5, \
                            NOMUTIL_GIVEN4, NOMUTIL_GIVEN3, NOMUTIL_GIVEN2, NOMUTIL_GIVEN1, ))

}  // namespace nomutil::geometry

#endif  // NOMUTIL_GEOMETRY_ENTRIES_H
