# CTest reads this before it runs anything: one entry for each suite of `executable`. A process per
# case would cost more than most cases; with one per suite a crash still takes nothing else along,
# and `ctest -R` still finds a suite by its name.

if(NOT EXISTS "${executable}")
    add_test("${target}_NOT_BUILT" "${target}_NOT_BUILT")
    return()
endif()

execute_process(
    COMMAND "${executable}" --gtest_list_tests
    OUTPUT_VARIABLE listing
    COMMAND_ERROR_IS_FATAL ANY)

# A suite's line begins without blanks and ends with a dot; those of its cases and rows are indented.
# "Rows/NodeTest." belongs to NodeTest as well, and so does "NodeTest/Int.  # TypeParam = int".
string(REGEX MATCHALL "\n[A-Za-z0-9_/]+\\.( +# TypeParam)?" suites "\n${listing}")
list(TRANSFORM suites REPLACE "/[^/]+ +# TypeParam$" "")
list(TRANSFORM suites REPLACE "^.*[\n/]|\\.$" "")
list(REMOVE_DUPLICATES suites)
if(NOT suites)
    message(FATAL_ERROR "${target} lists no suite.")
endif()

foreach(suite IN LISTS suites)
    add_test("${suite}" "${executable}" --gtest_brief=1
        "--gtest_filter=${suite}.*:*/${suite}.*:${suite}/*.*:*/${suite}/*.*")
    set_tests_properties("${suite}" PROPERTIES TIMEOUT 600)
endforeach()
