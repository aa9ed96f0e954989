// The payload classes that hold one foundation shape (their transfers are in
// sketchshapes_p.h).
#include "dispc/sketchshapes_p.h"

// Opcode 39's record starts with opcode 7's (sketchop_values.cpp).
template void sketchTransfer(kcSketchIO::Sizer&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Writer&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Reader&, kcEllipseAnnulusSection&);
template void sketchTransfer(kcSketchIO::Dumper&, kcEllipseAnnulusSection&);

#define DISPC_SKETCH_DEFINE_(Name, Value)                     \
  template class kc_UISketchOpOf<kc_UISketchOp##Name, Value>; \
  KC_DEFINE_PERSISTENT(kc_UISketchOp##Name)
DISPC_SKETCH_SHAPE_PAYLOADS(DISPC_SKETCH_DEFINE_)
#undef DISPC_SKETCH_DEFINE_
