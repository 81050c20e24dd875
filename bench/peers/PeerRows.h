#pragma once

#include "peers/Peer.h"

#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// An operation that is measured with a peer and with hand-written code.
struct PeerRow
{
    std::string name;

    /// Returns what does the operation `n` times, in a state of its own.
    std::function<PeerLoop(const Peer& peer)> begin;
};

/// Host functions, user types and script functions, as in `rows/`.
std::vector<PeerRow> makePeerRows();

} // namespace bench
