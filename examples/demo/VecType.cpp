#include "demo/VecType.h"

#include "demo/Binding.h"

#include <sstream>
#include <string>

namespace demo
{

namespace
{

using tbScripts::BUILT_IN_FUNCTION;
using tbScripts::FunctionParameter;
using tbScripts::UserType;

using tbScripts::PARAM_TYPE_DOUBLE;

std::string describe(const Vec& vec)
{
    std::ostringstream text;
    text << '(' << vec.x << ", " << vec.y << ')';
    return text.str();
}

// Lua counts from 1.
double& elementOf(Vec& vec, int index)
{
    if (index != 1 && index != 2)
        throw "a Vec has the elements 1 and 2, but no " + std::to_string(index);
    return index == 1 ? vec.x : vec.y;
}

// Vec.new() needs a constructor, which receives no arguments. A static method creates vectors from
// arguments.
void declareMaking(UserType& type, VecStore& vecs)
{
    type.setConstructor([&vecs](const Parameters&) { return vecs.make(Vec()); });
    type.setDestructor([&vecs](void* vec) { vecs.destroy(vec); });
    define(
        type.setStaticMethod("of"),
        {PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [&vecs](const Parameters& arguments) {
            return newVec(vecs, {arguments[0].getDouble(), arguments[1].getDouble()});
        });
}

void declareField(UserType& type, VecStore& vecs, const char* name, double Vec::*member)
{
    tbScripts::UserTypeFieldDescriptor field;
    field.name = name;
    field.type = PARAM_TYPE_DOUBLE;
    // A getter gets the object itself. It should not throw: without a value the field is nil.
    field.getter = [&vecs, member](void* object)
    {
        const Vec* const vec = vecs.find(object);
        return vec ? FunctionParameter(vec->*member) : FunctionParameter::VOID;
    };
    field.setter = [&vecs, member](const Parameters& arguments)
    { vecIn(vecs, arguments[0]).*member = arguments[1].getDouble(); };
    type.setField(field);
}

void declareElements(UserType& type, VecStore& vecs)
{
    tbScripts::UserTypeArrayDescriptor elements;
    elements.type = PARAM_TYPE_DOUBLE;
    elements.read = [&vecs](const Parameters& arguments)
    { return elementOf(vecIn(vecs, arguments[0]), arguments[1].getInt()); };
    elements.write = [&vecs](const Parameters& arguments)
    { elementOf(vecIn(vecs, arguments[0]), arguments[1].getInt()) = arguments[2].getDouble(); };
    type.setArrayAccess(elements);
}

// An operator has its parameters already: one vector, or two.
void declareOperators(UserType& type, VecStore& vecs)
{
    const auto declareBinary = [&](BUILT_IN_FUNCTION op, auto compute)
    {
        define(
            type.setOperator(op),
            {},
            [&vecs, compute](const Parameters& operands)
            { return compute(vecIn(vecs, operands[0]), vecIn(vecs, operands[1])); });
    };
    using V = const Vec&;
    declareBinary(BUILT_IN_FUNCTION::ADD, [&vecs](V a, V b) { return newVec(vecs, a + b); });
    declareBinary(BUILT_IN_FUNCTION::SUB, [&vecs](V a, V b) { return newVec(vecs, a - b); });
    declareBinary(BUILT_IN_FUNCTION::EQ, [](V a, V b) { return a == b; });
    // Vectors are ordered by length. a <= b is asked as not (b < a) where there is no LE.
    declareBinary(BUILT_IN_FUNCTION::LT, [](V a, V b) { return length(a) < length(b); });
    declareBinary(
        BUILT_IN_FUNCTION::CONCAT,
        [](V a, V b) { return FunctionParameter(describe(a) + " to " + describe(b)); });

    define(
        type.setOperator(BUILT_IN_FUNCTION::UNM),
        {},
        [&vecs](const Parameters& operands) { return newVec(vecs, -vecIn(vecs, operands[0])); });
    define(
        type.setOperator(BUILT_IN_FUNCTION::TOSTRING),
        {},
        [&vecs](const Parameters& operands)
        { return FunctionParameter(describe(vecIn(vecs, operands[0]))); });
}

// A method has one parameter already: the vector that it is called on.
void declareMethods(UserType& type, VecStore& vecs)
{
    define(
        type.setMethod("length", false),
        {},
        [&vecs](const Parameters& arguments) { return length(vecIn(vecs, arguments[0])); });
    define(
        type.setMethod("scaled", false),
        {PARAM_TYPE_DOUBLE},
        [&vecs](const Parameters& arguments)
        { return newVec(vecs, vecIn(vecs, arguments[0]) * arguments[1].getDouble()); });
    define(
        type.setMethod("normalised", false),
        {},
        [&vecs](const Parameters& arguments)
        {
            const Vec& vec = vecIn(vecs, arguments[0]);
            return newVec(vecs, length(vec) > 0.0 ? vec * (1.0 / length(vec)) : vec);
        });
    // `true` lets it return the vector that it was called on, and not a second owner of it:
    // sum:add(a):add(b).
    define(
        type.setMethod("add", true),
        {{tbScripts::PARAM_TYPE_USER_TYPE, VEC_TYPE}},
        [&vecs](const Parameters& arguments)
        {
            Vec& vec = vecIn(vecs, arguments[0]);
            vec = vec + vecIn(vecs, arguments[1]);
            return arguments[0];
        });
}

} // namespace

void declareVec(tbScripts::Environment& environment, VecStore& vecs)
{
    UserType* const type = environment.setUserType(VEC_TYPE); // declares the namespaces too
    if (!type)
        return;
    declareMaking(*type, vecs);
    declareField(*type, vecs, "x", &Vec::x);
    declareField(*type, vecs, "y", &Vec::y);
    declareElements(*type, vecs);
    declareOperators(*type, vecs);
    declareMethods(*type, vecs);
}

FunctionParameter newVec(VecStore& vecs, const Vec& value)
{
    constexpr bool IS_OWNED_BY_SCRIPT = true;
    return FunctionParameter(vecs.make(value), VEC_TYPE, IS_OWNED_BY_SCRIPT);
}

// The library has checked the type; nil fits every one and is a null object.
Vec& vecIn(const VecStore& vecs, const FunctionParameter& parameter)
{
    Vec* const vec = vecs.find(parameter.getUserTypeObject());
    if (!vec)
        throw std::string("expected a Vec, got nil or one that is gone");
    return *vec;
}

} // namespace demo
