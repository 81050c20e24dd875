#include "support/GlobalOperations.h"

namespace tbScripts::test
{

namespace
{

int hostObject = 0;

std::string textOf(bool value)
{
    return value ? "true" : "false";
}

std::string textOf(const ScriptObjectReference& reference)
{
    return reference.getInterpreterReference() ? "reference" : "empty";
}

std::string textOf(const void* pointer)
{
    return pointer ? "pointer" : "null";
}

std::string textOf(const tbMemory::StringView& text)
{
    return std::string(text.data(), text.size());
}

std::vector<GlobalOperation> readingOperations()
{
    return {
        {"GetBool",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getVar(global, true)); },
         "true"},
        {"GetInt",
         false,
         [](Environment& environment, const char* global)
         { return std::to_string(environment.getVar(global, -7)); },
         "-7"},
        {"GetFloat",
         false,
         [](Environment& environment, const char* global)
         { return std::to_string(environment.getVar(global, 0.5F)); },
         "0.500000"},
        {"GetDouble",
         false,
         [](Environment& environment, const char* global)
         { return std::to_string(environment.getVar(global, 2.25)); },
         "2.250000"},
        {"GetCString",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getVar(global, "default")); },
         "default"},
        {"GetStringView",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getVar(global, tbMemory::StringView("view"))); },
         "view"},
        {"GetReference",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getVar(global)); },
         "empty"},
        {"IsVarSet",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.isVarSet(global)); },
         "false"},
        {"GetObject",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getObject(global, "Type")); },
         "null"},
        {"GetObjectOfAnyType",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getObject(global, tbMemory::StringView())); },
         "null"},
        {"GetScriptFunction",
         false,
         [](Environment& environment, const char* global)
         { return textOf(environment.getScriptFunction(global)); },
         "empty"}};
}

template <typename Value>
std::string setTo(Environment& environment, const char* global, const Value& value)
{
    environment.setVar(global, value);
    return "done";
}

std::vector<GlobalOperation> writingOperations()
{
    return {
        {"SetBool",
         true,
         [](Environment& environment, const char* global)
         { return setTo(environment, global, true); },
         "done"},
        {"SetInt",
         true,
         [](Environment& environment, const char* global) { return setTo(environment, global, 3); },
         "done"},
        {"SetFloat",
         true,
         [](Environment& environment, const char* global)
         { return setTo(environment, global, 1.5F); },
         "done"},
        {"SetDouble",
         true,
         [](Environment& environment, const char* global)
         { return setTo(environment, global, 2.5); },
         "done"},
        {"SetCString",
         true,
         [](Environment& environment, const char* global)
         {
             environment.setVar(global, "text");
             return std::string("done");
         },
         "done"},
        {"SetStringView",
         true,
         [](Environment& environment, const char* global)
         { return setTo(environment, global, tbMemory::StringView("view")); },
         "done"},
        {"SetReference",
         true,
         [](Environment& environment, const char* global)
         { return setTo(environment, global, environment.getVar("_VERSION")); },
         "done"},
        {"SetObject",
         true,
         [](Environment& environment, const char* global)
         {
             environment.setObject(global, "Type", &hostObject);
             return std::string("done");
         },
         "done"},
        {"SetFunc",
         true,
         [](Environment& environment, const char* global)
         { return textOf(environment.setFunc(global)); },
         "null"}};
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const GlobalOperation& operation)
{
    return stream << operation.name;
}

std::vector<GlobalOperation> allGlobalOperations()
{
    std::vector<GlobalOperation> operations = readingOperations();
    for (const GlobalOperation& operation : writingOperations())
        operations.push_back(operation);
    return operations;
}

} // namespace tbScripts::test
