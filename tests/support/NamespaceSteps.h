#pragma once

#include "support/NamespaceFixture.h"
#include "support/Steps.h"

#include <functional>
#include <string>

namespace tbScripts::test
{

/// Steps on namespaces. Paths are those of scripts: "a.b" is what "b" is in the namespace "a", "b"
/// is a global.
using NamespaceStep = std::function<void(NamespaceFixture&)>;

/// Returns the namespace at `path`, which has to be declared.
Namespace& namespaceAt(NamespaceFixture& test, const std::string& path);

///@{
/// Declares one. It has to be given, and nothing is said of log entries.
NamespaceStep space(const std::string& path);
NamespaceStep userType(const std::string& path);
NamespaceStep unboundFunction(const std::string& path);
///@}

/// Declares a user type whose instances are counted objects.
NamespaceStep countedType(const std::string& path);

/// Declares a function that returns `answer`.
NamespaceStep answering(const std::string& path, int answer);

/// Sets a variable of the host.
NamespaceStep variable(const std::string& path, int value);

NamespaceStep clear(const std::string& path = "a");
NamespaceStep release(const std::string& path = "a");

/// Declares the global function `act`, which does `step`.
NamespaceStep acting(const NamespaceStep& step);

/// Expects that many counted objects to live.
NamespaceStep living(int count);

/// Expects the namespace "a" to know an inner namespace or user type of that name.
NamespaceStep knows(const std::string& name, bool isKnown = true);

} // namespace tbScripts::test
