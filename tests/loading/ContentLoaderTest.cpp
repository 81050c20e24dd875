// Declarations as texts and trees, and the scripts that they become.

#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbScripts/ContentLoader.h>

#include <string>

namespace tbScripts::test
{

namespace
{

using tbMemory::StringView;

using Result = ContentLoadResult<Script>;

class ContentLoaderTest : public LoadingFixture
{
protected:
    static Result process(const StringView& text, bool compile = false)
    {
        return ContentLoader::processScriptSources(text, compile);
    }

    static void expectFailure(const Result& result, const std::string& error)
    {
        EXPECT_EQ(result.status, 2U);
        EXPECT_THAT(textsOf(result.errors), ElementsAre(error));
        EXPECT_TRUE(result.objects.empty());
        EXPECT_EQ(countScripts(), 0U);
    }
};

TEST_F(ContentLoaderTest, NewResultIsASuccessWithoutContents)
{
    const Result result;

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_TRUE(result.objects.empty());
}

TEST_F(ContentLoaderTest, TextIsReadIntoATree)
{
    const auto parsed = ContentLoader::inputDataSources(R"({"b": "1", "a": "2"})");

    EXPECT_THAT(membersOf(parsed.getRoot()), ElementsAre(Pair("b", "1"), Pair("a", "2")));
}

TEST_F(ContentLoaderTest, TextThatIsNoDocumentIsLoggedInSixEntries)
{
    const auto parsed = ContentLoader::inputDataSources("{\n  \"name\" 1\n}");

    EXPECT_EQ(parsed.getRoot(), nullptr);
    EXPECT_FALSE(parsed.hasFailed());
    EXPECT_EQ(parsed.getError(), "");
    expectLogged(
        {{"", "-"},
         {"Object Declaration parse error :", "ContentLoader::inputDataSources"},
         {"line 2, column 10: syntax error", "ContentLoader::inputDataSources"},
         {"", "-"},
         {"  \"name\" >>>1", "ContentLoader::inputDataSources"},
         {"", "-"}});
}

TEST_F(ContentLoaderTest, EmptyAndNullStringsAreNoDocuments)
{
    for (const StringView& string : {StringView(""), StringView()})
    {
        EXPECT_EQ(ContentLoader::inputDataSources(string).getRoot(), nullptr);
        EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: incomplete JSON", ">>>"));
    }
}

TEST_F(ContentLoaderTest, TextNeedNotEndWithAZero)
{
    const auto parsed = ContentLoader::inputDataSources(StringView("{}]]]", 2));

    ASSERT_NE(parsed.getRoot(), nullptr);
    EXPECT_TRUE(parsed.getRoot()->isObject());
}

TEST_F(ContentLoaderTest, SourcesThatCannotBeParsedAreAFailure)
{
    const Result result = process("{", true);

    expectFailure(result, "Script Declaration import error. Parsing error.");
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 2: incomplete JSON", "{>>>"));
}

TEST_F(ContentLoaderTest, DeclarationBecomesAScriptOfTheManager)
{
    const Result result = process(R"({"name": "a", "type": "lua", "sources": "x = 1"})");

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    ASSERT_EQ(result.objects.size(), 1U);
    Script* const script = result.objects[0];
    EXPECT_EQ(script, getScript("a"));
    EXPECT_EQ(script->getName(), "a");
    EXPECT_EQ(script->getTargetInterpreter(), 1U);
    EXPECT_EQ(script->getSources(), "x = 1");
}

TEST_F(ContentLoaderTest, NameAloneIsADeclaration)
{
    const Result result = process(R"({"name": "a"})");

    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.status, 0U);
    EXPECT_EQ(result.objects[0]->getTargetInterpreter(), 0U);
    EXPECT_EQ(result.objects[0]->getSources(), "");
}

TEST_F(ContentLoaderTest, OrderOfTheMembersIsFreeAndOtherMembersAreIgnored)
{
    const Result result =
        process(R"({"sources": "x = 1", "author": {"name": "b"}, "type": "lua", "name": "a"})");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
    EXPECT_EQ(getScript("a")->getSources(), "x = 1");
    EXPECT_EQ(countScripts(), 1U);
}

TEST_F(ContentLoaderTest, NamesOfMembersAreComparedExactly)
{
    const Result result = process(R"({"Name": "a", "name ": "b"})");

    expectFailure(result, "Script Declaration entry incomplete. There is no name field.");
}

TEST_F(ContentLoaderTest, EmptyNameIsAName)
{
    const Result result = process(R"({"name": "", "sources": "x = 1"})");

    EXPECT_EQ(result.status, 0U);
    EXPECT_EQ(getScript("")->getSources(), "x = 1");
}

TEST_F(ContentLoaderTest, NameKeepsAllItsBytes)
{
    const Result result = process("{\"name\": \"a\\u0000\xff\"}");

    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.objects[0]->getName(), StringView("a\0\xff", 3));
    EXPECT_EQ(getScript(std::string("a\0\xff", 3)), result.objects[0]);
}

TEST_F(ContentLoaderTest, UnknownTypeIsLoggedAndStillASuccess)
{
    const Result result = process(R"({"name": "a", "type": "Lua", "sources": "x = 1"})", true);

    EXPECT_EQ(result.status, 0U);
    expectLogged("Script type requested unknown. This will disable the Script.", "Script");
    EXPECT_EQ(getScript("a")->getLastCompilationResult().errorCode, 2U);
}

TEST_F(ContentLoaderTest, DeclaringAgainUpdatesTheScriptInPlaceAndLeavesWhatIsNotDeclared)
{
    process(R"({"name": "a", "type": "lua", "sources": "x = 1"})", true);
    Script* const script = getScript("a");

    const Result result = process(R"({"name": "a", "type": "lua", "sources": "x = 2"})", true);
    EXPECT_EQ(result.objects[0], script);
    EXPECT_EQ(countScripts(), 1U);
    EXPECT_EQ(resultOf(*script), 2);
    process(R"({"name": "a", "type": null, "sources": 5})");

    EXPECT_EQ(script->getTargetInterpreter(), 1U);
    EXPECT_EQ(script->getSources(), "x = 2");
}

TEST_F(ContentLoaderTest, ScriptWithAnotherNameOfItsOwnIsFoundWhereItIsFiled)
{
    Script* const script = addScript("a", "x = 1");
    script->setName("b");

    const Result result = process(R"({"name": "a", "sources": "x = 2"})");

    EXPECT_EQ(result.status, 0U);
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(result.objects[0], script);
    EXPECT_EQ(script->getSources(), "x = 2");
    EXPECT_EQ(script->getName(), "b");
}

TEST_F(ContentLoaderTest, ScriptIsCompiledIfAskedForAndKeepsItsCompiledFormOtherwise)
{
    process(R"({"name": "a", "type": "lua", "sources": "x = = 1"})", false);
    EXPECT_TRUE(getScript("a")->getLastCompilationResult().success);
    EXPECT_EQ(resultOf(*getScript("a")), -1);
    m_log.takeEntries();
    process(R"({"name": "a", "type": "lua", "sources": "x = 1"})", true);
    EXPECT_EQ(resultOf(*getScript("a")), 1);

    process(R"({"name": "a", "sources": "x = 2"})", false);

    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

TEST_F(ContentLoaderTest, ScriptThatDoesNotCompileAnyMoreIsASuccessWithoutCompiledForm)
{
    process(R"({"name": "a", "type": "lua", "sources": "x = 1"})", true);

    const Result result = process(R"({"name": "a", "sources": "x = = 1"})", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
    const CompilationResult& compiled = getScript("a")->getLastCompilationResult();
    EXPECT_FALSE(compiled.success);
    EXPECT_EQ(compiled.errorCode, 3U);
    const std::string text = "Error while compiling script 'a' : [string \"x = = 1\"]:1: "
                             "unexpected symbol near '='";
    EXPECT_EQ(compiled.message, StringView(text));
    expectLogged(text, "LuaScript");
    EXPECT_EQ(resultOf(*getScript("a")), -1);
    m_log.takeEntries();
}

TEST_F(ContentLoaderTest, TreeBecomesAScriptAndStaysTheCallers)
{
    auto parsed = parse(R"({"name": "a", "type": "lua", "sources": "x = 4"})");

    const Result result = ContentLoader::processScriptTree(parsed.getRoot(), true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
    EXPECT_EQ(resultOf(*getScript("a")), 4);
    EXPECT_THAT(
        membersOf(parsed.getRoot()),
        ElementsAre(Pair("name", "a"), Pair("type", "lua"), Pair("sources", "x = 4")));
}

TEST_F(ContentLoaderTest, NullTreesAndArraysAreNoObjects)
{
    auto parsed = parse(R"([{"name": "a"}])");

    for (tbExport::Node* tree : {static_cast<tbExport::Node*>(nullptr), parsed.getRoot()})
        expectFailure(
            ContentLoader::processScriptTree(tree, true),
            "Script Declaration entry not an object.");
}

struct WrongDocument
{
    const char* row;
    const char* text;
    const char* error;
};

constexpr const char* NO_CONTAINER =
    "Script Declaration import error. This is not an object nor an array.";
constexpr const char* NO_NAME = "Script Declaration entry incomplete. There is no name field.";

using ContentLoaderWrongDocumentTest = OnRows<ContentLoaderTest, WrongDocument>;

ROWS(
    ContentLoaderWrongDocumentTest,
    {"TextAtTheRoot", R"("name")", NO_CONTAINER},
    {"NumberAtTheRoot", "5", NO_CONTAINER},
    {"BoolAtTheRoot", "true", NO_CONTAINER},
    {"NullAtTheRoot", "null", NO_CONTAINER},
    {"EmptyObject", "{}", NO_NAME},
    {"NoName", R"({"type": "lua", "sources": "x = 1"})", NO_NAME},
    {"NumberAsName", R"({"name": 5})", NO_NAME},
    {"NullAsName", R"({"name": null})", NO_NAME},
    {"BoolAsName", R"({"name": true})", NO_NAME},
    {"ArrayAsName", R"({"name": ["a"]})", NO_NAME},
    {"ObjectAsName", R"({"name": {"name": "a"}})", NO_NAME},
    {"ProjectList", R"({"scripts": [{"name": "a"}]})", NO_NAME});

TEST_P(ContentLoaderWrongDocumentTest, IsAFailureThatIsNotLogged)
{
    expectFailure(process(GetParam().text, true), GetParam().error);
}

// Documents with several declarations.

using Result = ContentLoadResult<Script>;

class ContentLoaderArrayTest : public LoadingFixture
{
protected:
    static Result process(const std::string& text, bool compile = false)
    {
        return ContentLoader::processScriptSources(text, compile);
    }
};

TEST_F(ContentLoaderArrayTest, EmptyArrayIsASuccess)
{
    const Result result = process("[]");

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_TRUE(result.objects.empty());
}

TEST_F(ContentLoaderArrayTest, ScriptsComeInTheOrderOfTheDocument)
{
    const Result result = process(R"([{"name": "c"}, {"name": "a"}, {"name": "b"}])");

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_THAT(namesOf(result.objects), ElementsAre("c", "a", "b"));
    EXPECT_EQ(countScripts(), 3U);
}

TEST_F(ContentLoaderArrayTest, ElementsThatFailDoNotStopTheOthersAndAreToldInTheirOrder)
{
    const Result result = process(R"([{}, {"name": "a"}, 5, {"name": 5}, {"name": "c"}])");

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(
        textsOf(result.errors),
        ElementsAre(
            "Script Declaration entry incomplete. There is no name field.",
            "Script Declaration entry not an object.",
            "Script Declaration entry incomplete. There is no name field."));
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "c"));
}

TEST_F(ContentLoaderArrayTest, OnlyFailuresAreStillPartial)
{
    const Result result = process("[1]");

    EXPECT_EQ(result.status, 1U);
    EXPECT_TRUE(result.objects.empty());
    EXPECT_EQ(countScripts(), 0U);
}

TEST_F(ContentLoaderArrayTest, ElementsAreCompiledIfAskedFor)
{
    process(R"([{"name": "a", "type": "lua", "sources": "x = = 1"}])", false);
    EXPECT_TRUE(getScript("a")->getLastCompilationResult().success);

    process(
        R"([{"name": "a", "type": "lua", "sources": "x = 1"},
            {"name": "b", "type": "lua", "sources": "x = 2"}])",
        true);

    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(resultOf(*getScript("b")), 2);
}

