// kcSMDGDPolyPrivate: the companion of kcSMDGDPoly. A poly in its own right
// (persistent under its own name), whose static helpers reach into any poly:
// the segment shapes validation is built from, the offsets that find rounding
// centres, extensions, and the probes of the direction test.
//
// Segment shapes take the poly and a segment index (segment 0 of an open poly
// is kcSMDGDPoly::invalidIndex): the whole segment, the rounded segment
// trimmed to what the roundings at its ends leave, the segment slid by a
// distance to its right (negative: to its left; an arc keeps its centre and
// changes its radius), and the first or second half of that. A piece that
// degenerates to a point is kcShapesError::DegenerateShape.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dispc/smd/poly.h"
#include "dispc/tablet.h"

class kc2Wireframe;
class kcSMDGDModel;

class kcSMDGDPolyPrivate : public kcSMDGDPoly {
 public:
  KC_DECLARE_PERSISTENT(kcSMDGDPolyPrivate);

  kcSMDGDPolyPrivate() = default;
  explicit kcSMDGDPolyPrivate(const std::wstring& name) : kcSMDGDPoly(name) {}
  explicit kcSMDGDPolyPrivate(const kcSMDGDPoly& poly) : kcSMDGDPoly(poly) {}
  kcSMDGDPolyPrivate(const kcSMDGDPolyPrivate&) = default;
  kcSMDGDPolyPrivate& operator=(const kcSMDGDPolyPrivate&) = default;

  void dispatchSerialize(kcArchive& ar) override;

  // --- segment shapes ---
  [[nodiscard]] static kc2SegmentLine lineSegment_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentArc arcSegment_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentLine roundedLineSegment_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentArc roundedArcSegment_(const kcSMDGDPoly& p, int s);
  // The rounding arc of a rounded vertex.
  [[nodiscard]] static kc2SegmentArc roundingArc_(const kcSMDGDPoly& p, int v);
  [[nodiscard]] static kc2SegmentLine slideLineSegment_(const kcSMDGDPoly& p, int s, double d);
  [[nodiscard]] static kc2SegmentArc slideArc_(const kcSMDGDPoly& p, int s, double d);
  [[nodiscard]] static kc2SegmentLine firstHalfSlideLineSegment_(const kcSMDGDPoly& p, int s, double d);
  [[nodiscard]] static kc2SegmentLine secondHalfSlideLineSegment_(const kcSMDGDPoly& p, int s, double d);
  [[nodiscard]] static kc2SegmentArc firstHalfSlideArc_(const kcSMDGDPoly& p, int s, double d);
  [[nodiscard]] static kc2SegmentArc secondHalfSlideArc_(const kcSMDGDPoly& p, int s, double d);
  // The pieces its extension percentages add beyond a segment's end (forward)
  // or start (backward), each running outwards from where it leaves the
  // segment: the line continued straight, the arc continued on its circle,
  // over that share of the segment's length. DegenerateShape for a zero share.
  [[nodiscard]] static kc2SegmentLine forwardLineSegmentExtension_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentLine backwardLineSegmentExtension_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentArc forwardArcSegmentExtension_(const kcSMDGDPoly& p, int s);
  [[nodiscard]] static kc2SegmentArc backwardArcSegmentExtension_(const kcSMDGDPoly& p, int s);

  // --- corners ---
  // signedNorm(180 - (out - in)) of the tangent directions at v: 180 straight
  // on, positive for a left turn. invalidIndex at an end of an open poly.
  [[nodiscard]] static kcDegree vertexAngle(const kcSMDGDPoly& p, int v);
  [[nodiscard]] static kcVector<2> roundPoint(const kcSMDGDPoly& p, int v) { return p.roundPoint_(v); }
  [[nodiscard]] static double getWeight_(const kcSMDGDPoly& p) { return p.weight(); }
  static void setWeight_(kcSMDGDPoly& p, double w) { p.weight(w); }

  // --- direction probes ---
  // The directions (degrees) under which the ends of every piece of the
  // outline but the probed one, and the tangents to its arcs, are seen from
  // probe. A ray along one of them may graze the outline.
  [[nodiscard]] static std::vector<double> ranges_(const kcSMDGDPoly& p, const kcVector<2>& probe,
                                                   int skipSegment);
  // The direction in [from, from + span] farthest from every direction in
  // ends (and from the two limits when span is less than a turn).
  [[nodiscard]] static double safestDirection_(std::vector<double> ends, double from, double span);

