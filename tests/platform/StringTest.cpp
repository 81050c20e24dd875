

#include <tbLog/Logger.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace
{

using tbMemory::String;
using tbMemory::StringView;

static_assert(std::is_nothrow_move_constructible_v<String>);
static_assert(std::is_nothrow_move_assignable_v<String>);
static_assert(!std::is_constructible_v<String, int>);

// Longer than what the text keeps inside itself.
constexpr const char* LONG_TEXT = "a text that has to be stored outside of the object itself";

TEST(StringTest, IsEmptyAndTerminatedByDefaultAndFromNull)
{
    const char* none = nullptr;

    EXPECT_TRUE(String().empty());
    EXPECT_STREQ(String().c_str(), "");
    EXPECT_TRUE(String(none).empty());
    EXPECT_TRUE(String(StringView()).empty());
    EXPECT_TRUE(String(nullptr, 4).empty());
}

TEST(StringTest, KeepsEveryByteOfAView)
{
    const String text(StringView("a\0b", 3));

    EXPECT_EQ(text.size(), 3u);
    EXPECT_EQ(text.c_str()[3], '\0');
    EXPECT_TRUE(text == StringView("a\0b", 3));
}

TEST(StringTest, IsMadeFromEveryKindOfTextWithoutACast)
{
    const String fromLiteral = "lua";
    const String fromView = StringView("lua");
    const String fromStandard = std::string("lua");

    EXPECT_TRUE(fromLiteral == fromView);
    EXPECT_TRUE(fromView == fromStandard);
    EXPECT_TRUE(String("lua and more", 3) == "lua");
}

TEST(StringTest, CopyHasBytesOfItsOwnAndMoveTakesThemAlong)
{
    String original(LONG_TEXT);
    const char* bytes = original.data();

    const String copy(original);
    EXPECT_TRUE(copy == original);
    EXPECT_NE(copy.data(), bytes);
    const String moved(std::move(original));

    EXPECT_EQ(moved.data(), bytes);
}

TEST(StringTest, AssignmentTakesEveryKindOfString)
{
    String text;

    EXPECT_STREQ((text = "literal").c_str(), "literal");
    EXPECT_STREQ((text = StringView("view")).c_str(), "view");
    EXPECT_STREQ((text = std::string("standard")).c_str(), "standard");
    EXPECT_STREQ((text = std::string_view("standard view")).c_str(), "standard view");
    EXPECT_STREQ((text = String("own")).c_str(), "own");
    EXPECT_TRUE((text = StringView()).empty());
    EXPECT_STREQ((text = nullptr).c_str(), "");
    EXPECT_STREQ((text = {}).c_str(), "");
}

TEST(StringTest, AssignmentThatFitsAndClearReuseTheStorage)
{
    String text(LONG_TEXT);
    const char* bytes = text.data();

    text = StringView("another text, which is not that long");
    EXPECT_EQ(text.data(), bytes);
    EXPECT_STREQ(text.c_str(), "another text, which is not that long");
    text.clear();

    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.data(), bytes);
}

TEST(StringTest, AssignmentOfItsOwnBytesIsSafe)
{
    String text("0123456789");

    text = StringView(text.data() + 3, 4);
    EXPECT_STREQ(text.c_str(), "3456");

    const String& same = text;
    text = same;
    EXPECT_STREQ(text.c_str(), "3456");
}

TEST(StringTest, AppendAddsBytesAtTheEnd)
{
    String text("ab");

    text.append("cd").append(StringView()).append(StringView("\0e", 2));
    text += "f";

    EXPECT_TRUE(text == StringView("abcd\0ef", 7));
}

TEST(StringTest, AppendOfItsOwnBytesIsSafe)
{
    String text("0123456789012345");

    text.append(text);

    EXPECT_STREQ(text.c_str(), "01234567890123450123456789012345");
}

TEST(StringTest, PlusJoinsTextsOfAllKinds)
{
    const String own("own");
    const StringView view("view");

    EXPECT_STREQ((own + own).c_str(), "ownown");
    EXPECT_STREQ((own + view).c_str(), "ownview");
    EXPECT_STREQ((view + own).c_str(), "viewown");
    EXPECT_STREQ((view + view).c_str(), "viewview");
    EXPECT_STREQ((own + "literal").c_str(), "ownliteral");
    EXPECT_STREQ(("literal" + own).c_str(), "literalown");
    EXPECT_STREQ(("literal" + view).c_str(), "literalview");
    EXPECT_STREQ((std::string("standard") + own).c_str(), "standardown");
    EXPECT_STREQ(("a" + own + view + "b" + std::string("c")).c_str(), "aownviewbc");
}

