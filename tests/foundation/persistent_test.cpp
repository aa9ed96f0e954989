#include "foundation/persistent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/archive.h"
#include "foundation/shapes/circle.h"
#include "foundation/shapes/ellipse2.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// A chain of classes, each with a version byte and a field of its own, each
// calling up to its base's dispatch: level N stores version N.
template <int N>
class Level : public Level<N - 1> {
 public:
  void dispatchSerialize(kcArchive& ar) override {
    this->dispatchOnce_(ar, this, N, [&](unsigned char) {
      Level<N - 1>::dispatchSerialize(ar);
      ar || field;
    });
  }
  std::int8_t field = 10 + N;
};

template <>
class Level<0> : public virtual kcPersistent, public virtual kcRepBase {
 public:
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 0, [&](unsigned char) { ar || field; });
  }
  std::int8_t field = 10;
};

class Deep final : public Level<8> {
  KC_DECLARE_PERSISTENT(Deep);
};

// A diamond: both sides call up to the one virtual base they share.
class Base : public virtual kcPersistent, public virtual kcRepBase {
 public:
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 1, [&](unsigned char) { ar || base; });
  }
  std::int8_t base = 20;
};
class Left : public virtual Base {
 public:
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 2, [&](unsigned char) {
      Base::dispatchSerialize(ar);
      ar || left;
    });
  }
  std::int8_t left = 21;
};
class Right : public virtual Base {
 public:
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 3, [&](unsigned char) {
      Base::dispatchSerialize(ar);
      ar || right;
    });
  }
  std::int8_t right = 22;
};
class Bottom : public Left, public Right {
 public:
  KC_DECLARE_PERSISTENT(Bottom);
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 4, [&](unsigned char) {
      Left::dispatchSerialize(ar);
      Right::dispatchSerialize(ar);
      ar || bottom;
    });
  }
  std::int8_t bottom = 23;
};

// A class template instance with two arguments.
template <class A, class B>
class Both;
using CircleAndEllipse = Both<kcCircle, kcEllipse2>;

template <class A, class B>
class Both : public virtual kcPersistent, public virtual kcRepBase {
 public:
  KC_DECLARE_PERSISTENT(Both);
  void dispatchSerialize(kcArchive& ar) override {
    dispatchOnce_(ar, this, 0, [&](unsigned char) { ar || a || b; });
  }
  A a;
  B b;
};

}  // namespace

KC_DEFINE_PERSISTENT(Deep);
KC_DEFINE_PERSISTENT(Bottom);
KC_DEFINE_PERSISTENT_TEMPLATE(Both<kcCircle, kcEllipse2>);

