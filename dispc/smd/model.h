// kcSMDGDModel: the geometric description of a whole surface-mount device:
// its outlines (body, leads, pads) as polys in order, the sub-model labels
// their vertices use, and a rigid placement.
//
// Each poly keeps itself valid (every poly edit is validated); the model adds
// index checks, label bookkeeping, whole-model transforms and queries. No
// test between polys is made when polys are added or replaced.
//
// Labels are the union of the polys' labels in order of first appearance.
// Deleting or replacing a poly rebuilds the model from its polys, so no label
// survives that no remaining poly uses.
//
// The placement is the model's reference pose in the coordinates of its
// polys (a sub-model's is the pose of the polys it took); no query applies
// it to the polys.
//
// Archive form: an unsigned version byte (0), the description prefix (the
// name), the polys (a 32-bit count, then each poly's own form), the labels
// (32-bit count and values), the placement. Another version is
// kcArchive::UnknownVersion ("dispc/smd/model"). A loaded model is checked
// whole: a poly count the remaining bytes cannot hold, polys that do not
// validate, labels that are not those of the polys (in order) and a placement
// that is not finite are kcArchive::Corrupt, and the target keeps what it had.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "dispc/smd/poly.h"
#include "foundation/rigid.h"

class kc2Wireframe;
class kcGraphicList;

class kcSMDGDModel : public kcSMDGeometricDescription {
 public:
  KC_DECLARE_PERSISTENT(kcSMDGDModel);

  class Errors : public kcException {
   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcException::serialize_(ar, version); }
  };
#define KC_SMD_MODEL_ERROR_(Name)                     \
  class Name : public Errors {                        \
   public:                                            \
    KC_DECLARE_EXCEPTION(Name);                       \
    void message_(std::wostream& out) const override; \
  }
  KC_SMD_MODEL_ERROR_(invalidIndex);
  KC_SMD_MODEL_ERROR_(crossingPolys);
  KC_SMD_MODEL_ERROR_(nestedPolys);
