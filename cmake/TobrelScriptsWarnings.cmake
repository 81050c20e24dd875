# All warning flags in one place. Linked privately, so that users choose their own.
add_library(TobrelScriptsWarnings INTERFACE)
target_compile_options(TobrelScriptsWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${TOBREL_SCRIPTS_WERROR}>:-Werror>)
