// A host's callable may own things whose end calls the library, or ends the very environment.

#include "support/EnvironmentFixture.h"

#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <functional>
#include <memory>

namespace tbScripts::test
{

class CallableEndTest : public LogFixture
{
protected:
    CallableEndTest() { m_environment->setEnvironmentFor(INTERPRETER_LUA); }

    void TearDown() override
    {
        m_environment.reset();
        LogFixture::TearDown();
    }

    /// Declares `f`, whose callable runs `atEnd` when it goes.
    void declareWithEnd(std::function<void()> atEnd)
    {
        const std::shared_ptr<void> guard(nullptr, [atEnd = std::move(atEnd)](void*) { atEnd(); });
        m_environment->setFunc("f")->setFunction(doing([guard] {}));
    }

    std::unique_ptr<Environment> m_environment = std::make_unique<Environment>();
};

TEST_F(CallableEndTest, DeclarationAnewMayEndTheEnvironment)
{
    declareWithEnd([this] { m_environment.reset(); });
    Function* const function = m_environment->setFunc("f");
    forgetLog(); // that it was declared already
    EXPECT_EQ(function, nullptr);
    EXPECT_EQ(m_environment, nullptr);
}

TEST_F(CallableEndTest, DeclarationAnewMayDeclareTheSameFunction)
{
    Function* inner = nullptr;
    declareWithEnd([this, &inner] { inner = m_environment->setFunc("f"); });
    Function* const outer = m_environment->setFunc("f");
    forgetLog(); // that it was declared already, twice
    EXPECT_NE(outer, nullptr);
    EXPECT_EQ(outer, inner);
}

TEST_F(CallableEndTest, DeclarationAnewMayAssignToTheEnvironment)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    declareWithEnd([this, &other] { *m_environment = other; });

    Function* const function = m_environment->setFunc("f");
    forgetLog(); // that it was declared already

    EXPECT_EQ(function, nullptr);
    EXPECT_FALSE(m_environment->isFuncSet("f"));
}

TEST_F(CallableEndTest, DeclarationOfAUserTypeAnewMayAssignToTheEnvironment)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    std::shared_ptr<void> guard(nullptr, [this, &other](void*) { *m_environment = other; });
    m_environment->setUserType("T")
        ->setMethod("m", false)
        ->setFunction(doing([held = std::move(guard)] {}));

    UserType* const type = m_environment->setUserType("T");
    forgetLog(); // that it was declared already

    EXPECT_EQ(type, nullptr);
    EXPECT_FALSE(m_environment->isUserTypeSet("T"));
}

TEST_F(CallableEndTest, AssignmentToTheEnvironmentMayEndIt)
{
    declareWithEnd([this] { m_environment.reset(); });
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    *m_environment = other;
    EXPECT_EQ(m_environment, nullptr);
}

TEST_F(CallableEndTest, AssignmentToTheEnvironmentMayAssignToItAgain)
{
    Environment inner;
    inner.setName("inner");
    Environment outer;
    outer.setName("outer");
    outer.setEnvironmentFor(INTERPRETER_LUA);
    declareWithEnd([this, &inner] { *m_environment = inner; });

    *m_environment = outer;

    EXPECT_EQ(m_environment->getName(), "outer");
    m_environment->setVar("v", 1);
    EXPECT_EQ(outer.getVar("v", 0), 1);
    inner.setEnvironmentFor(INTERPRETER_LUA); // ends without a warning
}

TEST_F(CallableEndTest, EndOfTheEnvironmentMayAssignToIt)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    Environment* const dying = m_environment.get();
    declareWithEnd([dying, &other] { *dying = other; });

    m_environment.reset();

    other.setVar("v", 1);
    EXPECT_EQ(other.getVar("v", 0), 1);
    EXPECT_FALSE(runScript(other, "error('boom', 0)"));
    forgetLog();
    EXPECT_EQ(other.getLastExecutionResult().code, 5);
}

TEST_F(CallableEndTest, ChangeOfTheFunctionMayEndTheEnvironment)
{
    declareWithEnd([this] { m_environment.reset(); });
    m_environment->getFunc("f")->setFunction(doing([] {}));
    EXPECT_EQ(m_environment, nullptr);
}

TEST_F(CallableEndTest, ResetOfTheFunctionMayEndTheEnvironment)
{
    declareWithEnd([this] { m_environment.reset(); });
    m_environment->getFunc("f")->reset();
    EXPECT_EQ(m_environment, nullptr);
}

TEST_F(CallableEndTest, RedeclarationInAnotherStateMayEndTheEnvironmentThroughAMetamethod)
{
    declareWithEnd([] {});
    m_environment->setEnvironmentFor(INTERPRETER_LUA);
    m_environment->setFunc("quit")->setFunction(doing([this] { m_environment.reset(); }));
    ASSERT_TRUE(runScript(
        *m_environment,
        "local quit = quit; setmetatable(_G, { __newindex = function() quit() end })"));

    Function* const function = m_environment->setFunc("f");
    forgetLog(); // that it was declared already

    EXPECT_EQ(function, nullptr);
    EXPECT_EQ(m_environment, nullptr);
}

} // namespace tbScripts::test
