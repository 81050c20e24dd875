// Random calls of the public interface in any order, also from inside of callables, destructors,
// finalisers and the log receiver. Everything is tried that the headers and docs/reference.md
// allow.
//
// A kept input means the same calls for good, so each choice that bytes make has numbers that stay:
//
// - A call has its number in a table of `Cases`. A new one takes a number that is free; one that
// was
//   removed leaves its number free for nobody. Two cases with one number do not compile.
// - Names, statements of scripts and the cases of a `switch` are numbered by their places, below
// the
//   capacity that their `choice` or `numbered` names. New ones are appended.
// - The capacity of a choice is never changed. A byte whose number nothing has yet is skipped, and
// the
//   next one chooses.
// - No two arguments of one call read bytes: compilers differ in which they read first.
//
// With the variable FUZZ_TRACE of the process's environment, an input says what it does.

#include "sequences/World.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tbScripts::fuzz::World(tbScripts::fuzz::Bytes(data, size)).run();
    return 0;
}
