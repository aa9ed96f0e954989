// kcSMDGDPoly: one outline of a surface-mount device (a body, a lead, a pad):
// a chain of vertices joined by straight or circular segments, each interior
// corner optionally rounded, open (a polyline) or closed (an outline).
//
// Segment k ends at vertex k and starts at vertex k - 1 (cyclically): a closed
// poly of n vertices has segments 0..n-1, an open one 1..n-1. A segment is an
// arc when the signed-normalised sweep stored in its end vertex exceeds 1e-15
// in magnitude; a vertex is rounded when its radius does. Three caches hold,
// per vertex, the tangent points of its rounding arc on the incoming and the
// outgoing segment and the arc's sweep (the vertex point twice and 0 for a
// sharp corner); every edit keeps them in step.
//
// Every edit is validated at once: the rounding of the corners it touches is
// recomputed (the centre is where the two neighbouring segments, offset by
// the radius towards the inside of the corner, meet; only half of each
// interior neighbour may be used), and the changed segments and roundings are
// tested against the whole outline for crossings, the label percentages and
// the segment length tolerances. A failed edit throws and leaves the poly as
// it was in every observable way; open() is the one exception (it stays
// open). Only what an edit changes is saved for the rollback, and crossing
// tests skip pairs whose boxes cannot meet, so appending to a poly of
// thousands of vertices costs about a logarithmic factor over a constant.
//
// Direction (isDirectionPositive, closed polys only): a ray is cast from the
// middle of segment 1 (of its rounded part) to the left of its direction of
// travel, along the direction in that half-turn farthest in angle from every
// end point and every circle tangent of the rest of the outline as seen from
// the probe point; the poly runs counter-clockwise, and is positive, when the
// ray crosses the outline an odd number of times (even, with the
// direction-reversed flag set). inside_() uses the same parity from any point
// over the whole turn; a point within 1e-9 of the outline's size from the
// outline is inside.
//
// boundingBox(x) is the tight box of the mapped rounded outline: the trimmed
// segments and the rounding arcs, each mapped and boxed exactly.
// extensionPerimeter_() is the rounded perimeter plus, for each segment, its
// forward and backward extension percentages times its (unrounded) length.
//
// Archive form: an unsigned version byte (1), the description prefix (the
// name), the vertices, the labels (32-bit), the three caches, the open and
// direction-reversed flags, the colours, the two arrow colours, the weight
// (version 1 only; version 0 loads weight 1; a weight that is not a finite
// number is kcArchive::Corrupt). Version 2 and above is
// kcArchive::UnknownVersion ("dispc/smd/poly"). A loaded poly is validated
// whole: vertices that do not validate (crossing, an impossible rounding),
// caches of the wrong length or a label list that does not match are
// kcArchive::Corrupt, and the target keeps what it had.
#pragma once

#include <cmath>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "dispc/color.h"
#include "dispc/dimtol.h"
#include "dispc/smd/gdbase.h"
#include "dispc/smd/vertex.h"
#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/colors.h"
#include "dispc/wrfm/lineseg.h"
#include "foundation/angle.h"
#include "foundation/rigid.h"
#include "foundation/shapes/rect.h"

class kcGraphicList;
class kcSMDGDPolyIndex_;
class kc2Wireframe;

class kcSMDGDPoly : public kcSMDGeometricDescription {
 public:
  KC_DECLARE_PERSISTENT(kcSMDGDPoly);

  class Errors : public kcException {
   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcException::serialize_(ar, version); }
  };
#define KC_SMD_POLY_ERROR_(Name)                      \
  class Name : public Errors {                        \
   public:                                            \
    KC_DECLARE_EXCEPTION(Name);                       \
    void message_(std::wostream& out) const override; \
  }
  KC_SMD_POLY_ERROR_(invalidVertices);
  KC_SMD_POLY_ERROR_(crossingSegments);
  KC_SMD_POLY_ERROR_(invalidIndex);
  KC_SMD_POLY_ERROR_(invalidRounding);
  KC_SMD_POLY_ERROR_(noPelBuffer);
  KC_SMD_POLY_ERROR_(badSubModel);
  KC_SMD_POLY_ERROR_(notClosed);
