#include "support/NamespaceSteps.h"

#include "support/CountedObject.h"

#include <stdexcept>

namespace tbScripts::test
{

namespace
{

// Calls `inNamespace(namespace, name)` or `inEnvironment(environment, name)`, as `path` says.
template <typename InNamespace, typename InEnvironment>
auto declareAt(
    NamespaceFixture& test,
    const std::string& path,
    InNamespace inNamespace,
    InEnvironment inEnvironment)
{
    const std::size_t dot = path.rfind('.');
    auto* const declared =
        dot == std::string::npos
            ? inEnvironment(test.environment(), path)
            : inNamespace(namespaceAt(test, path.substr(0, dot)), path.substr(dot + 1));
    EXPECT_NE(declared, nullptr) << path;
    return declared;
}

Function* declareFunction(NamespaceFixture& test, const std::string& path)
{
    return declareAt(
        test,
        path,
        [](Namespace& owner, const std::string& name) { return owner.setFunction(name); },
        [](Environment& owner, const std::string& name) { return owner.setFunc(name); });
}

UserType* declareType(NamespaceFixture& test, const std::string& path)
{
    const auto declare = [](auto& owner, const std::string& name)
    { return owner.setUserType(name); };
    return declareAt(test, path, declare, declare);
}

} // namespace

Namespace& namespaceAt(NamespaceFixture& test, const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    Namespace* const found =
        dot == std::string::npos
            ? test.environment().getNamespace(path)
            : namespaceAt(test, path.substr(0, dot)).getNamespace(path.substr(dot + 1));
    if (!found)
        throw std::logic_error("no namespace " + path);
    return *found;
}

NamespaceStep space(const std::string& path)
{
    return [=](NamespaceFixture& test)
    {
        const auto declare = [](auto& owner, const std::string& name)
        { return owner.setNamespace(name); };
        declareAt(test, path, declare, declare);
    };
}

NamespaceStep userType(const std::string& path)
{
    return [=](NamespaceFixture& test) { declareType(test, path); };
}

NamespaceStep unboundFunction(const std::string& path)
{
    return [=](NamespaceFixture& test) { declareFunction(test, path); };
}

NamespaceStep countedType(const std::string& path)
{
    return [=](NamespaceFixture& test) { test.makeCounted(declareType(test, path)); };
}

NamespaceStep answering(const std::string& path, int answer)
{
    return [=](NamespaceFixture& test) { test.bindAnswer(declareFunction(test, path), answer); };
}

NamespaceStep variable(const std::string& path, int value)
{
    return [=](NamespaceFixture& test)
    {
        const std::size_t dot = path.rfind('.');
        if (dot == std::string::npos)
            test.environment().setVar(path, value);
        else
            namespaceAt(test, path.substr(0, dot)).setVar(path.substr(dot + 1), value);
    };
}

NamespaceStep clear(const std::string& path)
{
    return [=](NamespaceFixture& test) { namespaceAt(test, path).clear(); };
}

NamespaceStep release(const std::string& path)
{
    return [=](NamespaceFixture& test) { namespaceAt(test, path).release(); };
}

NamespaceStep acting(const NamespaceStep& step)
{
    return [=](NamespaceFixture& test)
    { test.declareAction("act", [step, &test] { step(test); }); };
}

NamespaceStep living(int count)
{
    return [=](NamespaceFixture&) { EXPECT_EQ(CountedObject::getLiving(), count); };
}

NamespaceStep knows(const std::string& name, bool isKnown)
{
    return [=](NamespaceFixture& test)
    {
        const bool isFound = test.scope().getNamespace(name) || test.scope().getUserType(name);
        EXPECT_EQ(isFound, isKnown) << name;
    };
}

} // namespace tbScripts::test
