// The hand-written side as its own peer: its ratios say how far those of other peers can be
// trusted.

#include "peers/Peer.h"

namespace bench
{

Peer getPeer()
{
    return getByHand();
}

} // namespace bench
