#include <tbMemory/StringView.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <string_view>

namespace
{

using tbMemory::StringView;

// Everything that can be is a constant expression.
static_assert(StringView().isNull());
static_assert(StringView("lua").size() == 3);
static_assert(StringView("lua") == StringView("lua"));
static_assert(StringView("ab") < "b");

TEST(StringViewTest, IsNullAndEmptyByDefaultAndFromNull)
{
    const char* none = nullptr;
    const StringView byDefault;
    const StringView views[] = {
        byDefault,
        StringView(none),
        StringView(nullptr),
        StringView(nullptr, 5),
        StringView(std::string_view())};

    for (const StringView& view : views)
    {
        EXPECT_TRUE(view.isNull());
        EXPECT_TRUE(view.empty());
        EXPECT_EQ(view.size(), 0u);
        EXPECT_EQ(view.data(), nullptr);
        EXPECT_EQ(view.begin(), view.end());
    }
}

TEST(StringViewTest, EmptyStringIsNotNullButEqualsIt)
{
    EXPECT_FALSE(StringView("").isNull());
    EXPECT_TRUE(StringView("").empty());
    EXPECT_TRUE(StringView() == StringView(""));
    EXPECT_FALSE(StringView() != StringView(""));
    EXPECT_FALSE(StringView() < StringView(""));
}

TEST(StringViewTest, PointerIsReadUpToItsZero)
{
    EXPECT_EQ(StringView("ab\0cd").size(), 2u);
}

TEST(StringViewTest, SizeCountsZerosAndNeedsNone)
{
    const char bytes[] = {'a', '\0', 'b'};

    const StringView view(bytes, 3);

    EXPECT_EQ(view.size(), 3u);
    EXPECT_EQ(view[2], 'b');
    EXPECT_TRUE(view != StringView("a"));
}

TEST(StringViewTest, BorrowsTheBytesOfStandardTexts)
{
    const std::string text("a\0b", 3);
    const std::string_view part = std::string_view(text).substr(1);

    EXPECT_EQ(StringView(text).data(), text.data());
    EXPECT_EQ(StringView(text).size(), 3u);
    EXPECT_EQ(StringView(part).data(), text.data() + 1);
    EXPECT_EQ(StringView(part).size(), 2u);
}

TEST(StringViewTest, ConvertsToStandardView)
{
    const std::string_view view = StringView("lua");

    EXPECT_EQ(view, "lua");
    EXPECT_EQ(std::string_view(StringView()), "");
}

TEST(StringViewTest, IteratesOverItsBytes)
{
    std::string copy;

    for (const char byte : StringView("lua"))
        copy += byte;

    EXPECT_EQ(copy, "lua");
}

TEST(StringViewTest, ComparesWithEveryKindOfTextOnEitherSide)
{
    const StringView view("lua");

    EXPECT_TRUE(view == "lua" && "lua" == view);
    EXPECT_TRUE(view == std::string("lua") && std::string("lua") == view);
    EXPECT_TRUE(view == std::string_view("lua") && std::string_view("lua") == view);
    EXPECT_TRUE(view != "Lua" && "Lua" != view);
    EXPECT_TRUE(view != std::string("luau") && std::string("lu") != view);
    EXPECT_TRUE(view < "lub" && "lu" < view);
}

TEST(StringViewTest, OrderIsThatOfUnsignedBytes)
{
    EXPECT_TRUE(StringView("a") < StringView("\xff"));
    EXPECT_FALSE(StringView("\x80") < StringView("a"));
    EXPECT_TRUE(StringView("ab") < StringView("abc"));
}

TEST(StringViewTest, HashIsThatOfTheBytesAlone)
{
    const std::string one = "text";
    const std::string two = "text";
    const std::hash<StringView> hash;

    EXPECT_EQ(hash(one), hash(two));
    EXPECT_EQ(hash(StringView()), hash(StringView("")));
}

TEST(StringViewTest, IsWrittenToAStreamByteForByte)
{
    std::ostringstream stream;

    stream << StringView("a\0b", 3) << StringView();

    EXPECT_EQ(stream.str(), std::string("a\0b", 3));
}

} // namespace
