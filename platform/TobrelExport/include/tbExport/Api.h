#pragma once

/// Marks what the shared library exports. Nothing to define on either side under ELF.
#if defined(_WIN32) && defined(TBEXPORT_BUILDING)
    #define TBEXPORT_API __declspec(dllexport)
#elif defined(_WIN32)
    #define TBEXPORT_API __declspec(dllimport)
#else
    #define TBEXPORT_API __attribute__((visibility("default")))
#endif