namespace {

template <class T>
Bytes stored(T& value, int times = 1) {
  kcMemArchive ar;
  for (int i = 0; i < times; ++i) ar || value;
  return ar.bytes();
}

TEST(VisitedMarks, EveryLevelOfADeepChainWritesItsVersionAndField) {
  Deep deep;
  const Bytes once = {8, 7, 6, 5, 4, 3, 2, 1, 0, 10, 11, 12, 13, 14, 15, 16, 17, 18};
  EXPECT_EQ(stored(deep), once);
  Bytes twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(stored(deep, 2), twice);

  Bytes changed = once;
  changed[9] = 40;
  changed[17] = 48;
  kcMemArchive in(changed);
  Deep back;
  in || back;
  EXPECT_EQ(back.Level<0>::field, 40);
  EXPECT_EQ(back.field, 48);
  EXPECT_TRUE(in.atEnd());
}

TEST(VisitedMarks, ABaseReachedAlongTwoPathsIsWrittenOnce) {
  Bottom b;
  EXPECT_EQ(stored(b), (Bytes{4, 2, 1, 20, 21, 3, 22, 23}));
  EXPECT_EQ(stored(b, 2), (Bytes{4, 2, 1, 20, 21, 3, 22, 23, 4, 2, 1, 20, 21, 3, 22, 23}));
}

TEST(VisitedMarks, MarksAreDistinctPerClassAndLastOneTransfer) {
  EXPECT_NE(kcPersistent::markOf<Left>(), kcPersistent::markOf<Right>());
  EXPECT_NE(kcPersistent::markOf<Level<1>>(), kcPersistent::markOf<Level<2>>());
  EXPECT_EQ(kcPersistent::markOf<Left>(), kcPersistent::markOf<Left>());
  Bottom b;
  kcMemArchive ar;
  ar || b;
  // Outside a transfer nothing is visited, and marking does nothing.
  EXPECT_FALSE(b.haveVisited(ar, kcPersistent::markOf<Bottom>()));
  b.setVisited(ar, kcPersistent::markOf<Bottom>());
  EXPECT_FALSE(b.haveVisited(ar, kcPersistent::markOf<Bottom>()));
}

TEST(Registry, TemplateInstancesRegisterUnderTheirFullName) {
  const char* name = "Both<kcCircle, kcEllipse2>";
  ASSERT_TRUE(kcPersistenceRegistry::knows(name));
  std::unique_ptr<kcPersistent> made(kcPersistenceRegistry::make(name));
  ASSERT_NE(dynamic_cast<CircleAndEllipse*>(made.get()), nullptr);
  EXPECT_STREQ(made->className(), name);

  auto both = kfMakeHandle<CircleAndEllipse>();
  both->a = kcCircle(kcVector<2>(1, 2), 3);
  kcMemArchive out;
  out || both;
  kcMemArchive in(out.bytes());
  kcPtrHandle<CircleAndEllipse> back;
  in || back;
  ASSERT_TRUE(back);
  EXPECT_EQ(back->a, both->a);
}

TEST(Registry, ClassNamesAreSpelledOneWay) {
  static_assert(kfIsCanonicalClassName("kcCircle"));
  static_assert(kfIsCanonicalClassName("kcBox<unsigned char>"));
  static_assert(kfIsCanonicalClassName("kcPair2<kcCircle, kcEllipse2>"));
  static_assert(kfIsCanonicalClassName("kcArchive::Corrupt"));
  static_assert(!kfIsCanonicalClassName("kcPair2<kcCircle,kcEllipse2>"));
  static_assert(!kfIsCanonicalClassName("kcPair2< kcCircle, kcEllipse2 >"));
  static_assert(!kfIsCanonicalClassName("kcPair2<kcCircle,  kcEllipse2>"));
  static_assert(!kfIsCanonicalClassName(""));
}

// What a program linked with the foundation alone can bring back from an
// archive: a static link must keep every one of these.
TEST(Registry, HoldsExactlyTheFoundationClassesAndThisProgramsOwn) {
  std::vector<std::string> expected = {
      "kcExceptionWithString", "kcBadPointer", "kcMathError::Singular", "kcShapesError::BadGeom",
      "kcShapesError::BadRadius", "kcShapesError::BadCoef", "kcShapesError::DegenerateShape",
      "kcShapesError::EmptyShape", "kcShapesError::NotOpenContour", "kcShapesError::NotRegion",
      "kcShapesError::NoTangent", "kcShapesError::BadParams", "kcFoundationError::LibraryFailure",
      "kcArchive::UnknownVersion", "kcArchive::Corrupt", "kcArchive::ValueOutOfRange", "kcArchive::FileError",
      "kc2XformLinear", "kcPoint", "kc2Point", "kcPointSet", "kcLineSeg", "kcLineSegSet", "kcLine", "kcFLine",
      "kcRect", "kcAffineRectangle", "kcGenRect", "kcCircle", "kcEllipse", "kcEllipse2", "kcEllipseArc",
      "kcEllipseArc2", "kcAnnulus", "kcGenAnnulus", "kcEllipseAnnulus", "kcEllipseAnnulusSection",
      "kcPolygon", "kcPolyline", "kcBezierCurve", "kcCubicSpline", "kcDeBoorSpline", "kcInterpSpline",
      "kcHermiteSpline", "kcCoordAxes", "kcCross", "kcShapeTree", "kcGenShape",
      // this test program's own
      "Deep", "Bottom", "Both<kcCircle, kcEllipse2>", "TestNode", "OtherNode"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(kcPersistenceRegistry::names(), expected);
  for (const auto* exemplar : kfFoundationClasses()) {
    std::unique_ptr<kcPersistent> made(exemplar->factory()());
    EXPECT_STREQ(made->className(), exemplar->name());
  }
}

}  // namespace
