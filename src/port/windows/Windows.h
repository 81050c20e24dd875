#pragma once

// The system's header, less what clashes with names of C++.
#if !defined(NOMINMAX)
    #define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
