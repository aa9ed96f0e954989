#include "foundation/kgr/kgr_list.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <string>

#include "foundation/bytes.h"

namespace {

// The smallest block a growing list allocates.
constexpr std::size_t kMinCapacity = 256;
// Corners of an affine rectangle form a parallelogram when corner 0 + corner 2
// and corner 1 + corner 3 agree to this fraction of the largest coordinate.
constexpr double kParallelogramTol = 1e-9;

// --- record fields ---

// Every field goes through the byte codec at an offset the record layout fixes.
void putF64(unsigned char* p, double v) { kfStoreLE(p, v); }
double getF64(const unsigned char* p) { return kfLoadLE<double>(p); }
void putPoint(unsigned char* p, kgr_point v) {
  putF64(p, v.x);
  putF64(p + 8, v.y);
}
kgr_point getPoint(const unsigned char* p) { return {getF64(p), getF64(p + 8)}; }
// The element count of a variable record: a u64, or a u32 for text.
std::uint64_t getCount(const unsigned char* p, std::size_t countBytes) {
  return countBytes == 8 ? kfLoadLE<std::uint64_t>(p) : kfLoadLE<std::uint32_t>(p);
}

bool isFiniteValue(double v) { return std::isfinite(v); }
bool isFiniteValue(kgr_point p) { return isFiniteValue(p.x) && isFiniteValue(p.y); }
bool isFiniteValue(const kgr_xform& x) {
  return isFiniteValue(x.a00) && isFiniteValue(x.a01) && isFiniteValue(x.a10) && isFiniteValue(x.a11) &&
         isFiniteValue(x.tx) && isFiniteValue(x.ty);
}

void putXform(unsigned char* p, const kgr_xform& x) {
  const double v[6] = {x.a00, x.a01, x.a10, x.a11, x.tx, x.ty};
  for (int i = 0; i < 6; ++i) putF64(p + 8 * i, v[i]);
}
kgr_xform getXform(const unsigned char* p) {
  return {getF64(p), getF64(p + 8), getF64(p + 16), getF64(p + 24), getF64(p + 32), getF64(p + 40)};
}
kcXform<2> toXform(const kgr_xform& x) { return {kcMatrix<2>(x.a00, x.a01, x.a10, x.a11), {x.tx, x.ty}}; }

// --- appending ---

// Makes room for one record of payloadSize bytes and writes its header;
// returns where the payload goes, or null with *code set. The record counts
// only once commitRecord is called, so a failure after this leaves the list as it was.
unsigned char* beginRecord(kgr_list* list, std::uint32_t type, kgr_color color, std::size_t payloadSize,
                           long* code) {
  if (list->count == std::numeric_limits<std::int32_t>::max() || list->size > kKgrMaxBytes - kKgrHeaderSize ||
      payloadSize > kKgrMaxBytes - kKgrHeaderSize - list->size) {
    *code = KGR_ERR_TOO_LARGE;
    return nullptr;
  }
  const std::size_t needed = list->size + kKgrHeaderSize + payloadSize;
  if (needed > list->capacity) {
    std::size_t capacity = list->capacity < kMinCapacity ? kMinCapacity : list->capacity;
    while (capacity < needed) capacity *= 2;
    auto* grown = static_cast<unsigned char*>(std::realloc(list->records, capacity));
    if (!grown) {
      *code = KGR_ERR_NO_MEMORY;
      return nullptr;
    }
    list->records = grown;
    list->capacity = capacity;
  }
  unsigned char* p = list->records + list->size;
  kfStoreLE(p, type);
  kfStoreLE<std::int32_t>(p + 4, color);
  return p + kKgrHeaderSize;
}

void commitRecord(kgr_list* list, std::size_t payloadSize) {
  list->size += kKgrHeaderSize + payloadSize;
  ++list->count;
}

// A record whose payload is a fixed list of points.
template <std::size_t N>
long appendPoints(kgr_list* list, std::uint32_t type, kgr_color color, const kgr_point (&points)[N]) {
  if (!list) return KGR_ERR_NULL;
  for (const kgr_point& p : points)
    if (!isFiniteValue(p)) return KGR_ERR_NOT_FINITE;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, type, color, 16 * N, &code);
  if (!p) return code;
  for (std::size_t i = 0; i < N; ++i) putPoint(p + 16 * i, points[i]);
  commitRecord(list, 16 * N);
  return KGR_OK;
}

