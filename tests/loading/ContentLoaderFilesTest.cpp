// What is read from files.

#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbExport/Exportable.h>
#include <tbExport/Node.h>
#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <string>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

using tbMemory::StringView;
using tbResources::ResourceManager;

class ContentLoaderFilesTest : public LoadingFixture
{
protected:
    // What is logged of a file that is called `name` in the folder.
    std::vector<LogEntry> missing(const std::string& name) const
    {
        return {
            {"Can't find Object Declaration file " + m_folder.pathOf(name),
             "ContentLoader::inputData"}};
    }

    static Members readMembers(const std::string& path)
    {
        return membersOf(ContentLoader::inputData(path).getRoot());
    }

    static std::string readText(const StringView& path)
    {
        return std::string(std::string_view(ContentLoader::inputDataStr(path)));
    }
};

TEST_F(ContentLoaderFilesTest, RelativePathStartsFromTheWorkingPathAndAbsoluteOnesAreTakenAsTheyAre)
{
    const TemporaryFolder elsewhere;
    elsewhere.write("file.json", R"({"a": "1"})");
    m_folder.write("inner/file.json", R"({"b": "1", "a": "2"})");

    EXPECT_THAT(readMembers("inner/file.json"), ElementsAre(Pair("b", "1"), Pair("a", "2")));
    EXPECT_EQ(readText("inner/../inner/file.json"), R"({"b": "1", "a": "2"})");
    EXPECT_THAT(readMembers(elsewhere.pathOf("file.json")), ElementsAre(Pair("a", "1")));
    EXPECT_EQ(readText(elsewhere.pathOf("file.json")), R"({"a": "1"})");
    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf("inner")); // without a slash
    EXPECT_THAT(readMembers("file.json"), ElementsAre(Pair("b", "1"), Pair("a", "2")));
}

// What cannot be read, and how it is made in the folder.
struct MissingRow
{
    const char* row;
    std::string path;
    void (*make)(const TemporaryFolder& folder);
};

