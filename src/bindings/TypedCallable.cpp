#include "bindings/TypedCallable.h"

namespace tbScripts
{

namespace
{

// Destroys a callable that nobody has taken over.
struct Abandoned
{
    ~Abandoned()
    {
        if (!isTakenOver && bound.destroy)
            bound.destroy(bound.context);
    }

    const typed::BoundCallable& bound;
    bool isTakenOver = false;
};

} // namespace

Counted<TypedCallable> holdTyped(const typed::BoundCallable& bound)
{
    if (!bound.signature)
        return Counted<TypedCallable>();
    Abandoned unlessHeld{bound};
    Counted<TypedCallable> held = makeCounted<TypedCallable>(bound);
    unlessHeld.isTakenOver = true;
    return held;
}

} // namespace tbScripts
