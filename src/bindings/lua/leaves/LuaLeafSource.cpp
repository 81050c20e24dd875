// Why: docs/decisions/0034-compiled-leaves.md

#include "bindings/lua/leaves/LuaLeafSource.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace tbScripts::lua
{

namespace
{

using typed::KIND;

/// What becomes of a value of one kind. In the texts `$` is the argument, `@` the object that it
/// is an instance of, and `%` its number.
struct Conversion
{
    char letter;
    const char* result;    // the type for the compiler of C; null: no result
    const char* parameter; // the types
    const char* condition; // under which the leaf can take the argument
    const char* value;     // what the leaf takes
    const char* read;      // of a member; null: no member
    const char* write;
};

// In the order of KIND. Kinds behind these have no leaf.
//
// A `bool` argument that is nil may be one that is missing. Numbers of C may be NaN with other bits
// than the interpreter's. Some of them are values of another kind for it, and all of those begin
// with more ones than any number that is not NaN.
constexpr std::array CONVERSIONS{
    Conversion{'n', "void", nullptr, nullptr, nullptr, nullptr, nullptr},
    Conversion{
        'b',
        "int",
        ", int",
        "$ ~= nil",
        "$ and 1 or 0",
        "return cast(byte_t, @)[place] ~= 0",
        "cast(byte_t, @)[place] = $ and 1 or 0"},
    Conversion{
        'i',
        "int",
        ", int",
        "type($) == 'number' and $ >= -2147483648 and $ <= 2147483647",
        "$",
        "return cast(int_t, @)[place]",
        "cast(int_t, @)[place] = $"},
    Conversion{
        'f',
        "float",
        ", float",
        "type($) == 'number'",
        "$",
        "if cast(pair_t, @)[top] < 0xff80 then return cast(float_t, @)[place] end",
        "cast(float_t, @)[place] = $"},
    Conversion{
        'd',
        "double",
        ", double",
        "type($) == 'number'",
        "$",
        "if cast(pair_t, @)[top] < 0xfff0 then return cast(double_t, @)[place] end",
        "cast(double_t, @)[place] = $"},
    Conversion{
        't', "void", ", const char *, size_t", "type($) == 'string'", "$, #$", nullptr, nullptr},
    Conversion{'o', nullptr, ", void *", "@", "@", nullptr, nullptr},
    Conversion{
        'p',
        nullptr,
        ", void *",
        "(@ or $ == nil and select and select('#', ...) >= %)",
        "@",
        nullptr,
        nullptr}};

// That of an object that may be missing too.
constexpr Conversion OPTIONAL_OBJECT{
    'q', nullptr, ", void *", "(@ or $ == nil)", "@", nullptr, nullptr};

// For the first two names see LuaCompilation.h. Upvalues are told by these names, which all leaves
// of a state share up to `pair_t`.
constexpr const char* HEAD = "local fast, compiles, guard, object, type, select, string, cast, "
                             "out, int_t, float_t, double_t, byte_t, "
                             "pair_t, slow, entry, living, place, top";

// Null if there is none.
const Conversion* findConversion(const typed::Parameter& parameter)
{
    const auto index = static_cast<std::size_t>(parameter.kind);
    if (parameter.isOptional)
        return parameter.kind == KIND::OBJECT_OR_NIL ? &OPTIONAL_OBJECT : nullptr;
    return index < CONVERSIONS.size() ? &CONVERSIONS[index] : nullptr;
}

bool isObject(const typed::Parameter& parameter)
{
    return parameter.kind == KIND::OBJECT || parameter.kind == KIND::OBJECT_OR_NIL;
}

std::string argument(int number)
{
    return "a" + std::to_string(number);
}

std::string object(int number)
{
    return "o" + std::to_string(number);
}

std::string table(int number)
{
    return OWN_TABLE + std::to_string(number);
}

std::string fill(std::string_view pattern, int number)
{
    std::string text;
    for (const char character : pattern)
    {
        if (character == '$')
            text += argument(number);
        else if (character == '@')
            text += object(number);
        else if (character == '%')
            text += std::to_string(number);
        else
            text += character;
    }
    return text;
}

std::string checkFast(bool hasWord)
{
    return hasWord ? "if fast and compiles(true) and living[0] ~= 0 then "
                   : "if fast and compiles(true) then ";
}

std::string findObject(int number)
{
    return "local " + object(number) + " = object(" + argument(number) + ", " + table(number) +
           ") ";
}

std::string callAndReturn(KIND result, const std::string& arguments)
{
    const std::string call = "entry(guard" + arguments;
    if (result == KIND::NOTHING)
        return call + ") return ";
    if (result == KIND::BOOL)
        return "return " + call + ") ~= 0 ";
    if (result != KIND::TEXT)
        return "return " + call + ") ";
    // What is too long for a string of the interpreter fails where all such texts fail.
    return call + ", out) if out.data == nil then return nil end "
                  "if out.rest == 0 and out.size >= 0 then return string(out.data, out.size) end ";
}

LuaLeafSource describeMember(
    KIND kind, bool hasWord, char use, const char* (*findAccess)(const Conversion& conversion))
{
    const Conversion* const conversion = findConversion({kind});
    const char* const access = conversion ? findAccess(*conversion) : nullptr;
    if (!access)
        return {};
    const bool isWrite = use == 'W';
    // The value is written, so it stands for the object's own name in the text.
    std::string condition = object(1);
    if (isWrite && kind != KIND::BOOL)
        condition += " and " + fill(conversion->condition, 1);
    std::string accessed = fill(access, 1);
    const std::string parameters = isWrite ? "self, a1" : "self";
    LuaLeafSource source;
    source.key = {hasWord ? 'w' : '-', use, conversion->letter};
    source.text = std::string(HEAD) + ", T1 = ... return function(" + parameters + ") " +
                  checkFast(hasWord) + "local o1 = object(self, T1) if " + condition + " then " +
                  accessed + (isWrite ? " return" : "") + " end end return slow(" + parameters +
                  ") end";
    return source;
}

} // namespace

LuaLeafSource describeLeaf(const typed::Signature& signature, bool hasWord)
{
    constexpr int MOST_ARGUMENTS = 14; // of the C function there are up to twice as many
    const Conversion* const result = findConversion(signature.parameters[0]);
    if (!result || !result->result || signature.count > MOST_ARGUMENTS)
        return {};
    LuaLeafSource source;
    source.key = {hasWord ? 'w' : '-', result->letter};
    source.type = std::string(result->result) + " (*)(void *";
    std::string tables;
    std::string names;
    std::string objects;
    std::string conditions;
    std::string arguments;
    for (int i = 1; i <= signature.count; ++i)
    {
        const Conversion* const conversion = findConversion(signature.parameters[i]);
        if (!conversion || !conversion->parameter)
            return {};
        source.key += conversion->letter;
        source.type += conversion->parameter;
        names += (i > 1 ? ", " : "local ") + argument(i);
        conditions += (i > 1 ? " and " : "") + fill(conversion->condition, i);
        arguments += ", " + fill(conversion->value, i);
        if (!isObject(signature.parameters[i]))
            continue;
        tables += ", " + table(i);
        objects += findObject(i);
    }
    const KIND resultKind = signature.parameters[0].kind;
    source.type += resultKind == KIND::TEXT ? ", void *)" : ")";
    source.text = HEAD + tables + " = ... return function(...) " + checkFast(hasWord) +
                  (names.empty() ? "" : names + " = ... ") + objects + "if " +
                  (conditions.empty() ? "true" : conditions) + " then " +
                  callAndReturn(resultKind, arguments) + "end end return slow(...) end";
    return source;
}

LuaLeafSource describeReader(typed::KIND kind, bool hasWord)
{
    return describeMember(
        kind, hasWord, 'R', [](const Conversion& conversion) { return conversion.read; });
}

LuaLeafSource describeWriter(typed::KIND kind, bool hasWord)
{
    return describeMember(
        kind, hasWord, 'W', [](const Conversion& conversion) { return conversion.write; });
}

} // namespace tbScripts::lua