void makeSocket(const TemporaryFolder& folder)
{
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    folder.pathOf("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ::close(descriptor);
}

void makeUnreadable(const TemporaryFolder& folder, const char* name)
{
    folder.write(name, R"({"a": "1"})");
    const std::string first = std::string(name).substr(0, std::string(name).find('/'));
    ::chmod(folder.pathOf(first).c_str(), 0);
}

void makeLink(const TemporaryFolder& folder, const char* target)
{
    ASSERT_EQ(::symlink(target, folder.pathOf("link").c_str()), 0);
}

using MissingFileTest = OnRows<ContentLoaderFilesTest, MissingRow>;

ROWS(
    MissingFileTest,
    {"Nothing", "inner/file.json", [](const TemporaryFolder&) {}},
    {"EmptyPath", "", [](const TemporaryFolder&) {}},
    {"Directory", "inner", [](const TemporaryFolder& folder) { folder.write("inner/f", "{}"); }},
    {"FifoWithoutWriter", // which is not waited for
     "pipe",
     [](const TemporaryFolder& folder) { ::mkfifo(folder.pathOf("pipe").c_str(), 0666); }},
    {"Socket", "socket", &makeSocket},
    {"FileThatMayNotBeRead",
     "secret",
     [](const TemporaryFolder& folder) { makeUnreadable(folder, "secret"); }},
    {"FileInAFolderThatMayNotBeEntered",
     "locked/file",
     [](const TemporaryFolder& folder) { makeUnreadable(folder, "locked/file"); }},
    {"PathWithANul",
     std::string("file\0.json", 10),
     [](const TemporaryFolder& folder) { folder.write("file", R"({"a": "1"})"); }},
    {"PathTooLong", std::string(100000, 'a'), [](const TemporaryFolder&) {}},
    {"LinkToNothing", "link", [](const TemporaryFolder& folder) { makeLink(folder, "none"); }},
    {"LinkToItself", "link", [](const TemporaryFolder& folder) { makeLink(folder, "link"); }});

TEST_P(MissingFileTest, IsLoggedWithItsWholePathAsATreeAndEmptyAsAString)
{
    GetParam().make(m_folder);

    const OrdinaryUser user;
    const auto parsed = ContentLoader::inputData(GetParam().path);

    EXPECT_EQ(parsed.getRoot(), nullptr);
    EXPECT_FALSE(parsed.hasFailed());
    EXPECT_EQ(m_log.takeEntries(), missing(GetParam().path));
    EXPECT_EQ(readText(GetParam().path), "");
}

// Between two looks at a path it may come to lead elsewhere.
TEST_F(ContentLoaderFilesTest, DocumentIsOpenedOnce)
{
    m_folder.write("file.json", R"({"a": "1"})");
    const int watch = ::inotify_init1(IN_NONBLOCK);
    ASSERT_GE(
        ::inotify_add_watch(watch, m_folder.pathOf("file.json").c_str(), IN_OPEN | IN_CLOSE), 0);

    EXPECT_THAT(readMembers("file.json"), ElementsAre(Pair("a", "1")));

    constexpr std::size_t OPENED_AND_CLOSED = 2;
    std::string events(64 * sizeof(inotify_event), '\0');
    EXPECT_EQ(
        ::read(watch, events.data(), events.size()), OPENED_AND_CLOSED * sizeof(inotify_event));
    ::close(watch);
}

TEST_F(ContentLoaderFilesTest, DeviceIsMissing)
{
    EXPECT_EQ(ContentLoader::inputData("/dev/zero").getRoot(), nullptr);
    expectLogged("Can't find Object Declaration file /dev/zero", "ContentLoader::inputData");
    EXPECT_EQ(readText("/dev/zero"), "");
}

TEST_F(ContentLoaderFilesTest, FileThatIsNoDocumentIsLoggedAsAString)
{
    m_folder.write("empty.json", "");
    m_folder.write("file.json", "{\n\"a\"\n}");

    EXPECT_EQ(ContentLoader::inputData("empty.json").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: incomplete JSON", ">>>"));
    EXPECT_EQ(ContentLoader::inputData("file.json").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 3, column 1: syntax error", ">>>}"));
    EXPECT_EQ(readText("empty.json"), "");
}

TEST_F(ContentLoaderFilesTest, LinksAreFollowed)
{
    m_folder.write("inner/file.json", R"({"a": "1"})");
    ASSERT_EQ(::symlink("inner/file.json", m_folder.pathOf("link").c_str()), 0);

    EXPECT_THAT(readMembers("link"), ElementsAre(Pair("a", "1")));
    EXPECT_EQ(readText("link"), R"({"a": "1"})");
}

TEST_F(ContentLoaderFilesTest, WholeTextOfAFileIsGiven)
{
    std::string bytes;
    for (int i = 0; i < 256 * 1024; ++i)
        bytes += static_cast<char>(i);
    m_folder.write("file", bytes);

    EXPECT_EQ(readText("file"), bytes);
}

// Trees and objects that are printed into files.

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

TEST_F(ContentLoaderSaveTest, NullTreesAndObjectsAreNotSavedAndNotLogged)
{
    m_folder.write("file", "text");

    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(nullptr, "file"));
    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(nullptr, "other"));
    EXPECT_FALSE(ContentLoader::saveObjectDeclaration(nullptr, "file"));

    EXPECT_EQ(m_folder.read("file"), "text");
    EXPECT_THAT(m_folder.list(), ElementsAre("file"));
}

TEST_F(ContentLoaderSaveTest, WhatCannotBeWrittenIsReported)
{
    tbExport::Node tree;
    Script script;
    const LogEntry entry{"Error when trying to open file saving : missing/file", "ContentLoader"};

    EXPECT_FALSE(ContentLoader::saveTreeDeclaration(&tree, "missing/file"));
    EXPECT_FALSE(ContentLoader::saveObjectDeclaration(&script, "missing/file"));

    expectLogged({entry, entry});
}

