#include "support/ParameterKinds.h"

#include "support/FakeScriptObjects.h"

#include <sstream>
#include <string_view>

namespace tbScripts::test
{

int door = 0;

namespace
{

FunctionParameter makeReference(FUNCTION_PARAMETER_TYPE type)
{
    return FunctionParameter(ScriptObjectReference(new FakeReference(type)));
}

} // namespace

void PrintTo(const ParameterKind& kind, std::ostream* stream)
{
    *stream << kind.row;
}

const std::vector<ParameterKind>& allParameterKinds()
{
    static const std::vector<ParameterKind> KINDS = {
        {"Void", 0, [] { return FunctionParameter(); }, "0"},
        {"Bool", 1, [] { return FunctionParameter(true); }, "1 bool"},
        {"Int", 2, [] { return FunctionParameter(7); }, "2 int:7"},
        {"Float", 3, [] { return FunctionParameter(1.5F); }, "3 float:1.5"},
        {"Double", 4, [] { return FunctionParameter(2.5); }, "4 double:2.5"},
        {"String", 5, [] { return FunctionParameter("text"); }, "5 string:text"},
        {"OwnedUserType",
         6,
         [] { return FunctionParameter(&door, "Door", true); },
         "6 type:Door object:door"},
        {"UserType",
         7,
         [] { return FunctionParameter(&door, "Door", false); },
         "7 type:Door object:door"},
        {"ScriptFunction",
         8,
         [] { return makeReference(PARAM_TYPE_SCRIPT_FUNCTION); },
         "8 reference:8"},
        {"ScriptObject",
         9,
         [] { return makeReference(PARAM_TYPE_SCRIPT_OBJECT); },
         "9 reference:9"},
        {"NumberTen", 10, [] { return parameterOfNumber(10); }, "10"},
        {"Number255", 255, [] { return parameterOfNumber(255); }, "255"},
        {"HighestNumber", 4294967295, [] { return parameterOfNumber(4294967295); }, "4294967295"}};
    return KINDS;
}

FunctionParameter parameterOfNumber(unsigned number)
{
    return FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(number));
}

std::string describe(const FunctionParameter& parameter)
{
    std::ostringstream text;
    text << static_cast<unsigned>(parameter.getType());
    if (parameter.getBool())
        text << " bool";
    if (parameter.getInt() != 0)
        text << " int:" << parameter.getInt();
    if (parameter.getFloat() != 0.0F)
        text << " float:" << parameter.getFloat();
    if (parameter.getDouble() != 0.0)
        text << " double:" << parameter.getDouble();
    if (!parameter.getString().isNull())
        text << " string:" << std::string_view(parameter.getString());
    if (!parameter.getUserTypeName().isNull())
        text << " type:" << std::string_view(parameter.getUserTypeName());
    if (parameter.getUserTypeObject())
        text << " object:" << (parameter.getUserTypeObject() == &door ? "door" : "another");
    if (parameter.getScriptObject().getInterpreterReference())
        text << " reference:" << static_cast<unsigned>(parameter.getScriptObject().getType());
    return text.str();
}

} // namespace tbScripts::test