// --- reading ---

bool isPointType(std::uint32_t type) { return type == KGR_POINT || type > KGR_LINESEGSET; }

long checkRecord(const kgr_record* rec, bool typeMatches, std::size_t fixedSize) {
  if (!typeMatches) return KGR_ERR_WRONG_TYPE;
  if (rec->payloadSize < fixedSize || (!rec->payload && rec->payloadSize > 0)) return KGR_ERR_CORRUPT;
  return KGR_OK;
}

// The element count of a variable record, checked against its payload size.
long variableCount(const kgr_record* rec, std::size_t countOffset, std::size_t countBytes,
                   std::size_t fixedSize, std::size_t elementSize, std::size_t* count) {
  const std::uint64_t n = getCount(rec->payload + countOffset, countBytes);
  if (n > (rec->payloadSize - fixedSize) / elementSize || fixedSize + n * elementSize != rec->payloadSize)
    return KGR_ERR_CORRUPT;
  *count = static_cast<std::size_t>(n);
  return KGR_OK;
}

bool pointsFinite(const unsigned char* p, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (!isFiniteValue(getPoint(p + 16 * i))) return false;
  return true;
}

// Decodes a record only to see that it decodes (the variable types without
// building their vectors).
long checkDecodes(const kgr_record& rec) {
  kgr_point a{}, b{};
  double r1 = 0, r2 = 0;
  kgr_xform x{};
  kmath_ellipse e{};
  kmath_shapeAffineRect corners{};
  std::size_t n = 0;
  long code = KGR_OK;
  switch (rec.type) {
    case KGR_LINESEG:
      return kgr_record_lineSeg(&rec, &a, &b);
    case KGR_LINE:
      return kgr_record_line(&rec, &a, &b);
    case KGR_RECT:
      return kgr_record_rect(&rec, &a, &b);
    case KGR_GENRECT:
      return kgr_record_genRect(&rec, &x, &r1, &r2);
    case KGR_CIRCLE:
      return kgr_record_circle(&rec, &a, &r1);
    case KGR_ELLIPSE:
      return kgr_record_ellipse(&rec, &e, &x);
    case KGR_AFFINERECT:
      return kgr_record_affineRect(&rec, &corners);
    case KGR_POLYLINE:
      if ((code = variableCount(&rec, 0, 8, kKgrPolylineFixedSize, 16, &n)) != KGR_OK) return code;
      return pointsFinite(rec.payload + 8, n) ? KGR_OK : KGR_ERR_CORRUPT;
    case KGR_LINESEGSET:
      if ((code = variableCount(&rec, 0, 8, kKgrLineSegSetFixedSize, 32, &n)) != KGR_OK) return code;
      return pointsFinite(rec.payload + 8, 2 * n) ? KGR_OK : KGR_ERR_CORRUPT;
    case KGR_TEXT:
      if ((code = variableCount(&rec, 44, 4, kKgrTextFixedSize, 2, &n)) != KGR_OK) return code;
      return pointsFinite(rec.payload, 2) ? KGR_OK : KGR_ERR_CORRUPT;
    default:
      return kgr_record_point(&rec, &a);
  }
}

}  // namespace

// --- lists ---

kgr_list* kgr_list_create() noexcept {
  auto* list = static_cast<kgr_list*>(std::malloc(sizeof(kgr_list)));
  if (list) *list = kgr_list{0, nullptr, 0, 0};
  return list;
}

void kgr_list_free(kgr_list* list) noexcept {
  if (!list) return;
  std::free(list->records);
  std::free(list);
}

// --- appending ---

long kgr_list_appendPoint(kgr_list* list, kgr_color color, kgr_point p) noexcept {
  return appendPoints(list, KGR_POINT, color, {p});
}

long kgr_list_appendLineSeg(kgr_list* list, kgr_color color, kgr_point p1, kgr_point p2) noexcept {
  return appendPoints(list, KGR_LINESEG, color, {p1, p2});
}

long kgr_list_appendLineDirPoint(kgr_list* list, kgr_color color, kgr_point point,
                                 kgr_point direction) noexcept {
  return appendPoints(list, KGR_LINE, color, {point, direction});
}

long kgr_list_appendRect(kgr_list* list, kgr_color color, kgr_point origin, kgr_point size) noexcept {
  return appendPoints(list, KGR_RECT, color, {origin, size});
}

