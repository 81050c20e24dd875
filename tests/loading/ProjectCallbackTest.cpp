// The host that takes part in the loading of a project, and what it may do there.

#include "support/LoadingFixture.h"

#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ResourceDeclAugmentCallback.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

using tbExport::Node;

namespace
{

// Does for each script what it was made to do.
class Callback : public ResourceDeclAugmentCallback
{
public:
    using Action = std::function<void(Script* script, Node* declaration)>;

    explicit Callback(Action action)
        : m_action(std::move(action))
    {
    }

    void onScript(Script* script, Node* declaration) override { m_action(script, declaration); }

private:
    Action m_action;
};

std::string nameOf(const Script* script)
{
    return std::string(std::string_view(script->getName()));
}

constexpr const char* TWO_SCRIPTS =
    R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = 1"},
                    {"name": "b", "type": "lua", "sources": "x = 2"}]})";

} // namespace

class ProjectCallbackTest : public LoadingFixture
{
protected:
    ProjectLoadResult load(const std::string& document, Callback::Action action) const
    {
        m_folder.write("project", document);
        Callback callback(std::move(action));
        ProjectLoadQuery query;
        query.path = "project";
        query.callback = &callback;
        return ProjectLoader::load(query);
    }
};

TEST_F(ProjectCallbackTest, IsCalledOnceForEachScriptInTheOrderOfTheFile)
{
    std::vector<std::string> names;

    const ProjectLoadResult result =
        load(TWO_SCRIPTS, [&names](Script* script, Node*) { names.push_back(nameOf(script)); });

    EXPECT_THAT(names, ElementsAre("a", "b"));
    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
}

TEST_F(ProjectCallbackTest, IsNotCalledForWhatIsSkippedNorWithoutScripts)
{
    std::vector<std::string> names;
    const auto note = [&names](Script* script, Node*) { names.push_back(nameOf(script)); };

    load(R"({"scripts": [{}, {"name": "a"}, 5, {"name": null}]})", note);
    load(R"({"scripts": {"name": "b"}})", note);

    EXPECT_THAT(names, ElementsAre("a"));
}

TEST_F(ProjectCallbackTest, SeesTheFiledScriptAndItsWholeDeclaration)
{
    Members seen;

    load(
        R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = 1", "author": "me"}]})",
        [&seen](Script* script, Node* declaration)
        {
            EXPECT_EQ(script, getScript("a"));
            EXPECT_EQ(script->getSources(), "x = 1");
            EXPECT_EQ(script->getTargetInterpreter(), 1U);
            seen = membersOf(declaration);
        });

    EXPECT_THAT(
        seen,
        ElementsAre(
            Pair("name", "a"),
            Pair("type", "lua"),
            Pair("sources", "x = 1"),
            Pair("author", "me")));
}

TEST_F(ProjectCallbackTest, IsCalledBeforeItsScriptIsCompiledAndAfterTheOneBeforeWas)
{
    std::vector<int> results;

    load(
        TWO_SCRIPTS,
        [&results](Script* script, Node*)
        {
            results.push_back(resultOf(*script));
            results.push_back(resultOf(*getScript("a")));
        });

    EXPECT_EQ(m_log.takeEntries().size(), 3U); // where there was nothing to run
    EXPECT_THAT(results, ElementsAre(-1, -1, -1, 1));
    EXPECT_EQ(resultOf(*getScript("b")), 2);
}

TEST_F(ProjectCallbackTest, SourcesThatItChangesAreCompiled)
{
    load(TWO_SCRIPTS, [](Script* script, Node*) { script->setSources("x = 10"); });

    EXPECT_EQ(getScript("a")->getSources(), "x = 10");
    EXPECT_EQ(resultOf(*getScript("a")), 10);
}

TEST_F(ProjectCallbackTest, InterpreterThatItChoosesIsUsed)
{
    load(
        R"({"scripts": [{"name": "a", "sources": "x = 1"}]})",
        [](Script* script, Node*) { script->setTargetInterpreter(INTERPRETER_LUA); });

    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

TEST_F(ProjectCallbackTest, DeclarationThatItChangesChangesNothingMore)
{
    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [](Script*, Node* declaration)
        {
            declaration->setArray();
            declaration->addElement()->setString("gone");
        });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

TEST_F(ProjectCallbackTest, ScriptThatItErasesIsLeftOutAlsoAnEarlierOne)
{
    for (const char* at : {"a", "b"})
    {
        const ProjectLoadResult result = load(
            TWO_SCRIPTS,
            [at](Script* script, Node*)
            {
                if (nameOf(script) == at)
                    ScriptManager::getInstance()->erase("a");
            });

        EXPECT_THAT(namesOf(result.scripts), ElementsAre("b")) << at;
        EXPECT_EQ(getScript("a"), nullptr) << at;
    }
}

TEST_F(ProjectCallbackTest, ScriptThatItErasesAndMakesAnewIsAnotherOne)
{
    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [](Script* script, Node*)
        {
            ScriptManager::getInstance()->erase(script->getName());
            addScript("a", "x = 10");
        });

    EXPECT_TRUE(result.scripts.empty());
    EXPECT_EQ(getScript("a")->getSources(), "x = 10");
}

