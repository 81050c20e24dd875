#include "support/CallContextFixture.h"

#include <utility>

namespace tbScripts::test
{

namespace
{

struct HostException
{
};

void performInCatchBlock(const std::function<void()>& action)
{
    try
    {
        throw HostException();
    }
    catch (const HostException&)
    {
        action();
    }
}

class PerformsAtItsEnd
{
public:
    explicit PerformsAtItsEnd(const std::function<void()>& action)
        : m_action(action)
    {
    }

    ~PerformsAtItsEnd() { m_action(); }

private:
    const std::function<void()>& m_action;
};

void performDuringUnwinding(const std::function<void()>& action)
{
    try
    {
        const PerformsAtItsEnd performer(action);
        throw HostException();
    }
    catch (const HostException&)
    {
    }
}

void performInsideCatchAll(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (...)
    {
        ADD_FAILURE() << "the host has caught something";
    }
}

void performInsideNoexcept(const std::function<void()>& action) noexcept
{
    action();
}

} // namespace

std::ostream& operator<<(std::ostream& stream, CALL_CONTEXT context)
{
    switch (context)
    {
    case CALL_CONTEXT::TOP_LEVEL:
        return stream << "TopLevel";
    case CALL_CONTEXT::HOST_FUNCTION:
        return stream << "HostFunction";
    case CALL_CONTEXT::COROUTINE:
        return stream << "Coroutine";
    case CALL_CONTEXT::CATCH_BLOCK:
        return stream << "CatchBlock";
    case CALL_CONTEXT::HOST_FUNCTIONS_CATCH:
        return stream << "CatchBlockOfHostFunction";
    case CALL_CONTEXT::UNWINDING:
        return stream << "Unwinding";
    case CALL_CONTEXT::INSIDE_CATCH_ALL:
        return stream << "InsideCatchAll";
    case CALL_CONTEXT::INSIDE_NOEXCEPT:
        return stream << "InsideNoexcept";
    }
    return stream;
}

std::vector<CALL_CONTEXT> allCallContexts()
{
    return {
        CALL_CONTEXT::TOP_LEVEL,
        CALL_CONTEXT::HOST_FUNCTION,
        CALL_CONTEXT::COROUTINE,
        CALL_CONTEXT::CATCH_BLOCK,
        CALL_CONTEXT::HOST_FUNCTIONS_CATCH,
        CALL_CONTEXT::UNWINDING,
        CALL_CONTEXT::INSIDE_CATCH_ALL,
        CALL_CONTEXT::INSIDE_NOEXCEPT};
}

CallContextFixture::CallContextFixture()
{
    declare(
        "perform",
        {},
        [this](const Parameters&)
        {
            m_action();
            return FunctionParameter::VOID;
        });
}

void CallContextFixture::performIn(CALL_CONTEXT context, const std::function<void()>& action)
{
    m_action = action;
    switch (context)
    {
    case CALL_CONTEXT::TOP_LEVEL:
        action();
        break;
    case CALL_CONTEXT::HOST_FUNCTION:
        EXPECT_TRUE(runScript(environment(), "perform()"));
        break;
    case CALL_CONTEXT::COROUTINE:
        EXPECT_TRUE(runScript(environment(), "coroutine.wrap(perform)()"));
        break;
    case CALL_CONTEXT::CATCH_BLOCK:
        performInCatchBlock(action);
        break;
    case CALL_CONTEXT::HOST_FUNCTIONS_CATCH:
        m_action = [&action] { performInCatchBlock(action); };
        EXPECT_TRUE(runScript(environment(), "perform()"));
        break;
    case CALL_CONTEXT::UNWINDING:
        performDuringUnwinding(action);
        break;
    case CALL_CONTEXT::INSIDE_CATCH_ALL:
        performInsideCatchAll(action);
        break;
    case CALL_CONTEXT::INSIDE_NOEXCEPT:
        m_action = [&action] { performInsideNoexcept(action); };
        EXPECT_TRUE(runScript(environment(), "perform()"));
        break;
    }
}

} // namespace tbScripts::test
