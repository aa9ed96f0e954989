#include "dispc/version.h"

// The build passes the project version in; a build that forgot it fails here
// rather than reporting a made-up number.
#ifndef DISPC_VERSION_STRING
#error "DISPC_VERSION_STRING must be defined by the build"
#endif

const char* kfDispcVersion() noexcept { return DISPC_VERSION_STRING; }
