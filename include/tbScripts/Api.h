#pragma once

// TBSCRIPTS_API marks what the shared library exports. Everything else stays hidden.
#if defined(TBSCRIPTS_STATIC)
    #define TBSCRIPTS_API
#elif defined(_WIN32) && defined(TBSCRIPTS_BUILDING)
    #define TBSCRIPTS_API __declspec(dllexport)
#elif defined(_WIN32)
    #define TBSCRIPTS_API __declspec(dllimport)
#else
    #define TBSCRIPTS_API __attribute__((visibility("default")))
#endif

#include "tbScripts/BuildMark.h" // IWYU pragma: export
