// Trees and objects that are printed into files.

#include "support/LoadingFixture.h"

#include <tbExport/Exportable.h>
#include <tbExport/Node.h>
#include <tbScripts/ContentLoader.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

namespace
{

// Something of the host that has a declaration of its own.
class Door : public tbExport::Exportable
{
public:
    void exportClassToTree(tbExport::Node* node) override
    {
        node->addMember("wood")->setString("oak");
        node->addMember("lock")->setString("");
    }

    void importClassFromTree(tbExport::Node*) override {}
};

} // namespace

class ContentLoaderSaveTest : public LoadingFixture
{
protected:
    Members readMembers(const std::string& name) const
    {
        return membersOf(parse(m_folder.read(name)).getRoot());
    }
};

TEST_F(ContentLoaderSaveTest, TreeIsPrintedInItsOrder)
{
    tbExport::Node tree;
    tree.setObject();
    tree.addMember("b")->setString("1");
    tree.addMember("a")->setString("2");

    EXPECT_TRUE(ContentLoader::saveTreeDeclaration(&tree, "file"));

    EXPECT_THAT(readMembers("file"), ElementsAre(Pair("b", "1"), Pair("a", "2")));
}

TEST_F(ContentLoaderSaveTest, TreeOfAnyKindIsPrinted)
{
    tbExport::Node tree;
    tree.setString("alone");

    EXPECT_TRUE(ContentLoader::saveTreeDeclaration(&tree, "file"));

    const auto parsed = parse(m_folder.read("file"));
    EXPECT_EQ(parsed.getRoot()->getString(), "alone");
}

TEST_F(ContentLoaderSaveTest, NullTreeIsNotSavedAndNotLogged)
{
    m_folder.write("file", "text");

    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(nullptr, "file"));
    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(nullptr, "other"));

    EXPECT_EQ(m_folder.read("file"), "text");
    EXPECT_THAT(m_folder.list(), ElementsAre("file"));
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(ContentLoaderSaveTest, TreeThatCannotBeWrittenIsReported)
{
    tbExport::Node tree;

    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(&tree, "missing/file"));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error when trying to open file saving : missing/file", "ContentLoader"}));
}

TEST_F(ContentLoaderSaveTest, ScriptIsPrintedAsItsDeclaration)
{
    Script* const script = addScript("a", "x = 1");

    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(script, "file"));

    EXPECT_THAT(
        readMembers("file"),
        ElementsAre(Pair("name", "a"), Pair("type", "lua"), Pair("sources", "x = 1")));
}

TEST_F(ContentLoaderSaveTest, NewScriptIsPrintedWithAllMembers)
{
    Script script;

    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(&script, "file"));

    EXPECT_THAT(
        readMembers("file"),
        ElementsAre(Pair("name", ""), Pair("type", "UNKNOWN"), Pair("sources", "")));
}

TEST_F(ContentLoaderSaveTest, ObjectOfTheHostIsPrinted)
{
    Door door;

    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(&door, "file"));

    EXPECT_THAT(readMembers("file"), ElementsAre(Pair("wood", "oak"), Pair("lock", "")));
}

TEST_F(ContentLoaderSaveTest, NullObjectIsNotSaved)
{
    EXPECT_FALSE(ContentLoader::saveObjectDeclaration(nullptr, "file"));

    EXPECT_THAT(m_folder.list(), IsEmpty());
}

TEST_F(ContentLoaderSaveTest, ObjectThatCannotBeWrittenIsReported)
{
    Script script;

    EXPECT_FALSE(ContentLoader::saveObjectDeclaration(&script, "missing/file"));

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Error when trying to open file saving : missing/file", "ContentLoader"}));
}

} // namespace tbScripts::test
