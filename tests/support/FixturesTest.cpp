// Fixtures and their steps are what they say, or the tests that use them prove less than they seem
// to.

#include "support/CallContextFixture.h"
#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/Farewell.h"
#include "support/GlobalOperations.h"
#include "support/LoadingFixture.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"
#include "support/ScriptValueFixture.h"
#include "support/Steps.h"
#include "support/TeardownFixture.h"
#include "support/UserTypeFixture.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <gtest/gtest-spi.h>

#include <exception>
#include <fstream>
#include <sys/stat.h>

namespace tbScripts::test
{

using CallContextFixtureTest = OnValues<CallContextFixture, CALL_CONTEXT>;

VALUES(CallContextFixtureTest, ::testing::ValuesIn(allCallContexts()));

TEST_P(CallContextFixtureTest, ActsOnce)
{
    int acts = 0;

    performIn(GetParam(), [&acts] { ++acts; });

    EXPECT_EQ(acts, 1);
}

TEST_P(CallContextFixtureTest, HandlesAnExceptionInCatchBlocksOnly)
{
    bool isHandling = false;

    performIn(GetParam(), [&] { isHandling = std::current_exception() != nullptr; });

    EXPECT_EQ(
        isHandling,
        GetParam() == CALL_CONTEXT::CATCH_BLOCK ||
            GetParam() == CALL_CONTEXT::HOST_FUNCTIONS_CATCH);
}

TEST_P(CallContextFixtureTest, LetsAnExceptionPassDuringUnwindingOnly)
{
    // Not zero if other tests ran before: what the interpreter swallows stays in this count.
    const int before = std::uncaught_exceptions();
    int during = 0;

    performIn(GetParam(), [&] { during = std::uncaught_exceptions(); });

    EXPECT_EQ(during, before + (GetParam() == CALL_CONTEXT::UNWINDING ? 1 : 0));
}

TEST_P(CallContextFixtureTest, RunsACoroutineInThatContextOnly)
{
    run("function isMain() return coroutine.running() == nil end");
    const ScriptObjectReference isMain = environment().getScriptFunction("isMain");
    std::vector<FunctionParameter> outputs{FunctionParameter(false)};

    performIn(
        GetParam(),
        [&]
        {
            Parameters outputView(outputs);
            environment().callScriptFunction(isMain, {}, outputView);
        });

    EXPECT_EQ(outputs[0].getBool(), GetParam() != CALL_CONTEXT::COROUTINE);
}

using FactsTest = EnvironmentFixture;

TEST_F(FactsTest, RowIsATestOfItsSuite)
{
    const ::testing::TestSuite& suite = *::testing::UnitTest::GetInstance()->current_test_suite();
    std::vector<std::string> names;
    for (int i = 0; i < suite.total_test_count(); ++i)
        names.emplace_back(suite.GetTestInfo(i)->name());
    EXPECT_THAT(names, ::testing::Contains("StepsActInTheirOrder"));
}

TEST_F(FactsTest, StepsCanFail)
{
    EnvironmentFixture& test = *this;
    EXPECT_NONFATAL_FAILURE(tbScripts::test::is("1 + 1", "3")(test), "1 + 1");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::raises("error('a', 0)", "b")(test), "error('a', 0)");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::stops("error('a', 0)", "b")(test), "error('a', 0)");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::logs("message", "Source")(test), "message");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::logsCount(1)(test), "1");
    EXPECT_NONFATAL_FAILURE(tbScripts::test::run("error('a', 0)")(test), "a");
    forgetLog();
}

TEST_F(FactsTest, UncallableOneFailsWhenItIsCalled)
{
    declare("f", {}, uncallable());
    EXPECT_NONFATAL_FAILURE(run("f()"), "called");
}

namespace
{

const Facts<FactsTest> FACTS(
    "FactsTest",
    {
        {"StepsActInTheirOrder", {run("x = 1"), is("x", "1"), run("x = x + 1"), is("x", "2")}},
    });

} // namespace

// An operation that would not reach its global could not fail either.

using GlobalOperationsTest = OnValues<EnvironmentFixture, GlobalOperation>;

VALUES(GlobalOperationsTest, ::testing::ValuesIn(allGlobalOperations()));

TEST_P(GlobalOperationsTest, AsksForItsGlobalOrSetsIt)
{
    run("asked, set = 0, 0 setmetatable(_G, {"
        "__index = function(_, name) if name == 'subject' then asked = asked + 1 end end,"
        "__newindex = function(_, name) if name == 'subject' then set = set + 1 end end})");

    GetParam().perform(environment(), "subject");

    EXPECT_EQ(environment().getVar("asked", -1), GetParam().isWriting ? 0 : 1);
    EXPECT_EQ(environment().getVar("set", -1), GetParam().isWriting ? 1 : 0);
}

