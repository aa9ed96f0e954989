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
