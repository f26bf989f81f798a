// Geometry: a flat interface to the GEOS library, which is not linked. Each function calls the
// entry of GEOS's re-entrant interface that docs/geometry.md names for it, and turns GEOS's ways of
// failing into statuses.
//
// The library is "geos_c" (nomos/dlldesc.h tells where it is looked for), loaded by the first call.
// Each function looks its entry up when it is first called and keeps it. Without the entry it fails
// with 1008, kEntryPointNotInLibrary, sets the last error to 1008 too, logs one line, and leaves
// what it was given as it was but for the status behind its last pointer; the next call looks
// again.
//
// The arguments are those of GEOS's entry and pass through unchanged, so what GEOS requires of them
// holds here: apart from the texts and pointers named below, none may be null. A context belongs to
// one thread at a time, and so does an object; threads with a context each work side by side.
#ifndef NOMUTIL_SYS_GEOMETRY_H
#define NOMUTIL_SYS_GEOMETRY_H

#include "sys/build.h"

#include <cstddef>
#include <cstdint>

// GEOS's own handles, under the names and types of its header geos_c.h, which may be included too.
// A pointer to const that a function gives belongs to the geometry that it is a part of, and lives
// as long; every other object belongs to the caller, who releases it by the function of its kind.
extern "C" {
typedef struct GEOSContextHandle_HS* GEOSContextHandle_t;
typedef struct GEOSGeom_t GEOSGeometry;
typedef struct GEOSCoordSeq_t GEOSCoordSequence;
typedef struct GEOSWKTReader_t GEOSWKTReader;
typedef struct GEOSWKTWriter_t GEOSWKTWriter;
typedef struct GEOSWKBReader_t GEOSWKBReader;
typedef struct GEOSWKBWriter_t GEOSWKBWriter;
}

// Receives one message of GEOS, at most 255 characters, on the thread whose call caused it. The
// text lives as long as the call. It must not throw.
using GeometryMessageHandler = void (*)(const char* message);

