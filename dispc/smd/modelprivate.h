// kcSMDGDModelPrivate: the companion of kcSMDGDModel. A model in its own
// right (persistent under its own name) whose static helpers work on whole
// models: equivalence, boxes and corners, cropping, conversion from polygons
// and to and from wireframes, the dominant angle, positions and the probes a
// locating tool needs.
//
// Rules where a helper has to choose:
// - Cropping keeps the polys that lie wholly inside the window (every piece
//   of the rounded outline inside or on the window's outline), in order;
//   polys that cross the window's outline or lie outside are dropped. The
//   result has the model's name and placement. The window is a closed poly,
//   a polygon (taken as a closed poly with sharp corners, with that poly's
//   errors; an empty polygon keeps nothing), or the closed polys of a model
//   (a poly is kept when it lies inside one of them); cropping by a model
//   throws kcSMDGDModel::nestedPolys when one kept poly lies inside another
//   closed kept poly.
// - The dominant angle is the direction, modulo 90 degrees, that the straight
//   outline runs along, weighted by length: a quarter of the angle of the
//   sum of length * (cos 4a, sin 4a) over every trimmed straight segment, in
//   [-45, 45) (within 1e-9 below 45 counts as -45); 0 when there is no
//   straight segment or the sum cancels (to 1e-9 of the straight length, as
//   for a regular octagon). A rectangle turned by t gives t (modulo 90) to
//   rounding.
// - The normalised position is the dominant angle and the centre of the
//   model's box measured along it: the pose a locating tool reports; the
//   identity for a model with nothing to measure.
// - Corner i (0..3) is corner i of that box (counter-clockwise from the one
//   with the smallest coordinates in the turned frame), in model coordinates.
// - A position probe measures where one straight edge lies along its normal.
//   Fixing a model takes none when it has no straight edge (it cannot be
//   probed), two when all its straight edges run one way (across them, and
//   the turn), and three otherwise (x, y and the turn). Directions, modulo
//   180, run one way when they all fit in a window of 1 degree.
#pragma once

#include <string>
#include <vector>

#include "dispc/smd/model.h"
#include "dispc/tablet.h"
#include "dispc/wrfm/wirefrm.h"
#include "foundation/shapes/polygon.h"

class kcSMDGDModelPrivate : public kcSMDGDModel {
 public:
  KC_DECLARE_PERSISTENT(kcSMDGDModelPrivate);

  kcSMDGDModelPrivate() = default;
  explicit kcSMDGDModelPrivate(const std::wstring& name) : kcSMDGDModel(name) {}
  explicit kcSMDGDModelPrivate(const kcSMDGDModel& model) : kcSMDGDModel(model) {}

  void dispatchSerialize(kcArchive& ar) override;

  // Same number of polys, pairwise equal in order.
  [[nodiscard]] static bool equivalent(const kcSMDGDModel& a, const kcSMDGDModel& b);

  // --- boxes and positions ---
  // The union of the polys' boxes in model coordinates; empty without polys.
  [[nodiscard]] static kcRect boundingBox(const kcSMDGDModel& m);
  // The outlines of the negative polys, in order (kcSMDGDPolyPrivate::drawNegWireframe).
  static void drawNegWireframe(const kcSMDGDModel& m, const kcXform<2>& xform, kcUITablet& tablet,
                               const kcColor& color, kcUITablet::Layers layer);
  // The box measured along the dominant angle, in the frame of the
  // normalised position (so centred on the origin): normalizedPosition maps
  // its corners into model coordinates. Empty without polys.
  [[nodiscard]] static kcRect alignedBox(const kcSMDGDModel& m);
  [[nodiscard]] static kcDegree dominantAngle(const kcSMDGDModel& m);
  [[nodiscard]] static kc2Rigid normalizedPosition(const kcSMDGDModel& m);
  // invalidIndex outside 0..3; kcShapesError::EmptyShape without polys.
  [[nodiscard]] static kcVector<2> corner(const kcSMDGDModel& m, int i);
  [[nodiscard]] static long numPosProbesRequired(const kcSMDGDModel& m);

  // --- cropping ---
  // notClosed for an open window.
  [[nodiscard]] static kcSMDGDModel crop(const kcSMDGDModel& m, const kcSMDGDPoly& window);
  [[nodiscard]] static kcSMDGDModel crop(const kcSMDGDModel& m, const kcPolygon& window);
  [[nodiscard]] static kcSMDGDModel crop(const kcSMDGDModel& m, const kcSMDGDModel& windows);
  // Whether every piece of inner's rounded outline lies inside or on the
  // closed outer (notClosed for an open outer): each piece is cut where it
  // meets outer's outline and the middle of every part must be inside or on
  // outer, so touching passes and crossing, even through a corner, does not.
  // False for an inner without vertices.
  [[nodiscard]] static bool liesInside(const kcSMDGDPoly& inner, const kcSMDGDPoly& outer);

  // --- conversions ---
  // A model of closed polys with sharp corners, one per polygon (labels
  // none); a polygon that makes no valid poly throws that poly's error.
  [[nodiscard]] static kcSMDGDModel convert(const std::vector<kcPolygon>& polygons, const std::wstring& name);
  // One wireframe per poly, each carrying its poly.
  [[nodiscard]] static std::vector<kc2Wireframe> convert(const kcSMDGDModel& m);
  // One poly per wireframe with the weight of the same index;
  // invalidIndex when the counts differ.
  [[nodiscard]] static kcSMDGDModel weightedWireframesToModel(const std::vector<kc2Wireframe>& wireframes,
                                                              const std::vector<double>& weights,
                                                              const std::wstring& name);
  // Per poly, the pose of its own frame (kcSMDGDPolyPrivate::position) as a transform.
  [[nodiscard]] static std::vector<kcXform<2>> wireframeXforms(const kcSMDGDModel& m);

  // --- the model's protected members, for callers outside it ---
  static void replacePoly(kcSMDGDModel& m, int index, const kcSMDGDPoly& p) { m.replacePoly(index, p); }
  static void deletePoly(kcSMDGDModel& m, int index) { m.deletePoly(index); }
  static void deleteAllPolys(kcSMDGDModel& m) { m.deleteAllPolys(); }
  static void reset(kcSMDGDModel& m) { m.reset(); }
  [[nodiscard]] static kcDegree orientation_(const kcSMDGDModel& m) { return m.orientation_(); }
  [[nodiscard]] static kcVector<2> centerOfMass_(const kcSMDGDModel& m) { return m.centerOfMass_(); }
  [[nodiscard]] static double perimeter_(const kcSMDGDModel& m, double minLength) {
    return m.perimeter_(minLength);
  }
  [[nodiscard]] static double extensionPerimeter_(const kcSMDGDModel& m) { return m.extensionPerimeter_(); }
  static void setExtensions_(kcSMDGDModel& m, double p, const kcDegree& angle, double distance,
                             double minPercent) {
    m.setExtensions_(p, angle, distance, minPercent);
  }

 protected:
  void serialize_(kcArchive& ar, unsigned char version);
};
