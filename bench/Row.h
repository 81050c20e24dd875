#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// One way of doing what a row measures.
struct Variant
{
    /// Does the operations of the row once. What it returns is the same for all variants of the
    /// row, and so a check of their work.
    std::function<double()> run;

    /// Puts things back where each timed run begins, unless it is empty. Not timed.
    std::function<void()> prepare;
};

/// A way to bind or call through the library.
enum class WAY
{
    DESCRIBED, // parameters and members described one by one
    TYPED,     // by what the compiler knows of functions and types
    LEAF // the same, and promised not to call the library: compiled scripts call by themselves
};

/// A way through the library that a row is measured with.
struct LibraryWay
{
    WAY way = WAY::DESCRIBED;
    double goal = 0.0; // the ratio to hand-written code that it has to reach; 0 for none
};

/// What the library is compared with.
enum class RIVAL_KIND
{
    BINDING, // the same hand-written against the interpreter; counts for the means
    LIMIT,   // the work without a library around it, which nothing can undercut
    PEER     // another library for the same purpose
};

struct Rival
{
    RIVAL_KIND kind;
    std::string name;
    double goal; // the ratio that the library has to reach; 0 for none, or for goals of the ways
};

/// One operation, measured through the public interface, in a way or several, and without it.
struct Row
{
    std::string subject; // the file that it comes from
    std::string name;
    std::vector<Rival> rivals;
    std::size_t operations;      // in one timed run
    std::size_t leastOperations; // in a smoke run

    /// Makes the library's variants first, in the order of `ways`, and those of the rivals in
    /// theirs.
    std::function<std::vector<Variant>(std::size_t operations)> make;

    std::vector<LibraryWay> ways{LibraryWay()};
};

/// One operation, measured with more and more of something around it.
struct GrowthRow
{
    std::string name;
    std::string countOf; // what there is more and more of
    std::vector<std::size_t> counts;
    std::size_t operations; // in one timed run
    bool isPerCount;        // a run does as many operations as there are things, not `operations`

    std::function<Variant(std::size_t count, std::size_t operations)> make;
};

} // namespace bench
