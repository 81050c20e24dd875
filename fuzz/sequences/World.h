#pragma once

#include "support/Bytes.h"
#include "support/Cases.h"
#include "support/HostObjects.h"

#include <tbLog/Logger.h>
#include <tbMemory/Buffer.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/FunctionParameter.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>
#include <tbScripts/UserType.h>

#include <array>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tbScripts::fuzz
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

/// An environment and the plain names that it has to know.
struct EnvironmentSlot
{
    std::unique_ptr<Environment> environment; // null: there is none
    std::set<std::string> functions;
    std::set<std::string> userTypes;
    std::set<std::string> namespaces;
    unsigned int generation = 0; // changes whenever the names may have gone
};

/// Bytes that were made of a script value.
struct WrittenValue
{
    tbMemory::Buffer bytes;
    bool isTransfer = false; // may be read once only
};

/// Everything that one run of random calls works on: a host with several environments, scripts and
/// kept values, whose callables, destructors and log receiver go on with random calls themselves.
///
/// Nothing here holds a pointer to what the library may destroy over a call: each call looks for
/// what it needs anew.
class World : public tbLog::Logger
{
public:
    explicit World(Bytes bytes);
    ~World() override;

    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Makes calls until the bytes end, then closes everything and looks at what is left.
    void run();

    // What the calls choose from.

    Bytes& bytes() { return m_bytes; }

    HostObjects& objects() { return m_objects; }

    EnvironmentSlot& anySlot();

    /// Returns an environment of a slot or of the manager; makes it if there is none.
    Environment& anyEnvironment();

    /// The same for scripts.
    Script& anyScript();

    std::unique_ptr<Script>& anyScriptSlot()
    {
        return m_scripts[m_bytes.choice<8>(m_scripts.size())];
    }

    ScriptObjectReference& anyReference();
    FunctionParameter& anyParameter();

    std::vector<ScriptObjectView>& views() { return m_views; }

    std::vector<WrittenValue>& writtenValues() { return m_writtenValues; }

    std::vector<std::unique_ptr<Script>>& orphans() { return m_orphans; }

    std::set<std::string>& managedScripts() { return m_managedScripts; }

    /// Returns a new value of any kind, or a kept one.
    FunctionParameter anyValue();

    // What the host is called for.

    /// A callable that makes random calls, keeps its arguments, and returns or throws anything.
    Function::Callable makeCallable();

    UserType::Destructor makeDestructor();

    /// Gives a type that was just declared or found a destructor and then a constructor, so that
    /// there is no instance whose object nobody destroys. Does nothing for null.
    void makeInstantiable(UserType* type);

    /// Declares, on a type that was just declared under the name of a released one, members that
    /// accept only what the new constructor makes.
    void makeBranded(UserType& type);

    /// From here on scripts run compiled, and no finaliser raises: the interpreter dies of those in
    /// collections that compiled code starts, which no test of ours can stop. Does nothing unless
    /// it is the first call.
    void compileScripts();

    bool isCompilingScripts() const { return m_isCompilingScripts; }

    /// Notes that environments share an interpreter, where declarations of one name are one type.
    void noteSharing() { m_isSharing = true; }

    /// Makes random calls from inside of host code.
    void act();

    /// How often host code was called that may have made calls itself. If it was not during a call,
    /// what that call did is known.
    unsigned int getActivity() const { return m_activity; }

    /// Whether the present call is made from inside of another one.
    bool isNested() const { return m_depth > 0; }

    /// Prints what is done, if the variable FUZZ_TRACE of the process's environment is set.
    void trace(const char* what, const std::string& detail = {}) const;

    void log(const tbLog::StringView& message, const tbLog::StringView& source) override;

private:
    UserType::Constructor _makeConstructor();
    FunctionParameter _answer(const Parameters& arguments);
    void _keep(const FunctionParameter& argument);
    void _performOne();
    void _performInHandler();
    void _checkNames() const;
    void _closeAll();

    Bytes m_bytes;
    HostObjects m_objects;
    std::array<EnvironmentSlot, 3> m_slots;
    std::array<std::unique_ptr<Script>, 3> m_scripts;
    std::array<ScriptObjectReference, 6> m_references;
    std::array<FunctionParameter, 6> m_parameters;
    std::vector<ScriptObjectView> m_views;
    std::vector<WrittenValue> m_writtenValues;
    std::vector<std::unique_ptr<Script>> m_orphans; // that a rename has released
    std::set<std::string> m_managedScripts;
    unsigned int m_activity = 0;
    int m_depth = 0;
    int m_budget = 400; // calls; loops of scripts make many of one byte
    int m_brand = 0;    // the last one
    bool m_isSharing = false;
    bool m_isFirstCall = true;
    bool m_isCompilingScripts = false;
    bool m_isClosing = false;
    bool m_isTraced = false;
};

using Call = void (*)(World&);

// One random call of each kind.
void performEnvironmentCall(World& world);
void performGlobalCall(World& world);
void performBindingCall(World& world);
void performUserTypeCall(World& world);
void performNamespaceCall(World& world);
void performScriptCall(World& world);
void performValueCall(World& world);
void performBytesCall(World& world);
void performManagerCall(World& world);
void performTypedCall(World& world);

/// Returns how many objects of typed calls exist.
int countTypedObjects();

} // namespace tbScripts::fuzz
