#pragma once

#include "tbScripts/Function.h"

namespace tbScripts
{

/// What the typed layer asks of a published function beside the operations of `Function`.
class TypedFunction
{
public:
    /// Returns the same function, null if it is published nowhere.
    static TypedFunction* of(Function& function) { return dynamic_cast<TypedFunction*>(&function); }

    /// Lets compiled script code call the typed callable by itself, if that is a leaf and the
    /// interpreter allows it. Returns false if a finaliser that ran meanwhile has ended the
    /// function, which does not exist any more then.
    virtual bool publishLeaf() = 0;

protected:
    ~TypedFunction() = default;
};

} // namespace tbScripts