long kgr_list_appendGenRect(kgr_list* list, kgr_color color, const kgr_xform* xform, double roundX,
                            double roundY) noexcept {
  if (!list || !xform) return KGR_ERR_NULL;
  if (!isFiniteValue(*xform) || !isFiniteValue(roundX) || !isFiniteValue(roundY)) return KGR_ERR_NOT_FINITE;
  if (roundX < 0 || roundX > 1 || roundY < 0 || roundY > 1) return KGR_ERR_BAD_GEOMETRY;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_GENRECT, color, kKgrGenRectSize, &code);
  if (!p) return code;
  putXform(p, *xform);
  kfStoreLE(p + 48, static_cast<float>(roundX));
  kfStoreLE(p + 52, static_cast<float>(roundY));
  commitRecord(list, kKgrGenRectSize);
  return KGR_OK;
}

long kgr_list_appendCircle(kgr_list* list, kgr_color color, kgr_point centre, double radius) noexcept {
  if (!list) return KGR_ERR_NULL;
  if (!isFiniteValue(centre) || !isFiniteValue(radius)) return KGR_ERR_NOT_FINITE;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_CIRCLE, color, kKgrCircleSize, &code);
  if (!p) return code;
  putPoint(p, centre);
  putF64(p + 16, radius);
  commitRecord(list, kKgrCircleSize);
  return KGR_OK;
}

long kgr_list_appendEllipse(kgr_list* list, kgr_color color, const kmath_ellipse* ellipse,
                            const kgr_xform* xform) noexcept {
  if (!list || !ellipse) return KGR_ERR_NULL;
  const kgr_xform x = xform ? *xform : kgr_xform{1, 0, 0, 1, 0, 0};
  const kmath_ellipse e = *ellipse;
  if (!isFiniteValue(x) || !isFiniteValue(e.centreX) || !isFiniteValue(e.centreY) ||
      !isFiniteValue(e.radiusX) || !isFiniteValue(e.radiusY) || !isFiniteValue(e.rotation))
    return KGR_ERR_NOT_FINITE;
  // A record that is written can always be drawn: its image must exist.
  kmath_ellipse image{};
  const long mathCode = kmath_ellipse_transform(&image, &e, toXform(x));
  if (mathCode == KMATH_ERR_NOT_FINITE) return KGR_ERR_NOT_FINITE;
  if (mathCode != KMATH_OK) return KGR_ERR_BAD_GEOMETRY;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_ELLIPSE, color, kKgrEllipseSize, &code);
  if (!p) return code;
  const double own[5] = {e.centreX, e.centreY, e.radiusX, e.radiusY, e.rotation};
  for (int i = 0; i < 5; ++i) putF64(p + 8 * i, own[i]);
  putXform(p + 40, x);
  std::memset(p + 88, 0, 16);
  commitRecord(list, kKgrEllipseSize);
  return KGR_OK;
}

long kgr_list_appendPolyline(kgr_list* list, kgr_color color, long count,
                             const kgr_point* vertices) noexcept {
  if (!list) return KGR_ERR_NULL;
  if (count < 0) return KGR_ERR_BAD_COUNT;
  if (count > 0 && !vertices) return KGR_ERR_NULL;
  const auto n = static_cast<std::size_t>(count);
  if (n > kKgrMaxBytes / 16) return KGR_ERR_TOO_LARGE;
  for (std::size_t i = 0; i < n; ++i)
    if (!isFiniteValue(vertices[i])) return KGR_ERR_NOT_FINITE;
  const std::size_t payloadSize = kKgrPolylineFixedSize + 16 * n;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_POLYLINE, color, payloadSize, &code);
  if (!p) return code;
  kfStoreLE<std::uint64_t>(p, n);
  for (std::size_t i = 0; i < n; ++i) putPoint(p + 8 + 16 * i, vertices[i]);
  commitRecord(list, payloadSize);
  return KGR_OK;
}

