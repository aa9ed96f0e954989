// kcGenPoly: the general polygon of the shape family. An open or closed chain
// of vertices joined by straight or circular segments, whose corners may be
// rounded, seen through a transform.
//
// The vertices live in an owned kcSMDGDPoly (named "poly"), which does all the
// geometry: roundings, validation, crossings, the inside test. kcGenPoly adds
// the shape protocol, the transform into client space, the editable state
// and the translation of the data's errors into the shape errors.
//
// Numbering. Segment i starts at vertex i and ends at vertex i + 1 (the
// closing segment of a closed polygon ends at vertex 0); the data numbers a
// segment by the vertex at which it ends, so segment i is the data's segment
// (i == n - 1 ? 0 : i + 1). The span of segment i is held by that end vertex.
// Angles come and go as kcRadian; the vertices keep degrees. An index out of
// range, or a segment an open polygon does not have, is kcShapesError::BadCoef.
//
// Errors of the data become shape errors: invalidVertices, crossingSegments,
// notClosed, badSubModel and the vertex's invalidSegmentLength are BadGeom,
// invalidRounding is BadRadius, invalidIndex is BadCoef; anything else comes
// through unchanged.
//
// Editing. A polygon built directly is editable. map() with anything but the
// identity gives a polygon that keeps every query and refuses every edit
// (kcShapesError::BadGeom): the transform may not be a similarity, and the
// data cannot hold an elliptical arc. Edits are validated by the data and
// leave the polygon as it was when they throw (open() included, unlike the
// data's own). Closing an empty polygon is BadGeom.
//
// Shapes become vertices exactly where the geometry allows. Where an
// ellipse's matrix is exactly a positive multiple of the identity the shape
// is a circle and its vertices lie in client space (identity transform,
// editable); otherwise the vertices are the unit-circle ones and the
// ellipse's transform is the polygon's (not editable). Vertices carry no
// label, percentages 0.5 and no length tolerance. Start and direction:
// - kcCircle (and a circular kcEllipse, kcEllipse2): closed, two half-circle
//   arcs, from the leftmost point (parameter pi) counter-clockwise.
// - kcEllipseArc, kcEllipseArc2: open, from the arc's start in its direction,
//   in equal arc segments of at most half a turn each.
// - kcEllipseAnnulusSection: closed, from the outer arc's start: the outer
//   arc, the radial edge in to the inner end, the inner arc back, the radial
//   edge out again. In the outer ellipse's frame unless that is circular. A
//   section of a whole turn has a hole: BadGeom (convert the annulus instead).
// - kcGenRect: closed, from corner(0) in the rectangle's own order. Without
//   rounding the corners are client points whatever the transform. Rounded,
//   with perpendicular sides whose rounding is circular in client space
//   (within 1e-12 relative), the corners are client points with the rounding
//   radius as vertex radius; otherwise the vertices are a rectangle in a frame
//   where the rounding is circular (its first side as long as the kcGenRect's
//   first side) and that frame is the transform (not editable). Roundings
//   that meet in the middle of a side (a fraction of 1, to 1e-10) cannot be
//   vertex radii: there the outline is the quarter arcs themselves and what
//   is left of the sides, from where corner 0's rounding ends (the
//   kcGenRect's own start).
// - kcRect: closed, sharp, from the origin counter-clockwise (DegenerateShape
//   for an empty rectangle or one without area).
// - kcLineSeg: open, p1 then p2. kcPolygon: closed, sharp, its own vertex
//   order (an empty one gives the empty polygon).
// - convert() of an annulus: [inner boundary, outer boundary], each built as
//   above (a kcGenAnnulus's inner rectangle keeps the rounding fractions).
//
// Queries answer in client space: pieces are mapped before they are measured
// (arcs become kcEllipseArc), so nearest points and distances are exact also
// under a shear. within() takes the point back into the data instead.
// tangentRotation() and windingAngle() add up the mapped pieces: a sharp
// corner turns by the signed-normalised angle between its two directions; an
// arc's winding is its chord's, plus or minus a turn when the point lies
// strictly between the arc and its chord. sample() gives one chain through
// the pieces (joints once), consecutive points no more than spacing apart; a
// single vertex samples as itself. decompose() and clip_() give kcLineSeg and
// kcEllipseArc pieces; clip_ cuts the pieces where they cross the window's
// edges and keeps the parts whose middle lies inside (even-odd).
//
// Archive form: an unsigned version byte (0), the polygon data (the poly's
// own dispatch), the transform, the editable flag. Another version is
// kcArchive::UnknownVersion ("dispc/wrfm/genpoly", line 751). loadSimple()
// transfers the same bytes without the once-per-pass bookkeeping and reads
// the version as a signed byte (UnknownVersion at line 741). A loaded
// transform that is singular or not finite is kcArchive::Corrupt; a failed
// load leaves the polygon as it was.
#pragma once

