#pragma once

#include "support/LogFixture.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <string>

namespace tbScripts::test
{

/// A Lua script called "x" without sources, and an environment that tells what it was compiled to.
class ScriptFixture : public LogFixture
{
protected:
    ScriptFixture();

    /// Compiles `sources` with the script of the fixture.
    bool load(const tbMemory::StringView& sources);

    /// Compiles `sources`, which have to be wrong. Takes the one log entry, which has to show the
    /// message of the result, and returns that message.
    std::string loadExpectingError(const tbMemory::StringView& sources);

    /// Runs `script` in an environment of its own and returns what it left in the global "x"; -1
    /// if that is no number.
    static int run(const Script& script);

    /// Returns whether `script` has a compiled form. Takes what the log says if not.
    bool hasBytecode(const Script& script);

    Script m_script;
};

} // namespace tbScripts::test
