// Documents that somebody made up to do harm, or that a broken disk left. Reading them ends with
// the usual answers.

#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/ProjectLoader.h>

#include <functional>
#include <string>

namespace tbScripts::test
{

using namespace std::string_literals;
using tbMemory::StringView;

namespace
{

std::string repeat(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

// A document that is none, and what the parser says.
struct HostileDocument
{
    const char* row;
    std::function<std::string()> makeText;
    std::string error;
    std::string context;
};

std::vector<HostileDocument> allHostileDocuments()
{
    return {
        {"NestedArrays",
         [] { return std::string(100000, '['); },
         "line 1, column 513: too deep",
         "..." + std::string(40, '[') + ">>>" + std::string(20, '[') + "..."},
        {"NestedObjects",
         [] { return repeat("{\"a\":", 100000); },
         "line 1, column 2561: too deep",
         "..." + repeat("{\"a\":", 8) + ">>>" + repeat("{\"a\":", 4) + "..."},
        {"NestingInTheSources",
         [] { return R"({"name": "a", "sources": )" + std::string(100000, '['); },
         "line 1, column 537: too deep",
         "..." + std::string(40, '[') + ">>>" + std::string(20, '[') + "..."},
        {"ManyDigits",
         [] { return std::string(50000000, '1'); },
         "line 1, column 50000001: exponent overflow",
         "..." + std::string(40, '1') + ">>>"},
        {"NulBetweenTokens",
         [] { return "{\"name\":\0\"a\"}"s; },
         "line 1, column 9: syntax error",
         "{\"name\":>>> \"a\"}"},
        {"TwoByteOrderMarks",
         [] { return "\xEF\xBB\xBF\xEF\xBB\xBF{}"s; },
         "line 1, column 1: syntax error",
         ">>>\xEF\xBB\xBF{}"},
        {"BytesOutsideOfTexts",
         [] { return "{\x80}"s; },
         "line 1, column 2: syntax error",
         "{>>>\x80}"},
        {"TextWithoutAnEnd",
         [] { return R"({"name": ")" + std::string(1000000, 'a'); },
         "line 1, column 1000011: incomplete JSON",
         "..." + std::string(40, 'a') + ">>>"},
        {"SourcesOfALanguage",
         [] { return "-- patrol.lua\nfunction patrol() end\n"s; },
         "line 1, column 2: syntax error",
         "->>>- patrol.lua"},
    };
}

} // namespace

using HostileDocumentTest = OnRows<LoadingFixture, HostileDocument>;

ROWS(HostileDocumentTest, allHostileDocuments());

TEST_P(HostileDocumentTest, IsAParsingErrorAsDeclarationsAndAProjectWithoutScripts)
{
    const std::string document = GetParam().makeText();

    const auto result = ContentLoader::processScriptSources(document, true);
    EXPECT_EQ(result.status, 2U);
    EXPECT_THAT(
        textsOf(result.errors), ElementsAre("Script Declaration import error. Parsing error."));
    EXPECT_EQ(countScripts(), 0U);
    EXPECT_EQ(m_log.takeEntries(), parseError(GetParam().error, GetParam().context));
    m_folder.write("project", document);
    ProjectLoadQuery query;
    query.path = "project";

    EXPECT_TRUE(ProjectLoader::load(query).scripts.empty());
    EXPECT_EQ(countScripts(), 0U);
    EXPECT_EQ(m_log.takeEntries(), parseError(GetParam().error, GetParam().context));
}

// Documents that are odd and still are documents.
class OddDocumentTest : public LoadingFixture
{
protected:
    static ContentLoadResult<Script> process(const std::string& document)
    {
        return ContentLoader::processScriptSources(document, false);
    }

    std::vector<std::string> loadProject(const std::string& document) const
    {
        m_folder.write("project", document);
        ProjectLoadQuery query;
        query.path = "project";
        return namesOf(ProjectLoader::load(query).scripts);
    }
};

TEST_F(OddDocumentTest, OfSeveralMembersWithOneNameTheLastCounts)
{
    const auto result = process(R"({"name": "a", "sources": "1", "name": "b", "sources": "2"})");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("b"));
    EXPECT_EQ(getScript("b")->getSources(), "2");
    EXPECT_EQ(getScript("a"), nullptr);
}

TEST_F(OddDocumentTest, OfSeveralListsOfAProjectTheLastCounts)
{
    EXPECT_THAT(
        loadProject(R"({"scripts": [{"name": "a"}], "scripts": [{"name": "b"}]})"),
        ElementsAre("b"));
    EXPECT_THAT(loadProject(R"({"scripts": [{"name": "a"}], "scripts": 5})"), IsEmpty());
}

TEST_F(OddDocumentTest, NameThatIsNoStringCountsWhereItIsTheLastAndMayBeALongFraction)
{
    for (const std::string& name : {R"("a", "name": 5)"s, "0." + std::string(10000000, '3')})
    {
        const auto result = process(R"({"name": )" + name + "}");

        EXPECT_THAT(
            textsOf(result.errors),
            ElementsAre("Script Declaration entry incomplete. There is no name field."));
    }
}

TEST_F(OddDocumentTest, BytesThatAreNoUtf8AreKept)
{
    process("{\"name\": \"\xC0\x80\", \"sources\": \"\xED\xA0\x80\xFF\xF5\"}");

    Script* const script = getScript("\xC0\x80");
    ASSERT_NE(script, nullptr);
    EXPECT_EQ(script->getSources(), "\xED\xA0\x80\xFF\xF5");
}

TEST_F(OddDocumentTest, NameOfAMemberWithANulIsAnother)
{
    const auto result = process(R"({"name\u0000": "a"})");

    EXPECT_EQ(result.status, 2U);
    EXPECT_EQ(countScripts(), 0U);
}

TEST_F(OddDocumentTest, DeepTreesThatNobodyAsksForAreIgnored)
{
    const std::string deep = std::string(510, '[') + std::string(510, ']');

    const auto result = process(R"({"other": )" + deep + R"(, "name": "a"})");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
}

TEST_F(OddDocumentTest, HundredThousandWrongElementsAreToldOneByOne)
{
    const auto result = process("[" + repeat("0,", 100000) + R"({"name": "a"}])");

    EXPECT_EQ(result.status, 1U);
    EXPECT_EQ(result.errors.size(), 100000U);
    EXPECT_EQ(result.errors[99999], "Script Declaration entry not an object.");
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
}

TEST_F(OddDocumentTest, HundredThousandOtherMembersAreIgnored)
{
    std::string document = "{";
    for (int i = 0; i < 100000; ++i)
        document += "\"member " + std::to_string(i) + "\": 0, ";

    const auto result = process(document + R"("name": "a"})");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
}

} // namespace tbScripts::test