long kgr_list_appendShapeAffineRect(kgr_list* list, kgr_color color,
                                    const kmath_shapeAffineRect* rect) noexcept {
  if (!list || !rect) return KGR_ERR_NULL;
  kgr_point c[4];
  double scale = 0;
  for (int i = 0; i < 4; ++i) {
    c[i] = {rect->corners[i].x, rect->corners[i].y};
    if (!isFiniteValue(c[i])) return KGR_ERR_NOT_FINITE;
    scale = std::fmax(scale, std::fmax(std::fabs(c[i].x), std::fabs(c[i].y)));
  }
  // Only three corners travel; the fourth must follow from them.
  const double dx = c[0].x + c[2].x - c[1].x - c[3].x, dy = c[0].y + c[2].y - c[1].y - c[3].y;
  if (std::fabs(dx) > kParallelogramTol * scale || std::fabs(dy) > kParallelogramTol * scale)
    return KGR_ERR_BAD_GEOMETRY;
  return appendPoints(list, KGR_AFFINERECT, color, {c[0], c[1], c[3]});
}

long kgr_list_appendTextEx(kgr_list* list, kgr_color color, const wchar_t* text, long length,
                           kgr_point location, kgr_color background, kgr_textFormat format,
                           kgr_point offset) noexcept {
  if (!list) return KGR_ERR_NULL;
  if (length < 0) return KGR_ERR_BAD_COUNT;
  if (length > 0 && !text) return KGR_ERR_NULL;
  if (!isFiniteValue(location) || !isFiniteValue(offset)) return KGR_ERR_NOT_FINITE;
  const auto chars = static_cast<std::size_t>(length);
  if (chars > kKgrMaxBytes / 4) return KGR_ERR_TOO_LARGE;
  // Record text holds no lone surrogates, so every record reads back as the
  // text that was appended.
  std::optional<std::u16string> units;
  try {
    units = kfToUtf16({text, chars}, keSurrogates::refuse);
  } catch (const std::bad_alloc&) {
    return KGR_ERR_NO_MEMORY;
  }
  if (!units) return KGR_ERR_BAD_TEXT;
  const std::size_t payloadSize = kKgrTextFixedSize + 2 * units->size();
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_TEXT, color, payloadSize, &code);
  if (!p) return code;
  putPoint(p, location);
  putPoint(p + 16, offset);
  kfStoreLE<std::int32_t>(p + 32, background);
  kfStoreLE(p + 36, format.fontId);
  kfStoreLE(p + 40, format.alignment);
  kfStoreLE(p + 44, static_cast<std::uint32_t>(units->size()));
  for (std::size_t i = 0; i < units->size(); ++i) kfStoreLE(p + kKgrTextFixedSize + 2 * i, (*units)[i]);
  commitRecord(list, payloadSize);
  return KGR_OK;
}

long kgr_list_appendLineSegSet(kgr_list* list, kgr_color color, long count,
                               const kgr_segment* segments) noexcept {
  if (!list) return KGR_ERR_NULL;
  if (count < 0) return KGR_ERR_BAD_COUNT;
  if (count > 0 && !segments) return KGR_ERR_NULL;
  const auto n = static_cast<std::size_t>(count);
  if (n > kKgrMaxBytes / 32) return KGR_ERR_TOO_LARGE;
  for (std::size_t i = 0; i < n; ++i)
    if (!isFiniteValue(segments[i].p1) || !isFiniteValue(segments[i].p2)) return KGR_ERR_NOT_FINITE;
  const std::size_t payloadSize = kKgrLineSegSetFixedSize + 32 * n;
  long code = KGR_OK;
  unsigned char* p = beginRecord(list, KGR_LINESEGSET, color, payloadSize, &code);
  if (!p) return code;
  kfStoreLE<std::uint64_t>(p, n);
  for (std::size_t i = 0; i < n; ++i) {
    putPoint(p + 8 + 32 * i, segments[i].p1);
    putPoint(p + 24 + 32 * i, segments[i].p2);
  }
  commitRecord(list, payloadSize);
  return KGR_OK;
}

// --- reading ---

