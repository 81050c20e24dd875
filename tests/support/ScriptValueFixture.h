#pragma once

#include "support/UserTypeFixture.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

using Bytes = std::vector<unsigned char>;

/// Returns the parts one after the other.
Bytes joined(const std::vector<Bytes>& parts);

/// Returns the 8 bytes that a pointer takes in a record.
Bytes bytesOf(const void* pointer);

/// Writes script values as bytes and reads them back.
class ScriptValueFixture : public UserTypeFixture
{
protected:
    /// Returns a handle on the value of `expression`, which stays in global `written`.
    ScriptObjectReference refer(const std::string& expression);

    Bytes write(const ScriptObjectReference& value, bool transferOwnership = false);

    /// Returns the bytes of the value of `expression`.
    Bytes write(const std::string& expression, bool transferOwnership = false);

    /// Sets global `read` to what `bytes` describe, to nil if that is nothing; returns whether
    /// they describe anything.
    bool read(const Bytes& bytes);

    /// Returns whether `expression`, mostly on `read`, is true.
    bool holds(const std::string& expression);
};

} // namespace tbScripts::test
