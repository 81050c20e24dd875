#include "soak/SoakLoad.h"

#include "support/InterpreterCalls.h"

#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/Function.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptManager.h>
#include <tbScripts/UserType.h>

#include <array>
#include <iostream>
#include <string>

namespace tbScripts::test
{

namespace
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

constexpr std::size_t KEPT_REFERENCES = 100;

constexpr const char* LIBRARY = R"(
    state = state or {units = {}, log = {}}
    function step(n)
        local sum = 0
        for i = 1, n do
            local unit = world.Unit.new()
            unit.life = i
            unit:hurt(1)
            sum = sum + unit.life + twice(i)
            state.units[i] = i % 10 == 0 and unit or {id = i, name = 'unit ' .. i, pos = {x = i}}
        end
        state.log[#state.log % 50 + 1] = ('sum %d'):format(sum)
        return sum
    end
    function fail() error({}) end
    function make(i) return function() return i end end
)";

struct Unit
{
    double life = 0.0;
    static int living;

    Unit() { ++living; }

    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;

    ~Unit() { --living; }
};

int Unit::living = 0;

Unit& unitIn(const Parameters& parameters)
{
    return *static_cast<Unit*>(parameters[0].getUserTypeObject());
}

void bindUnits(Environment& environment)
{
    UserType& type = *environment.setUserType("world::Unit");
    type.setConstructor([](const Parameters&) { return new Unit; });
    type.setDestructor([](void* object) { delete static_cast<Unit*>(object); });
    Function& hurt = *type.setMethod("hurt", false);
    hurt.addParameter(PARAM_TYPE_DOUBLE);
    hurt.setFunction(
        [](const Parameters& parameters)
        {
            unitIn(parameters).life -= parameters[1].getDouble();
            return FunctionParameter::VOID;
        });
    UserTypeFieldDescriptor life;
    life.name = "life";
    life.type = PARAM_TYPE_DOUBLE;
    life.getter = [](void* object) { return static_cast<Unit*>(object)->life; };
    life.setter = [](const Parameters& parameters)
    { unitIn(parameters).life = parameters[1].getDouble(); };
    type.setField(life);
}

bool run(Environment& environment, const std::string& sources)
{
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    return script.load() && environment.execute(script);
}

double step(Environment& environment, int units)
{
    std::array<FunctionParameter, 1> outputs{0.0};
    Parameters view = outputs;
    environment.callScriptFunction(environment.getScriptFunction("step"), {units}, view);
    return outputs[0].getDouble();
}

bool expect(bool isRight, const char* what)
{
    if (!isRight)
        std::cerr << "soak: wrong: " << what << '\n';
    return isRight;
}

} // namespace

SoakLoad::SoakLoad()
{
    m_environment.setEnvironmentFor(INTERPRETER_LUA);
    m_state = InterpreterCalls::lastOpenedState();
    m_script.setTargetInterpreter(INTERPRETER_LUA);
    _bind();
}

SoakLoad::~SoakLoad() = default;

bool SoakLoad::runRound()
{
    ++m_rounds;
    _bind();
    return expect(_reload(), "a script that is loaded anew") &&
           expect(_callAndKeep(), "calls and references") &&
           expect(_writeAndRead(), "bytes of a value") &&
           expect(_comeAndGo(), "environments and scripts that come and go");
}

SoakLoad::Taken SoakLoad::countTaken()
{
    run(m_environment, "jit.flush()"); // how much is compiled at the moment is chance
    m_environment.requestGarbageCollection();
    Taken taken{0, lua_gettop(m_state), 0.0};
    constexpr double KILOBYTE = 1024.0;
    taken.kilobytes = lua_gc(m_state, LUA_GCCOUNT, 0) + lua_gc(m_state, LUA_GCCOUNTB, 0) / KILOBYTE;
    lua_pushnil(m_state);
    while (lua_next(m_state, LUA_REGISTRYINDEX))
    {
        // Free slots hold the number of the next free one.
        const bool isSlot = lua_type(m_state, -2) == LUA_TNUMBER;
        taken.references += isSlot && lua_type(m_state, -1) != LUA_TNUMBER ? 1 : 0;
        lua_pop(m_state, 1);
    }
    return taken;
}

int SoakLoad::countObjects()
{
    return Unit::living;
}

void SoakLoad::_bind()
{
    Function& twice = *m_environment.setFunc("twice");
    twice.addParameter(PARAM_TYPE_DOUBLE);
    twice.setFunction([](const Parameters& parameters) { return parameters[0].getDouble() * 2.0; });
    bindUnits(m_environment);
}

bool SoakLoad::_callAndKeep()
{
    constexpr int UNITS = 50;
    bool isRight = step(m_environment, UNITS) == UNITS * (UNITS + 1) / 2 * 3 - UNITS;
    tbMemory::BufferView<FunctionParameter> none;
    const ScriptObjectReference fail = m_environment.getScriptFunction("fail");
    isRight = !m_environment.callScriptFunction(fail, {}, none) && isRight;

    const ScriptObjectReference make = m_environment.getScriptFunction("make");
    for (int i = 0; i < static_cast<int>(KEPT_REFERENCES); ++i)
    {
        std::array<FunctionParameter, 1> made{
            FunctionParameter::ofType(PARAM_TYPE_SCRIPT_FUNCTION)};
        Parameters view = made;
        isRight = m_environment.callScriptFunction(make, {i}, view) && isRight;
        m_kept.push_back(made[0].getScriptObject());
    }
    if (m_kept.size() > 3 * KEPT_REFERENCES)
        m_kept.clear();
    return isRight;
}

bool SoakLoad::_writeAndRead()
{
    const ScriptObjectReference state = m_environment.getVar("state");
    const tbMemory::Buffer bytes = m_environment.serializeScriptObject(state, false);
    m_environment.setVar("copy", m_environment.deserializeScriptObject(bytes));
    const bool isRight = run(m_environment, "assert(#copy.units == #state.units) copy = nil");
    return isRight && !bytes.empty();
}

bool SoakLoad::_comeAndGo()
{
    m_switched.setEnvironmentFor(INTERPRETER_LUA);
    bindUnits(m_switched);
    bool isRight = run(m_switched, "unit = world.Unit.new() unit.life = 7");

    EnvironmentManager& environments = *EnvironmentManager::getInstance();
    Environment& managed = *environments.createOrRetrieve("managed");
    managed.setEnvironmentFor(INTERPRETER_LUA);
    bindUnits(managed);
    isRight =
        run(managed, "units = {} for i = 1, 20 do units[i] = world.Unit.new() end") && isRight;
    environments.kill();

    ScriptManager& scripts = *ScriptManager::getInstance();
    const std::string name = "script " + std::to_string(m_rounds % 7);
    scripts.createOrRetrieve(name)->setSources("x = 1");
    scripts.rename(name, "renamed");
    isRight = scripts.get("renamed") != nullptr && isRight;
    scripts.kill();
    return isRight;
}

bool SoakLoad::_reload()
{
    m_script.setSources(LIBRARY + ("rounds = " + std::to_string(m_rounds)));
    bool isRight = m_script.load();
    for (int i = 0; i < 3; ++i)
        isRight = m_environment.execute(m_script) && isRight;
    return isRight && m_environment.getVar("rounds", 0) == static_cast<int>(m_rounds);
}

} // namespace tbScripts::test
