#include "support/RowName.h"

#include <tbScripts/StringUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

std::vector<std::string> split(const tbMemory::StringView& name)
{
    std::vector<std::string> parts;
    for (const tbMemory::String& part : StringUtils::splitUserTypeName(name))
        parts.emplace_back(std::string_view(part));
    return parts;
}

struct Splitting
{
    const char* row;
    const char* name;
    std::vector<std::string> parts;
};

} // namespace

using StringUtilsSplitTest = OnRows<::testing::Test, Splitting>;

ROWS(
    StringUtilsSplitTest,
    {"EmptyText", "", {""}},
    {"OneName", "door", {"door"}},
    {"TwoNames", "house::door", {"house", "door"}},
    {"ThreeNames", "town::house::door", {"town", "house", "door"}},
    {"LeadingSeparator", "::door", {"", "door"}},
    {"TrailingSeparator", "door::", {"door", ""}},
    {"OnlyASeparator", "::", {"", ""}},
    {"ThreeColons", "a:::b", {"a", ":b"}},
    {"FourColons", "a::::b", {"a", "", "b"}},
    {"FiveColons", "a:::::b", {"a", "", ":b"}},
    {"SingleColon", "a:b", {"a:b"}},
    {"OnlyAColon", ":", {":"}},
    {"OnlyThreeColons", ":::", {"", ":"}},
    {"TrailingColon", "a:", {"a:"}},
    {"SingleColonBeforeASeparator", "a:b::c", {"a:b", "c"}},
    {"BlanksAroundASeparator", "a :: b", {"a ", " b"}},
    {"ColonsApart", "a: :b", {"a: :b"}});

TEST_P(StringUtilsSplitTest, GivesTheParts)
{
    EXPECT_EQ(split(GetParam().name), GetParam().parts);
}

TEST(StringUtilsTest, NullNameHasOneEmptyPart)
{
    EXPECT_THAT(split(tbMemory::StringView()), ElementsAre(""));
}

TEST(StringUtilsTest, AllBytesOfANameCount)
{
    EXPECT_THAT(
        split(tbMemory::StringView("a\0b::\0", 6)),
        ElementsAre(std::string("a\0b", 3), std::string("\0", 1)));
}

TEST(StringUtilsTest, NameEndsWithItsView)
{
    EXPECT_THAT(split(tbMemory::StringView("a::b::c", 4)), ElementsAre("a", "b"));
    EXPECT_THAT(split(tbMemory::StringView("a::b", 2)), ElementsAre("a:"));
}

TEST(StringUtilsTest, PartsOutliveTheName)
{
    std::string name = "house::door";

    const tbMemory::BufferCast<tbMemory::String> parts = StringUtils::splitUserTypeName(name);
    name.assign("changed and longer than before");

    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0], "house");
    EXPECT_EQ(parts[1], "door");
}

TEST(StringUtilsTest, EachPartTakesTheSizeOfOneString)
{
    const tbMemory::BufferCast<tbMemory::String> parts = StringUtils::splitUserTypeName("a::b::c");

    EXPECT_EQ(parts.getByteSize(), 3 * sizeof(tbMemory::String));
}

TEST(StringUtilsTest, ThousandsOfPartsAreSplit)
{
    std::string name;
    for (int count = 0; count < 10'000; ++count)
        name += "a::";

    const std::vector<std::string> parts = split(name);

    ASSERT_EQ(parts.size(), 10'001U);
    EXPECT_EQ(parts[9'999], "a");
    EXPECT_EQ(parts[10'000], "");
}

TEST(StringUtilsTest, LuaIsWrittenInSmallLettersAndEveryOtherInterpreterIsUnknown)
{
    EXPECT_EQ(StringUtils::interpreterToString(INTERPRETER_LUA), "lua");
    for (const unsigned number : {0U, 2U, 7U, 0xFFFFFFFFU})
        EXPECT_EQ(StringUtils::interpreterToString(static_cast<INTERPRETER>(number)), "UNKNOWN");
}

TEST(StringUtilsTest, InterpretersKeepTheirNumbers)
{
    EXPECT_EQ(static_cast<unsigned>(INTERPRETER_UNKNOWN), 0U);
    EXPECT_EQ(static_cast<unsigned>(INTERPRETER_LUA), 1U);
    EXPECT_EQ(sizeof(INTERPRETER), 4U);
}

TEST(StringUtilsTest, OnlyTheExactWordIsLua)
{
    EXPECT_EQ(StringUtils::stringToInterpreter("lua"), 1U);
    EXPECT_EQ(StringUtils::stringToInterpreter(tbMemory::StringView("luajit", 3)), 1U);
}

TEST(StringUtilsTest, AnyOtherTextIsNoInterpreter)
{
    for (const tbMemory::StringView text :
         {tbMemory::StringView(""),
          tbMemory::StringView(),
          tbMemory::StringView("Lua"),
          tbMemory::StringView("LUA"),
          tbMemory::StringView("lu"),
          tbMemory::StringView("luaa"),
          tbMemory::StringView(" lua"),
          tbMemory::StringView("lua "),
          tbMemory::StringView("lua\0", 4),
          tbMemory::StringView("UNKNOWN"),
          tbMemory::StringView("1")})
    {
        EXPECT_EQ(StringUtils::stringToInterpreter(text), 0U) << text;
    }
}

} // namespace tbScripts::test
