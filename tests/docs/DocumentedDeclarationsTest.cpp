// The documents of docs/script-declarations.md, and that of docs/tbscripts.md.

#include "docs/DocumentPage.h"
#include "support/LoadingFixture.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/ProjectLoader.h>

namespace tbScripts::test
{

class DocumentedDeclarationsTest : public LoadingFixture
{
protected:
    static std::string documentAt(std::size_t index)
    {
        const auto documents = blocksOf("script-declarations.md", "json");
        return index < documents.size() ? documents[index] : "<no such block>";
    }

    std::vector<std::string> namesInList(const std::string& list)
    {
        m_folder.write("list.tbscripts", list);
        ProjectLoadQuery query;
        query.path = "list.tbscripts";
        return namesOf(ProjectLoader::load(query).scripts);
    }
};

TEST_F(DocumentedDeclarationsTest, PageHasThree)
{
    EXPECT_EQ(blocksOf("script-declarations.md", "json").size(), 3U);
    EXPECT_EQ(blocksOf("tbscripts.md", "json").size(), 1U);
}

TEST_F(DocumentedDeclarationsTest, FirstIsWhatIsWritten)
{
    Script* const script =
        addScript("patrol", "-- patrol.lua\nfunction patrol(x) return x + 1 end\n");

    ContentLoader::saveObjectDeclaration(script, "patrol.json");

    EXPECT_EQ(m_folder.read("patrol.json"), documentAt(0));
}

TEST_F(DocumentedDeclarationsTest, FirstIsOneScript)
{
    const auto result = ContentLoader::processScriptSources(documentAt(0), true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("patrol"));
    EXPECT_TRUE(getScript("patrol")->getLastCompilationResult().success);
}

TEST_F(DocumentedDeclarationsTest, SecondIsTwoScripts)
{
    const auto result = ContentLoader::processScriptSources(documentAt(1), true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("patrol", "waves"));
    EXPECT_TRUE(getScript("waves")->getLastCompilationResult().success);
}

TEST_F(DocumentedDeclarationsTest, ThirdIsTheListOfAProject)
{
    EXPECT_THAT(namesInList(documentAt(2)), ElementsAre("patrol", "notes"));

    expectLogged("Script type requested unknown. This will disable the Script.", "Script");
}

TEST_F(DocumentedDeclarationsTest, ListOfTheToolsPageIsOne)
{
    EXPECT_THAT(namesInList(blocksOf("tbscripts.md", "json").at(0)), ElementsAre("hello"));

    EXPECT_TRUE(getScript("hello")->getLastCompilationResult().success);
}

TEST_F(DocumentedDeclarationsTest, NamesOfListsAreAsInTheTable)
{
    const auto rows = rowsOf("script-declarations.md", "| project | list |");
    ASSERT_EQ(rows.size(), 5U);

    for (const auto& [project, list] : rows)
    {
        SCOPED_TRACE(project);
        m_folder.write("game/folder", "");
        m_folder.write("game.v2/folder", "");
        ProjectSaveQuery query;
        query.path = project;
        ProjectLoader::save(query);
        EXPECT_EQ(m_folder.read(list), "{}\n");
    }
}

} // namespace tbScripts::test
