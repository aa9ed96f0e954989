// Private to the composite shapes: their deep copy, and the guard that
// bounds how deep trees and general shapes nest while an archive is loaded,
// so a crafted archive cannot exhaust the stack.
#pragma once

#include <unordered_map>

#include "foundation/shapes/shape.h"

// A clone of s in which trees and general shapes are copied through and every
// other shape is cloned once: a shape held twice below s is held twice by the
// clone as one new object, as in the original. copies remembers the clones made.
[[nodiscard]] kcShapePtr kfCloneComposite_(const kcShape& s,
                                           std::unordered_map<const kcShape*, kcShapePtr>& copies);

// Counts the nesting of trees and general shapes being loaded on this thread;
// throws kcArchive::Corrupt past kcShapeTree::kMaxLoadDepth.
class kcShapeLoadDepth_ {
 public:
  kcShapeLoadDepth_();
  ~kcShapeLoadDepth_();
  kcShapeLoadDepth_(const kcShapeLoadDepth_&) = delete;
  kcShapeLoadDepth_& operator=(const kcShapeLoadDepth_&) = delete;
};