#undef KC_SMD_MODEL_ERROR_

  // An empty model with an empty name and the identity placement.
  kcSMDGDModel();
  explicit kcSMDGDModel(const std::wstring& name);
  kcSMDGDModel(const kcSMDGDModel& other);
  kcSMDGDModel& operator=(const kcSMDGDModel& other);
  ~kcSMDGDModel() override;

  // --- building ---

  // Appends a copy, then its labels.
  kcSMDGDModel& operator<<(const kcSMDGDPoly& poly);
  // Appends every poly of the other model in order.
  kcSMDGDModel& operator<<(const kcSMDGDModel& other);
  // Appends one poly (named "poly") per wireframe, as each carries it.
  kcSMDGDModel& operator<<(const std::vector<kc2Wireframe>& wireframes);

  // --- queries ---

  [[nodiscard]] const std::vector<kcSMDGDPoly>& polys() const noexcept { return polys_; }
  // Replaces all polys; labels rebuilt.
  void polys(const std::vector<kcSMDGDPoly>& list);
  // invalidIndex outside 0..numPolys() - 1.
  [[nodiscard]] const kcSMDGDPoly& poly(int index) const;
  [[nodiscard]] int numPolys() const noexcept { return static_cast<int>(polys_.size()); }
  // The sum of the polys' vertex counts.
  [[nodiscard]] long numVertices() const noexcept;
  [[nodiscard]] const std::vector<std::int32_t>& subModelLabels() const noexcept { return labels_; }
  [[nodiscard]] const kc2Rigid& placement() const noexcept { return placement_; }
  void placement(const kc2Rigid& p);
  // True when a poly is open (false for an empty model).
  [[nodiscard]] bool isOpen() const noexcept;
  [[nodiscard]] bool isClosed() const noexcept { return !isOpen(); }

  // A new unnamed model of every poly mirrored about the y axis (see
  // kcSMDGDPolyPrivate::flip), placement the identity.
  [[nodiscard]] kcSMDGDModel flip() const;
  // Appends to out the sub-polys of every run of vertices labelled label, in
  // order, and sets out's placement to their normalised position. A label no
  // vertex carries leaves out as it was; a run of one vertex is
  // kcSMDGDPoly::badSubModel, and out is left as it was too.
  void subModel(long label, kcSMDGDModel& out) const;
  // The polys (in increasing order) with a segment out of tolerance under a and b.
  [[nodiscard]] std::vector<long> polysOutOfTolerance(const kcXform<2>& a, const kcXform<2>& b) const;
  // The union of the polys' boxes under xform; empty without polys.
  [[nodiscard]] kcRect boundingBox(const kcXform<2>& xform) const;

  // Each applies to every poly.
  void colors(const kcSMDColors& c);
  void positiveArrowColor(const kcColor& c);
  void negativeArrowColor(const kcColor& c);

  // Polys equal in order and placements equal; names are not compared.
  [[nodiscard]] bool operator==(const kcSMDGDModel& other) const;
  [[nodiscard]] bool operator!=(const kcSMDGDModel& other) const { return !(*this == other); }

  // --- drawing ---

  // Every poly in order.
  using kcSMDGeometricDescription::drawSynthetic;
  void drawWireframe(const kcXform<2>& xform, kcUITablet& tablet) const override;
  void drawSynthetic(const kcXform<2>& xform, kcPelBuffer<unsigned char>& pelBuffer) const override;
  void drawDirectionArrows(const kcXform<2>& xform, kcUITablet& tablet, double size) const;
  void drawDirectionArrows(const kcXform<2>& xform, kcGraphicList& list, double size) const;

  void dispatchSerialize(kcArchive& ar) override;

 protected:
  void serialize_(kcArchive& ar, unsigned char version);

  // --- editing: the model is rebuilt and swapped in last, so a throw changes nothing ---
  void replacePoly(int index, const kcSMDGDPoly& poly);
  void deletePoly(int index);
  void deleteAllPolys();
  // The freshly constructed state (name kept).
  void reset();
  // No polys or labels, for reading; name and placement kept.
  virtual void reInit();

  // --- geometry over all polys ---
  // The first poly's orientation; 0 for an empty model.
  [[nodiscard]] kcDegree orientation_() const;
  // The mean of all vertex points; (0, 0) for an empty model.
  [[nodiscard]] kcVector<2> centerOfMass_() const noexcept;
  [[nodiscard]] double perimeter_(double minLength) const;
  [[nodiscard]] double extensionPerimeter_() const;
  // Gives every poly the extensions p at its corners, then shortens them
  // pairwise between polys: an extension stops distance short of any
  // segment of another poly that does not run within angle of parallel to
  // it, and one that would fall below minPercent is dropped.
  void setExtensions_(double p, const kcDegree& angle, double distance, double minPercent);
  void addPolyLabels_(const kcSMDGDPoly& poly);

 private:
  friend class kcSMDGDModelPrivate;
  friend kcSMDGDModel operator*(const kc2Rigid& r, const kcSMDGDModel& m);
  friend kcSMDGDModel operator*(double s, const kcSMDGDModel& m);

  void rebuildLabels_();
  // deletePoly (no replacement) and replacePoly: a fresh model of the polys
  // with index left out or replaced, swapped in last.
  void rebuild_(int index, const kcSMDGDPoly* replacement);

  std::vector<kcSMDGDPoly> polys_;
  std::vector<std::int32_t> labels_;
  kc2Rigid placement_;
};

// Every poly transformed (and validated again); the placement follows
// (moved by r, its translation scaled by s; a negative s, which turns the
// polys by half a turn, turns it too).
// A poly the transform makes invalid throws its error; m is not touched.
[[nodiscard]] kcSMDGDModel operator*(const kc2Rigid& r, const kcSMDGDModel& m);
[[nodiscard]] kcSMDGDModel operator*(double s, const kcSMDGDModel& m);