TEST_P(GlobalOperationsTest, AnswersNeutrallyWhenItFails)
{
    run("local function fail() error('failed', 0) end "
        "setmetatable(_G, {__index = fail, __newindex = fail})");

    const std::string answer = GetParam().perform(environment(), "subject");

    EXPECT_EQ(answer, GetParam().neutralAnswer);
    EXPECT_THAT(m_log.takeEntries(), ::testing::SizeIs(1));
}

using tbResources::ResourceManager;

class TemporaryFolderTest : public ::testing::Test
{
protected:
    TemporaryFolder m_folder;
};

TEST_F(TemporaryFolderTest, IsEmptyAtFirstAndNobodyElses)
{
    const TemporaryFolder other;

    EXPECT_THAT(m_folder.list(), IsEmpty());
    EXPECT_NE(m_folder.pathOf("a"), other.pathOf("a"));
}

TEST_F(TemporaryFolderTest, ReadsBackAllBytes)
{
    m_folder.write("inner/file", std::string("a\0\xff\r\n", 5));

    EXPECT_EQ(m_folder.read("inner/file"), std::string("a\0\xff\r\n", 5));
    EXPECT_EQ(m_folder.read("file"), "<missing>");
    EXPECT_THAT(m_folder.list(), ElementsAre("inner"));
}

TEST_F(TemporaryFolderTest, GoesWithAllThatIsInIt)
{
    std::string path;

    {
        const TemporaryFolder folder;
        folder.write("locked/file", "text");
        path = folder.pathOf("locked");
        ::chmod(path.c_str(), 0);
    }

    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryFolderTest, OrdinaryUserMayNotReadWhatIsForbidden)
{
    m_folder.write("secret", "text");
    ::chmod(m_folder.pathOf("secret").c_str(), 0);

    const OrdinaryUser user;

    EXPECT_FALSE(std::ifstream(m_folder.pathOf("secret")).is_open());
}

TEST_F(TemporaryFolderTest, OrdinaryUserMayWriteIntoIt)
{
    const OrdinaryUser user;

    m_folder.write("file", "text");

    EXPECT_EQ(m_folder.read("file"), "text");
}

using LoadingFixtureTest = LoadingFixture;

TEST_F(LoadingFixtureTest, WorkingPathIsTheFolder)
{
    const std::string path(std::string_view(ResourceManager::getInstance()->getWorkingPath()));

    EXPECT_EQ(path, m_folder.pathOf(""));
    EXPECT_EQ(path.back(), '/');
}

TEST_F(LoadingFixtureTest, MembersAreReadInTheirOrder)
{
    const auto parsed = parse(R"({"b": "1", "a": "2", "c": 3})");

    EXPECT_THAT(
        membersOf(parsed.getRoot()),
        ElementsAre(Pair("b", "1"), Pair("a", "2"), Pair("c", "<no text>")));
}

TEST_F(LoadingFixtureTest, ScriptGivesItsResult)
{
    Script* const script = addScript("a", "x = 7");

    EXPECT_EQ(resultOf(*script), -1);
    m_log.takeEntries();
    script->load();
    EXPECT_EQ(resultOf(*script), 7);
}

TEST_F(LoadingFixtureTest, KilledScriptsAreGone)
{
    addScript("a", "");

    killScripts();

    EXPECT_EQ(getScript("a"), nullptr);
    EXPECT_EQ(countScripts(), 0U);
}

using NamespaceFixtureTest = NamespaceFixture;

TEST_F(NamespaceFixtureTest, ScopeIsWhatScriptsCallA)
{
    scope().setVar("v", 5);

    run("assert(a.v == 5)");
}

TEST_F(NamespaceFixtureTest, CountedTypeCountsItsInstances)
{
    makeCounted(scope().setUserType("T"));
    run("t = a.T.new()");
    EXPECT_EQ(CountedObject::getLiving(), 1);

    run("t = nil collectgarbage()");

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(CountedObject::getMade(), 1);
}

TEST_F(NamespaceFixtureTest, BoundFunctionGivesItsAnswer)
{
    bindAnswer(scope().setFunction("f"), 42);

    run("assert(a.f() == 42)");
}

