// Private to the composite shapes (trees and general shapes): the walks over
// what they hold, and the guards that bound how deep they nest in an archive.
//
// Composites nest without limit in memory, and nothing tells a tree how deep
// it sits, so every walk here keeps its own stack on the heap: a chain of any
// length is walked, copied, compared and destroyed on any thread's stack.
// Archives are the exception: loading recurses once per nested composite, so
// both directions bound the nesting by kcShapeTree::kMaxLoadDepth, and storing
// checks it before it writes anything.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "foundation/shapes/shape.h"

class kcArchive;

class kcShapeNesting_ {
 public:
  // True for a tree or a general shape.
  [[nodiscard]] static bool isComposite(const kcShape& s) noexcept;
  // The first shape down a chain of general shapes that is not one itself
  // (s when s is not a general shape); null when the chain ends in a general
  // shape that holds none.
  [[nodiscard]] static const kcShape* unwrap(const kcShape& s) noexcept;

  // A copy of s in which every shape that is neither a tree nor a general
  // shape becomes leaf(shape), and trees and general shapes are rebuilt
  // around the copies of what they hold. A shape held several times is
  // copied once and held as often.
  [[nodiscard]] static kcShapePtr copy(const kcShape& s,
                                       const std::function<kcShapePtr(const kcShape&)>& leaf);

  // Same class and equal geometry, at any depth (kcShape's operator==).
  [[nodiscard]] static bool equal(const kcShape& a, const kcShape& b);

  // Drops the handles in parts. A composite whose last handle is among them
  // first gives up what it holds to parts, so that deleting it never reaches
  // further down: a long chain is freed one link at a time.
  static void release(std::vector<kcShapePtr> parts) noexcept;
};

// Counts the nesting of trees and general shapes being loaded on this thread;
// throws kcArchive::Corrupt past kcShapeTree::kMaxLoadDepth.
class kcShapeLoadDepth_ {
 public:
  kcShapeLoadDepth_();
  ~kcShapeLoadDepth_();
  kcShapeLoadDepth_(const kcShapeLoadDepth_&) = delete;
  kcShapeLoadDepth_& operator=(const kcShapeLoadDepth_&) = delete;
};

// Held by a tree or a general shape while it is stored, from before its
// first byte. Counts the composites open in the store of ar on this thread,
// and throws kcArchive::ValueOutOfRange (counting nothing) when s, with what
// it holds and the composites already open around it, would nest deeper than
// loading accepts. Does nothing when ar loads.
class kcShapeStoreDepth_ {
 public:
  kcShapeStoreDepth_(const kcArchive& ar, const kcShape& s);
  ~kcShapeStoreDepth_();
  kcShapeStoreDepth_(const kcShapeStoreDepth_&) = delete;
  kcShapeStoreDepth_& operator=(const kcShapeStoreDepth_&) = delete;

  struct State;

 private:
  bool counted_ = false;
  // The count of another archive whose store this one interrupted.
  std::unique_ptr<State> outer_;
};
