// A type leaves its interpreter while its factory makes an instance: the block for that one has the
// collector run, and a destructor of the host declares the type elsewhere.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"

#include <tbScripts/UserType.h>

#include <memory>

namespace tbScripts::test
{

class FactoryEndTest : public EnvironmentFixture
{
protected:
    FactoryEndTest()
    {
        UserType& type = *environment().setUserType("T");
        type.setConstructor(
            [this](const Parameters&)
            {
                ++m_made;
                return new int(7);
            });
        type.setDestructor(
            [this](void* object)
            {
                delete static_cast<int*>(object);
                ++m_destroyed;
                m_other->setUserType("T"); // where it goes over to the other interpreter
            });
        m_other = std::make_unique<Environment>(environment());
        m_other->setEnvironmentFor(INTERPRETER_LUA);
    }

    std::unique_ptr<Environment> m_other; // shares what was declared, but no interpreter
    int m_made = 0;
    int m_destroyed = 0;
};

TEST_F(FactoryEndTest, FactoryOfATypeThatHasLeftIsAScriptError)
{
    EXPECT_FALSE(runScript(
        environment(),
        "collectgarbage('setpause', 0) collectgarbage('setstepmul', 10000) "
        "for i = 1, 10000 do T.new() end"));

    forgetLog();
    EXPECT_GT(m_made, 0);
    EXPECT_LT(m_made, 10000);
    EXPECT_TRUE(runScript(*m_other, "made = T.new()"));
}

TEST_F(FactoryEndTest, WhatItHasMadeIsDestroyedOnce)
{
    runScript(
        environment(),
        "collectgarbage('setpause', 0) collectgarbage('setstepmul', 10000) "
        "for i = 1, 10000 do T.new() end");
    forgetLog();

    m_other.reset();
    destroyEnvironment();

    EXPECT_EQ(m_destroyed, m_made);
}

} // namespace tbScripts::test
