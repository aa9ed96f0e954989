// The graphics-list library: kgr_list, a display list of simple graphics in
// one packed byte block, written by the kgr_list_append* functions and read
// back record by record with validation.
//
// kgr_list holds count, the number of records, and records, a pointer to the
// packed records; size is the number of bytes in use and capacity the bytes
// allocated (a caller that fills a kgr_list by hand sets size to the length
// of its block and capacity to 0, and must not append to it or free it here).
//
// Record stream. Every value is little-endian and unaligned; a double is an
// IEEE binary64, a float an IEEE binary32, a point two doubles x then y, a
// transform six doubles a00 a01 a10 a11 tx ty (row-major matrix, then the
// translation; it maps p to matrix * p + translation). Each record is
//   u32 type, i32 kgr_color, then the payload of that type:
//
//   type  bytes     payload
//   0     16        point marker: the point (every type above 10 reads the same)
//   1     32        line segment: first point, second point
//   2     32        infinite line: a point on it, then its direction
//   3     32        axis-aligned rectangle: origin (lowest corner), then size
//   4     56        general rectangle: the transform whose image of the unit
//                   square is the rectangle (48 bytes), then the corner
//                   rounding as two floats, x then y, fractions in [0, 1] of
//                   the half sides. The floats carry a rounding to about 6e-8;
//                   fractions exact in binary32 (0, 0.25, 0.5 ...) come back
//                   exactly.
//   5     24        circle: centre, radius
//   6     104       ellipse under a transform: the ellipse as centre (point),
//                   radius x, radius y and rotation (radians, counter-clockwise;
//                   five doubles, 40 bytes), then the transform (48 bytes)
//                   applied to it, then 16 reserved bytes, zero when written
//                   and ignored when read. What is drawn is the image ellipse,
//                   kmath_ellipse_transform of the two (kgr_record_ellipseImage).
//   7     8 + 16n   polyline: u64 vertex count n, then the n vertices. There
//                   is no closed flag: a closed outline repeats its first vertex.
//   8     48        affine rectangle: corners 0, 1 and 3 of its
//                   kmath_shapeAffineRect (the first corner and the far ends
//                   of its two edges); corner 2 is corner 1 + corner 3 - corner 0.
//   9     48 + 2n   text: anchor (point), offset from the anchor in screen pels
//                   (point), background colour (i32 kgr_color), font id (i32),
//                   alignment (i32, 0 to 8 as kcUIFormat has it), u32 length n
//                   in UTF-16 code units, then the n units (no terminator).
//   10    8 + 32n   line segment set: u64 segment count n, then per segment
//                   its first and its second point.
//
// The byte-stream form (kgr_list_fromBytes / kgr_list_toBytes) is the record
// count as an i32, then the records.
//
// Return codes. Every function that can fail returns KGR_OK (0) or one of
// the negative codes below, and changes nothing on failure (a failed append
// leaves the list as it was). kfThrowExceptionOnFailure turns a negative code
// into kcFoundationError::LibraryFailure carrying the code.
//
// Appenders check what a record needs to be read back: non-null arguments,
// finite numbers, counts that fit, text that UTF-16 can carry, and for
// records with derived geometry that geometry (the corners of type 8 form a
// parallelogram, the rounding of type 4 lies in [0, 1], the ellipse of type 6
// has an image). They do not judge degenerate shapes (a zero-length segment,
// an empty rectangle): whoever turns a record into a shape decides.
//
// The reader (kgr_list_validate, kgr_list_readRecord, kgr_record_*) checks
// every bound and count before it reads or allocates, rejects non-finite
// numbers, and never reads outside [records, records + size).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/kgr/kgr_color.h"
#include "foundation/kmath/kmath_shape.h"

// --- return codes ---