long kgr_list_readRecord(const kgr_list* list, std::size_t* offset, kgr_record* out) noexcept {
  if (!list || !offset || !out) return KGR_ERR_NULL;
  if ((!list->records && list->size > 0) || *offset > list->size) return KGR_ERR_CORRUPT;
  const std::size_t remaining = list->size - *offset;
  if (remaining < kKgrHeaderSize) return KGR_ERR_CORRUPT;
  const unsigned char* p = list->records + *offset;
  const auto type = kfLoadLE<std::uint32_t>(p);
  const unsigned char* payload = p + kKgrHeaderSize;
  const std::size_t rest = remaining - kKgrHeaderSize;

  // Sizes of the variable records come from their own counts, checked against
  // what is left before they are multiplied out.
  std::size_t size = 0;
  auto variable = [&](std::size_t countOffset, std::size_t countBytes, std::size_t fixed,
                      std::size_t element) -> bool {
    if (rest < fixed) return false;
    const std::uint64_t n = getCount(payload + countOffset, countBytes);
    if (n > (rest - fixed) / element) return false;
    size = fixed + static_cast<std::size_t>(n) * element;
    return true;
  };
  bool fits = true;
  switch (type) {
    case KGR_LINESEG:
      size = kKgrLineSegSize;
      break;
    case KGR_LINE:
      size = kKgrLineSize;
      break;
    case KGR_RECT:
      size = kKgrRectSize;
      break;
    case KGR_GENRECT:
      size = kKgrGenRectSize;
      break;
    case KGR_CIRCLE:
      size = kKgrCircleSize;
      break;
    case KGR_ELLIPSE:
      size = kKgrEllipseSize;
      break;
    case KGR_AFFINERECT:
      size = kKgrAffineRectSize;
      break;
    case KGR_POLYLINE:
      fits = variable(0, 8, kKgrPolylineFixedSize, 16);
      break;
    case KGR_TEXT:
      fits = variable(44, 4, kKgrTextFixedSize, 2);
      break;
    case KGR_LINESEGSET:
      fits = variable(0, 8, kKgrLineSegSetFixedSize, 32);
      break;
    default:
      size = kKgrPointSize;
      break;
  }
  if (!fits || size > rest) return KGR_ERR_CORRUPT;
  *out = kgr_record{type, kfLoadLE<std::int32_t>(p + 4), payload, size};
  *offset += kKgrHeaderSize + size;
  return KGR_OK;
}

long kgr_list_validate(const kgr_list* list) noexcept {
  if (!list) return KGR_ERR_NULL;
  if (list->count < 0 || (!list->records && list->size > 0)) return KGR_ERR_CORRUPT;
  std::size_t offset = 0;
  for (std::int32_t i = 0; i < list->count; ++i) {
    kgr_record rec{};
    long code = kgr_list_readRecord(list, &offset, &rec);
    if (code == KGR_OK) code = checkDecodes(rec);
    if (code != KGR_OK) return code;
  }
  return offset == list->size ? KGR_OK : KGR_ERR_CORRUPT;
}

long kgr_record_point(const kgr_record* rec, kgr_point* p) noexcept {
  if (!rec || !p) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, isPointType(rec->type), kKgrPointSize); code != KGR_OK) return code;
  const kgr_point v = getPoint(rec->payload);
  if (!isFiniteValue(v)) return KGR_ERR_CORRUPT;
  *p = v;
  return KGR_OK;
}

namespace {

// The payload of types 1 to 3: two points.
long twoPoints(const kgr_record* rec, std::uint32_t type, std::size_t size, kgr_point* a, kgr_point* b) {
  if (!rec || !a || !b) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == type, size); code != KGR_OK) return code;
  const kgr_point v1 = getPoint(rec->payload), v2 = getPoint(rec->payload + 16);
  if (!isFiniteValue(v1) || !isFiniteValue(v2)) return KGR_ERR_CORRUPT;
  *a = v1;
  *b = v2;
  return KGR_OK;
}

}  // namespace

long kgr_record_lineSeg(const kgr_record* rec, kgr_point* p1, kgr_point* p2) noexcept {
  return twoPoints(rec, KGR_LINESEG, kKgrLineSegSize, p1, p2);
}

long kgr_record_line(const kgr_record* rec, kgr_point* point, kgr_point* direction) noexcept {
  return twoPoints(rec, KGR_LINE, kKgrLineSize, point, direction);
}

long kgr_record_rect(const kgr_record* rec, kgr_point* origin, kgr_point* size) noexcept {
  return twoPoints(rec, KGR_RECT, kKgrRectSize, origin, size);
}

long kgr_record_genRect(const kgr_record* rec, kgr_xform* xform, double* roundX, double* roundY) noexcept {
  if (!rec || !xform || !roundX || !roundY) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_GENRECT, kKgrGenRectSize); code != KGR_OK) return code;
  const kgr_xform x = getXform(rec->payload);
  const double rx = kfLoadLE<float>(rec->payload + 48), ry = kfLoadLE<float>(rec->payload + 52);
  // The comparisons are false for NaN as well.
  if (!isFiniteValue(x) || !(rx >= 0 && rx <= 1) || !(ry >= 0 && ry <= 1)) return KGR_ERR_CORRUPT;
  *xform = x;
  *roundX = rx;
  *roundY = ry;
  return KGR_OK;
}