TEST_F(ContentLoaderSaveTest, ScriptsAndObjectsOfTheHostArePrintedAsTheirDeclarations)
{
    Script fresh;
    Door door;

    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(addScript("a", "x = 1"), "script"));
    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(&fresh, "fresh"));
    EXPECT_TRUE(ContentLoader::saveObjectDeclaration(&door, "door"));

    EXPECT_THAT(
        readMembers("script"),
        ElementsAre(Pair("name", "a"), Pair("type", "lua"), Pair("sources", "x = 1")));
    EXPECT_THAT(
        readMembers("fresh"),
        ElementsAre(Pair("name", ""), Pair("type", "UNKNOWN"), Pair("sources", "")));
    EXPECT_THAT(readMembers("door"), ElementsAre(Pair("wood", "oak"), Pair("lock", "")));
}

// Declarations of scripts in files.

using Result = ContentLoadResult<Script>;

class ScriptDeclarationFileTest : public LoadingFixture
{
protected:
    static void expectParsingError(const Result& result)
    {
        EXPECT_EQ(result.status, 2U);
        EXPECT_THAT(
            textsOf(result.errors), ElementsAre("Script Declaration import error. Parsing error."));
        EXPECT_TRUE(result.objects.empty());
    }
};

TEST_F(ScriptDeclarationFileTest, ScriptIsLoadedAndCompiledWhateverIsAskedFor)
{
    m_folder.write("file", R"({"name": "a", "type": "lua", "sources": "x = 1"})");
    for (const bool compile : {true, false})
    {
        const Result result = ContentLoader::loadScriptDeclaration("file", compile);

        EXPECT_EQ(result.status, 0U);
        EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
        EXPECT_EQ(resultOf(*getScript("a")), 1);
        killScripts();
    }
}

TEST_F(ScriptDeclarationFileTest, ArrayIsLoadedAndCompiled)
{
    m_folder.write(
        "file",
        R"([{"name": "a", "type": "lua", "sources": "x = 1"}, {},
            {"name": "b", "type": "lua", "sources": "x = 2"}])");

    const Result result = ContentLoader::loadScriptDeclaration("file", false);

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "b"));
    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(resultOf(*getScript("b")), 2);
}

TEST_F(ScriptDeclarationFileTest, FileThatIsMissingOrNoDocumentIsAParsingError)
{
    m_folder.write("file", "x = 1\n");

    expectParsingError(ContentLoader::loadScriptDeclaration("missing", true));
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: incomplete JSON", ">>>"));
    expectParsingError(ContentLoader::loadScriptDeclaration("file", true));
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: syntax error", ">>>x = 1"));
}

TEST_F(ScriptDeclarationFileTest, FailedLoadingLeavesTheScriptsThatThereAre)
{
    Script* const script = addScript("a", "x = 1");
    script->load();
    m_folder.write("file", R"({"name": "a", "sources")");

    ContentLoader::loadScriptDeclaration("file", true);

    m_log.takeEntries();
    EXPECT_EQ(getScript("a"), script);
    EXPECT_EQ(resultOf(*script), 1);
}

TEST_F(ScriptDeclarationFileTest, SavedScriptIsLoadedBackByteForByte)
{
    std::string bytes;
    for (int i = 0; i < 512; ++i)
        bytes += static_cast<char>(i);
    ContentLoader::saveObjectDeclaration(addScript(bytes, bytes), "file");
    killScripts();

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    m_log.takeEntries(); // it does not compile
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(std::string_view(result.objects[0]->getName()), bytes);
    EXPECT_EQ(std::string_view(result.objects[0]->getSources()), bytes);
    EXPECT_EQ(getScript(bytes), result.objects[0]);
}

TEST_F(ScriptDeclarationFileTest, MembersOfAnotherTypeAreIgnored)
{
    addScript("a", "x = 1");
    m_folder.write("file", R"({"name": "a", "type": 1, "sources": ["x = 2"]})");

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

} // namespace

} // namespace tbScripts::test
