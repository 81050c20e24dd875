#include "sources/Bindings.h"

#include <tbScripts/Function.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <cstddef>
#include <string>

namespace tbScripts::fuzz
{

namespace
{

using Parameters = tbMemory::BufferView<FunctionParameter>;

constexpr std::size_t MAX_KEPT = 32;
constexpr const char* TYPE_NAME = "Vec";

} // namespace

// The hook raises once it is due, and from then on at every instruction: a script that catches the
// error gets no further. `collectgarbage` stays; without it fewer finalisers would run.
const char* const Bindings::PRELUDE = R"(
jit.off()

local setHook, instructions = debug.sethook, 0
local function stop()
    setHook(function() error('too long', 0) end, '', 1)
    error('too long', 0)
end
setHook(stop, '', 20000)

local maker, resumer = coroutine.create, coroutine.resume
local depth = 0
local function leave(...)
    depth = depth - 1
    return ...
end
coroutine.resume = function(thread, ...)
    if depth >= 20 then error('too deep', 0) end
    depth = depth + 1
    return leave(resumer(thread, ...))
end
local function pass(isDone, ...)
    if not isDone then error((...), 0) end
    return ...
end
coroutine.wrap = function(body)
    local thread = maker(body)
    return function(...) return pass(coroutine.resume(thread, ...)) end
end

local loader, repeater = loadstring, string.rep
loadstring = function(text, name)
    if type(text) ~= 'string' or text:byte() == 27 then error('no text', 0) end
    return loader(text, name)
end
load = loadstring
string.rep = function(text, count, separator)
    if type(count) ~= 'number' or count > 1000 then error('too long', 0) end
    return repeater(text, count, separator)
end

string.dump, print, dofile, loadfile, require, module, newproxy = nil
os, io, ffi, package, debug, jit = nil
state = { x = 1, list = { 1, 2, 3 } }
)";

void Bindings::declareIn(Environment& environment)
{
    _declareFunctions(environment);
    _declareType(environment);
    _declareNamespace(environment);
    HostObject* const home = m_objects.make(FATE::ANY); // a script may say that it owns it
    home->isAliased = true;
    environment.setObject("home", TYPE_NAME, home);
}

FunctionParameter Bindings::makeOwnedInstance()
{
    return FunctionParameter(m_objects.make(FATE::AT_MOST_ONCE), TYPE_NAME, true);
}

void Bindings::_declareFunctions(Environment& environment)
{
    Function* const add = environment.setFunc("add");
    add->addParameter(PARAM_TYPE_DOUBLE);
    add->addParameter(PARAM_TYPE_INT);
    add->setFunction([](const Parameters& arguments)
                     { return arguments[0].getDouble() + arguments[1].getInt(); });

    Function* const echo = environment.setFunc("echo");
    echo->addParameter(PARAM_TYPE_STRING);
    echo->addParameter(PARAM_TYPE_BOOL);
    echo->setFunction(
        [](const Parameters& arguments)
        {
            if (arguments[1].getBool())
                throw std::string(std::string_view(arguments[0].getString()));
            return arguments[0];
        });

    Function* const call = environment.setFunc("call");
    call->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    call->addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    call->setFunction(
        [&environment](const Parameters& arguments)
        {
            FunctionParameter result = FunctionParameter::ofType(PARAM_TYPE_SCRIPT_OBJECT);
            Parameters results(&result, 1);
            environment.callScriptFunction(arguments[0].getScriptObject(), {arguments[1]}, results);
            return result;
        });

    Function* const keep = environment.setFunc("keep");
    keep->addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    keep->setFunction(
        [this](const Parameters& arguments) -> FunctionParameter
        {
            m_kept.push_back(arguments[0].getScriptObject());
            if (m_kept.size() <= MAX_KEPT)
                return FunctionParameter::VOID;
            const ScriptObjectReference oldest = m_kept.front();
            m_kept.pop_front();
            return oldest;
        });
}

void Bindings::_declareType(Environment& environment)
{
    UserType* const vec = environment.setUserType(TYPE_NAME);
    vec->setConstructor([this](const Parameters&) { return m_objects.make(FATE::AT_MOST_ONCE); });
    vec->setDestructor([this](void* object) { m_objects.destroy(object); });

    UserTypeFieldDescriptor x;
    x.name = "x";
    x.type = PARAM_TYPE_DOUBLE;
    x.getter = [this](void* object) -> FunctionParameter
    {
        m_objects.use(object);
        return static_cast<HostObject*>(object)->value;
    };
    x.setter = [this](const Parameters& arguments)
    { _objectIn(arguments[0]).value = arguments[1].getDouble(); };
    vec->setField(x);

    UserTypeArrayDescriptor elements;
    elements.type = PARAM_TYPE_DOUBLE;
    elements.read = [this](const Parameters& arguments) -> FunctionParameter
    { return _objectIn(arguments[0]).value + arguments[1].getInt(); };
    elements.write = [this](const Parameters& arguments)
    { _objectIn(arguments[0]).value = arguments[2].getDouble(); };
    vec->setArrayAccess(elements);

    Function* const scaled = vec->setMethod("scaled", false);
    scaled->addParameter(PARAM_TYPE_DOUBLE);
    scaled->setFunction(
        [this](const Parameters& arguments)
        {
            _objectIn(arguments[0]).value *= arguments[1].getDouble();
            return makeOwnedInstance();
        });
    vec->setStaticMethod("of")->setFunction([this](const Parameters&)
                                            { return makeOwnedInstance(); });
    _declareOperators(*vec);
}

void Bindings::_declareOperators(UserType& type)
{
    type.setOperator(BUILT_IN_FUNCTION::ADD)
        ->setFunction(
            [this](const Parameters& operands)
            {
                _objectIn(operands[0]).value += _objectIn(operands[1]).value;
                return makeOwnedInstance();
            });
    type.setOperator(BUILT_IN_FUNCTION::EQ)
        ->setFunction(
            [this](const Parameters& operands) -> FunctionParameter
            { return _objectIn(operands[0]).value == _objectIn(operands[1]).value; });
    type.setOperator(BUILT_IN_FUNCTION::LT)
        ->setFunction(
            [this](const Parameters& operands) -> FunctionParameter
            { return _objectIn(operands[0]).value < _objectIn(operands[1]).value; });
    type.setOperator(BUILT_IN_FUNCTION::TOSTRING)
        ->setFunction(
            [this](const Parameters& operands) -> FunctionParameter
            { return std::to_string(_objectIn(operands[0]).value).c_str(); });
}

void Bindings::_declareNamespace(Environment& environment)
{
    Namespace* const sky = environment.setNamespace("world::sky");
    sky->setVar("height", 80.0);
    Function* const rain = sky->setFunction("rain");
    rain->addParameter(PARAM_TYPE_FLOAT);
    rain->setFunction([](const Parameters& arguments) { return arguments[0]; });
    environment.setUserType("world::sky::Cloud");
}

HostObject& Bindings::_objectIn(const FunctionParameter& parameter)
{
    void* const object = parameter.getUserTypeObject();
    if (!object)
        throw std::string("expected a Vec, got nil");
    m_objects.use(object);
    return *static_cast<HostObject*>(object);
}

} // namespace tbScripts::fuzz
