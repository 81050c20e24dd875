// An environment is copied by what its own teardown calls. Such a copy used to share the
// interpreter that was closing and no registries: it refused everything for good, and a declaration
// crashed.

#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/Farewell.h"
#include "support/ReactingLogger.h"

#include <tbScripts/UserType.h>

#include <memory>
#include <vector>

namespace tbScripts::test
{

class CopyDuringTeardownTest : public EnvironmentFixture
{
protected:
    // Has the end of a callable, in the teardown, make the copy.
    void copyAtTheEnd()
    {
        declareAction(
            "f",
            [farewell = makeFarewell(
                 [this] { m_copy = std::make_unique<Environment>(environment()); })] {});
    }

    Environment m_other;
    std::unique_ptr<Environment> m_copy;
};

TEST_F(CopyDuringTeardownTest, HasTheNameAndNothingElseUntilItIsGivenAnInterpreter)
{
    copyAtTheEnd();

    environment() = m_other;

    EXPECT_EQ(m_copy->getName(), "world");
    EXPECT_FALSE(m_copy->isFuncSet("f"));
    EXPECT_EQ(lastOutcome(*m_copy), Outcome(0, true, ""));
    m_copy->requestGarbageCollection();
    expectLogged(
        "Requesting a garbage collection in environment 'world', which has no "
        "InterpreterType. This will have no effect.",
        "Environment");
    m_copy->setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_NE(m_copy->setFunc("g"), nullptr);
    EXPECT_TRUE(runScript(*m_copy, "assert(g and not f)"));
}

// The same while the interpreter is changed: such a copy knows the declarations, and could never
// get an interpreter again.
TEST_F(CopyDuringTeardownTest, CopyOfAnEnvironmentThatIsSwitchedCanBeGivenAnInterpreter)
{
    UserType* const type = environment().setUserType("T");
    type->setConstructor([](const Parameters&) { return new int; });
    type->setDestructor(
        [this](void* object)
        {
            delete static_cast<int*>(object);
            m_copy = std::make_unique<Environment>(environment());
        });
    run("kept = T.new()");
    environment().setEnvironmentFor(INTERPRETER_LUA);

    m_copy->setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_TRUE(m_copy->isUserTypeSet("T"));
    EXPECT_TRUE(runScript(*m_copy, "answer = 42"));
}

// Without interpreter it is the log receiver that is called.
class SilentCopyDuringTeardownTest : public LogFixture
{
protected:
    SilentCopyDuringTeardownTest()
    {
        ReactingLogger copying([this]
                               { m_copies.push_back(std::make_unique<Environment>(*m_first)); });
        *m_first = m_second;
        m_warnings = copying.takeEntries().size();
    }

    std::unique_ptr<Environment> m_first = std::make_unique<Environment>();
    Environment m_second;
    std::vector<std::unique_ptr<Environment>> m_copies;
    std::size_t m_warnings = 0;
};

TEST_F(SilentCopyDuringTeardownTest, IsMadeOnceForEachWarning)
{
    EXPECT_EQ(m_warnings, 1U);
    EXPECT_EQ(m_copies.size(), 1U);
}

TEST_F(SilentCopyDuringTeardownTest, ItsEndLeavesNothingBehindInFurtherCopies)
{
    m_copies.push_back(std::make_unique<Environment>(*m_copies.at(0)));
    m_copies.erase(m_copies.begin());
    m_log.takeEntries();

    m_copies.at(0)->execute(Script());

    EXPECT_EQ(
        lastOutcome(*m_copies.at(0)),
        Outcome(2, false, "Can't execute if the InterpreterType has not been set."));
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(SilentCopyDuringTeardownTest, CanDeclareOnceItHasAnInterpreter)
{
    m_copies.at(0)->setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_NE(m_copies.at(0)->setFunc("f"), nullptr);
    EXPECT_NE(m_copies.at(0)->setUserType("T"), nullptr);
    EXPECT_NE(m_copies.at(0)->setNamespace("n"), nullptr);
}

} // namespace tbScripts::test
