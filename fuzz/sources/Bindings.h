#pragma once

#include "support/HostObjects.h"

#include <tbScripts/Environment.h>
#include <tbScripts/FunctionParameter.h>
#include <tbScripts/ScriptObjectReference.h>

#include <deque>

namespace tbScripts::fuzz
{

/// What scripts are offered: functions, a user type `Vec` with everything that a type can have, a
/// namespace `world::sky`, and an object of the host called `home`.
class Bindings
{
public:
    /// The script that has to run first.
    static const char* const PRELUDE;

    void declareIn(Environment& environment);

    /// Returns an instance of `Vec` for a script to own.
    FunctionParameter makeOwnedInstance();

    /// Drops what scripts gave the host to keep.
    void dropReferences() { m_kept.clear(); }

    /// Looks at what has become of the objects, after the environment has ended.
    void check() const { m_objects.check(); }

private:
    void _declareFunctions(Environment& environment);
    void _declareType(Environment& environment);
    void _declareOperators(UserType& type);
    void _declareNamespace(Environment& environment);

    HostObject& _objectIn(const FunctionParameter& parameter);

    HostObjects m_objects;
    std::deque<ScriptObjectReference> m_kept;
};

} // namespace tbScripts::fuzz
