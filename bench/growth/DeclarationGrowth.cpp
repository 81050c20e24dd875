#include "growth/GrowthRows.h"
#include "rows/LibraryBody.h"
#include "rows/TwiceFunction.h"
#include "support/LibraryHost.h"

#include <tbScripts/UserType.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

// Host functions, and the members of a user type: using and declaring one where there are many.

namespace bench
{

namespace
{

using tbScripts::FunctionParameter;
using tbScripts::UserType;

using Arguments = tbMemory::BufferView<FunctionParameter>;

constexpr const char* FUNCTIONS = "bound functions";
constexpr const char* MEMBERS = "members";

std::string nameOf(const char* prefix, std::size_t number)
{
    return prefix + std::to_string(number);
}

void declareFunctions(LibraryHost& host, std::size_t first, std::size_t count)
{
    for (std::size_t i = first; i < first + count; ++i)
        declareTwice(host.getEnvironment().setFunc(nameOf("twice", i).c_str()));
}

void declareMethods(UserType& type, std::size_t first, std::size_t count)
{
    for (std::size_t i = first; i < first + count; ++i)
    {
        define(
            type.setMethod(nameOf("get", i).c_str(), false),
            {},
            [](const Arguments& arguments) { return bodyIn(arguments[0]).value; });
    }
}

void declareFields(UserType& type, std::size_t first, std::size_t count)
{
    for (std::size_t i = first; i < first + count; ++i)
    {
        const std::string name = nameOf("field", i);
        tbScripts::UserTypeFieldDescriptor field;
        field.name = name.c_str();
        field.type = tbScripts::PARAM_TYPE_DOUBLE;
        field.getter = [](void* object) { return static_cast<Body*>(object)->value; };
        field.setter = [](const Arguments& arguments)
        { bodyIn(arguments[0]).value = arguments[1].getDouble(); };
        type.setField(field);
    }
}

UserType& bodyTypeOf(LibraryHost& host)
{
    if (UserType* const type = host.getEnvironment().getUserType("Body"))
        return *type;
    declareLibraryBody(host.getEnvironment());
    return *host.getEnvironment().getUserType("Body");
}

using Declare = std::function<void(LibraryHost& host, std::size_t first, std::size_t count)>;

// Declares `count` things and does `statement` again and again; in it, LAST is the last one's
// number.
GrowthRow makeUseRow(
    const char* name,
    const char* countOf,
    const GrowthScale& scale,
    std::string statement,
    const Declare& declare)
{
    return {
        name,
        countOf,
        scale.counts,
        scale.calls,
        false,
        [statement = std::move(statement), declare](std::size_t count, std::size_t calls)
        {
            auto host = std::make_shared<LibraryHost>();
            declareLibraryBody(host->getEnvironment());
            declare(*host, 0, count);
            std::string numbered = statement;
            numbered.replace(numbered.find("LAST"), 4, std::to_string(count - 1));
            host->run(
                "function run(n) local b, sum = Body.new(), 0 for i = 1, n do " + numbered +
                " end return sum end");
            const auto run = host->getEnvironment().getScriptFunction("run");
            return Variant{
                [host, run, calls] { return host->call(run, static_cast<double>(calls)); }, {}};
        }};
}

// Declares more where `count` are declared already.
GrowthRow makeDeclareRow(
    const char* name, const char* countOf, const GrowthScale& scale, const Declare& declare)
{
    return {
        name,
        countOf,
        scale.counts,
        scale.declarations,
        false,
        [declare](std::size_t count, std::size_t declarations)
        {
            auto host = std::make_shared<std::unique_ptr<LibraryHost>>();
            return Variant{
                [host, declare, count, declarations]
                {
                    declare(**host, count, declarations);
                    return static_cast<double>(declarations);
                },
                [host, declare, count]
                {
                    *host = std::make_unique<LibraryHost>();
                    declareLibraryBody((*host)->getEnvironment());
                    declare(**host, 0, count);
                    (*host)->collect();
                }};
        }};
}

} // namespace

void addDeclarationGrowth(GrowthRowList& rows, const GrowthScale& scale)
{
    const Declare methods = [](LibraryHost& host, std::size_t first, std::size_t count)
    { declareMethods(bodyTypeOf(host), first, count); };
    const Declare fields = [](LibraryHost& host, std::size_t first, std::size_t count)
    { declareFields(bodyTypeOf(host), first, count); };

    rows.push_back(makeUseRow(
        "host function called", FUNCTIONS, scale, "sum = sum + twiceLAST(i)", &declareFunctions));
    rows.push_back(makeUseRow("method called", MEMBERS, scale, "sum = sum + b:getLAST()", methods));
    rows.push_back(makeUseRow("field read", MEMBERS, scale, "sum = sum + b.fieldLAST", fields));
    rows.push_back(makeDeclareRow("function declared", FUNCTIONS, scale, &declareFunctions));
    rows.push_back(makeDeclareRow("method declared", MEMBERS, scale, methods));
    rows.push_back(makeDeclareRow("field declared", MEMBERS, scale, fields));
}

} // namespace bench
