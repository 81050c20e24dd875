# Runs a program of the guide beside its scripts, in a folder of its own. What it prints is what the
# page shows in its blocks of text, one after the other.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
file(MAKE_DIRECTORY ${scratch})
file(GLOB material ${root}/examples/guide/*.lua ${root}/examples/guide/*.tbscripts)
file(COPY ${material} DESTINATION ${scratch})

set(expected "")
set(fence "\n```text\n")
string(LENGTH "${fence}" fenceLength)
file(READ ${page} rest)
string(FIND "${rest}" "${fence}" begin)
while(NOT begin EQUAL -1)
    math(EXPR begin "${begin} + ${fenceLength}")
    string(SUBSTRING "${rest}" ${begin} -1 rest)
    string(FIND "${rest}" "```\n" end)
    string(SUBSTRING "${rest}" 0 ${end} block)
    string(APPEND expected "${block}")
    string(SUBSTRING "${rest}" ${end} -1 rest)
    string(FIND "${rest}" "${fence}" begin)
endwhile()
if(expected STREQUAL "")
    message(FATAL_ERROR "${page} shows nothing that its program prints.")
endif()

# One pipe for both, so that what is logged comes between what is printed.
execute_process(
    COMMAND ${program}
    WORKING_DIRECTORY ${scratch}
    RESULT_VARIABLE status
    OUTPUT_VARIABLE printed
    ERROR_VARIABLE printed)
file(REMOVE_RECURSE ${scratch})
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ended with ${status}:\n${printed}")
endif()
if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "${page} shows:\n${expected}\n${program} printed:\n${printed}")
endif()
