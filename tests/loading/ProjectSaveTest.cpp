// All scripts of the manager in one file.

#include "support/AllocationCounter.h"
#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbExport/JsonExporter.h>
#include <tbResources/ResourceManager.h>
#include <tbScripts/ProjectLoader.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace tbScripts::test
{

using tbResources::ResourceManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

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

TEST_F(ProjectSaveTest, DeclarationHasNameTypeAndSourcesInThisOrder)
{
    addScript("a", "x = 1");

    save("level.proj");

    EXPECT_THAT(
        readDeclarations("level_scripts.tbscripts"),
        ElementsAre(ElementsAre(Pair("name", "a"), Pair("type", "lua"), Pair("sources", "x = 1"))));
}

TEST_F(ProjectSaveTest, ScriptWithoutInterpreterIsSavedToo)
{
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

TEST_F(ProjectSaveTest, WithoutScriptsTheFileIsAnEmptyObject)
{
    save("level.proj");

    const auto parsed = parse(m_folder.read("level_scripts.tbscripts"));
    EXPECT_TRUE(parsed.getRoot()->isObject());
    EXPECT_EQ(parsed.getRoot()->getSize(), 0U);
}

TEST_F(ProjectSaveTest, ManagerIsMadeWhereThereIsNone)
{
    killScripts();

    save("level.proj");

    EXPECT_NE(ScriptManager::getInstanceIfExisting(), nullptr);
}

TEST_F(ProjectSaveTest, EarlierFileIsReplaced)
{
    addScript("a", std::string(10000, ' '));
    save("level.proj");
    killScripts();

    save("level.proj");

    EXPECT_EQ(parse(m_folder.read("level_scripts.tbscripts")).getRoot()->getSize(), 0U);
    EXPECT_THAT(m_folder.list(), ElementsAre("level_scripts.tbscripts"));
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

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error when trying to open file saving : missing/level_scripts.tbscripts",
            "ContentLoader"}));
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

std::ostream& operator<<(std::ostream& stream, const ProjectPath& path)
{
    return stream << path.path;
}

} // namespace

class ProjectSavePathTest : public ProjectSaveTest,
                            public ::testing::WithParamInterface<ProjectPath>
{
};

INSTANTIATE_TEST_SUITE_P(
    Paths,
    ProjectSavePathTest,
    ::testing::Values(
        ProjectPath{"Ending", "level1.proj", "level1_scripts.tbscripts"},
        ProjectPath{"EndingInAFolder", "game/level1.proj", "game/level1_scripts.tbscripts"},
        ProjectPath{"NoDot", "level1", "level1_scripts.tbscripts"},
        ProjectPath{"SeveralDots", "level.1.proj", "level.1_scripts.tbscripts"},
        ProjectPath{"DotAtTheEnd", "level1.", "level1_scripts.tbscripts"},
        ProjectPath{"DotsAtTheEnd", "level1..", "level1._scripts.tbscripts"},
        ProjectPath{"DotAtTheBeginning", ".level1", "_scripts.tbscripts"},
        ProjectPath{"DotAlone", ".", "_scripts.tbscripts"},
        ProjectPath{"Empty", "", "_scripts.tbscripts"},
        ProjectPath{"DotInTheFolderAlone", "game.v2/level1", "game_scripts.tbscripts"},
        ProjectPath{"DotInBoth", "game.v2/level1.proj", "game.v2/level1_scripts.tbscripts"},
        ProjectPath{"FolderAbove", "game.v2/../level1", "game.v2/._scripts.tbscripts"},
        ProjectPath{"OwnFileName", "a_scripts.tbscripts", "a_scripts_scripts.tbscripts"},
        ProjectPath{"Blanks", "my level.my proj", "my level_scripts.tbscripts"}),
    RowName());

TEST_P(ProjectSavePathTest, GivesTheNameOfTheFile)
{
    m_folder.write("game/other", "");
    m_folder.write("game.v2/other", "");

    save(GetParam().path);

    EXPECT_NE(m_folder.read(GetParam().file), "<missing>");
}

} // namespace tbScripts::test
