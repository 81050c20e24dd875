// Who destroys what, when hosts and scripts disagree about it or forget it.

#include "support/UserTypeFixture.h"

#include <map>
#include <string>

namespace tbScripts::test
{

class OwnershipScenarioTest : public UserTypeFixture
{
protected:
    // Declares a function that hands `m_hostObject` to the script, which owns it from then on.
    void declareGift()
    {
        declare(
            "give",
            {},
            [this](const Parameters&) { return FunctionParameter(&m_hostObject, "Vec", true); });
    }
};

TEST_F(OwnershipScenarioTest, ObjectThatWasHandedOverIsDestroyedByTheScriptAlone)
{
    declareGift();

    run("local v = give()");
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(OwnershipScenarioTest, ObjectThatWasOnlyShownIsLeftToTheHost)
{
    setHostObject("v", m_hostObject);

    destroyEnvironment();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(OwnershipScenarioTest, InstanceDestroyedByHandTwiceIsDestroyedOnceAndIsNotNil)
{
    run("v = Vec.new()  v:__gc()  v:__gc()  isNil = v == nil  v = nil");

    collect();

    EXPECT_EQ(m_destroyed.size(), 1U);
    EXPECT_TRUE(environment().isVarSet("isNil"));
    EXPECT_FALSE(environment().getVar("isNil", true));
}

TEST_F(OwnershipScenarioTest, TextThatTheHostKeepsOutlivesThatOfTheScript)
{
    FunctionParameter kept;
    declare(
        "keep",
        {PARAM_TYPE_STRING},
        [&](const Parameters& parameters)
        {
            kept = parameters[0];
            return FunctionParameter::VOID;
        });

    run("keep(('ab\\0'):rep(1000))");
    collect();
    destroyEnvironment();

    std::string expected;
    for (int i = 0; i < 1000; ++i)
        expected.append("ab\0", 3);
    EXPECT_EQ(std::string(std::string_view(kept.getString())), expected);
}

TEST_F(OwnershipScenarioTest, MakerCalledWithWrongArgumentsMakesNothing)
{
    Function* const maker = vec().setStaticMethod("of");
    maker->addParameter(PARAM_TYPE_DOUBLE);
    maker->setFunction([this](const Parameters&)
                       { return FunctionParameter(&m_made.emplace_back(), "Vec", true); });

    run("for i = 1, 100 do pcall(Vec.of) pcall(Vec.of, {}) pcall(Vec.of, 'text') end");
    collect();

    EXPECT_EQ(m_log.takeEntries().size(), 300U);
    EXPECT_THAT(m_made, IsEmpty());
    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(OwnershipScenarioTest, DestructorThatThrowsWhileAScriptAllocatesIsThatScriptsErrorOnce)
{
    vec().setDestructor(
        [this](void* object)
        {
            m_destroyed.push_back(&vecAt(object));
            throw std::string("of the destructor");
        });

    run("jit.off() " // compiled loops make no tables that nobody reads
        "local failures, kept = 0  local function allocate() kept = {} end  Vec.new() "
        "for i = 1, 100000 do "
        "    if not pcall(allocate) then failures = failures + 1 end "
        "end "
        "result = failures");

    EXPECT_EQ(environment().getVar("result", 0), 1);
    EXPECT_EQ(m_destroyed.size(), 1U);
}

TEST_F(OwnershipScenarioTest, ErrorThatIsAnInstanceHasADefinedText)
{
    vec()
        .setOperator(BUILT_IN_FUNCTION::TOSTRING)
        ->setFunction([](const Parameters&) { return "never asked"; });

    EXPECT_EQ(
        runExpectingError("error(Vec.new())"),
        "Error while executing script 'test' : (error object is a userdata value)");
}

TEST_F(OwnershipScenarioTest, SuspendedCoroutinesGiveTheirInstancesUpOnce)
{
    run("threads = {} "
        "for i = 1, 100 do "
        "    threads[i] = coroutine.create("
        "        function() local v = Vec.new() coroutine.yield(v) return v end) "
        "    coroutine.resume(threads[i]) "
        "end");

    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 100U);
    EXPECT_EQ(m_destroyed.size(), 100U);
}

TEST_F(OwnershipScenarioTest, WeakTableForgetsInstancesWhileTheHostShowsTheObjectAnew)
{
    setHostObject("v", m_hostObject);
    run("names = setmetatable({}, {__mode = 'k'})  names[v] = 'first'");

    setHostObject("v", m_hostObject);
    collect();

    EXPECT_EQ(evaluate("names[v]"), "nil"); // each showing is a value of its own
    EXPECT_EQ(evaluate("next(names)"), "nil");
}

/// Instances for which the host keeps a callback, which may refer to the instance.
class SelfHoldingInstanceTest : public OwnershipScenarioTest
{
protected:
    SelfHoldingInstanceTest()
    {
        declareMethod(
            "onHit",
            {PARAM_TYPE_SCRIPT_FUNCTION},
            [this](const Parameters& parameters)
            {
                m_callbacks[parameters[0].getUserTypeObject()] = parameters[1].getScriptObject();
                return FunctionParameter::VOID;
            });
        run("local v = Vec.new()  v:onHit(function() return v end)");
    }

    std::map<void*, ScriptObjectReference> m_callbacks;
};

TEST_F(SelfHoldingInstanceTest, StaysAsLongAsTheHostHoldsItsCallback)
{
    collect();
    EXPECT_THAT(m_destroyed, IsEmpty());

    vec().getMethod("onHit")->reset(); // a function keeps the arguments of its last call
    m_callbacks.clear();
    collect();

    EXPECT_EQ(m_destroyed.size(), 1U);
}

TEST_F(SelfHoldingInstanceTest, IsDestroyedWithItsEnvironmentThoughTheHostHoldsTheCallback)
{
    destroyEnvironment();

    EXPECT_EQ(m_destroyed.size(), 1U);
}

} // namespace tbScripts::test
