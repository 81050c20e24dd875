#pragma once

#include "tbScripts/Api.h"

#include <cstddef> // defines the standard library's own macros

// Host and library pass each other strings, containers and callables, and libstdc++ lays these out
// in another way with _GLIBCXX_DEBUG and with the strings of old compilers. A host that was built
// otherwise than the library would crash without a word. So each of its files refers to two
// symbols, which only a library of the same kind exports, and the linker names the difference.
#if defined(__GLIBCXX__) && !defined(_WIN32)
    #if defined(_GLIBCXX_DEBUG)
        #define TBSCRIPTS_CONTAINER_MARK BUILT_WITH_GLIBCXX_DEBUG
    #else
        #define TBSCRIPTS_CONTAINER_MARK BUILT_WITHOUT_GLIBCXX_DEBUG
    #endif
    #if _GLIBCXX_USE_CXX11_ABI
        #define TBSCRIPTS_STRING_MARK BUILT_WITH_GLIBCXX_USE_CXX11_ABI
    #else
        #define TBSCRIPTS_STRING_MARK BUILT_WITHOUT_GLIBCXX_USE_CXX11_ABI
    #endif

namespace tbScripts::buildMark
{

extern TBSCRIPTS_API const char TBSCRIPTS_CONTAINER_MARK;
extern TBSCRIPTS_API const char TBSCRIPTS_STRING_MARK;

[[gnu::used]] static const char* const CONTAINERS = &TBSCRIPTS_CONTAINER_MARK;
[[gnu::used]] static const char* const STRINGS = &TBSCRIPTS_STRING_MARK;

} // namespace tbScripts::buildMark
#endif