long kgr_record_circle(const kgr_record* rec, kgr_point* centre, double* radius) noexcept {
  if (!rec || !centre || !radius) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_CIRCLE, kKgrCircleSize); code != KGR_OK) return code;
  const kgr_point c = getPoint(rec->payload);
  const double r = getF64(rec->payload + 16);
  if (!isFiniteValue(c) || !isFiniteValue(r)) return KGR_ERR_CORRUPT;
  *centre = c;
  *radius = r;
  return KGR_OK;
}

long kgr_record_ellipse(const kgr_record* rec, kmath_ellipse* ellipse, kgr_xform* xform) noexcept {
  if (!rec || !ellipse || !xform) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_ELLIPSE, kKgrEllipseSize); code != KGR_OK) return code;
  const unsigned char* p = rec->payload;
  const kmath_ellipse e{getF64(p), getF64(p + 8), getF64(p + 16), getF64(p + 24), getF64(p + 32)};
  const kgr_xform x = getXform(p + 40);
  if (!isFiniteValue(e.centreX) || !isFiniteValue(e.centreY) || !isFiniteValue(e.radiusX) ||
      !isFiniteValue(e.radiusY) || !isFiniteValue(e.rotation) || !isFiniteValue(x))
    return KGR_ERR_CORRUPT;
  *ellipse = e;
  *xform = x;
  return KGR_OK;
}

long kgr_record_ellipseImage(const kgr_record* rec, kmath_ellipse* image) noexcept {
  if (!rec || !image) return KGR_ERR_NULL;
  if (rec->type == KGR_CIRCLE) {
    kgr_point c{};
    double r = 0;
    if (long code = kgr_record_circle(rec, &c, &r); code != KGR_OK) return code;
    if (!(r > 0)) return KGR_ERR_BAD_GEOMETRY;
    *image = kmath_ellipse{c.x, c.y, r, r, 0.0};
    return KGR_OK;
  }
  kmath_ellipse e{};
  kgr_xform x{};
  if (long code = kgr_record_ellipse(rec, &e, &x); code != KGR_OK) return code;
  const long mathCode = kmath_ellipse_transform(image, &e, toXform(x));
  if (mathCode == KMATH_OK) return KGR_OK;
  return mathCode == KMATH_ERR_NOT_FINITE ? KGR_ERR_NOT_FINITE : KGR_ERR_BAD_GEOMETRY;
}

long kgr_record_polyline(const kgr_record* rec, std::vector<kgr_point>* vertices) noexcept {
  if (!rec || !vertices) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_POLYLINE, kKgrPolylineFixedSize); code != KGR_OK)
    return code;
  std::size_t n = 0;
  if (long code = variableCount(rec, 0, 8, kKgrPolylineFixedSize, 16, &n); code != KGR_OK) return code;
  if (!pointsFinite(rec->payload + 8, n)) return KGR_ERR_CORRUPT;
  try {
    std::vector<kgr_point> loaded(n);  // n is bounded by the payload size
    for (std::size_t i = 0; i < n; ++i) loaded[i] = getPoint(rec->payload + 8 + 16 * i);
    *vertices = std::move(loaded);
  } catch (const std::bad_alloc&) {
    return KGR_ERR_NO_MEMORY;
  }
  return KGR_OK;
}

long kgr_record_affineRect(const kgr_record* rec, kmath_shapeAffineRect* rect) noexcept {
  if (!rec || !rect) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_AFFINERECT, kKgrAffineRectSize); code != KGR_OK)
    return code;
  const kgr_point c0 = getPoint(rec->payload), c1 = getPoint(rec->payload + 16),
                  c3 = getPoint(rec->payload + 32);
  const kgr_point c2{c1.x + c3.x - c0.x, c1.y + c3.y - c0.y};
  if (!isFiniteValue(c0) || !isFiniteValue(c1) || !isFiniteValue(c3) || !isFiniteValue(c2))
    return KGR_ERR_CORRUPT;
  *rect = kmath_shapeAffineRect{{{c0.x, c0.y}, {c1.x, c1.y}, {c2.x, c2.y}, {c3.x, c3.y}}};
  return KGR_OK;
}

