// The library's static data is there before any static object of a host, and after all of them.
// Here the library's code is part of the executable, so an object can be made before all of it.

#include <tbScripts/FunctionParameter.h>
#include <tbScripts/ScriptObjectReference.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tbScripts::test
{

namespace
{

// Whether what a host reads of the void value is right now as it should be.
bool isVoidUsable()
{
    const FunctionParameter copy(FunctionParameter::VOID);
    const ScriptObjectReference reference(copy.getScriptObject());
    return copy.getType() == 0U && copy.getString().isNull() && reference.getUseCount() == 1 &&
           copy.getScriptObject().getUseCount() == 1 && !reference.getInterpreterReference();
}

class FirstObjectOfTheProcess
{
public:
    FirstObjectOfTheProcess()
        : m_wasVoidUsable(isVoidUsable())
        , m_endsProcess(false)
    {
    }

    FirstObjectOfTheProcess(const FirstObjectOfTheProcess&) = delete;
    FirstObjectOfTheProcess& operator=(const FirstObjectOfTheProcess&) = delete;

    ~FirstObjectOfTheProcess()
    {
        if (m_endsProcess)
            std::_Exit(isVoidUsable() ? 42 : 1);
    }

    bool wasVoidUsable() const { return m_wasVoidUsable; }

    // Makes the end of this object tell by the exit code what it found.
    void endProcess() { m_endsProcess = true; }

private:
    bool m_wasVoidUsable;
    bool m_endsProcess;
};

// The first number that is not reserved: made before all objects without a number, destroyed last.
FirstObjectOfTheProcess first __attribute__((init_priority(101)));

} // namespace

TEST(StaticLifeTest, VoidIsUsableBeforeMain)
{
    EXPECT_TRUE(first.wasVoidUsable());
}

TEST(StaticLifeTest, VoidIsUsableAfterMain)
{
    ::testing::GTEST_FLAG(death_test_style) = "fast";

    EXPECT_EXIT(
        {
            first.endProcess();
            std::exit(0);
        },
        ::testing::ExitedWithCode(42),
        "");
}

} // namespace tbScripts::test