#undef KC_SMD_POLY_ERROR_

  // Radii, spans and weights within this are zero (or equal).
  static constexpr double kZeroTol = 1e-15;
  // Corners turning by at least this many degrees get extensions.
  static constexpr double kExtensionCornerAngle = 45.0;

  // An empty open poly: colours (green, light grey, dark grey), green arrows, weight 1.
  kcSMDGDPoly();
  explicit kcSMDGDPoly(const std::wstring& name);
  // A copy of the poly the wireframe carries (see kc2Wireframe), named name;
  // kcShapesError::BadGeom when it carries none.
  kcSMDGDPoly(const kc2Wireframe& wireframe, const std::wstring& name);
  kcSMDGDPoly(const kcSMDGDPoly& other);
  kcSMDGDPoly& operator=(const kcSMDGDPoly& other);
  ~kcSMDGDPoly() override;

  // Closed polys named "poly" with sharp corners, percentages 0.5 and labels
  // 0, 1, 2...: a triangle (apex first) whose centroid is centre, a rectangle
  // (from the upper right corner, counter-clockwise), and a circle of two
  // half-circle arcs (from the left point, label 0).
  [[nodiscard]] static kcSMDGDPoly triangle(double base, double height, const kcVector<2>& centre);
  [[nodiscard]] static kcSMDGDPoly rectangle(double width, double height, const kcVector<2>& centre);
  [[nodiscard]] static kcSMDGDPoly circle(double radius, const kcVector<2>& centre);

  // --- queries ---

  [[nodiscard]] long numVertices() const noexcept { return static_cast<long>(vertices_.size()); }
  [[nodiscard]] long numSegments() const noexcept;
  [[nodiscard]] bool isOpen() const noexcept { return open_; }
  [[nodiscard]] bool isClosed() const noexcept { return !open_; }
  [[nodiscard]] bool isDirectionReversed() const noexcept { return reversed_; }
  // Counter-clockwise, or clockwise with the direction-reversed flag (see the
  // class comment); notClosed for an open poly.
  [[nodiscard]] bool isDirectionPositive() const;
  [[nodiscard]] bool isDirectionNegative() const { return !isDirectionPositive(); }
  [[nodiscard]] const std::vector<kcSMDGDPolyVertex>& vertices() const noexcept { return vertices_; }
  [[nodiscard]] const kcSMDGDPolyVertex& vertex(long index, bool wrap) const;
  // The distinct sub-model labels of the vertices in order of first appearance, -1 left out.
  [[nodiscard]] const std::vector<std::int32_t>& subModelLabels() const noexcept { return labels_; }
  [[nodiscard]] const kcSMDColors& colors() const noexcept { return colors_; }
  [[nodiscard]] const kcColor& positiveArrowColor() const noexcept { return positiveArrow_; }
  [[nodiscard]] const kcColor& negativeArrowColor() const noexcept { return negativeArrow_; }
  [[nodiscard]] double weight() const noexcept { return weight_; }

  // The rounded outline's tight box in the space xform maps to; empty without vertices.
  [[nodiscard]] kcRect boundingBox(const kcXform<2>& xform) const;
  // The segment's length with the tolerances of its end vertex.
  [[nodiscard]] kcSMDDimension segmentDimension(long segment) const;
  // The segments (in increasing order) whose length measured under a, relative
  // to the nominal scaled as under b, falls outside their tolerance.
  [[nodiscard]] std::vector<long> segmentsOutOfTolerance(const kcXform<2>& a, const kcXform<2>& b) const;

  // Names are not compared; weights within kZeroTol.
  [[nodiscard]] bool operator==(const kcSMDGDPoly& other) const;
  [[nodiscard]] bool operator!=(const kcSMDGDPoly& other) const { return !(*this == other); }

  // --- edits: validated, and undone when validation throws ---

  // Inserts after position index (-1: at the front); invalidIndex outside -1..n-1.
  void insertVertex(int index, const kcSMDGDPolyVertex& v);
  // Appends.
  kcSMDGDPoly& operator<<(const kcSMDGDPolyVertex& v);
  void deleteVertex(int index);
  void replaceVertex(int index, const kcSMDGDPolyVertex& v);
  // Replaces the whole chain and validates it whole.
  void vertices(const std::vector<kcSMDGDPolyVertex>& list);
  void deleteAllVertices() { vertices({}); }
  // invalidVertices without vertices; undone when the closed outline does not validate.
  void close();
  // Opens; when the open chain does not validate the exception comes, and the poly stays open.
  void open();
  void toggleDirection();
  // The freshly constructed poly named "poly".
  void reset();
  // Empty and open; name, colours, arrow colours, weight and direction flag kept.
  virtual void reInit();
  void colors(const kcSMDColors& c);
  void positiveArrowColor(const kcColor& c);
  void negativeArrowColor(const kcColor& c);
  // kcShapesError::BadParams unless w is a finite number.
  void weight(double w);

  // --- drawing ---

  using kcSMDGeometricDescription::drawSynthetic;
  // The rounded outline seen through xform, as one general polygon in the
  // wireframe colour on the main layer: a 1-pel solid pen, no fill, no arrow
  // head (direction arrows are drawn on their own).
  void drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const override;
  void drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const override;
  // One arrow per existing segment (segment 0 of an open poly has none), in
  // segment order: at the middle of the rounded line, or at half the span of
  // the rounded arc, along the direction of travel (turned by 180 degrees
  // when the direction is reversed). Each is drawn by drawArrow, size poly
  // units long, handed the arrow colours as (positive, negative) for an open
  // poly or one whose direction is positive, else (negative, positive).
  // kcShapesError::BadParams unless size is a positive finite number.
  void drawDirectionArrows(const kcXform<2>& xform, kcUITablet& tablet, double size) const;
  void drawDirectionArrows(const kcXform<2>& xform, kcGraphicList& list, double size) const;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

  // An arrow placed by where (its middle at where's translation, pointing
  // along its angle), size long, then mapped by xform: a shaft and two barbs
  // a third as long at 30 degrees to it, drawn as three line segments with a
  // 1-pel solid pen on the main layer (or added to the list as one graphic).
  // Its colour is first when xform keeps orientation and second when it
  // mirrors (a mirror turns the poly's sense as the viewer sees it).
  static void drawArrow(const kcXform<2>& xform, kcUITablet& tablet, const kc2Rigid& where, double size,
                        const kcColor& first, const kcColor& second);
  static void drawArrow(const kcXform<2>& xform, kcGraphicList& list, const kc2Rigid& where, double size,
                        const kcColor& first, const kcColor& second);

  // --- indices ---
  // i modulo n with wrap (negative i: i + n (floor(-i / n) + 1), so -n gives
  // n); without, i itself when in range. invalidIndex without vertices or out of range.
  [[nodiscard]] int vertexIndex_(int i, bool wrap) const;
  // vertexIndex_, and segment 0 of an open poly is invalidIndex.
  [[nodiscard]] int segmentIndex_(int i, bool wrap) const;
  [[nodiscard]] int nextVertexIndex_(int segment) const;
  [[nodiscard]] int previousVertexIndex_(int segment) const;
  // vertexIndex_(i, true) as an index into the vertices: the arithmetic
  // names n for an exact negative multiple of n, which in a closed
  // one-vertex chain is where its only segment starts, vertex 0.
  [[nodiscard]] int wrappedIndex_(int i) const;
  // The segment leaving / arriving at vertex v; -1 at the free ends of an open poly.
  [[nodiscard]] int nextSegmentIndex_(int v) const;
  [[nodiscard]] int previousSegmentIndex_(int v) const;
  [[nodiscard]] int firstVertexIndex_() const noexcept { return 0; }
  [[nodiscard]] int lastVertexIndex_() const noexcept { return static_cast<int>(vertices_.size()) - 1; }
  [[nodiscard]] int firstSegmentIndex_() const { return nextSegmentIndex_(0); }
  [[nodiscard]] int lastSegmentIndex_() const;
  [[nodiscard]] bool isEndVertex(int v) const noexcept;
  [[nodiscard]] bool vertexIsRounded_(int v) const noexcept;
  [[nodiscard]] bool roundingIsUncertain_(int v) const noexcept { return vertices_[v].vertexRadius() < 0.0; }
  [[nodiscard]] long vertexLabel_(int v) const noexcept { return vertices_[v].subModelLabel(); }
  void addVertexLabel_(const kcSMDGDPolyVertex& v);
  // Whether segment s exists: 0 <= s < n, and not segment 0 of an open poly.
  [[nodiscard]] bool segmentExists_(int s) const noexcept;

  // --- validation ---
  void validateReplacement_(int i);
  void validateInsertion_(int i) { validateReplacement_(i + 1); }
  void validateDeletion_(int i);
  void validateClose_();
  // Kept as it always was: on a non-empty poly it throws invalidIndex.
  void validateIncremental_() { validateReplacement_(static_cast<int>(vertices_.size())); }
  void validate_();

  // --- geometry ---
  void computeVertexRounding_(int v);
  void computeVertexRoundings_(int v);
  [[nodiscard]] kcVector<2> roundPoint_(int v) const;
  [[nodiscard]] double segmentLength_(int s) const;
  [[nodiscard]] double roundedSegmentLength_(int s) const;
  // The rounded outline's length, counting only pieces longer than minLength.
  [[nodiscard]] double perimeter_(double minLength) const;
  [[nodiscard]] double perimeter_(const kcXform<2>& xform) const;
  [[nodiscard]] double extensionPerimeter_() const;
  [[nodiscard]] double forwardPercExtension_(int s) const;
  void forwardPercExtension_(int s, double p);
  [[nodiscard]] double backwardPercExtension_(int s) const;
  void backwardPercExtension_(int s, double p);
  void setExtensions_(double p);
  void setDefaultExtensions_() { setExtensions_(0.5); }
  // Shortens this poly's extensions (and with both, other's against this one)
  // until every extension piece keeps at least distance from each segment of
  // the other outline that does not run within angle of parallel to it; each
  // step halves a percentage, and one that ends below minPercent becomes 0.
  void checkExtensions_(kcSMDGDPoly& other, double distance, const kcDegree& angle, double minPercent,
                        bool both);
  [[nodiscard]] double percentNextSegment_(int v) const { return vertices_[v].percentNextSegment(); }
  [[nodiscard]] double percentPrevSegment_(int v) const { return vertices_[v].percentPrevSegment(); }
  [[nodiscard]] kcDegree orientation_() const;
  [[nodiscard]] kcVector<2> centerOfMass_() const noexcept;
  [[nodiscard]] kcVector<2> closestSegmentPoint_(int s, const kcVector<2>& p) const;
  [[nodiscard]] kcVector<2> closestRoundedSegmentPoint_(int s, const kcVector<2>& p) const;
  [[nodiscard]] kcDegree segmentStartDirection_(int s) const;
  [[nodiscard]] kcDegree segmentEndDirection_(int s) const;
  [[nodiscard]] bool isLineSegment_(int s) const { return !isArcSegment_(s); }
  [[nodiscard]] bool isArcSegment_(int s) const;
  [[nodiscard]] bool segmentIntersectsSegment_(int a, int b) const {
    return !segmentIntersection_(a, b).empty();
  }
  [[nodiscard]] bool segmentIntersectsVertex_(int s, int v) const;
  [[nodiscard]] bool vertexIntersectsVertex_(int a, int b) const;
  [[nodiscard]] bool segmentIntersectsPoly_(int s, int upTo) const;
  [[nodiscard]] bool vertexIntersectsPoly_(int v, int upTo) const;
  // Whether the rounded segment s / the rounding of vertex v meets a piece of
  // element j, as the two tests above ask of each element.
  [[nodiscard]] bool segmentMeetsElement_(int s, int j) const;
  [[nodiscard]] bool roundingMeetsElement_(int v, int j) const;
  [[nodiscard]] std::vector<kcVector<2>> segmentIntersection_(int a, int b) const;
  [[nodiscard]] std::vector<kcVector<2>> vertexIntersection_(int a, int b) const;
  [[nodiscard]] std::vector<kcVector<2>> segmentVertexIntersection_(int s, int v) const;
  // Even-odd inside of the rounded outline; see the class comment.
  [[nodiscard]] bool inside_(const kcVector<2>& p) const;

 private:
  friend class kcSMDGDPolyPrivate;
  friend class kcSMDGDPolyIndex_;
  friend bool kfRealEq(const kcSMDGDPoly& a, const kcSMDGDPoly& b, double tol);
  friend kcSMDGDPoly operator*(double s, const kcSMDGDPoly& p);
  friend kcSMDGDPoly operator*(const kc2Rigid& r, const kcSMDGDPoly& p);

  // What an edit changed, to put back when its validation throws.
  struct Undo;
  template <class Edit>
  void edit_(Edit&& change, Undo& undo);
  void setRounding_(int v, const kcVector<2>& start, const kcVector<2>& end, double span);
  void rebuildLabels_();
  // Where the crossing tests look for pairs that can meet.
  kcSMDGDPolyIndex_& index_() const;
  // The pieces of the outline near the rounded segment s / the rounding of v,
  // in increasing order, up to upTo; all of them when there is no box to use.
  template <class Test>
  bool anyNear_(int upTo, bool ofSegment, int k, Test&& test) const;
  // What validation tests at vertex v besides crossings: the label percentages
  // and the length tolerance of segment v; false where validation throws.
  [[nodiscard]] bool segmentChecksPass_(int v) const;
  // Validation's visit to vertex v, in its order.
  void validateVertex_(int v);

  std::vector<kcSMDGDPolyVertex> vertices_;
  std::vector<std::int32_t> labels_;
  std::vector<kcVector<2>> roundStart_;
  std::vector<kcVector<2>> roundEnd_;
  std::vector<double> roundSpan_;
  bool open_ = true;
  bool reversed_ = false;
  kcSMDColors colors_;
  kcColor positiveArrow_;
  kcColor negativeArrow_;
  double weight_ = 1.0;
  // Set while an edit records what it changes.
  Undo* undo_ = nullptr;
  mutable std::unique_ptr<kcSMDGDPolyIndex_> spatial_;
};

