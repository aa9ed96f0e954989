// Everything public of the display-core library in one include, the
// foundation library's included.
#pragma once

#include "dispc/color.h"
#include "dispc/dimtol.h"
#include "dispc/dispprop.h"
#include "dispc/flagstack.h"
#include "dispc/smd/gdbase.h"
#include "dispc/smd/vertex.h"
#include "dispc/uibitmap.h"
#include "dispc/uierror.h"
#include "dispc/uirect.h"
#include "dispc/uisketch.h"
#include "dispc/uistring.h"
#include "dispc/version.h"
#include "dispc/wrfm/arc.h"
#include "dispc/wrfm/colors.h"
#include "dispc/wrfm/lineseg.h"
#include "foundation/foundation.h"