inline constexpr long KGR_OK = 0;
// The list, an output, or a required input pointer is null.
inline constexpr long KGR_ERR_NULL = -1;
// A coordinate, size or parameter is NaN or infinite.
inline constexpr long KGR_ERR_NOT_FINITE = -2;
// A count is negative or larger than a record can hold.
inline constexpr long KGR_ERR_BAD_COUNT = -3;
// Memory for the records could not be allocated.
inline constexpr long KGR_ERR_NO_MEMORY = -4;
// The list would pass 2^31 - 1 records or kKgrMaxBytes bytes.
inline constexpr long KGR_ERR_TOO_LARGE = -5;
// Derived geometry is impossible (see above).
inline constexpr long KGR_ERR_BAD_GEOMETRY = -6;
// Text holds a character UTF-16 cannot carry (a surrogate, or above 0x10FFFF).
inline constexpr long KGR_ERR_BAD_TEXT = -7;
// Reading: a record runs past the end, a count does not match, a number is
// not finite, or bytes are left over.
inline constexpr long KGR_ERR_CORRUPT = -8;
// A record was decoded as a type it is not.
inline constexpr long KGR_ERR_WRONG_TYPE = -9;

// The largest record block a list may hold.
inline constexpr std::size_t kKgrMaxBytes = std::size_t{1} << 31;

// --- record types and payload sizes ---

enum kgr_recordType : std::uint32_t {
  KGR_POINT = 0,
  KGR_LINESEG = 1,
  KGR_LINE = 2,
  KGR_RECT = 3,
  KGR_GENRECT = 4,
  KGR_CIRCLE = 5,
  KGR_ELLIPSE = 6,
  KGR_POLYLINE = 7,
  KGR_AFFINERECT = 8,
  KGR_TEXT = 9,
  KGR_LINESEGSET = 10,
};

// Bytes before the payload: type and colour.
inline constexpr std::size_t kKgrHeaderSize = 8;
// Fixed payload sizes, and the fixed part of the variable ones.
inline constexpr std::size_t kKgrPointSize = 16;
inline constexpr std::size_t kKgrLineSegSize = 32;
inline constexpr std::size_t kKgrLineSize = 32;
inline constexpr std::size_t kKgrRectSize = 32;
inline constexpr std::size_t kKgrGenRectSize = 56;
inline constexpr std::size_t kKgrCircleSize = 24;
inline constexpr std::size_t kKgrEllipseSize = 104;
inline constexpr std::size_t kKgrPolylineFixedSize = 8;
inline constexpr std::size_t kKgrAffineRectSize = 48;
inline constexpr std::size_t kKgrTextFixedSize = 48;
inline constexpr std::size_t kKgrLineSegSetFixedSize = 8;

// --- plain data ---

struct kgr_point {
  double x;
  double y;
};

struct kgr_segment {
  kgr_point p1;
  kgr_point p2;
};

// Maps p to (a00 * x + a01 * y + tx, a10 * x + a11 * y + ty).
struct kgr_xform {
  double a00;
  double a01;
  double a10;
  double a11;
  double tx;
  double ty;
};

struct kgr_textFormat {
  std::int32_t fontId;
  std::int32_t alignment;
};

struct kgr_list {
  std::int32_t count;
  unsigned char* records;
  std::size_t size;
  std::size_t capacity;
};

// --- lists ---

// A new empty list; null when memory runs out.
[[nodiscard]] kgr_list* kgr_list_create() noexcept;
// Frees a list made by kgr_list_create or kgr_list_fromBytes (null is allowed).
void kgr_list_free(kgr_list* list) noexcept;

// --- appending ---

long kgr_list_appendPoint(kgr_list* list, kgr_color color, kgr_point p) noexcept;
long kgr_list_appendLineSeg(kgr_list* list, kgr_color color, kgr_point p1, kgr_point p2) noexcept;
long kgr_list_appendLineDirPoint(kgr_list* list, kgr_color color, kgr_point point,
                                 kgr_point direction) noexcept;
long kgr_list_appendRect(kgr_list* list, kgr_color color, kgr_point origin, kgr_point size) noexcept;
long kgr_list_appendGenRect(kgr_list* list, kgr_color color, const kgr_xform* xform, double roundX,
                            double roundY) noexcept;
