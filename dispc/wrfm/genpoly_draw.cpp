// A general polygon on an output device: its rounded outline as one path.
#include "dispc/wrfm/genpoly_p.h"

kcUIPath kfGenPolyPath(const kcGenPoly& p, const kcXform<2>& after, kcUIPath path) {
  bool first = true;
  for (const kcShapePtr& piece : p.decompose()) {
    const kcShapePtr mapped = piece->mapShape(after);
    if (const auto* arc = dynamic_cast<const kcEllipseArc*>(mapped.get())) {
      if (first) path.moveTo(arc->startPoint());
      path.arcTo(*arc);
    } else {
      if (first) path.moveTo(mapped->startPoint());
      path.lineTo(mapped->endPoint());
    }
    first = false;
  }
  if (!first && !p.isOpen()) path.close();
  return path;
}

void kfDrawGenPoly(kcUIScope& scope, const kcGenPoly& p, const kcXform<2>& after,
                   const kcGraphicProps& props) {
  if (p.degen()) return;
  const kcUIScopeLock locked(scope);
  scope.path(kfGenPolyPath(p, after), props);
  if (p.isOpen() && props.arrowHead()) kfDrawArrowHead(scope, p.map(after), props);
  if (props.showVertex())
    for (long i = 0; i < p.numVertices(); ++i) scope.point(after * p.vertexPoint(i), props);
}

void kcGenPoly::drawToScope(const kcGraphicProps& props, kcUIScope& scope) const {
  kfDrawGenPoly(scope, *this, kcXform<2>(), props);
}
