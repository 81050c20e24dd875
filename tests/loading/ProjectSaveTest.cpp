// All scripts of the manager in one file.

#include "support/AllocationCounter.h"
#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbExport/JsonExporter.h>
#include <tbResources/ResourceManager.h>
#include <tbScripts/ProjectLoader.h>

#include <algorithm>
#include <string>

namespace tbScripts::test
{

using tbMemory::StringView;
using tbResources::ResourceManager;

class ProjectSaveTest : public LoadingFixture
{
protected:
    static void save(const std::string& path)
    {
        ProjectSaveQuery query;
        query.path = path;
        ProjectLoader::save(query);
    }

    // The declarations of a file, in their order.
    std::vector<Members> readDeclarations(const std::string& name) const
    {
        auto parsed = parse(m_folder.read(name));
        const tbExport::Node* const root = parsed.getRoot();
        EXPECT_EQ(root->getSize(), 1U);
        EXPECT_EQ(root->getMemberName(0), "scripts");
        const tbExport::Node* const scripts = root->getMember("scripts");
        EXPECT_TRUE(scripts && scripts->isArray());
        std::vector<Members> declarations;
        for (std::size_t i = 0; scripts && i < scripts->getSize(); ++i)
            declarations.push_back(membersOf(scripts->getElement(i)));
        return declarations;
    }
};

// A text that grows needs twice its memory, which counts where it is that of a whole project.
TEST_F(ProjectSaveTest, TextOfALargeTreeIsMadeInOnePiece)
{
    tbExport::Node tree;
    tree.setArray();
    for (int i = 0; i < 1000; ++i)
        tree.addElement()->setString(std::string(1000, 'x') + "\n\t\"");

    const AllocationCounter allocations;
    const tbMemory::String text = tbExport::JsonExporter::exportTreeIntoString(&tree);

    EXPECT_LE(allocations.count(), 2U); // the text, and how far the array is printed
    EXPECT_EQ(text.size(), 1012003U);
}

TEST_F(ProjectSaveTest, QueryIsEmptyAtFirst)
{
    const ProjectSaveQuery query;

    EXPECT_TRUE(query.path.empty());
    EXPECT_EQ(query.userData, nullptr);
}

TEST_F(ProjectSaveTest, QueryIsCopiedWithWhatTheHostCarriesAlong)
{
    int value = 0;
    ProjectSaveQuery query;
    query.path = "level.proj";
    query.userData = &value;

    const ProjectSaveQuery copy = query;
    ProjectLoader::save(copy);

    EXPECT_EQ(copy.path, "level.proj");
    EXPECT_EQ(copy.userData, &value);
    EXPECT_THAT(m_folder.list(), ElementsAre("level_scripts.tbscripts"));
}

TEST_F(ProjectSaveTest, DeclarationHasNameTypeAndSourcesInThisOrderAlsoWithoutInterpreter)
{
    addScript("a", "x = 1");
    save("level.proj");
    EXPECT_THAT(
        readDeclarations("level_scripts.tbscripts"),
        ElementsAre(ElementsAre(Pair("name", "a"), Pair("type", "lua"), Pair("sources", "x = 1"))));
    killScripts();
    ScriptManager::getInstance()->createOrRetrieve("a");

    save("level.proj");

    EXPECT_THAT(
        readDeclarations("level_scripts.tbscripts"),
        ElementsAre(ElementsAre(Pair("name", "a"), Pair("type", "UNKNOWN"), Pair("sources", ""))));
}

TEST_F(ProjectSaveTest, ScriptsComeInTheOrderOfTheirIndices)
{
    for (int i = 0; i < 50; ++i)
        addScript("script " + std::to_string(i), "x = " + std::to_string(i));
    std::vector<std::string> expected;
    for (unsigned int i = 0; i < 50; ++i)
        expected.emplace_back(
            std::string_view(ScriptManager::getInstance()->getByIndex(i)->getName()));

    save("level.proj");

    std::vector<std::string> names;
    for (const Members& declaration : readDeclarations("level_scripts.tbscripts"))
        names.push_back(declaration.at(0).second);
    EXPECT_EQ(names, expected);
}

TEST_F(ProjectSaveTest, ScriptIsSavedUnderItsOwnName)
{
    addScript("a", "")->setName("b");

    save("level.proj");

    EXPECT_EQ(readDeclarations("level_scripts.tbscripts").at(0).at(0).second, "b");
}

TEST_F(ProjectSaveTest, WithoutScriptsTheFileIsAnEmptyObjectThatReplacesAnEarlierOne)
{
    addScript("a", std::string(10000, ' '));
    save("level.proj");
    killScripts();

    save("level.proj");

    const auto parsed = parse(m_folder.read("level_scripts.tbscripts"));
    EXPECT_TRUE(parsed.getRoot()->isObject());
    EXPECT_EQ(parsed.getRoot()->getSize(), 0U);
    EXPECT_THAT(m_folder.list(), ElementsAre("level_scripts.tbscripts"));
    EXPECT_NE(ScriptManager::getInstanceIfExisting(), nullptr); // it is created for that
}

TEST_F(ProjectSaveTest, ScriptsStayAsTheyAre)
{
    Script* const script = addScript("a", "x = 1");
    script->load();
    script->setSources("x = = 2");

    save("level.proj");

    EXPECT_EQ(countScripts(), 1U);
    EXPECT_EQ(script->getSources(), "x = = 2");
    EXPECT_EQ(resultOf(*script), 1);
}

TEST_F(ProjectSaveTest, PathFollowsTheWorkingPathWithoutASlash)
{
    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf("half"));

