# Shows each check one tree or library with a planted fault. A check that finds nothing wrong there,
# or complains of something else, protects nothing.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
set(failures "")

# Gives `tree` a copy of what the checks read. Copying leaves files alone that are as they were, so only
# what the fault before has changed is done again.
function(make_tree tree)
    file(COPY ${root}/cmake ${root}/include ${root}/src DESTINATION ${tree})
    file(COPY ${root}/tests DESTINATION ${tree} FILES_MATCHING PATTERN *.cpp PATTERN *.h PATTERN *.md)
    if(EXISTS ${root}/examples)
        file(COPY ${root}/examples DESTINATION ${tree})
    endif()
    if(EXISTS ${root}/tools)
        file(COPY ${root}/tools DESTINATION ${tree})
    endif()
    file(GLOB pages ${root}/*.md)
    file(COPY ${root}/docs ${pages} DESTINATION ${tree})
    file(GLOB_RECURSE copied RELATIVE ${tree} ${tree}/*)
    if(NOT originalFiles)
        set(originalFiles ${copied})
        set(originalFiles ${copied} PARENT_SCOPE)
    endif()
    list(REMOVE_ITEM copied ${originalFiles})
    foreach(file IN LISTS copied)
        file(REMOVE ${tree}/${file})
    endforeach()
endfunction()

# expect_failure(<check> <what it has to say>... [-D<name>=<value>...])
function(expect_failure check)
    set(options ${ARGN})
    set(complaints ${ARGN})
    list(FILTER options INCLUDE REGEX "^-D")
    list(FILTER complaints EXCLUDE REGEX "^-D")
    execute_process(
        COMMAND ${CMAKE_COMMAND} ${options} -P ${root}/tests/tooling/${check}.cmake
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    foreach(complaint IN LISTS complaints)
        if(result EQUAL 0)
            string(APPEND failures "  ${check} has overlooked: ${complaint}\n")
        elseif(NOT output MATCHES "${complaint}")
            string(APPEND failures "  ${check}, wanted \"${complaint}\", said: ${output}\n")
        endif()
    endforeach()
    set(failures "${failures}" PARENT_SCOPE)
endfunction()

set(tree ${scratch}/tree)

make_tree(${tree})
file(WRITE ${tree}/src/core/Unlisted.cpp "")
expect_failure(checkSourceLists "src/core/Unlisted.cpp is on disk" -Droot=${tree})

make_tree(${tree})
file(REMOVE ${tree}/include/tbScripts/Version.h)
expect_failure(checkSourceLists "Version.h is in TOBREL_SCRIPTS_HEADERS, but" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/tools/tbscripts/Unlisted.h "")
expect_failure(checkSourceLists "tools/tbscripts/Unlisted.h is on disk" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/tests/core/UnlistedTest.cpp "")
expect_failure(checkTestLists "tests/core/UnlistedTest.cpp: in no list" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/tests/platform/StringViewTest.cpp "TEST(StringViewTest, DISABLED_Case) {}\n")
expect_failure(checkTestLists "DISABLED_Case" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/tests/platform/StringViewTest.cpp "TEST(A, B) { GTEST_SKIP(); }\n")
expect_failure(checkTestLists "GTEST_SKIP" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/tests/core/BareTest.cpp "TEST(A, B) { std::string text; }\n")
file(WRITE ${tree}/tests/core/MatchingTest.cpp
    "#include <gtest/gtest.h>\nTEST(A, B) { EXPECT_THAT(1, 1); }\n")
expect_failure(checkTestIncludes
    "BareTest.cpp uses TEST.* without <gtest"
    "BareTest.cpp uses std::string.* without <string"
    "MatchingTest.cpp uses EXPECT_THAT.* without <gmock"
    -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/core/Upward.cpp "#include \"environments/Environment.h\"\n")
expect_failure(checkLayers "core may not include environments" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/scripts/Sideways.cpp "#include \"core/lua/LuaStateHandle.h\"\n")
expect_failure(checkLayers "outside a lua/ folder" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/core/lua/Direct.cpp "#include <lua.hpp>\n")
expect_failure(checkLayers "only src/core/lua/LuaApi.h" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/include/tbScripts/Leak.h "#include <lua.hpp>\n")
expect_failure(checkLayers "include/tbScripts/Leak.h" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/include/tbScripts/Script.h "namespace tbScripts { friend class lua::Inside; }\n")
expect_failure(checkLayers "lua::Inside.*names the interpreter's side" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/include/tbScripts/Script.h "namespace tbScripts::lua { class Declared; }\n")
expect_failure(checkLayers "class Declared.*names the interpreter's side" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/tools/tbscripts/Inside.cpp "#include \"scripts/ScriptStrategy.h\"\n")
expect_failure(checkLayers "tools/tbscripts/Inside.cpp" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/port/Upward.h "#include \"core/LogSources.h\"\n")
file(WRITE ${tree}/src/loading/Posix.cpp "#include <unistd.h>\n")
file(WRITE ${tree}/src/loading/Windows.cpp "#include \"port/windows/Windows.h\"\n")
file(WRITE ${tree}/tools/tbscripts/System.cpp "#include <sys/stat.h>\n")
expect_failure(checkLayers
    "port may not include core"
    "src/loading/Posix.cpp: unistd.h .only src/port"
    "src/loading/Windows.cpp: port/windows/Windows.h"
    "tools/tbscripts/System.cpp: sys/stat.h .only src/port"
    -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/core/FunctionParameter.cpp "int nothing = 0;\n")
file(WRITE ${tree}/src/bindings/lua/values/LuaCallBridge.cpp
    "#include \"tbScripts/FunctionParameterType.h\"\n"
    "int f(tbScripts::FUNCTION_PARAMETER_TYPE type)\n"
    "{\n    using namespace tbScripts;\n    switch (type)\n    {\n"
    "    case PARAM_TYPE_VOID:\n    case PARAM_TYPE_BOOL:\n    case PARAM_TYPE_INT:\n"
    "    case PARAM_TYPE_FLOAT:\n    case PARAM_TYPE_DOUBLE:\n    case PARAM_TYPE_STRING:\n"
    "    case PARAM_TYPE_USER_TYPE_OWNED:\n    case PARAM_TYPE_USER_TYPE:\n"
    "    case PARAM_TYPE_SCRIPT_FUNCTION:\n    case PARAM_TYPE_SCRIPT_OBJECT:\n"
    "    default:\n        return 0;\n    }\n}\n")
set(newKind -Droot=${tree} -Dcompiler=${compiler} -Dscratch=${scratch}/newKind)
expect_failure(checkNewKind "_memberOf only 0 have to name it" ${newKind} -Doptions=-Wswitch-enum)
expect_failure(checkNewKind "_push only 1 have to name it" ${newKind} -Doptions=-Wswitch-enum)
expect_failure(checkNewKind "_push only 0 have to name it" ${newKind} -Doptions=-Wall)

make_tree(${tree})
file(WRITE ${tree}/tests/bindings/typed/wrongBindings.txt
    "bind(environment, \"f\", [](int number) { return number; });\n== this is wrong\n")
expect_failure(checkWrongBindings "should say: TobrelScripts: this is wrong"
    -Droot=${tree} -Dplatform=${root}/platform -Dcompiler=${compiler}
    -Dscratch=${scratch}/wrongBindings)

make_tree(${tree})
file(WRITE ${tree}/src/core/lua/Raise.cpp "int f(lua_State* s) { return lua_error(s); }\n")
expect_failure(checkRaiseSites "src/core/lua/Raise.cpp" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/src/core/lua/Raise.cpp "int n = luaL_checkinteger(state, 1);\n")
expect_failure(checkRaiseSites "luaL_checkinteger" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/src/bindings/BindingMessages.h
    "constexpr const char* NEW = \"Un\" \"told.\"; // in two pieces\n")
expect_failure(checkMessages "\"Untold.\" is not in docs/messages.md" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/docs/messages.md "| `Told of '<name>' only here.` | Script | never |\n")
expect_failure(checkMessages "\"' only here.\" is in no source" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/docs/messages.md "# Messages\n")
expect_failure(checkMessages "no texts found" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/examples/readme.cpp "// one line more\n")
expect_failure(checkReadme "README.md and examples/readme.cpp differ" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/README.md "# TobrelScripts\n")
expect_failure(checkReadme "holds no C\\+\\+ program" -Droot=${tree})

make_tree(${tree})
file(WRITE ${tree}/examples/guide/unlisted.cpp "")
expect_failure(checkSourceLists "examples/guide/unlisted.cpp is on disk" -Droot=${tree})

# These two report all that they find, so one tree may have several faults.
make_tree(${tree})
file(APPEND ${tree}/docs/architecture.md "\n```cpp\nint nowhere();\n```\n")
file(APPEND ${tree}/docs/guide/errors.md "\n```lua\nnowhere()\n```\n\n```json\n{}\n```\n")
file(APPEND ${tree}/docs/guide/errors.md "\n[there](nowhere.md)\n")
file(APPEND ${tree}/examples/guide/errors.cpp "    // [shown]\n    int more;\n    // [/shown]\n")
file(APPEND ${tree}/examples/guide/patrol.lua "-- one line more\n")
file(APPEND ${tree}/include/tbScripts/Script.h "/// @code\n/// int elsewhere;\n/// @endcode\n")
file(APPEND ${tree}/README.md "\n[there](docs/messages.md#nowhere)\n")
file(APPEND ${tree}/tests/README.md "\n[here](#nowhere)\n")
expect_failure(checkDocumentedCode
    "docs/architecture.md shows[^:]*:[^:]*int nowhere"
    "docs/guide/errors.md shows[^:]*:[^:]*nowhere"
    "docs/guide/errors.md shows[^:]*:[^:]*{}"
    "include/tbScripts/Script.h shows[^:]*:[^:]*int elsewhere"
    "errors.cpp has what no[^:]*:[^:]*int more"
    "patrol.lua has what no"
    -Droot=${tree})
expect_failure(checkLinks
    "docs/guide/errors.md: nowhere.md leads nowhere"
    "README.md: docs/messages.md#nowhere names no heading"
    "tests/README.md: #nowhere names no heading"
    -Droot=${tree})
file(REMOVE_RECURSE ${tree}/examples/guide)
expect_failure(checkDocumentedCode "no programs found" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/src/core/LogSources.h "// Why: docs/nowhere.md and 0099-nowhere.md\n")
file(APPEND ${tree}/cmake/FindLuaJIT.cmake "# See messages.md#nowhere, and docs/messages.md.\n")
expect_failure(checkPages
    "LogSources.h: there is no page docs/nowhere.md"
    "LogSources.h: there is no page 0099-nowhere.md"
    "FindLuaJIT.cmake: messages.md#nowhere names no heading"
    -Droot=${tree})
file(GLOB sources ${tree}/src/* ${tree}/tests/* ${tree}/tools/* ${tree}/cmake/* ${tree}/include/*)
file(REMOVE_RECURSE ${sources} ${tree}/examples)
expect_failure(checkPages "no names of pages" -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/docs/reliability.md "\n`NowhereTest.Case` and `StringViewTest.Nowhere`\n")
file(WRITE ${tree}/tests/corpus/UnnamedTest.cpp "")
expect_failure(checkReliability
    "names NowhereTest.Case, which"
    "names StringViewTest.Nowhere, which"
    "does not name UnnamedTest"
    -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/docs/guide/errors.md "\nA truth\nvalue is written by hand.\n")
file(APPEND ${tree}/include/tbScripts/Version.h "// Kept: it is so.\n")
file(APPEND ${tree}/tests/README.md "\nTwo rival declarations. <!-- words: allow rival declaration -->\n")
expect_failure(checkWords
    "errors.md: \"[^\"]*truth value\": write boolean"
    "errors.md: \"[^\"]*by hand\": write manually"
    "Version.h: \"[^\"]*kept:\": write Compatibility"
    -Droot=${tree})
execute_process(
    COMMAND ${CMAKE_COMMAND} -Droot=${tree} -P ${root}/tests/tooling/checkWords.cmake
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
if(output MATCHES "tests/README.md")
    string(APPEND failures "  checkWords does not know its own marker\n")
endif()

make_tree(${tree})
file(WRITE ${tree}/docs/decisions/9998-unnamed.md "# 9998 Unnamed\n\nSee `Version.h`.\n")
file(APPEND ${tree}/include/tbScripts/Api.h "// Why: docs/decisions/9999-nowhere.md (decision 9997)\n")
expect_failure(checkDecisions
    "no file names docs/decisions/9998-unnamed.md"
    "Version.h does not name 9998-unnamed.md"
    "Api.h names 9999-nowhere.md, which"
    "Api.h names decision 9997, which"
    -Droot=${tree})

make_tree(${tree})
file(APPEND ${tree}/docs/architecture.md "\nSee `src/core/Nowhere.cpp`.\n")
expect_failure(checkPaths "names src/core/Nowhere.cpp, which" -Droot=${tree})

if(doxygen)
    set(reference -Droot=${tree} -Ddoxygen=${doxygen} -Dscratch=${scratch}/reference)
    set(header ${tree}/include/tbScripts/New.h)
    file(WRITE ${header} "namespace tbScripts { class Bare { public: void bareMember(); }; }\n")
    expect_failure(checkApiReference
        "Compound tbScripts::Bare is not" "Member bareMember" ${reference})
    file(WRITE ${header} "namespace tbScripts\n{\n/// @param b none such\nvoid f(int a);\n}\n")
    expect_failure(checkApiReference "argument 'b'" ${reference})
    file(WRITE ${header} "/// Kinds.\nenum KIND : int\n{\n    KIND_ONE = 1, // the first\n};\n")
    expect_failure(checkApiReference "nothing is said of" ${reference})
endif()

# expect_static_failure(<what it has to say> <source text>)
function(expect_static_failure complaint text)
    file(WRITE ${scratch}/Static.cpp "#include <string>\nint made();\n${text}")
    execute_process(
        COMMAND ${compiler} -std=c++17 -c -fPIC -o ${scratch}/Static.cpp.o ${scratch}/Static.cpp
        COMMAND_ERROR_IS_FATAL ANY)
    file(WRITE ${scratch}/objects.txt "${scratch}/Static.cpp.o\n")
    expect_failure(checkStatics "${complaint}" -Dnm=${nm} -Dobjects=${scratch}/objects.txt)
    set(failures "${failures}" PARENT_SCOPE)
endfunction()

expect_static_failure("Static.cpp: a static object in a function is created by its first use"
    "int f() { static const int VALUE = made(); return VALUE; }\n")
expect_static_failure("Static.cpp: a static object in a function is created by its first use"
    "std::string& f() { static std::string text; return text; }\n")
expect_static_failure("Static.cpp: a static object has a destructor"
    "std::string text(made(), 'a');\n")
expect_static_failure("Static.cpp: a static object has a constructor that runs"
    "int value = made();\n")
file(WRITE ${scratch}/objects.txt "")
expect_failure(checkStatics "has looked at nothing" -Dnm=${nm} -Dobjects=${scratch}/objects.txt)

# expect_export_failure(<what it has to say> <source text>)
function(expect_export_failure complaint text)
    file(WRITE ${scratch}/exported.cpp "${text}")
    execute_process(
        COMMAND ${compiler} -shared -fPIC -o ${scratch}/libexported.so ${scratch}/exported.cpp
        COMMAND_ERROR_IS_FATAL ANY)
    expect_failure(checkExportedSymbols
        "${complaint}" -Dnm=${nm} -Dlibrary=${scratch}/libexported.so)
    set(failures "${failures}" PARENT_SCOPE)
endfunction()

set(own "namespace tbScripts { void own() {} }\n")
expect_export_failure("leaked" "${own}void leaked() {}\n")
expect_export_failure("inside" "${own}namespace tbScripts::lua { void inside() {} }\n")
expect_export_failure("helper" "${own}namespace tbScripts::detail { void helper() {} }\n")
expect_export_failure("byInline"
    "${own}namespace tbScripts::lua { inline void byInline() {} void* used = (void*)&byInline; }\n")
expect_export_failure("basic_string"
    "#include <string>\n${own}template class std::basic_string<char16_t>;\n")
expect_export_failure("Nothing of tbScripts" "static int nothing;\n")

file(REMOVE_RECURSE ${scratch})
if(NOT failures STREQUAL "")
    message(FATAL_ERROR "Checks that cannot fail:\n${failures}")
endif()
