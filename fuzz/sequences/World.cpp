#include "sequences/World.h"

#include "sequences/Names.h"
#include "support/MemoryCeiling.h"
#include "support/Require.h"

#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/ScriptManager.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace tbScripts::fuzz
{

namespace
{

constexpr int MAX_DEPTH = 4;
constexpr std::size_t MAX_KEPT = 8;
constexpr int MAX_CALLS_AT_ONCE = 4;

} // namespace

World::World(Bytes bytes)
    : m_bytes(bytes)
    , m_isTraced(std::getenv("FUZZ_TRACE") != nullptr)
{
}

World::~World() = default;

void World::run()
{
    LogManager::getInstance()->setReceiver(this);
    const int typedObjects = countTypedObjects();
    while (!m_bytes.empty() && m_budget > 0)
    {
        _performOne();
        _checkNames();
    }
    _closeAll();
    MemoryCeiling::lift();
    m_objects.check();
    require(
        m_objects.mayLeak() || countTypedObjects() == typedObjects,
        "objects of the typed layer are destroyed once");
}

EnvironmentSlot& World::anySlot()
{
    const std::size_t index = m_bytes.choice<8>(m_slots.size());
    trace("- environment", std::to_string(index));
    return m_slots[index];
}

Environment& World::anyEnvironment()
{
    const std::size_t index = m_bytes.choice<8>(m_slots.size() + 1);
    trace("- environment", std::to_string(index));
    if (index == m_slots.size())
        return *EnvironmentManager::getInstance()->createOrRetrieve("managed");
    std::unique_ptr<Environment>& environment = m_slots[index].environment;
    if (!environment)
    {
        environment = std::make_unique<Environment>();
        environment->setEnvironmentFor(INTERPRETER_LUA);
    }
    return *m_slots[index].environment;
}

Script& World::anyScript()
{
    const std::size_t index = m_bytes.choice<8>(m_scripts.size() + 1);
    if (index == m_scripts.size())
    {
        const char* const name = m_bytes.numbered<8>(SCRIPT_NAMES);
        m_managedScripts.insert(name);
        return *ScriptManager::getInstance()->createOrRetrieve(name);
    }
    if (!m_scripts[index])
        m_scripts[index] = std::make_unique<Script>();
    return *m_scripts[index];
}

ScriptObjectReference& World::anyReference()
{
    return m_references[m_bytes.choice<8>(m_references.size())];
}

FunctionParameter& World::anyParameter()
{
    return m_parameters[m_bytes.choice<8>(m_parameters.size())];
}

FunctionParameter World::anyValue()
{
    switch (m_bytes.choice<16>(10))
    {
    case 0:
        return FunctionParameter::VOID;
    case 1:
        return m_bytes.flag();
    case 2:
        return static_cast<int>(m_bytes.byte());
    case 3:
        return 1.5F;
    case 4:
        return -1e300;
    case 5:
        return tbMemory::StringView(m_bytes.text(20));
    case 6:
    {
        const bool isOwner = m_bytes.flag();
        HostObject* const object =
            isOwner ? m_objects.make(FATE::AT_MOST_ONCE) : m_objects.anyHostOwned(m_bytes.below(8));
        return FunctionParameter(object, m_bytes.numbered<8>(TYPE_NAMES), isOwner);
    }
    case 7:
        return FunctionParameter(anyReference());
    case 8:
    {
        const auto kind = static_cast<FUNCTION_PARAMETER_TYPE>(m_bytes.choice<16>(11));
        return FunctionParameter::ofType(kind, m_bytes.numbered<8>(TYPE_NAMES));
    }
    default:
        break;
    }
    const FunctionParameter kept = anyParameter();
    m_objects.shareWith(kept.getUserTypeObject(), kept.getType() == PARAM_TYPE_USER_TYPE_OWNED);
    return kept;
}

Function::Callable World::makeCallable()
{
    if (m_bytes.below(16) == 15)
        return {};
    // What a callable captures may call the host when it goes.
    auto token = std::shared_ptr<World>(this, [](World* world) { world->act(); });
    return [this, token](const Parameters& arguments)
    {
        trace("callable");
        for (const FunctionParameter& argument : arguments)
        {
            m_objects.use(argument.getUserTypeObject());
            _keep(argument);
        }
        act();
        return _answer(arguments);
    };
}

UserType::Constructor World::_makeConstructor()
{
    return [this](const Parameters&) -> void*
    {
        trace("constructor");
        act();
        switch (m_bytes.below(16))
        {
        case 14:
            throw std::runtime_error("constructor");
        case 15:
            return nullptr;
        default:
            return m_objects.make(FATE::EXACTLY_ONCE);
        }
    };
}

UserType::Destructor World::makeDestructor()
{
    return [this](void* object)
    {
        trace("destructor");
        m_objects.destroy(object);
        act();
        if (m_bytes.below(16) == 15 && !m_isCompilingScripts)
            throw std::runtime_error("destructor");
    };
}

void World::makeInstantiable(UserType* type)
{
    if (!type)
        return;
    const unsigned int activity = m_activity;
    type->setDestructor(makeDestructor());
    if (activity == m_activity)
        type->setConstructor(_makeConstructor());
}

void World::makeBranded(UserType& type)
{
    const int brand = ++m_brand;
    const unsigned int activity = m_activity;
    const auto expectOwn = [this, brand](void* object)
    {
        if (!m_isSharing)
            m_objects.expectBrand(object, brand);
    };
    const UserType::Destructor destroy = makeDestructor();
    type.setDestructor(
        [expectOwn, destroy](void* object)
        {
            expectOwn(object);
            destroy(object);
        });
    if (activity != m_activity)
        return m_objects.allowLeaks(); // the type may be gone
    UserTypeFieldDescriptor field;
    field.name = "x";
    field.getter = [expectOwn](void* object)
    {
        expectOwn(object);
        return FunctionParameter(1);
    };
    type.setField(field);
    if (Function* const method = activity == m_activity ? type.setMethod("m", false) : nullptr)
    {
        method->setFunction(
            [expectOwn](const Parameters& arguments)
            {
                expectOwn(arguments[0].getUserTypeObject());
                return FunctionParameter::VOID;
            });
    }
    const UserType::Constructor construct = _makeConstructor();
    if (activity != m_activity)
        return;
    type.setConstructor(
        [construct, brand](const Parameters& arguments)
        {
            void* const object = construct(arguments);
            if (object)
                static_cast<HostObject*>(object)->brand = brand;
            return object;
        });
}

void World::compileScripts()
{
    m_isCompilingScripts = m_isCompilingScripts || m_isFirstCall;
}

void World::act()
{
    ++m_activity;
    if (m_depth >= MAX_DEPTH || m_isClosing)
        return;
    ++m_depth;
    for (std::size_t count = m_bytes.below(MAX_CALLS_AT_ONCE + 1); count > 0; --count)
    {
        // No byte chooses, so that kept inputs mean what they meant.
        if (m_activity % 2 == 0)
            _performOne();
        else
            _performInHandler();
    }
    --m_depth;
}

// While the host handles an exception of its own, the library enters the interpreter in another
// way.
void World::_performInHandler()
{
    try
    {
        throw std::runtime_error("handled");
    }
    catch (const std::runtime_error&)
    {
        _performOne();
    }
}

void World::trace(const char* what, const std::string& detail) const
{
    if (m_isTraced)
        std::fprintf(stderr, "%*s%s %s\n", 2 * m_depth, "", what, detail.c_str());
}

void World::log(const tbLog::StringView& message, const tbLog::StringView& /*source*/)
{
    trace("log:", std::string(message));
    if (m_bytes.below(4) != 3)
        return;
    act();
    if (m_bytes.below(8) == 7)
        throw std::runtime_error("receiver");
}

FunctionParameter World::_answer(const Parameters& arguments)
{
    switch (m_bytes.choice<16>(8))
    {
    case 0:
        return FunctionParameter::VOID;
    case 1:
        throw std::string("host");
    case 2:
        throw std::runtime_error("host");
    case 3:
        if (m_bytes.below(4) == 3)
            throw 1;
        break;
    case 4:
    case 5:
        if (!arguments.empty())
        {
            const FunctionParameter& chosen = arguments[m_bytes.below(arguments.size())];
            const auto* const object = static_cast<HostObject*>(chosen.getUserTypeObject());
            const bool isSoleOwner = object && object->fate == FATE::EXACTLY_ONCE &&
                                     !object->isAliased && object->destructions == 0;
            const bool isOwned = chosen.getType() == PARAM_TYPE_USER_TYPE_OWNED;
            if (!isOwned || !isSoleOwner)
                m_objects.shareWith(chosen.getUserTypeObject(), isOwned);
            return chosen;
        }
        break;
    default:
        break;
    }
    return anyValue();
}

void World::_keep(const FunctionParameter& argument)
{
    switch (m_bytes.choice<8>(4))
    {
    case 1:
        anyParameter() = argument;
        break;
    case 2:
        anyReference() = argument.getScriptObject();
        break;
    case 3:
        if (m_views.size() < MAX_KEPT)
            m_views.push_back(argument.getUserTypeView());
        break;
    default:
        break;
    }
}

void World::_performOne()
{
    if (m_bytes.empty() || --m_budget < 0)
        return;
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &performEnvironmentCall},
         {1, &performGlobalCall},
         {2, &performBindingCall},
         {3, &performUserTypeCall},
         {4, &performNamespaceCall},
         {5, &performScriptCall},
         {6, &performScriptCall},
         {7, &performValueCall},
         {8, &performBytesCall},
         {9, &performManagerCall},
         {10, &performTypedCall}});
    m_bytes.caseOf(CALLS)(*this);
    m_isFirstCall = false;
}