#include <vector>

#include "dispc/dispprop.h"
#include "dispc/smd/poly.h"
#include "foundation/angle.h"
#include "foundation/pelbuffer.h"
#include "foundation/rigid.h"
#include "foundation/shapes/annulus.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse.h"
#include "foundation/shapes/ellipse2.h"
#include "foundation/shapes/ellipseannulus.h"
#include "foundation/shapes/ellipseannulussection.h"
#include "foundation/shapes/ellipsearc.h"
#include "foundation/shapes/ellipsearc2.h"
#include "foundation/shapes/genannulus.h"
#include "foundation/shapes/genrect.h"
#include "foundation/shapes/lineseg.h"
#include "foundation/shapes/polygon.h"
#include "foundation/shapes/polyline.h"
#include "foundation/shapes/rect.h"
#include "foundation/shapes/shape.h"

class kcUIScope;

// What clip_ did.
struct kcClipInfo {
  // Pieces of the outline that were cut by the window's edges.
  long piecesCut = 0;
  // Pieces (whole or cut) in the result.
  long piecesKept = 0;
  // Pieces that lay wholly outside the window and were dropped.
  long piecesDropped = 0;
};

class kcGenPoly : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcGenPoly);

  // Empty, editable, identity transform.
  kcGenPoly();
  kcGenPoly(const kcGenPoly& other);
  kcGenPoly& operator=(const kcGenPoly& other);
  ~kcGenPoly() override;

  // The outline of a poly: its data copied whole (vertices, flags, colours).
  explicit kcGenPoly(const kcSMDGDPoly& data);
  // The polygon of data seen through xform, editable or not, as a stored one
  // comes back. BadParams for a transform that is not finite,
  // DegenerateShape for a singular one.
  kcGenPoly(const kcSMDGDPoly& data, const kcXform<2>& xform, bool editable);
  explicit kcGenPoly(const kcCircle& c);
  explicit kcGenPoly(const kcEllipse& e);
  explicit kcGenPoly(const kcEllipse2& e);
  // Open polygons along the arc.
  explicit kcGenPoly(const kcEllipseArc& a);
  explicit kcGenPoly(const kcEllipseArc2& a);
  // The closed outline of the section: outer arc, radial edge, inner arc back.
  explicit kcGenPoly(const kcEllipseAnnulusSection& s);
  explicit kcGenPoly(const kcGenRect& r);
  explicit kcGenPoly(const kcRect& r);
  // An open polygon of two vertices.
  explicit kcGenPoly(const kcLineSeg& s);
  explicit kcGenPoly(const kcPolygon& p);

  // The two boundaries of an annulus: element 0 the inner, element 1 the outer.
  [[nodiscard]] static std::vector<kcGenPoly> convert(const kcAnnulus& a);
  [[nodiscard]] static std::vector<kcGenPoly> convert(const kcEllipseAnnulus& a);
  [[nodiscard]] static std::vector<kcGenPoly> convert(const kcGenAnnulus& a);

  // --- counting and navigation ---

  [[nodiscard]] long numVertices() const noexcept { return poly_.numVertices(); }
  [[nodiscard]] long numSegments() const noexcept { return poly_.numSegments(); }
  [[nodiscard]] long nextVertexIndex(long i) const;
  [[nodiscard]] long previousVertexIndex(long i) const;
  // -1 where there is none (the free ends of an open polygon).
  [[nodiscard]] long nextSegmentIndex(long i) const;
  [[nodiscard]] long previousSegmentIndex(long i) const;
  [[nodiscard]] bool isOpen() const noexcept { return poly_.isOpen(); }
  // No vertices.
  [[nodiscard]] bool degen() const noexcept { return poly_.numVertices() == 0; }
  [[nodiscard]] bool isLineSegment(long i) const;
  [[nodiscard]] bool isArcSegment(long i) const { return !isLineSegment(i); }
  [[nodiscard]] bool isEditable() const noexcept { return editable_; }
  // Maps the polygon data into client space.
  [[nodiscard]] const kcXform<2>& xform() const noexcept { return xform_; }
  // The vertices and flags as the data holds them (unmapped).
  [[nodiscard]] const kcSMDGDPoly& polygonData() const noexcept { return poly_; }

  // --- editing (kcShapesError::BadGeom when not editable) ---

  // Inserts after index (-1: at the front).
  void insertVertex(long index, const kcVector<2>& pt, double roundingSize, const kcRadian& span);
  // Appends.
  void insertVertex(const kcVector<2>& pt, double roundingSize, const kcRadian& span);
  void deleteVertex(long i);
  void replaceVertex(long i, const kcVector<2>& pt, double roundingSize);
  void replaceVertex(long i, const kcVector<2>& pt, double roundingSize, const kcRadian& span);
  void vertexPoint(long i, const kcVector<2>& pt);
  void vertexRoundingSize(long i, double roundingSize);
  // Every vertex.
  void vertexRoundingSizes(double roundingSize);
  void segmentAngleSpan(long i, const kcRadian& span);
  // Closes with a closing segment of the given span (held by vertex 0).
  void close(const kcRadian& span = kcRadian(0.0));
  void open();

  // --- queries (client space) ---

  [[nodiscard]] kcVector<2> vertexPoint(long i) const;
  // The stored radius (not mapped).
  [[nodiscard]] double vertexRoundingSize(long i) const;
  // The stored span of segment i (not mapped).
  [[nodiscard]] kcRadian segmentAngleSpan(long i) const;
  // The first vertex.
  [[nodiscard]] kcVector<2> pos() const;
  // The data's position: the mean of the vertex points.
  [[nodiscard]] kcVector<2> center() const;
  // Segment i between its vertex points (raw) or as the roundings trim it.
  // lineSegment: BadGeom on an arc segment; the arcs: BadGeom on a line.
  [[nodiscard]] kcLineSeg lineSegment(long i, bool raw) const;
  [[nodiscard]] kcEllipseArc arcSegment(long i, bool raw) const;
  [[nodiscard]] kcEllipseArc2 ellipseSegment(long i, bool raw) const;
  // The rounding arc of corner i (BadGeom when the corner is sharp).
  [[nodiscard]] kcEllipseArc roundedVertex(long i) const;
  [[nodiscard]] kcEllipseArc2 roundedVertexArc(long i) const;
  // The box of the outline mapped by x after the polygon's own transform.
  [[nodiscard]] kcRect encloseRect(const kcXform<2>& x) const;
  // Open contours: the total signed turn of the direction of travel from
  // start to end (arcs, roundings and sharp corners).
  [[nodiscard]] kcRadian tangentRotation() const;
  // Open contours: the total signed turn of the direction from pt to the
  // curve point as it travels from start to end.
  [[nodiscard]] kcRadian windingAngle(const kcVector<2>& pt) const;
  // Regions: whether the outline runs counter-clockwise in client space.
  [[nodiscard]] bool isRightHanded() const;
  [[nodiscard]] double distToPoint(const kcVector<2>& pt) const { return distanceToPoint(pt); }
  // The parts of the outline inside the window (taken as closed, even-odd),
  // as a kcShapeTree of kcLineSeg and kcEllipseArc pieces in travel order.
  [[nodiscard]] kcShapePtr clip_(const kcPolyline& window, kcClipInfo& info) const;

  // The identity gives a copy; a singular x is kcMathError::Singular; any
  // other x gives a copy seen through x * xform() that is not editable.
  [[nodiscard]] kcGenPoly map(const kcXform<2>& x) const;
  // The same with the rigid transform after a uniform scale.
  [[nodiscard]] kcGenPoly map(const kc2Rigid& r, double scale) const;

  // The outline (placed by xform()) on a device, as one path under one update
  // lock; an open polygon gets its arrow head from props, and showVertex()
  // marks the vertices as points.
  void drawToScope(const kcGraphicProps& props, kcUIScope& scope) const;

  // Data equal, transforms equal, editable flags equal.
  [[nodiscard]] bool operator==(const kcGenPoly& o) const;
  [[nodiscard]] bool operator!=(const kcGenPoly& o) const { return !(*this == o); }

  // --- kcShape ---

  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  // The same outline travelled the other way (open or closed).
  [[nodiscard]] kcShapePtr reverse() const override;
  // Trimmed segments and rounding arcs in travel order, as kcLineSeg and
  // kcEllipseArc in client space.
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isOpenContour() const override { return isOpen() && !degen(); }
  [[nodiscard]] bool isRegion() const override { return !isOpen(); }
  [[nodiscard]] bool isEmpty() const override { return degen(); }
  // An open polygon has a tangent at its ends when it has a segment.
  [[nodiscard]] bool hasTangent() const override;
  [[nodiscard]] kcRect encloseRect() const override;
  // EmptyShape without vertices.
  [[nodiscard]] kcRect boundingBox() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  [[nodiscard]] double distanceToPoint(const kcVector<2>& p) const override;
  [[nodiscard]] bool within(const kcVector<2>& p) const override;
  [[nodiscard]] kcVector<2> startPoint() const override;
  [[nodiscard]] kcVector<2> endPoint() const override;
  [[nodiscard]] kcRadian startAngle() const override;
  [[nodiscard]] kcRadian endAngle() const override;
  // One chain along the outline; a closed polygon ends at its start again.
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  [[noreturn]] void remapAndThrowError_(kcException& e) const override;

  void dispatchSerialize(kcArchive& ar) override;
  virtual void loadSimple(kcArchive& ar);

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);
  // BadGeom unless editable.
  void checkEditable_() const;
  // The data, for derived classes that edit it.
  [[nodiscard]] kcSMDGDPoly& data_() noexcept { return poly_; }
  void setEditable_(bool e) noexcept { editable_ = e; }
  // The same outline travelled the other way, transform and flag kept.
  [[nodiscard]] kcGenPoly reversed_() const;
  // Runs f; a kcException it throws goes to remapAndThrowError_.
  template <class F>
  decltype(auto) guarded_(F&& f) const {
    try {
      return f();
    } catch (kcException& e) {
      remapAndThrowError_(e);
      throw;  // not reached: the compiler does not take the override's [[noreturn]] as given
    }
  }
  // Runs f on the data; when f throws, the data is put back as it was.
  template <class F>
  void atomically_(F&& f) {
    kcSMDGDPoly before(poly_);
    try {
      f();
    } catch (...) {
      poly_ = before;
      throw;
    }
  }

 private:
  // The data's index of segment i, of vertex i (invalidIndex when there is none).
  [[nodiscard]] int dataSegment_(long i) const;
  [[nodiscard]] int dataVertex_(long i) const;
  // Installs a chain built from a shape, validated whole, seen through x.
  void build_(std::vector<kcSMDGDPolyVertex> chain, bool closed, const kcXform<2>& x);
  void transferBody_(kcArchive& ar);

  kcSMDGDPoly poly_;
  bool editable_ = true;
  kcXform<2> xform_;
};

// The synthetic image of a closed polygon (its outline filled, then drawn,
// in grey) mapped by xform, then the polygon's own transform, then the
// buffer's imageFromClientXform(). kcShapesError::BadGeom for an open one.
void kfDrawSynthetic(const kcGenPoly& poly, const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer,
                     unsigned char grey);
// The same through a shared transform; kcBadPointer for an empty handle.
void kfDrawSynthetic(const kcGenPoly& poly, const kcPtrHandle_const<kc2XformBase>& xform,
                     kcPelBuffer<unsigned char>& pelBuffer, unsigned char grey);