  // --- extensions ---
  // Halves percent until the part of the extension piece it leaves (the piece
  // stands for the whole of percent) keeps at least distance from other; a
  // share below 1e-3 becomes 0. With flag, an other that runs within angle
  // of parallel to the extension does not stop it.
  static void checkSegmentExtension_(double& percent, const kc2SegmentLine& extension,
                                     const kc2SegmentLine& other, double distance, const kcDegree& angle,
                                     bool flag);
  static void checkSegmentExtension_(double& percent, const kc2SegmentLine& extension,
                                     const kc2SegmentArc& other, double distance, const kcDegree& angle,
                                     bool flag);
  static void checkSegmentExtension_(double& percent, const kc2SegmentArc& extension,
                                     const kc2SegmentLine& other, double distance, const kcDegree& angle,
                                     bool flag);
  static void checkSegmentExtension_(double& percent, const kc2SegmentArc& extension,
                                     const kc2SegmentArc& other, double distance, const kcDegree& angle,
                                     bool flag);

  // --- whole polys ---
  // The pose of a poly: its centre of mass, turned by its orientation.
  [[nodiscard]] static kc2Rigid position(const kcSMDGDPoly& p);
  // The point of the rounded outline nearest to pt (the first along the
  // outline on a tie); kcShapesError::EmptyShape without vertices.
  [[nodiscard]] static kcVector<2> closestPoint(const kcSMDGDPoly& p, const kcVector<2>& pt);
  [[nodiscard]] static double distToPoint(const kcSMDGDPoly& p, const kcVector<2>& pt);
  // The inside test of a closed poly; notClosed for an open one.
  [[nodiscard]] static bool inside(const kcSMDGDPoly& p, const kcVector<2>& pt);
  // The same outline travelled the other way. An open poly's vertices come in
  // reverse order; a closed one keeps vertex 0 first. Spans are negated and
  // move with their segments, as do length tolerances; the two rounding
  // percentages and the two extension percentages of each vertex swap. The
  // direction flag is kept, so the direction turns.
  [[nodiscard]] static kcSMDGDPoly reversePoly(const kcSMDGDPoly& p);
  // Mirrored about the y axis (x becomes -x, spans negated), vertex order
  // kept, and the direction flag toggled, so an outline keeps its polarity.
  [[nodiscard]] static kcSMDGDPoly flip(const kcSMDGDPoly& p);
  // The poly under a similarity (a mirror first when x has one, then the
  // scale, then the turn and the move), validated again; the direction flag
  // is kept, so a mirror turns the direction. kcShapesError::BadGeom when x
  // is not a similarity (to 1e-12 of its scale).
  [[nodiscard]] static kcSMDGDPoly similarityImage(const kcSMDGDPoly& p, const kcXform<2>& x);
  // The run of vertices from v that carry v's label, continued past the last
  // vertex to vertex 0 only with wrap on a closed poly: the whole poly when
  // the run holds every vertex, otherwise the run as an open poly (same name,
  // colours and flags). badSubModel for a run of fewer than 2 vertices.
  [[nodiscard]] static kcSMDGDPoly subPoly(const kcSMDGDPoly& p, int v, bool wrap);
  // Appends to out the sub-poly of every run of vertices labelled label
  // (each run from its first vertex, without wrap), with their labels.
  static void subModel(const kcSMDGDPoly& p, long label, kcSMDGDModel& out);
  // The poly as a wireframe that carries it: its data, identity transform.
  [[nodiscard]] static kc2Wireframe wireframe(const kcSMDGDPoly& p);

  // --- checks ---
  // A copy of p with every rounding computed afresh and the whole outline
  // validated, as a load validates it; the poly's error when it does not
  // validate.
  [[nodiscard]] static kcSMDGDPoly validated(const kcSMDGDPoly& p);
  // Where p, built again vertex by vertex and closed as a fresh edit would
  // build it, is first refused: "at vertex 3: <the edit's message>", or "at
  // the closing segment: ..."; empty when every edit is taken.
  [[nodiscard]] static std::wstring rebuildRefusal(const kcSMDGDPoly& p);
  // Sets the open flag alone, validating nothing: what a refused open()
  // leaves behind.
  static void markOpen_(kcSMDGDPoly& p) noexcept { p.open_ = true; }