    save("AndHalf.proj");

    EXPECT_THAT(m_folder.list(), ElementsAre("halfAndHalf_scripts.tbscripts"));
}

TEST_F(ProjectSaveTest, FileThatCannotBeOpenedIsLoggedWithItsDerivedName)
{
    save("missing/level.proj");

    expectLogged(
        "Error when trying to open file saving : missing/level_scripts.tbscripts", "ContentLoader");
    EXPECT_THAT(m_folder.list(), IsEmpty());
}

namespace
{

struct ProjectPath
{
    const char* row;
    const char* path;
    const char* file;
};

} // namespace

using ProjectSavePathTest = OnRows<ProjectSaveTest, ProjectPath>;

ROWS(
    ProjectSavePathTest,
    {"Ending", "level1.proj", "level1_scripts.tbscripts"},
    {"EndingInAFolder", "game/level1.proj", "game/level1_scripts.tbscripts"},
    {"NoDot", "level1", "level1_scripts.tbscripts"},
    {"SeveralDots", "level.1.proj", "level.1_scripts.tbscripts"},
    {"DotAtTheEnd", "level1.", "level1_scripts.tbscripts"},
    {"DotsAtTheEnd", "level1..", "level1._scripts.tbscripts"},
    {"DotAtTheBeginning", ".level1", "_scripts.tbscripts"},
    {"DotAlone", ".", "_scripts.tbscripts"},
    {"Empty", "", "_scripts.tbscripts"},
    {"DotInTheFolderAlone", "game.v2/level1", "game_scripts.tbscripts"},
    {"DotInBoth", "game.v2/level1.proj", "game.v2/level1_scripts.tbscripts"},
    {"FolderAbove", "game.v2/../level1", "game.v2/._scripts.tbscripts"},
    {"OwnFileName", "a_scripts.tbscripts", "a_scripts_scripts.tbscripts"},
    {"Blanks", "my level.my proj", "my level_scripts.tbscripts"});

TEST_P(ProjectSavePathTest, GivesTheNameOfTheFile)
{
    m_folder.write("game/other", "");
    m_folder.write("game.v2/other", "");

    save(GetParam().path);

    EXPECT_NE(m_folder.read(GetParam().file), "<missing>");
}

