#include "foundation/vector.h"

#include "foundation/archive.h"
#include "foundation/exception.h"

// --- kcVector<2> ---

double& kcVector<2>::badIndex_() { throw kcShapesError::BadParams(); }

kcVector<2> kcVector<2>::unit() const {
  double length = len();
  if (length == 0.0) throw kcShapesError::DegenerateShape();
  return kcVector(x_ / length, y_ / length);
}

// --- archive ---

kcArchive& operator||(kcArchive& ar, kcVector<2>& v) {
  double x = v.x();
  double y = v.y();
  ar || x || y;
  if (ar.isLoading()) v = kcVector<2>(x, y);
  return ar;
}
