#pragma once

namespace tbScripts
{

/// Compiled script code that calls a typed callable by itself, for as long as this object exists.
class CompiledLeaf
{
public:
    CompiledLeaf() = default;

    CompiledLeaf(const CompiledLeaf&) = delete;
    CompiledLeaf& operator=(const CompiledLeaf&) = delete;

    virtual ~CompiledLeaf() = default;
};

} // namespace tbScripts
