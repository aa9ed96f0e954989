// The version of the display-core library.
#pragma once

// The project version, "major.minor.patch", of the library actually loaded
// (which may differ from the headers a program was compiled against).
[[nodiscard]] const char* kfDispcVersion() noexcept;
