// What the contracts' suites run on, beside the fakes.
#pragma once

#ifdef _WIN32
#include "tests/platform/win32/host.h"
#else
#include "tests/platform/posix/host.h"
#endif