[[nodiscard]] bool kfRealEq(const kcSMDGDPoly& a, const kcSMDGDPoly& b, double tol);
// Every vertex scaled (or moved), then the whole chain validated.
[[nodiscard]] kcSMDGDPoly operator*(double s, const kcSMDGDPoly& p);
[[nodiscard]] kcSMDGDPoly operator*(const kc2Rigid& r, const kcSMDGDPoly& p);

// The indices and tests every crossing check asks for, many times over.
inline int kcSMDGDPoly::vertexIndex_(int i, bool wrap) const {
  const int n = static_cast<int>(vertices_.size());
  if (i >= 0 && i < n) return i;
  if (n == 0 || !wrap) throw invalidIndex();
  // -n gives n, not 0: the established arithmetic.
  if (i >= 0) return i % n;
  return i + n * ((-i) / n + 1);
}

inline int kcSMDGDPoly::nextVertexIndex_(int segment) const {
  if (segment == 0 && open_) throw invalidIndex();
  return vertexIndex_(segment, false);
}

inline int kcSMDGDPoly::previousVertexIndex_(int segment) const {
  if (segment == 0 && open_) throw invalidIndex();
  return wrappedIndex_(segment - 1);
}

inline int kcSMDGDPoly::wrappedIndex_(int i) const {
  const int v = vertexIndex_(i, true);
  return v == static_cast<int>(vertices_.size()) ? 0 : v;
}

inline bool kcSMDGDPoly::isArcSegment_(int s) const {
  const kcDegree span = vertices_[vertexIndex_(s, false)].segmentAngleSpan();
  return span.toDouble() != 0.0 && std::fabs(span.signedNorm().toDouble()) > kZeroTol;
}

inline bool kcSMDGDPoly::isEndVertex(int v) const noexcept {
  return open_ && (v == 0 || v == lastVertexIndex_());
}

inline bool kcSMDGDPoly::vertexIsRounded_(int v) const noexcept {
  return std::fabs(vertices_[v].vertexRadius()) > kZeroTol && !isEndVertex(v);
}

inline bool kcSMDGDPoly::segmentExists_(int s) const noexcept {
  return s >= 0 && s < numVertices() && numVertices() >= 2 && !(s == 0 && open_);
}