long kgr_list_appendCircle(kgr_list* list, kgr_color color, kgr_point centre, double radius) noexcept;
// The ellipse under xform; a null xform is the identity.
long kgr_list_appendEllipse(kgr_list* list, kgr_color color, const kmath_ellipse* ellipse,
                            const kgr_xform* xform) noexcept;
// count vertices; vertices may be null when count is 0.
long kgr_list_appendPolyline(kgr_list* list, kgr_color color, long count, const kgr_point* vertices) noexcept;
long kgr_list_appendShapeAffineRect(kgr_list* list, kgr_color color,
                                    const kmath_shapeAffineRect* rect) noexcept;
// length characters of text (text may be null when length is 0).
long kgr_list_appendTextEx(kgr_list* list, kgr_color color, const wchar_t* text, long length,
                           kgr_point location, kgr_color background, kgr_textFormat format,
                           kgr_point offset) noexcept;
// count segments; segments may be null when count is 0.
long kgr_list_appendLineSegSet(kgr_list* list, kgr_color color, long count,
                               const kgr_segment* segments) noexcept;

// --- reading ---

// One record of a list: its header and where its payload lies.
struct kgr_record {
  std::uint32_t type;
  kgr_color color;
  const unsigned char* payload;
  std::size_t payloadSize;
};

// Reads the record at *offset of list and moves *offset past it.
long kgr_list_readRecord(const kgr_list* list, std::size_t* offset, kgr_record* out) noexcept;
// Checks the whole list: count records that decode, filling exactly size bytes.
long kgr_list_validate(const kgr_list* list) noexcept;

// Decoders, each for its type (KGR_ERR_WRONG_TYPE for another).
long kgr_record_point(const kgr_record* rec, kgr_point* p) noexcept;  // type 0 and above 10
long kgr_record_lineSeg(const kgr_record* rec, kgr_point* p1, kgr_point* p2) noexcept;
long kgr_record_line(const kgr_record* rec, kgr_point* point, kgr_point* direction) noexcept;
long kgr_record_rect(const kgr_record* rec, kgr_point* origin, kgr_point* size) noexcept;
long kgr_record_genRect(const kgr_record* rec, kgr_xform* xform, double* roundX, double* roundY) noexcept;
long kgr_record_circle(const kgr_record* rec, kgr_point* centre, double* radius) noexcept;
long kgr_record_ellipse(const kgr_record* rec, kmath_ellipse* ellipse, kgr_xform* xform) noexcept;
// Types 5 and 6: the ellipse to draw (a circle as an ellipse with equal radii
// and rotation 0; an ellipse record as its image under its transform).
long kgr_record_ellipseImage(const kgr_record* rec, kmath_ellipse* image) noexcept;
long kgr_record_polyline(const kgr_record* rec, std::vector<kgr_point>* vertices) noexcept;
// The four corners, the fourth completed from the other three.
long kgr_record_affineRect(const kgr_record* rec, kmath_shapeAffineRect* rect) noexcept;

struct kgr_text {
  std::wstring text;
  kgr_point location;
  kgr_point offset;
  kgr_color background;
  kgr_textFormat format;
};
long kgr_record_text(const kgr_record* rec, kgr_text* out) noexcept;
long kgr_record_lineSegSet(const kgr_record* rec, std::vector<kgr_segment>* segments) noexcept;

// --- byte stream ---

// A new list from a byte stream, validated completely before it is built.
long kgr_list_fromBytes(const void* data, std::size_t n, kgr_list** out) noexcept;
// The bytes kgr_list_toBytes writes for list (0 for a null list).
[[nodiscard]] std::size_t kgr_list_byteSize(const kgr_list* list) noexcept;
// Writes the stream into out, which holds capacity bytes (at least kgr_list_byteSize).
long kgr_list_toBytes(const kgr_list* list, void* out, std::size_t capacity) noexcept;
