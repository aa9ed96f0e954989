// kc2Wireframe: a general polygon whose segments carry length tolerances and
// whose inside has a polarity. It is the form in which outlines enter and
// leave SMD models, and a form the tablet draws.
//
// It adds no data: the length tolerance of segment i is kept in the vertex at
// the segment's end (vertex i + 1, vertex 0 for the closing segment), the
// polarity in the data's direction-reversed flag.
//
// The poly a wireframe carries is its polygon data, seen through the
// transform. kcSMDGDPoly(const kc2Wireframe&, name) takes it back as long as
// a poly can hold the client geometry: under the identity the data itself,
// under a similarity the data scaled, mirrored and moved (a mirror negates the
// spans, so the poly's direction answers what isInsidePositive() does); under
// any other transform (a shear, an unequal scale) the wireframe carries no
// poly, and that constructor throws kcShapesError::BadGeom. The poly takes
// the name given to that constructor.
//
// Inside polarity: the data's isDirectionPositive(), inverted when the
// transform mirrors (cos(xRot - yRot) < 0). polarity() flips the flag (and
// tells polarityChanged_); insidePolarity() sets what isInsidePositive()
// answers. Neither changes the geometry, so a mapped wireframe takes both.
//
// Archive form: an unsigned version byte (0), then the kcGenPoly form.
// Another version is kcArchive::UnknownVersion ("dispc/wrfm/wirefrm", line
// 148); loadSimple() reads the version as a signed byte (line 131) and then
// the simple form of kcGenPoly.
#pragma once

#include "dispc/dimtol.h"
#include "dispc/wrfm/genpoly.h"

class kc2Wireframe : public kcGenPoly {
 public:
  KC_DECLARE_PERSISTENT(kc2Wireframe);

  kc2Wireframe() = default;
  kc2Wireframe(const kc2Wireframe&) = default;
  kc2Wireframe& operator=(const kc2Wireframe&) = default;
  ~kc2Wireframe() override;
  // Tolerances stay as the vertices hold them.
  explicit kc2Wireframe(const kcGenPoly& poly);
  // Every segment gets tol, even when poly is not editable (the flag is
  // lifted for the loop and put back).
  kc2Wireframe(const kcGenPoly& poly, const kcDimTol& tol);

  // --- length tolerances ---

  // BadGeom when not editable; errors of the vertex or the data translated.
  void segmentLengthTol(long i, const kcDimTol& tol);
  // The segment's length (as the data measures it) with its tolerance; the
  // no-tolerance value when anything throws on the way.
  [[nodiscard]] kcDimTol segmentLengthTol(long i) const;

  // Splits segment index (when it exists) and gives the segment after the
  // new vertex the tolerance tol; the first half keeps none. At the end of
  // an open chain the new segment takes tol; at the front (-1) nothing is
  // set. A step that is refused undoes the whole insertion.
  void insertVertex(long index, const kcVector<2>& pt, double roundingSize, const kcRadian& span,
                    const kcDimTol& tol);
  // Appends, the new segment with tol.
  void insertVertex(const kcVector<2>& pt, double roundingSize, const kcRadian& span, const kcDimTol& tol);
  using kcGenPoly::insertVertex;
  // Closes an open wireframe, the closing segment with tol (both or neither);
  // a closed one is left alone.
  void close(const kcRadian& span, const kcDimTol& tol);
  using kcGenPoly::close;

  // --- polarity ---

  void polarity(bool reversed);
  [[nodiscard]] bool isPolarityReversed() const noexcept { return polygonData().isDirectionReversed(); }
  // BadGeom for an open wireframe.
  [[nodiscard]] bool isInsidePositive() const;
  void insidePolarity(bool positive);

  [[nodiscard]] kc2Wireframe map(const kcXform<2>& x) const;
  [[nodiscard]] kc2Wireframe map(const kc2Rigid& r, double scale) const;

  [[nodiscard]] bool operator==(const kc2Wireframe& o) const { return kcGenPoly::operator==(o); }
  [[nodiscard]] bool operator!=(const kc2Wireframe& o) const { return !(*this == o); }

  // --- kcShape ---

  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] kcShapePtr reverse() const override;
  [[noreturn]] void remapAndThrowError_(kcException& e) const override;

  void dispatchSerialize(kcArchive& ar) override;
  void loadSimple(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);
  // Called by polarity() after the flag changed; nothing to do here.
  virtual void polarityChanged_(bool reversed);

 private:
  void flipPolarity_();
};