TEST_F(NamespaceFixtureTest, HeldFarewellComesWhenTheFunctionIsReset)
{
    bool isGone = false;
    Function* const function = scope().setFunction("f");
    bindHolding(function, makeFarewell([&isGone] { isGone = true; }));
    ASSERT_FALSE(isGone);

    function->reset();

    EXPECT_TRUE(isGone);
}

TEST_F(NamespaceFixtureTest, DeclaredActionIsDone)
{
    int done = 0;
    declareAction("act", [&done] { ++done; });

    run("act()");

    EXPECT_EQ(done, 1);
}

using ScriptValueFixtureTest = ScriptValueFixture;

TEST_F(ScriptValueFixtureTest, JoinsPartsInTheirOrder)
{
    EXPECT_EQ(joined({{1, 2}, {}, {3}}), (Bytes{1, 2, 3}));
}

TEST_F(ScriptValueFixtureTest, KnowsTheBytesOfAPointer)
{
    EXPECT_EQ(bytesOf(nullptr), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_NE(bytesOf(this), bytesOf(nullptr));
}

TEST_F(ScriptValueFixtureTest, RefersToValuesAndToFunctions)
{
    EXPECT_EQ(refer("1").getType(), PARAM_TYPE_SCRIPT_OBJECT);
    EXPECT_EQ(refer("print").getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(refer("nil").getInterpreterReference(), nullptr);
}

TEST_F(ScriptValueFixtureTest, TellsWhatHolds)
{
    EXPECT_TRUE(holds("1 == 1"));
    EXPECT_FALSE(holds("1 == 2"));
    EXPECT_FALSE(holds("nil"));
}

TEST_F(ScriptValueFixtureTest, ForgetsWhatWasReadBefore)
{
    EXPECT_TRUE(read({'b', 1, 0, 0}));
    EXPECT_TRUE(holds("read"));

    EXPECT_FALSE(read({}));

    EXPECT_TRUE(holds("read == nil"));
}

using TeardownFixtureTest = TeardownFixture;

TEST_F(TeardownFixtureTest, StartsWithAnEmptyTrace)
{
    EXPECT_EQ(m_trace.text(), "");
}

TEST_F(TeardownFixtureTest, TracesScriptsAndHostInTheirOrder)
{
    run("note(('s'):byte())");
    m_trace.add('h');
    run("note(('t'):byte())");

    EXPECT_EQ(m_trace.text(), "sht");
}

TEST_F(TeardownFixtureTest, TracesTheEndOfAValueAndDoesItsAction)
{
    run("onEnd('v', function() note(('a'):byte()) end)");

    environment().requestGarbageCollection();

    EXPECT_EQ(m_trace.text(), "va");
}

TEST_F(TeardownFixtureTest, TracesTheEndOfACallableOnce)
{
    declareWithEnd("f", [this] { m_trace.add('f'); });
    const std::string before = m_trace.text();

    environment().getFunc("f")->reset();

    EXPECT_EQ(before, "");
    EXPECT_EQ(m_trace.text(), "f");
}

using UserTypeFixtureTest = UserTypeFixture;

TEST_F(UserTypeFixtureTest, RecordsWhatIsMadeAndDestroyed)
{
    run("Vec.new() Vec.new()");

    collect();

    EXPECT_EQ(m_made.size(), 2U);
    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeFixtureTest, RecordsADestructionEachTime)
{
    m_made.emplace_back();
    Function* const give = environment().setFunc("give");
    give->setFunction([this](const Parameters&)
                      { return FunctionParameter(&m_made[0], "Vec", true); });
    run("give() give()");

    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0], &m_made[0]));
}

TEST_F(UserTypeFixtureTest, EvaluatesAsTostringShowsIt)
{
    EXPECT_EQ(evaluate("nil"), "nil");
    EXPECT_EQ(evaluate("1 + 1"), "2");
}

TEST_F(UserTypeFixtureTest, GivesTheMessageOfAnError)
{
    EXPECT_EQ(errorOf("error('no', 0)"), "no");
}

TEST_F(UserTypeFixtureTest, NoticesThatThereIsNoError)
{
    EXPECT_NONFATAL_FAILURE(errorOf("local a = 1"), "isDone");
}

TEST_F(UserTypeFixtureTest, FieldsAndIndicesReachTheHostsObject)
{
    declareField("x", &Vec::x);
    declareArrayAccess();
    setHostObject("object", m_hostObject);

    run("object.x = 3  object[2] = object[1] + 1");

    EXPECT_EQ(m_hostObject.x, 3.0);
    EXPECT_EQ(m_hostObject.y, 4.0);
}

} // namespace tbScripts::test
