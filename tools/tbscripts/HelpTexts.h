#pragma once

// What --help prints, whole. docs/tbscripts.md tells the same at greater length.
namespace tool::help
{

constexpr const char* OVERVIEW = R"help(Runs, checks and packs Lua scripts.

Usage: tbscripts COMMAND ...

Commands:
  run FILE... [-- ARG...]    run scripts in one environment
  check FILE|DIR...          compile scripts and report what fails
  pack DIR -o FILE           pack the scripts of a folder into a list
  unpack FILE -o DIR         write the scripts of a list into files
  list FILE                  show the scripts of a file

Options:
  -h, --help                 show this help, or that of a command
  --version                  show the version

A FILE is a script. If its name ends with .json or .tbscripts, it is a document
that declares scripts: {"name": "hello", "type": "lua", "sources": "print(1)"},
an array of such objects, or a project's list {"scripts": [...]}.

Examples:
  tbscripts run setup.lua main.lua -- fast 3
  tbscripts check scripts/
  tbscripts pack scripts/ -o game_scripts.tbscripts
  tbscripts list game_scripts.tbscripts
  tbscripts unpack game_scripts.tbscripts -o scripts/

Exit status:
  0  all is well
  1  a script did not compile, or raised an error
  2  wrong usage, or a file that cannot be read or written

'tbscripts COMMAND --help' tells more about a command.
)help";

constexpr const char* RUN = R"help(Runs scripts in one environment, in the order given.

Usage: tbscripts run FILE... [-- ARG...]

Options:
  -h, --help             show this help

All files are read and compiled first; if one of them is broken, nothing runs.
The first error ends the run and is shown as 'file:line: message', for a script
of a document as 'file(script):line: message'.

What follows '--' is for the scripts: arg[1], arg[2] and so on. arg[0] is the
name of the running script. A first line that begins with '#' is skipped.

Examples:
  tbscripts run hello.lua
  tbscripts run config.json main.lua -- --level 3
  tbscripts run ./-odd-name.lua

Exit status: 0 all is well, 1 a script did not compile or raised an error,
2 wrong usage or a file that cannot be read. A script that calls os.exit decides
itself.
)help";

constexpr const char* CHECK = R"help(Compiles scripts and reports each one that fails. Runs nothing.

Usage: tbscripts check FILE|DIR...

Options:
  -h, --help             show this help

Folders are searched at any depth for .lua, .json and .tbscripts files, which
are taken in the order of their names. A .json file found there that declares no
scripts is passed over. Failures are shown as 'file:line: message', for a script
of a document as 'file(script):line: message'.

Examples:
  tbscripts check main.lua
  tbscripts check scripts/ levels/level1_scripts.tbscripts

Exit status: 0 everything compiles, 1 a script does not, 2 wrong usage or a file
that cannot be read.
)help";

constexpr const char* PACK =
    R"help(Packs all .lua files below a folder into a project's script list.

Usage: tbscripts pack DIR -o FILE

Options:
  -o, --output FILE      the list; its name ends with .tbscripts
  -h, --help             show this help

The scripts are named after their files, relative to the folder, and sorted.
Every byte of them is kept; they are not compiled. A list that exists is
replaced, whole or not at all. What was written is read back and compared.

Example:
  tbscripts pack scripts/ -o game_scripts.tbscripts

Exit status: 0 all is well, 2 wrong usage or a file that cannot be read or
written.
)help";

constexpr const char* UNPACK =
    R"help(Writes the scripts of a document into files: the reverse of pack.

Usage: tbscripts unpack FILE -o DIR [--force]

Options:
  -o, --output DIR       the folder, which is made if it is missing
  -f, --force            overwrite files that exist
  -h, --help             show this help

Each script goes to the file below the folder that its name says. Names that
lead out of the folder, two names for one file and, without --force, files that
exist are refused before anything is written. What was written is read back and
compared.

Example:
  tbscripts unpack game_scripts.tbscripts -o scripts/

Exit status: 0 all is well, 2 wrong usage or a file that cannot be read or
written.
)help";

constexpr const char* LIST = R"help(Shows the scripts of a file.

Usage: tbscripts list FILE [--json]

Options:
  --json                 print an array of JSON objects
  -h, --help             show this help

Shows name, type, size in bytes, and whether the script compiles; if it does
not, why and in which line.

Examples:
  tbscripts list game_scripts.tbscripts
  tbscripts list --json game_scripts.tbscripts

Exit status: 0 everything compiles, 1 a script does not, 2 wrong usage or a file
that cannot be read.
)help";

} // namespace tool::help
