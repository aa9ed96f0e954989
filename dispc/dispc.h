// Everything public of the display-core library in one include, the
// foundation library's included.
#pragma once

#include "dispc/version.h"
#include "foundation/foundation.h"
