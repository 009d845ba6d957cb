// The colour of title bars.
#pragma once

#include <windows.h>

namespace orvanto::win32 {

// Dark where the person has chosen dark windows, and the system can colour title bars. To be called
// once, and whenever the system's settings have changed.
void ColourTitleBar(HWND window);

}  // namespace orvanto::win32
