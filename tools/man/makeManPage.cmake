# Makes the tool's man page of what the tool says about itself: help2man turns the overview into a
# page, and each command adds a section with its own help.
#
#   cmake -D tool=<path> -D help2man=<path> -D gzip=<path> -D page=<file>.1.gz -P makeManPage.cmake
cmake_minimum_required(VERSION 3.25)

set(ENV{LC_ALL} C) # as the texts are written

# ask(<variable> <word>...)
function(ask result)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

# Returns lines that stay as they are. Troff would take some characters at their beginning for
# requests, and turn dashes into hyphens.
function(verbatim result text)
    string(REPLACE "\\" "\\e" text "${text}")
    string(REPLACE "-" "\\-" text "${text}")
    string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
    set(${result} ".nf\n${text}\n.fi\n" PARENT_SCOPE)
endfunction()

string(REGEX REPLACE "\\.gz$" "" plain ${page})

ask(overview ${tool} --help)
string(REGEX REPLACE ".*\nCommands:(\n.*)" "\\1" commands "${overview}")
string(REGEX REPLACE "\n\n.*" "" commands "${commands}")
string(REGEX MATCHALL "\n  [a-z]+" commands "${commands}")
set(sections "")
foreach(command IN LISTS commands)
    string(STRIP "${command}" command)
    ask(help ${tool} ${command} --help)
    string(STRIP "${help}" help)
    verbatim(help "${help}")
    string(APPEND sections "[tbscripts ${command}]\n${help}\n")
endforeach()
file(WRITE ${plain}.sections "${sections}")

ask(text ${help2man} --no-info --name=${description} --include=${plain}.sections ${tool})
# Each example is a line, not a word in a paragraph.
string(REGEX REPLACE
    "(\n\\.SH EXAMPLES\n)\\.IP\n(.*)(\n\\.SS \"Exit status)" "\\1.nf\n\\2\n.fi\\3" text "${text}")
file(WRITE ${plain} "${text}")
execute_process(COMMAND ${gzip} -9nf ${plain} COMMAND_ERROR_IS_FATAL ANY)
