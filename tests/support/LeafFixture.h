#pragma once

#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <tbScripts/typed/Call.h>

#include <deque>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// Functions whose leaf and whose C function both say that it was they who ran, and with what.
class LeafFixture : public LuaStateFixture
{
public:
    /// Has one object for the leaves to work with.
    struct Body
    {
        double number = 0.5;
        float small = 0.25F;
        int integer = 3;
        bool flag = true;
    };

protected:
    LeafFixture();

    /// Publishes `f`, whose leaf takes one argument of that kind and returns "leaf <argument>", and
    /// whose C function returns "slow". Returns whether there is a leaf.
    bool publishWith(const typed::Parameter& parameter);

    /// Publishes a global function around `slow`.
    bool publish(
        const std::string& name,
        lua_CFunction slow,
        void (*entry)(),
        const std::vector<typed::Parameter>& parameters,
        const void* const* living = nullptr);

    /// Publishes `read` and `write` for a member. Each is around a C function that returns "slow".
    void publishMember(const typed::Member& member);

    /// Makes the type of `body`, with the instance in the global of that name, that of `Body`.
    void declareBody();

    /// Runs `code` and returns its result, as the interpreter prints it.
    std::string run(const std::string& code);

    /// Returns the result of the expression after so many runs of it that it has been compiled.
    std::string compiled(const std::string& expression);

    /// The same without being compiled.
    std::string uncompiled(const std::string& expression);

    lua::LuaInstanceBox& box(const std::string& global);

    static const typed::TypeId BODY;

    Body m_body;
    std::deque<typed::Leaf> m_leaves; // whose addresses signatures have
};

template <typename Function>
void (*entryOf(Function* function))()
{
    return reinterpret_cast<void (*)()>(function);
}

} // namespace tbScripts::test