long kgr_record_text(const kgr_record* rec, kgr_text* out) noexcept {
  if (!rec || !out) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_TEXT, kKgrTextFixedSize); code != KGR_OK) return code;
  std::size_t n = 0;
  if (long code = variableCount(rec, 44, 4, kKgrTextFixedSize, 2, &n); code != KGR_OK) return code;
  const unsigned char* p = rec->payload;
  const kgr_point location = getPoint(p), offset = getPoint(p + 16);
  if (!isFiniteValue(location) || !isFiniteValue(offset)) return KGR_ERR_CORRUPT;
  try {
    // A surrogate pair becomes one character where wchar_t can hold it; a
    // lone surrogate (only a hand-made record has one) comes back as the unit
    // it was, as archives treat it.
    std::u16string units(n, u'\0');
    for (std::size_t i = 0; i < n; ++i) units[i] = kfLoadLE<char16_t>(p + kKgrTextFixedSize + 2 * i);
    out->text = kfFromUtf16(units);
  } catch (const std::bad_alloc&) {
    return KGR_ERR_NO_MEMORY;
  }
  out->location = location;
  out->offset = offset;
  out->background = kfLoadLE<std::int32_t>(p + 32);
  out->format = kgr_textFormat{kfLoadLE<std::int32_t>(p + 36), kfLoadLE<std::int32_t>(p + 40)};
  return KGR_OK;
}

long kgr_record_lineSegSet(const kgr_record* rec, std::vector<kgr_segment>* segments) noexcept {
  if (!rec || !segments) return KGR_ERR_NULL;
  if (long code = checkRecord(rec, rec->type == KGR_LINESEGSET, kKgrLineSegSetFixedSize); code != KGR_OK)
    return code;
  std::size_t n = 0;
  if (long code = variableCount(rec, 0, 8, kKgrLineSegSetFixedSize, 32, &n); code != KGR_OK) return code;
  if (!pointsFinite(rec->payload + 8, 2 * n)) return KGR_ERR_CORRUPT;
  try {
    std::vector<kgr_segment> loaded(n);  // n is bounded by the payload size
    for (std::size_t i = 0; i < n; ++i)
      loaded[i] = {getPoint(rec->payload + 8 + 32 * i), getPoint(rec->payload + 24 + 32 * i)};
    *segments = std::move(loaded);
  } catch (const std::bad_alloc&) {
    return KGR_ERR_NO_MEMORY;
  }
  return KGR_OK;
}

// --- byte stream ---

long kgr_list_fromBytes(const void* data, std::size_t n, kgr_list** out) noexcept {
  if (!out || (!data && n > 0)) return KGR_ERR_NULL;
  if (n < 4) return KGR_ERR_CORRUPT;
  const auto* bytes = static_cast<const unsigned char*>(data);
  if (n - 4 > kKgrMaxBytes) return KGR_ERR_TOO_LARGE;
  // Validate the bytes where they lie; allocate only for a list that reads.
  const kgr_list view{kfLoadLE<std::int32_t>(bytes), const_cast<unsigned char*>(bytes + 4), n - 4, 0};
  if (long code = kgr_list_validate(&view); code != KGR_OK) return code;
  kgr_list* list = kgr_list_create();
  if (!list) return KGR_ERR_NO_MEMORY;
  if (view.size > 0) {
    list->records = static_cast<unsigned char*>(std::malloc(view.size));
    if (!list->records) {
      kgr_list_free(list);
      return KGR_ERR_NO_MEMORY;
    }
    std::memcpy(list->records, view.records, view.size);
  }
  list->count = view.count;
  list->size = list->capacity = view.size;
  *out = list;
  return KGR_OK;
}

std::size_t kgr_list_byteSize(const kgr_list* list) noexcept { return list ? 4 + list->size : 0; }

long kgr_list_toBytes(const kgr_list* list, void* out, std::size_t capacity) noexcept {
  if (!list || !out) return KGR_ERR_NULL;
  if (capacity < kgr_list_byteSize(list)) return KGR_ERR_BAD_COUNT;
  if (!list->records && list->size > 0) return KGR_ERR_CORRUPT;
  auto* bytes = static_cast<unsigned char*>(out);
  kfStoreLE(bytes, list->count);
  if (list->size > 0) std::memcpy(bytes + 4, list->records, list->size);
  return KGR_OK;
}
