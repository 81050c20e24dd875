#pragma once

/// Marks what the shared library exports. Nothing to define on either side under ELF.
#if defined(_WIN32) && defined(TBRESOURCES_BUILDING)
    #define TBRESOURCES_API __declspec(dllexport)
#elif defined(_WIN32)
    #define TBRESOURCES_API __declspec(dllimport)
#else
    #define TBRESOURCES_API __attribute__((visibility("default")))
#endif