// What was saved is what is loaded.
class ProjectRoundTripTest : public LoadingFixture
{
protected:
    // Saves all scripts, forgets them and loads them back.
    static ProjectLoadResult saveAndLoad()
    {
        ProjectSaveQuery saving;
        saving.path = "level.proj";
        ProjectLoader::save(saving);
        killScripts();
        ProjectLoadQuery loading;
        loading.path = "level_scripts.tbscripts";
        return ProjectLoader::load(loading);
    }

    // Saves and loads a script without interpreter, which may hold anything.
    static std::string sourcesAfterwards(const std::string& sources)
    {
        ScriptManager::getInstance()->createOrRetrieve("a")->setSources(sources);
        saveAndLoad();
        return std::string(std::string_view(getScript("a")->getSources()));
    }

    void TearDown() override
    {
        m_log.takeEntries(); // scripts without interpreter tell so when they are loaded
        LoadingFixture::TearDown();
    }
};

TEST_F(ProjectRoundTripTest, KeepsNameTypeAndSources)
{
    addScript("a", "x = 1");
    ScriptManager::getInstance()->createOrRetrieve("b")->setSources("anything");

    const ProjectLoadResult result = saveAndLoad();

    EXPECT_EQ(result.scripts.size(), 2U);
    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(getScript("b")->getSources(), "anything");
    EXPECT_EQ(getScript("b")->getTargetInterpreter(), 0U);
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectRoundTripTest, KeepsEveryByteAndPairOfBytesAndAMegabyte)
{
    std::string pairs;
    for (int i = 0; i < 256 * 256; ++i)
    {
        pairs += static_cast<char>(i / 256);
        pairs += static_cast<char>(i);
    }
    std::string megabyte;
    for (unsigned int i = 0; i < 1024 * 1024; ++i)
        megabyte += static_cast<char>((i * 2654435761U) >> 13U);

    EXPECT_EQ(sourcesAfterwards(pairs), pairs);
    EXPECT_EQ(sourcesAfterwards(megabyte), megabyte);
}

TEST_F(ProjectRoundTripTest, KeepsSourcesOfOddForm)
{
    for (const std::string& sources :
         {std::string("\0a\0\0", 4),
          std::string("\xC0\x80 \xED\xA0\x80 \xFF\xFE \xE2\x82 \xF5\x80\x80\x80 \x80"), // no UTF-8
          std::string(R"(x = "\u0041\\\"" -- \ud800 \/ \n)"),
          std::string("a\r\nb\nc\r\r\n"),
          std::string("\xEF\xBB\xBFx = 1")})
        EXPECT_EQ(sourcesAfterwards(sources), sources);
}

TEST_F(ProjectRoundTripTest, KeepsNamesOfAnyBytes)
{
    const std::string name("\0\xff\n\"\\", 5);
    addScript(name, "x = 1");
    addScript("", "x = 2");

    saveAndLoad();

    EXPECT_EQ(countScripts(), 2U);
    EXPECT_EQ(resultOf(*getScript(name)), 1);
    EXPECT_EQ(resultOf(*getScript("")), 2);
}

TEST_F(ProjectRoundTripTest, KeepsTwoThousandScripts)
{
    for (int i = 0; i < 2000; ++i)
        addScript("script " + std::to_string(i), "x = " + std::to_string(i));

    const ProjectLoadResult result = saveAndLoad();

    EXPECT_EQ(result.scripts.size(), 2000U);
    for (int i = 0; i < 2000; ++i)
    {
        Script* const script = getScript("script " + std::to_string(i));
        ASSERT_NE(script, nullptr) << i;
        EXPECT_EQ(script->getSources(), StringView("x = " + std::to_string(i)));
        EXPECT_TRUE(script->getLastCompilationResult().success);
    }
}

} // namespace tbScripts::test