void World::_checkNames() const
{
    for (const EnvironmentSlot& slot : m_slots)
    {
        if (!slot.environment)
            continue;
        for (const std::string& name : slot.functions)
            require(slot.environment->isFuncSet(name), "a declared function stays declared");
        for (const std::string& name : slot.userTypes)
            require(slot.environment->isUserTypeSet(name), "a declared type stays declared");
        for (const std::string& name : slot.namespaces)
            require(slot.environment->isNamespaceSet(name), "a declared namespace stays declared");
    }
}

void World::_closeAll()
{
    m_isClosing = m_bytes.flag();
    for (int round = 0; round < 2; ++round) // the first one may make new ones
    {
        for (EnvironmentSlot& slot : m_slots)
        {
            ++slot.generation;
            const std::unique_ptr<Environment> dying = std::move(slot.environment);
        }
        EnvironmentManager::getInstance()->kill();
        m_isClosing = true;
    }
    for (const ScriptObjectReference& reference : m_references)
    {
        require(
            FunctionParameter(reference).getType() == FunctionParameter(reference).getType(),
            "a kept reference can be looked at");
    }
    ScriptManager::getInstance()->kill();
    LogManager::getInstance()->kill();
    require(
        !EnvironmentManager::getInstanceIfExisting() && !ScriptManager::getInstanceIfExisting() &&
            !LogManager::getInstanceIfExisting(),
        "a killed manager is gone");
}

} // namespace tbScripts::fuzz