TEST(StringTest, ChainOfPlusGrowsOneText)
{
    String start(LONG_TEXT);
    start += LONG_TEXT; // room, after the doubling that comes with it
    start = "start";
    const char* bytes = start.data();

    const String joined = std::move(start) + ", middle" + StringView(", end");

    EXPECT_STREQ(joined.c_str(), "start, middle, end");
    EXPECT_EQ(joined.data(), bytes);
}

TEST(StringTest, PlusOfATextAndItselfIsSafeWhenMoved)
{
    String text(LONG_TEXT);
    const std::string twice = std::string(LONG_TEXT) + LONG_TEXT;

    const String joined = std::move(text) + text; // NOLINT(bugprone-use-after-move): the point

    EXPECT_TRUE(joined == twice);
}

TEST(StringTest, IsAViewOfItsBytesThatIsNeverNull)
{
    const String text("lua");

    const StringView view = text;

    EXPECT_EQ(view.data(), text.data());
    EXPECT_EQ(view.size(), 3u);
    EXPECT_FALSE(StringView(String()).isNull());
}

TEST(StringTest, ComparesWithEveryKindOfTextOnEitherSide)
{
    const String text("lua");

    EXPECT_TRUE(text == "lua" && "lua" == text);
    EXPECT_TRUE(text == String("lua"));
    EXPECT_TRUE(text == StringView("lua") && StringView("lua") == text);
    EXPECT_TRUE(text == std::string("lua") && std::string("lua") == text);
    EXPECT_TRUE(text == std::string_view("lua") && std::string_view("lua") == text);
    EXPECT_TRUE(text != "Lua" && StringView("Lua") != text);
    EXPECT_TRUE(text < "lub" && String("lu") < text);
}

TEST(StringTest, HashEqualsThatOfItsViewAndServesHashTables)
{
    std::unordered_map<String, int> counts;

    ++counts["lua"];
    ++counts["lua"];

    EXPECT_EQ(counts["lua"], 2);
    EXPECT_EQ(std::hash<String>()("lua"), std::hash<StringView>()("lua"));
}

TEST(StringTest, BecomesStandardStringsStreamsAndMessagesOfTestsByteForByte)
{
    const String text(StringView("a\0b", 3));
    std::ostringstream stream;

    stream << text;

    EXPECT_EQ(stream.str(), std::string("a\0b", 3));
    EXPECT_EQ(std::string_view(text), std::string_view("a\0b", 3));
    EXPECT_EQ(std::string(text), std::string("a\0b", 3));
    EXPECT_EQ(::testing::PrintToString(String("lua")), "lua");
    EXPECT_EQ(::testing::PrintToString(StringView("lua")), "lua");
}

static_assert(std::is_abstract_v<tbLog::Logger>);
static_assert(std::has_virtual_destructor_v<tbLog::Logger>);

class LastEntryLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        m_message = std::string_view(message);
        m_source = std::string_view(source);
    }

    std::string m_message;
    std::string m_source;
};

TEST(LoggerTest, ReceivesMessageFirstAndSourceSecond)
{
    LastEntryLogger own;
    tbLog::Logger& logger = own;

    logger.log(tbLog::StringView("a message", 9), tbLog::StringView("Part", 4));

    EXPECT_EQ(own.m_message, "a message");
    EXPECT_EQ(own.m_source, "Part");
}

TEST(LogStringViewTest, DefaultViewIsOfNothing)
{
    const tbLog::StringView view;

    EXPECT_EQ(view.data(), nullptr);
    EXPECT_EQ(view.size(), 0u);
    EXPECT_EQ(std::string_view(view), "");
}

TEST(LogStringViewTest, KeepsEveryByte)
{
    const tbLog::StringView view("a\0b", 3);

    EXPECT_EQ(std::string_view(view), std::string_view("a\0b", 3));
}

TEST(LogStringViewTest, NullPointerWithSizeHasNoBytes)
{
    EXPECT_EQ(tbLog::StringView(nullptr, 3).size(), 0u);
}

} // namespace
