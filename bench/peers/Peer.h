#pragma once

#include <lua.hpp>

#include <cstddef>
#include <functional>

namespace bench
{

/// Does an operation `n` times in a loop of the host and returns a number.
using PeerLoop = std::function<double(std::size_t n)>;

/// A way to bind what support/Workload.h offers. The rows of PeerRows.h use it by these functions.
struct Peer
{
    const char* name;

    /// How scripts create a `Body`.
    const char* newBody;

    /// Declares the globals `twice`, `trimmed`, `sumOfEight`, `keep`, which takes a script
    /// function, and `massOf`, and `twice` in the table `a.b`.
    void (*declareFunctions)(lua_State* state);

    /// Declares the type `Body` with the methods `get` and `set`, the fields `var` and `mass`,
    /// elements, addition and comparison; or with `get` alone.
    void (*declareBody)(lua_State* state);
    void (*declareMethodOnly)(lua_State* state);

    // Each returns a loop that calls the global script function `step` with a number, with eight,
    // and with one for three results, and adds the results up. A call that fails ends the program.
    PeerLoop (*beginCalls)(lua_State* state);
    PeerLoop (*beginCallsWithEight)(lua_State* state);
    PeerLoop (*beginCallsForThree)(lua_State* state);
};

/// Defined once for each program, in the file of the peer.
Peer getPeer();

/// The hand-written one, which peers are compared with.
Peer getByHand();

} // namespace bench
