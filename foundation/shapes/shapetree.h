// kcShapeTree: a composite shape, an ordered list of child shapes held by
// handle.
//
// Parametrisation: the children, in order; each is any shape, trees and
// general shapes included, so trees nest. A child may not be null. A tree
// is neither an open contour nor a region: its curve is the union of its
// children's curves. Distances and the nearest point are those of the
// nearest child (ties go to the earlier child); encloseRect is the union of
// the children's boxes (empty for an empty tree); sample() appends each
// child's samples in order; decompose() gives the simple pieces of all
// children, flattened; isEmpty() holds when no child has geometry, and
// nearestPoint of such a tree is EmptyShape.
//
// Depth: trees and general shapes may nest to any depth in memory. Every
// operation that goes through the nesting (the cycle check, queries, clone,
// map, equality, destruction) walks it with a stack of its own rather than
// the thread's, so a chain of many thousand links works on a small thread
// stack. Only an archive bounds the nesting (kMaxLoadDepth, below).
//
// Cycles: a tree may not contain itself, directly or through nested trees and
// general shapes (see contains()). Constructors and setters reject such a
// child with BadParams, and nothing can be added to a tree except through
// them, so no shape of the family ever reaches itself.
//
// Copies: a copy shares the children (the tree is a list of handles); clone()
// clones every child as well, so the clone can be changed without touching
// the original's children. map() and mapShape() give a tree of the children's
// polymorphic images (a circle child may become an ellipse). In clones and
// images alike, a shape held twice at any depth becomes one new shape held
// twice.
//
// Archive form: version byte 0, then the children (a 32-bit count and each
// child through the handle operator, so shared children come back shared).
// Loading rejects a null child and a tree that would contain itself (the
// archive refuses a reference to an object still loading), and trees and
// general shapes nested deeper than kMaxLoadDepth, as kcArchive::Corrupt.
// Storing never writes what loading would refuse: before a tree writes its
// first byte it checks that its own nesting, added to that of the trees and
// general shapes already being stored around it, stays within kMaxLoadDepth,
// and throws kcArchive::ValueOutOfRange otherwise (the archive then takes
// back a top-level store whole). A shape already written earlier in the same
// store goes as a back-reference and adds no nesting; the check counts shapes
// that an earlier top-level store wrote into the same archive as if they
// were written again, so it may refuse a few archives that would load.
#pragma once

#include <vector>

#include "foundation/shapes/shape.h"

class kcShapeTree final : public kcShape {
 public:
  KC_DECLARE_PERSISTENT(kcShapeTree);

  // How deep trees and general shapes may nest in an archive: loading
  // refuses more, and storing never writes more.
  static constexpr int kMaxLoadDepth = 256;

  // The empty tree.
  kcShapeTree() = default;
  // BadParams for a null child.
  explicit kcShapeTree(std::vector<kcShapePtr> children);
  kcShapeTree(const kcShapeTree&) = default;
  kcShapeTree(kcShapeTree&&) = default;
  // Take the other tree's children (BadParams, leaving this tree unchanged,
  // when one of them contains this tree).
  kcShapeTree& operator=(const kcShapeTree& other);
  kcShapeTree& operator=(kcShapeTree&& other);
  // Frees a chain of trees and general shapes held only here link by link.
  ~kcShapeTree() override;

  [[nodiscard]] const std::vector<kcShapePtr>& children() const noexcept { return children_; }
  // BadParams for a null child or one that contains this tree.
  void children(std::vector<kcShapePtr> children);
  [[nodiscard]] long numChildren() const noexcept { return static_cast<long>(children_.size()); }
  // Child i (BadParams for an index outside [0, numChildren())).
  [[nodiscard]] const kcShapePtr& child(long i) const;
  // Adds a child at the end (BadParams as for children()).
  void append(kcShapePtr child);

  // True when root is target, or holds it at any depth through the children
  // of trees and the shapes of general shapes. Walks each shape below root
  // once, so adding a child costs time in the size of what the child holds.
  [[nodiscard]] static bool contains(const kcShape& root, const kcShape& target);

  [[nodiscard]] kcShapeTree map(const kcXform<2>& x) const;

  // --- kcShape ---
  [[nodiscard]] kcShapePtr clone() const override;
  [[nodiscard]] kcShapePtr mapShape(const kcXform<2>& x) const override;
  [[nodiscard]] std::vector<kcShapePtr> decompose() const override;
  [[nodiscard]] bool isFinite() const override;
  [[nodiscard]] bool isEmpty() const override;
  [[nodiscard]] kcRect encloseRect() const override;
  [[nodiscard]] kcVector<2> nearestPoint(const kcVector<2>& p) const override;
  void sample(double spacing, std::vector<kcVector<2>>& out) const override;
  void dispatchSerialize(kcArchive& ar) override;

 protected:
  [[nodiscard]] bool equal_(const kcShape& other) const override;
  void serialize_(kcArchive& ar, unsigned char version);

 private:
  friend class kcShapeNesting_;

  static constexpr unsigned char kVersion = 0;

  // BadParams for a null child or one that contains this tree.
  void checkChild_(const kcShapePtr& child) const;

  std::vector<kcShapePtr> children_;
};