extern "C" {

// ---- The library and its contexts ----

// Copies the version of GEOS, as in "3.11.1-CAPI-1.17.1": at most size characters and the NUL, and
// sets the last byte of the buffer to NUL. A size of 0 writes nothing. Returns 0 or 1008.
NOMUTIL_API int GEOS_GetVersion(char* buffer, std::uint32_t size);

// Gives a new context, which GEOS_Finish releases; null when there is no GEOS or it fails. The
// handlers, each of which may be null, are those of the whole process: they replace the earlier
// ones for every context. Every message also becomes a line in the log, "NOM_GEOS [NOTICE]: " or
// "NOM_GEOS [ERROR]: " and the text.
NOMUTIL_API GEOSContextHandle_t GEOS_Init(GeometryMessageHandler notice,
                                          GeometryMessageHandler error);

// Releases a context, behind everything that was made with it. Returns 0 or 1008.
NOMUTIL_API int GEOS_Finish(GEOSContextHandle_t context);

// ---- Objects, and how they are given ----
// Each function that gives an object sets *status: to 0; to 1345, kSpatialLibraryError, when GEOS
// gives none; or to 1008. On failure it returns null.
// REQUIRES: status is not null; else it is not set.
// Each function that releases one, and GEOS_SetSRID, returns 0 or 1008.

// ---- Well-known text and well-known binary (OGC 06-103r4) ----
// Both are read with X, Y and Z; GEOS before 3.12 writes X and Y alone.

NOMUTIL_API GEOSWKTReader* GEOS_WKTReaderCreate(GEOSContextHandle_t context, std::uint32_t* status);
NOMUTIL_API int GEOS_WKTReaderDestroy(GEOSContextHandle_t context, GEOSWKTReader* reader);

// Reads a text that ends with NUL. A null text gives 1345, an exhausted heap 1448; GEOS sees a copy
// of the text.
NOMUTIL_API GEOSGeometry* GEOS_WKTReaderRead(GEOSContextHandle_t context, GEOSWKTReader* reader,
                                             const char* text, std::uint32_t* status);

NOMUTIL_API GEOSWKTWriter* GEOS_WKTWriterCreate(GEOSContextHandle_t context, std::uint32_t* status);
NOMUTIL_API int GEOS_WKTWriterDestroy(GEOSContextHandle_t context, GEOSWKTWriter* writer);

// Copies the text of a geometry: at most *size characters and the NUL, and sets the last byte of
// the buffer to NUL. Returns 0; 126, kBufferSizeTooSmall, and *size as it would have to be, with
// the text cut in the buffer; 1345 or 1008. A *size of 0 writes nothing to the buffer.
// REQUIRES: size is not null, else the result is 126; buffer has room for *size bytes.
NOMUTIL_API int GEOS_WKTWriterWrite(GEOSContextHandle_t context, GEOSWKTWriter* writer,
                                    const GEOSGeometry* geometry, char* buffer,
                                    std::uint32_t* size);

NOMUTIL_API GEOSWKBReader* GEOS_WKBReaderCreate(GEOSContextHandle_t context, std::uint32_t* status);
NOMUTIL_API int GEOS_WKBReaderDestroy(GEOSContextHandle_t context, GEOSWKBReader* reader);

NOMUTIL_API GEOSGeometry* GEOS_WKBReaderRead(GEOSContextHandle_t context, GEOSWKBReader* reader,
                                             const unsigned char* image, std::size_t byteCount,
                                             std::uint32_t* status);

NOMUTIL_API GEOSWKBWriter* GEOS_WKBWriterCreate(GEOSContextHandle_t context, std::uint32_t* status);
NOMUTIL_API int GEOS_WKBWriterDestroy(GEOSContextHandle_t context, GEOSWKBWriter* writer);

// Copies the image of a geometry and sets *size to its length. Returns 0; 126 with nothing copied
// when the image is longer than *size, and then GEOS's own block stays allocated for good; 1345 or
// 1008, with *size as it was.
// REQUIRES: size is not null, else the result is 126; buffer has room for *size bytes.
NOMUTIL_API int GEOS_WKBWriterWrite(GEOSContextHandle_t context, GEOSWKBWriter* writer,
                                    const GEOSGeometry* geometry, unsigned char* buffer,
                                    std::uint32_t* size);

// Releases a block that an entry of GEOS gave. None of the functions here gives one.
NOMUTIL_API int GEOS_Free(GEOSContextHandle_t context, void* block);

// ---- One geometry ----

// Releases a geometry with its parts. REQUIRES: it is no part of another.
NOMUTIL_API int GEOS_Destroy(GEOSContextHandle_t context, GEOSGeometry* geometry);

// Copies the name of the kind, as in "Polygon": at most size characters and the NUL, and sets the
// last byte of the buffer to NUL; a size of 0 writes nothing. Returns 0, 1345, or 1008 when
// GEOS_Free has no entry, too.
NOMUTIL_API int GEOS_GeometryType(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                  char* buffer, std::uint32_t size);

// The ordinates of a coordinate, 2 or 3; 0 is GEOS's sign of failure. Returns 0 or 1008.
// This and all functions that store a value through their last pointer:
// REQUIRES: the pointer is not null.
NOMUTIL_API int GEOS_GetCoordinateDimensions(GEOSContextHandle_t context,
                                             const GEOSGeometry* geometry, int* dimensions);

// 0 for points, 1 for lines, 2 for areas. Returns 0 or 1008.
NOMUTIL_API int GEOS_GetDimensions(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                   int* dimensions);

// The number of the spatial reference system, 0 for a new geometry; GEOS only carries it.
NOMUTIL_API int GEOS_GetSRID(GEOSContextHandle_t context, const GEOSGeometry* geometry, int* srid);
NOMUTIL_API int GEOS_SetSRID(GEOSContextHandle_t context, GEOSGeometry* geometry, int srid);

// ---- Questions ----
// *result becomes 1 for yes, else 0. Returns 0; 1345, with *result 0, when GEOS cannot tell; 1008.

NOMUTIL_API int GEOS_HasZ(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                          std::uint8_t* result);
NOMUTIL_API int GEOS_IsEmpty(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                             std::uint8_t* result);
NOMUTIL_API int GEOS_IsSimple(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                              std::uint8_t* result);
NOMUTIL_API int GEOS_IsRing(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                            std::uint8_t* result);
// The reason of a no comes as a notice.
NOMUTIL_API int GEOS_IsValid(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                             std::uint8_t* result);

NOMUTIL_API int GEOS_Contains(GEOSContextHandle_t context, const GEOSGeometry* left,
                              const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Within(GEOSContextHandle_t context, const GEOSGeometry* left,
                            const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Disjoint(GEOSContextHandle_t context, const GEOSGeometry* left,
                              const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Intersects(GEOSContextHandle_t context, const GEOSGeometry* left,
                                const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Touches(GEOSContextHandle_t context, const GEOSGeometry* left,
                             const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Crosses(GEOSContextHandle_t context, const GEOSGeometry* left,
                             const GEOSGeometry* right, std::uint8_t* result);
NOMUTIL_API int GEOS_Overlaps(GEOSContextHandle_t context, const GEOSGeometry* left,
                              const GEOSGeometry* right, std::uint8_t* result);
// The same points, in whatever order and with whatever vertices.
NOMUTIL_API int GEOS_Equals(GEOSContextHandle_t context, const GEOSGeometry* left,
                            const GEOSGeometry* right, std::uint8_t* result);
// The same vertices in the same order, each within the tolerance of the other's.
NOMUTIL_API int GEOS_EqualsExact(GEOSContextHandle_t context, const GEOSGeometry* left,
                                 const GEOSGeometry* right, double tolerance, std::uint8_t* result);

// ---- Measures ----
// In the units of the coordinates, on the plane. Each returns 0, 1345 or 1008.

NOMUTIL_API int GEOS_Area(GEOSContextHandle_t context, const GEOSGeometry* geometry, double* area);
NOMUTIL_API int GEOS_Length(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                            double* length);
NOMUTIL_API int GEOS_Distance(GEOSContextHandle_t context, const GEOSGeometry* left,
                              const GEOSGeometry* right, double* distance);

// ---- Constructions ----
// Each but GEOS_Normalize gives a new geometry and leaves its arguments as they are.

NOMUTIL_API GEOSGeometry* GEOS_Envelope(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                        std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_ConvexHull(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                          std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_Boundary(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                        std::uint32_t* status);
// The union of the polygons of a multipolygon.
NOMUTIL_API GEOSGeometry* GEOS_UnionCascaded(GEOSContextHandle_t context,
                                             const GEOSGeometry* geometry, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_PointOnSurface(GEOSContextHandle_t context,
                                              const GEOSGeometry* geometry, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_GetCentroid(GEOSContextHandle_t context,
                                           const GEOSGeometry* geometry, std::uint32_t* status);

NOMUTIL_API GEOSGeometry* GEOS_Intersection(GEOSContextHandle_t context, const GEOSGeometry* left,
                                            const GEOSGeometry* right, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_Difference(GEOSContextHandle_t context, const GEOSGeometry* left,
                                          const GEOSGeometry* right, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_SymDifference(GEOSContextHandle_t context, const GEOSGeometry* left,
                                             const GEOSGeometry* right, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_Union(GEOSContextHandle_t context, const GEOSGeometry* left,
                                     const GEOSGeometry* right, std::uint32_t* status);

// Brings the parts and vertices of a geometry into GEOS's normal order. Returns 0, 1345 or 1008.
NOMUTIL_API int GEOS_Normalize(GEOSContextHandle_t context, GEOSGeometry* geometry);

// All points within width of the geometry; a negative width takes from an area. quadrantSegments
// lines stand for a quarter of a circle.
NOMUTIL_API GEOSGeometry* GEOS_Buffer(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                      double width, int quadrantSegments, std::uint32_t* status);
// endCap: 1 round, 2 flat, 3 square. join: 1 round, 2 mitre, 3 bevel; mitreLimit bounds how far a
// mitre reaches, in widths.
NOMUTIL_API GEOSGeometry* GEOS_BufferWithStyle(GEOSContextHandle_t context,
                                               const GEOSGeometry* geometry, double width,
                                               int quadrantSegments, int endCap, int join,
                                               double mitreLimit, std::uint32_t* status);
// The line at a width beside a line, on its left or (leftSide 0) on its right.
NOMUTIL_API GEOSGeometry* GEOS_BufferSingleSided(GEOSContextHandle_t context,
                                                 const GEOSGeometry* geometry, double width,
                                                 int quadrantSegments, int join, double mitreLimit,
                                                 int leftSide, std::uint32_t* status);

// ---- Parts ----
// The counts return 0; 1345, with the negative number that GEOS gave stored, for a geometry of
// another kind; or 1008. Numbers of parts begin at 0, and GEOS need not check them.

NOMUTIL_API int GEOS_GetNumGeometries(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                      int* count);
NOMUTIL_API const GEOSGeometry* GEOS_GetGeometryN(GEOSContextHandle_t context,
                                                  const GEOSGeometry* geometry, int number,
                                                  std::uint32_t* status);
NOMUTIL_API int GEOS_GetNumInteriorRings(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                         int* count);
NOMUTIL_API const GEOSGeometry* GEOS_GetInteriorRingN(GEOSContextHandle_t context,
                                                      const GEOSGeometry* geometry, int number,
                                                      std::uint32_t* status);
NOMUTIL_API const GEOSGeometry* GEOS_GetExteriorRing(GEOSContextHandle_t context,
                                                     const GEOSGeometry* geometry,
                                                     std::uint32_t* status);
// The coordinates of all parts together.
NOMUTIL_API int GEOS_GetNumCoordinates(GEOSContextHandle_t context, const GEOSGeometry* geometry,
                                       int* count);
// The coordinates of a point, a line or a ring.
NOMUTIL_API const GEOSCoordSequence* GEOS_GetCoordSequence(GEOSContextHandle_t context,
                                                           const GEOSGeometry* geometry,
                                                           std::uint32_t* status);

// ---- Coordinate sequences ----
// Each function but the first two returns 0, 1345 or 1008.
// REQUIRES: index is below the size of the sequence. GEOS need not check it.

// size coordinates of dimensions ordinates each, 2 or 3.
NOMUTIL_API GEOSCoordSequence* GEOS_CoordSeq_Create(GEOSContextHandle_t context, unsigned size,
                                                    unsigned dimensions, std::uint32_t* status);
// Releases a sequence that no geometry has taken over.
NOMUTIL_API int GEOS_CoordSeq_Destroy(GEOSContextHandle_t context, GEOSCoordSequence* sequence);

NOMUTIL_API int GEOS_CoordSeq_GetSize(GEOSContextHandle_t context,
                                      const GEOSCoordSequence* sequence, unsigned* size);
NOMUTIL_API int GEOS_CoordSeq_GetDimensions(GEOSContextHandle_t context,
                                            const GEOSCoordSequence* sequence,
                                            unsigned* dimensions);

NOMUTIL_API int GEOS_CoordSeq_GetX(GEOSContextHandle_t context, const GEOSCoordSequence* sequence,
                                   unsigned index, double* value);
NOMUTIL_API int GEOS_CoordSeq_GetY(GEOSContextHandle_t context, const GEOSCoordSequence* sequence,
                                   unsigned index, double* value);
NOMUTIL_API int GEOS_CoordSeq_GetZ(GEOSContextHandle_t context, const GEOSCoordSequence* sequence,
                                   unsigned index, double* value);
// dimension: 0 for X, 1 for Y, 2 for Z.
NOMUTIL_API int GEOS_CoordSeq_GetOrdinate(GEOSContextHandle_t context,
                                          const GEOSCoordSequence* sequence, unsigned index,
                                          unsigned dimension, double* value);

NOMUTIL_API int GEOS_CoordSeq_SetX(GEOSContextHandle_t context, GEOSCoordSequence* sequence,
                                   unsigned index, double value);
NOMUTIL_API int GEOS_CoordSeq_SetY(GEOSContextHandle_t context, GEOSCoordSequence* sequence,
                                   unsigned index, double value);
NOMUTIL_API int GEOS_CoordSeq_SetZ(GEOSContextHandle_t context, GEOSCoordSequence* sequence,
                                   unsigned index, double value);
NOMUTIL_API int GEOS_CoordSeq_SetOrdinate(GEOSContextHandle_t context, GEOSCoordSequence* sequence,
                                          unsigned index, unsigned dimension, double value);

// ---- Creation ----
// GEOS takes over the sequences and geometries that it is given, also when it then fails with 1345;
// with 1008 they remain the caller's. The arrays themselves are the caller's in any case.

NOMUTIL_API GEOSGeometry* GEOS_CreatePoint(GEOSContextHandle_t context, GEOSCoordSequence* sequence,
                                           std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_CreateLineString(GEOSContextHandle_t context,
                                                GEOSCoordSequence* sequence, std::uint32_t* status);
NOMUTIL_API GEOSGeometry* GEOS_CreateLinearRing(GEOSContextHandle_t context,
                                                GEOSCoordSequence* sequence, std::uint32_t* status);
// A polygon from rings. holes may be null when there is none.
NOMUTIL_API GEOSGeometry* GEOS_CreatePolygon(GEOSContextHandle_t context, GEOSGeometry* shell,
                                             GEOSGeometry** holes, unsigned holeCount,
                                             std::uint32_t* status);
// type: 4 multipoint, 5 multilinestring, 6 multipolygon, 7 collection.
NOMUTIL_API GEOSGeometry* GEOS_CreateCollection(GEOSContextHandle_t context, int type,
                                                GEOSGeometry** geometries, unsigned count,
                                                std::uint32_t* status);

}  // extern "C"

#endif  // NOMUTIL_SYS_GEOMETRY_H
