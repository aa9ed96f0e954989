// The tablet's core: scopes, switches, the may-I-draw test with its time
// stamp, update locks. Drawing calls are in tablet_draw.cpp, playback in
// tablet_play.cpp, maps, coordinates, kids and point icons in
// tablet_map.cpp.
#include "dispc/tablet.h"

#include "dispc/uierror.h"

namespace {
// The process-wide time stamp: drawing on a tablet whose stamp is not the
// latest advances it (no lock: a tablet is used by one thread at a time).
unsigned long gTimeStamp = 0;

constexpr long kMaxLayer = 2;
}  // namespace

// --- construction ---

kcUITablet::kcUITablet() { setMap_(); }

kcUITablet::kcUITablet(kcUIScope* main, kcUIScope* overlay) : scopes_{main, overlay} { setMap_(); }

kcUITablet::kcUITablet(kcUITablet&, const kcUIRect& rect) : detached_(true), scopeRect_(rect) { setMap_(); }

kcUITablet::~kcUITablet() {
  if (parent_) parent_->kids_.remove(this);
  for (kcUITablet* kid : kids_) kid->parent_ = nullptr;
  for (kcUIScope* own : ownScopes_) delete own;
}

// --- scopes and switches ---

kcUIScope* kcUITablet::scope(Layers layer) const {
  if (layer < mainLayer || layer > overlayLayer) throw kcUIError::BadLayer();
  return scopes_[layer];
}

void kcUITablet::scope(Layers layer, kcUIScope* s) {
  if (layer < mainLayer || layer > overlayLayer) throw kcUIError::BadLayer();
  if (ownScopes_[layer] && ownScopes_[layer] != s) {
    delete ownScopes_[layer];
    ownScopes_[layer] = nullptr;
  }
  scopes_[layer] = s;
}

void kcUITablet::checkLayer_(long layer) {
  if (layer < 0 || layer > kMaxLayer) throw kcUIError::BadLayer();
}

bool kcUITablet::okToDraw(long layer) {
  if (detached_ || !drawOn_ || layer < 0) return false;
  if (layer == overlayLayer && !drawOnOverlay_) return false;
  // A call on both layers is only recorded.
  if (layer > overlayLayer) return false;
  const kcUIScope* s = scopes_[layer];
  if (!s) return false;
  if (!s->canDrawNow() && !(s->stateFlags() & kcUIScope::kForceDraw)) return false;
  if (!timeStampOff_ && gTimeStamp != stamp_) stamp_ = ++gTimeStamp;
  return true;
}

kcUIScope* kcUITablet::drawingScope_(long layer) { return okToDraw(layer) ? scopes_[layer] : nullptr; }

// --- update locks ---

void kcUITablet::lockScreenUpdatesPush(bool lock, Layers layer) {
  checkLayer_(layer);
  for (long l = mainLayer; l <= overlayLayer; ++l)
    if ((layer == bothLayers || layer == l) && scopes_[l]) scopes_[l]->lockScreenUpdatesPush(lock);
}

void kcUITablet::lockScreenUpdatesPop(Layers layer) {
  checkLayer_(layer);
  for (long l = mainLayer; l <= overlayLayer; ++l)
    if ((layer == bothLayers || layer == l) && scopes_[l]) scopes_[l]->lockScreenUpdatesPop();
}

bool kcUITablet::screenUpdatesLocked(Layers layer) const {
  checkLayer_(layer);
  for (long l = mainLayer; l <= overlayLayer; ++l)
    if ((layer == bothLayers || layer == l) && scopes_[l] && scopes_[l]->screenUpdatesLocked()) return true;
  return false;
}

void kcUITablet::optimizeDrawing(bool on, Layers layer) {
  if (layer < mainLayer || layer > overlayLayer) throw kcUIError::BadLayer();
  if (scopes_[layer]) scopes_[layer]->optimizeDrawing(on);
}

// --- erasing (used by re-parenting as well) ---

void kcUITablet::erase(const kcUIRect& r, Layers layer) {
  checkLayer_(layer);
  if (kcUIScope* s = drawingScope_(layer)) s->erase(r);
}
