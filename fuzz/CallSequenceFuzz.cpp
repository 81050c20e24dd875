// Random calls of the public interface in any order, also from inside of callables, destructors,
// finalisers and the log receiver. The calls are those that the headers and docs/reference.md
// allow.
//
// A kept input always means the same calls, so each choice that bytes make has fixed numbers:
//
// - A call has its number in a table of `Cases`. A new call takes a free number. The number of a
//   removed call is never used again. Two cases with one number do not compile.
// - Names, statements of scripts and the cases of a `switch` are numbered by their places, below
//   the capacity that their `choice` or `numbered` names. New ones are appended.
// - The capacity of a choice never changes. A byte with a number of no case is skipped, and the
//   next byte chooses.
// - No two arguments of one call read bytes: compilers differ in which they evaluate first.
//
// If FUZZ_TRACE is set in the process's environment, an input prints its calls.
//
// Why: docs/decisions/0025-inputs-and-faults-that-repeat.md

#include "sequences/World.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tbScripts::fuzz::World(tbScripts::fuzz::Bytes(data, size)).run();
    return 0;
}
