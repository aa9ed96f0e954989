// Everything public of the foundation library in one include.
#pragma once

#include "foundation/angle.h"
#include "foundation/archive.h"
#include "foundation/exception.h"
#include "foundation/handle.h"
#include "foundation/matrix.h"
#include "foundation/mutex.h"
#include "foundation/pair.h"
#include "foundation/pelbuffer.h"
#include "foundation/persistent.h"
#include "foundation/rigid.h"
#include "foundation/rlebuffer.h"
#include "foundation/vector.h"
#include "foundation/xform.h"