TEST_F(ContentLoaderArrayTest, ScriptThatDoesNotCompileIsNoFailure)
{
    const Result result =
        process(R"([{"name": "a", "type": "lua", "sources": "x = = 1"}, {"name": "b"}])", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "b"));
    expectLogged(
        "Error while compiling script 'a' : [string \"x = = 1\"]:1: unexpected symbol near '='",
        "LuaScript");
}

TEST_F(ContentLoaderArrayTest, NameThatComesTwiceGivesOneScriptWithTheLastSources)
{
    const Result result =
        process(R"([{"name": "a", "sources": "x = 1"}, {"name": "a", "sources": "x = 2"}])");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "a"));
    EXPECT_EQ(countScripts(), 1U);
    EXPECT_EQ(getScript("a")->getSources(), "x = 2");
}

TEST_F(ContentLoaderArrayTest, ScriptsBeforeASyntaxErrorAreNotMade)
{
    const Result result = process("[{\"name\": \"a\"},\n 5 5]");

    EXPECT_EQ(result.status, 2U);
    EXPECT_EQ(countScripts(), 0U);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 2, column 4: syntax error", " 5 >>>5]"));
}

struct WrongElement
{
    const char* row;
    const char* text;
};

using test::operator<<;

using ContentLoaderWrongElementTest = OnRows<LoadingFixture, WrongElement>;

ROWS(
    ContentLoaderWrongElementTest,
    {"Number", "5"},
    {"Text", R"("name")"},
    {"Bool", "false"},
    {"Null", "null"},
    {"Array", R"([{"name": "a"}])"});

TEST_P(ContentLoaderWrongElementTest, IsNoObject)
{
    const std::string text = "[" + std::string(GetParam().text) + "]";

    const Result result = ContentLoader::processScriptSources(text, true);

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(textsOf(result.errors), ElementsAre("Script Declaration entry not an object."));
    EXPECT_TRUE(result.objects.empty());
}

} // namespace

} // namespace tbScripts::test
