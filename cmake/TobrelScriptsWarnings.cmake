# All warning flags in one place, chosen by compiler. Linked privately, so that users choose their own.
add_library(TobrelScriptsWarnings INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT MSVC)
    target_compile_options(TobrelScriptsWarnings INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion
        $<$<BOOL:${TOBREL_SCRIPTS_WERROR}>:-Werror>)
elseif(MSVC) # also Clang with the options of that compiler
    target_compile_options(TobrelScriptsWarnings INTERFACE
        /W4 /permissive- /utf-8
        $<$<BOOL:${TOBREL_SCRIPTS_WERROR}>:/WX>)
endif()
