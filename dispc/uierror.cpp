#include "dispc/uierror.h"

#include "foundation/archive.h"

// Each error archives only its version byte (0) and the empty kcException
// part; another version is an UnknownVersion naming the class, line 0.
KC_DEFINE_EXCEPTION(kcUIError::BadLayer, 0x10002B00, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::BadIconPattern, 0x10002B01, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::FlagStackUnderflow, 0x10002B02, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::FlagStackOverflow, 0x10002B03, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::FlagStackOutOfRange, 0x10002B04, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NotAvailable, 0x10002B06, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NotEnabled, 0x10002B07, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::BadKeyValue, 0x10002B08, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::InvalidColorMapSize, 0x10002B09, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NotImplemented, 0x10002B12, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::BadParams, 0x10002B13, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NotRGBColor, 0x10002B14, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NotIndexColor, 0x10002B15, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::NoLongerSupported, 0x10002B16, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::InvalidUISketch, 0x10002B17, kcUIError::Errors);
KC_DEFINE_EXCEPTION(kcUIError::InitFailed, 0x10002B18, kcUIError::Errors);
