// The errors of the tablet, the sketch, the flag stack and the colours.
//
// kcUIError is only a namespace for its nested classes. Every error derives
// from kcUIError::Errors (a kcException), carries nothing but its class and
// its number, and is persistent and rethrowable like every foundation error.
// None of them overrides message_: the text is the foundation's default, the
// error number.
//
// The numbers are 0x10002B00 plus a fixed offset; 0x10002B05 and 0x10002B0A
// to 0x10002B11 are left unused on purpose.
#pragma once

#include "dispc/classes.h"
#include "foundation/exception.h"

class kcUIError {
 public:
  kcUIError() = delete;

  // The common base of the UI errors; it adds no fields of its own.
  class Errors : public kcException {
   protected:
    void serialize_(kcArchive& ar, unsigned char version) { kcException::serialize_(ar, version); }
  };

#define KC_UI_ERROR_(Name)      \
  class Name : public Errors {  \
   public:                      \
    KC_DECLARE_EXCEPTION(Name); \
  }

  // A kcUITablet::Layers value out of range.
  KC_UI_ERROR_(BadLayer);
  // A malformed point-icon pattern.
  KC_UI_ERROR_(BadIconPattern);
  // Popping the last flag of a flag stack.
  KC_UI_ERROR_(FlagStackUnderflow);
  // Pushing a 33rd flag.
  KC_UI_ERROR_(FlagStackOverflow);
  // Indexing a flag stack outside 0 to depth - 1.
  KC_UI_ERROR_(FlagStackOutOfRange);
  KC_UI_ERROR_(NotAvailable);
  KC_UI_ERROR_(NotEnabled);
  KC_UI_ERROR_(BadKeyValue);
  KC_UI_ERROR_(InvalidColorMapSize);
  // An operation that has no implementation.
  KC_UI_ERROR_(NotImplemented);
  KC_UI_ERROR_(BadParams);
  // A colour without RGB value asked for a packed RGB form.
  KC_UI_ERROR_(NotRGBColor);
  // A colour without palette index asked for its index.
  KC_UI_ERROR_(NotIndexColor);
  KC_UI_ERROR_(NoLongerSupported);
  // A malformed sketch stream or an unknown opcode.
  KC_UI_ERROR_(InvalidUISketch);
  KC_UI_ERROR_(InitFailed);

#undef KC_UI_ERROR_
};