TEST_F(ProjectCallbackTest, ScriptThatItRenamesIsInTheResult)
{
    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [](Script* script, Node*)
        { ScriptManager::getInstance()->rename(script->getName(), "new " + nameOf(script)); });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("new a", "new b"));
    EXPECT_EQ(getScript("a"), nullptr);
    EXPECT_EQ(resultOf(*getScript("new a")), 1);
}

TEST_F(ProjectCallbackTest, ScriptWhoseOwnNameItChangesIsInTheResult)
{
    const ProjectLoadResult result =
        load(TWO_SCRIPTS, [](Script* script, Node*) { script->setName("new " + nameOf(script)); });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("new a", "new b"));
    EXPECT_EQ(getScript("a"), result.scripts[0]);
}

TEST_F(ProjectCallbackTest, ScriptThatItGivesAwayByARenameIsInTheResultAndCompiled)
{
    addScript("kept", "x = 7");
    std::unique_ptr<Script> given;

    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [&given](Script* script, Node*)
        {
            if (nameOf(script) != "a")
                return;
            ScriptManager::getInstance()->rename("a", "kept");
            given.reset(script);
        });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("kept", "b"));
    ASSERT_EQ(result.scripts[0], given.get());
    EXPECT_EQ(resultOf(*given), 1);
    EXPECT_EQ(getScript("kept")->getSources(), "x = 7");
}

TEST_F(ProjectCallbackTest, ManagerThatItKillsTakesAllScriptsSoFar)
{
    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [](Script* script, Node*)
        {
            if (nameOf(script) == "a")
                killScripts();
        });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("b"));
    EXPECT_EQ(countScripts(), 1U);
}

TEST_F(ProjectCallbackTest, ManagerThatItKillsEachTimeLeavesNothing)
{
    const ProjectLoadResult result = load(TWO_SCRIPTS, [](Script*, Node*) { killScripts(); });

    EXPECT_TRUE(result.scripts.empty());
    EXPECT_EQ(ScriptManager::getInstanceIfExisting(), nullptr);
}

TEST_F(ProjectCallbackTest, ItMayLoadAnotherProject)
{
    m_folder.write(
        "other",
        R"({"scripts": [{"name": "b", "type": "lua", "sources": "x = 20"}, {"name": "c"}]})");
    ProjectLoadResult inner;

    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [&inner](Script* script, Node*)
        {
            ProjectLoadQuery query;
            query.path = "other";
            if (nameOf(script) == "a")
                inner = ProjectLoader::load(query);
        });

    EXPECT_THAT(namesOf(inner.scripts), ElementsAre("b", "c"));
    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_EQ(resultOf(*getScript("b")), 2); // the outer file comes to it later
}

TEST_F(ProjectCallbackTest, ItMaySaveTheProjectThatIsBeingLoaded)
{
    const ProjectLoadResult result = load(
        TWO_SCRIPTS,
        [](Script*, Node*)
        {
            ProjectSaveQuery query;
            query.path = "project";
            ProjectLoader::save(query);
        });

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_THAT(m_folder.list(), ElementsAre("project", "project_scripts.tbscripts"));
}

TEST_F(ProjectCallbackTest, ExceptionOfItReachesTheHostAndLeavesTheScriptsSoFar)
{
    EXPECT_THROW(
        load(
            TWO_SCRIPTS,
            [](Script* script, Node*)
            {
                if (nameOf(script) == "b")
                    throw std::runtime_error("enough");
            }),
        std::runtime_error);

    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectCallbackTest, BaseClassDoesNothing)
{
    m_folder.write("project", TWO_SCRIPTS);
    const ResourceDeclAugmentCallback original;
    ResourceDeclAugmentCallback callback(original);
    callback = original;
    ProjectLoadQuery query;
    query.path = "project";
    query.callback = &callback;

    const ProjectLoadResult result = ProjectLoader::load(query);

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

} // namespace tbScripts::test
