// A general polygon on an output device, for the tablet and the polygon
// itself.
#pragma once

#include "dispc/uiscope.h"
#include "dispc/wrfm/genpoly.h"

// The rounded outline as a path, each piece mapped by after once the
// polygon's own transform has placed it, appended to path.
[[nodiscard]] kcUIPath kfGenPolyPath(const kcGenPoly& p, const kcXform<2>& after, kcUIPath path = {});

// The outline as one path under one update lock; an open polygon gets its
// arrow head from props, and the vertices are marked as points with
// showVertex(). Nothing for a polygon without vertices.
void kfDrawGenPoly(kcUIScope& scope, const kcGenPoly& p, const kcXform<2>& after,
                   const kcGraphicProps& props);