  // --- drawing ---
  // The synthetic image of p, mapped by the buffer's imageFromClientXform()
  // after xform, in grey: the even-odd fill of the rounded outline (see
  // kfFillPelBuf), then, with outline, its pieces as thin pel lines in the
  // same grey (drawLinePelBuf, drawArcPelBuf), so that features thinner than
  // a pel still show. An open poly is not filled with fillClosedOnly;
  // without it, it is filled as if a straight segment closed it.
  static void drawSynthetic(const kcSMDGDPoly& p, const kcXform<2>& xform,
                            kcPelBuffer<unsigned char>& pelBuffer, unsigned char grey, bool fillClosedOnly,
                            bool outline);
  // The rounded outline seen through xform as one general polygon (recorded
  // as one record), a 1-pel solid pen of color without arrow head or fill.
  static void drawWireframe(const kcSMDGDPoly& p, const kcXform<2>& xform, kcUITablet& tablet,
                            const kcColor& color, kcUITablet::Layers layer);
  // Whether p's inside is negative as seen through xform: closed, and its
  // direction negative under a transform that keeps orientation (positive
  // under one that mirrors), as a wireframe's inside polarity says.
  [[nodiscard]] static bool isNegative(const kcSMDGDPoly& p, const kcXform<2>& xform);
  // The outline of a negative poly (nothing for any other) with a 1-pel
  // dashed pen of color, without arrow head or fill, so that it reads apart
  // from the wireframe on a shared layer.
  static void drawNegWireframe(const kcSMDGDPoly& p, const kcXform<2>& xform, kcUITablet& tablet,
                               const kcColor& color, kcUITablet::Layers layer);
  // One segment (poly coordinates) seen through xform, over what is drawn:
  // a 2-pel solid pen of color, no arrow head.
  static void overlayLineSegment_(const kc2SegmentLine& s, const kcXform<2>& xform, kcUITablet& tablet,
                                  const kcColor& color, kcUITablet::Layers layer);
  static void overlayArc_(const kc2SegmentArc& a, const kcXform<2>& xform, kcUITablet& tablet,
                          const kcColor& color, kcUITablet::Layers layer);
  // Where segment s's direction arrow sits and points (poly coordinates).
  [[nodiscard]] static kc2Rigid arrowPlace(const kcSMDGDPoly& p, int s);

  // --- dimensions ---
  // Scale type to tolerance kind: 0 -> limits, 1 -> offsets, 2 ->
  // percentages, anything else -> offsets.
  [[nodiscard]] static kcDimTol::TolType tolType(kcSMDDimension::ScaleType t) noexcept;
  // The dimension with its limits in the kind of its scale type (-1 stays -1;
  // without a nominal, limits).
  [[nodiscard]] static kcDimTol dimTol(const kcSMDDimension& d);

  // Installs a chain as it stands, with sharp rounding caches and the given
  // open flag, and validates nothing: for helpers that validate afterwards.
  static void assignVertices_(kcSMDGDPoly& p, std::vector<kcSMDGDPolyVertex> list, bool open);

  // --- the poly's measures and extension edits, for callers outside it ---
  [[nodiscard]] static double perimeter_(const kcSMDGDPoly& p, double minLength) {
    return p.perimeter_(minLength);
  }
  [[nodiscard]] static double extensionPerimeter_(const kcSMDGDPoly& p) { return p.extensionPerimeter_(); }
  static void setExtensions_(kcSMDGDPoly& p, double percent) { p.setExtensions_(percent); }
  static void checkExtensions_(kcSMDGDPoly& p, kcSMDGDPoly& other, double distance, const kcDegree& angle,
                               double minPercent, bool both) {
    p.checkExtensions_(other, distance, angle, minPercent, both);
  }

  // --- the poly's index helpers, for callers outside it ---
  [[nodiscard]] static int vertexIndex_(const kcSMDGDPoly& p, int i, bool wrap) {
    return p.vertexIndex_(i, wrap);
  }
  [[nodiscard]] static int segmentIndex_(const kcSMDGDPoly& p, int i, bool wrap) {
    return p.segmentIndex_(i, wrap);
  }
  [[nodiscard]] static int nextVertexIndex_(const kcSMDGDPoly& p, int s) { return p.nextVertexIndex_(s); }
  [[nodiscard]] static int previousVertexIndex_(const kcSMDGDPoly& p, int s) {
    return p.previousVertexIndex_(s);
  }
  [[nodiscard]] static int nextSegmentIndex_(const kcSMDGDPoly& p, int v) { return p.nextSegmentIndex_(v); }
  [[nodiscard]] static int previousSegmentIndex_(const kcSMDGDPoly& p, int v) {
    return p.previousSegmentIndex_(v);
  }
  [[nodiscard]] static bool isEndVertex(const kcSMDGDPoly& p, int v) { return p.isEndVertex(v); }
  [[nodiscard]] static bool vertexIsRounded_(const kcSMDGDPoly& p, int v) { return p.vertexIsRounded_(v); }
  [[nodiscard]] static bool isArcSegment_(const kcSMDGDPoly& p, int s) { return p.isArcSegment_(s); }
  [[nodiscard]] static bool segmentExists_(const kcSMDGDPoly& p, int s) { return p.segmentExists_(s); }
  [[nodiscard]] static const kcVector<2>& roundStart_(const kcSMDGDPoly& p, int v) {
    return p.roundStart_[v];
  }
  [[nodiscard]] static const kcVector<2>& roundEnd_(const kcSMDGDPoly& p, int v) { return p.roundEnd_[v]; }
  [[nodiscard]] static double roundSpan_(const kcSMDGDPoly& p, int v) { return p.roundSpan_[v]; }

 protected:
  void serialize_(kcArchive& ar, unsigned char version);
};
