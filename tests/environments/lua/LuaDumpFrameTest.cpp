#include "environments/lua/chunks/LuaDumpFrame.h"

#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <string>

namespace tbScripts::test
{

using namespace std::string_literals;

namespace
{

struct FrameRow
{
    std::string row;
    std::string chunk;
};

void PrintTo(const FrameRow& row, std::ostream* stream)
{
    *stream << row.row;
}

} // namespace

class WholeDumpTest : public ::testing::TestWithParam<FrameRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Frames,
    WholeDumpTest,
    ::testing::Values(
        FrameRow{"WithoutNameAndFunctions", "\x1BLJ\x02\x02\0"s},
        FrameRow{"WithNameAndWithoutFunctions", "\x1BLJ\x02\x08\x02@n\0"s},
        FrameRow{
            "WithoutNameOfOneFunction",
            "\x1BLJ\x02\x0A\x03"
            "abc"
            "\0"s},
        FrameRow{
            "WithNameOfTwoFunctions",
            "\x1BLJ\x02\x08\x01n\x01"
            "a"
            "\x02"
            "bc"
            "\0"s},
        FrameRow{"WithALongFunction", "\x1BLJ\x02\x02\x80\x01" + std::string(128, 'x') + "\0"s},
        FrameRow{"WithFlagsOfTwoBytes", "\x1BLJ\x02\x82\x01\0"s},
        FrameRow{"WithMoreBehind", "\x1BLJ\x02\x02\0more"s}),
    RowName());

TEST_P(WholeDumpTest, IsWhole)
{
    EXPECT_TRUE(lua::isDump(GetParam().chunk));
    EXPECT_TRUE(lua::isWholeDump(GetParam().chunk));
}

TEST_P(WholeDumpTest, IsNotWholeBeforeItsEnd)
{
    const std::size_t end = GetParam().row == "WithMoreBehind" ? 6 : GetParam().chunk.size();

    for (std::size_t size = 0; size < end; ++size)
        EXPECT_FALSE(lua::isWholeDump(tbMemory::StringView(GetParam().chunk.data(), size)));
}

class BrokenDumpTest : public ::testing::TestWithParam<FrameRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Frames,
    BrokenDumpTest,
    ::testing::Values(
        FrameRow{"FlagsWithoutEnd", "\x1BLJ\x02\x82\x82\x82\x82\x82\x82\x01\0"s},
        FrameRow{"NameBeyondTheEnd", "\x1BLJ\x02\x08\x05n\0"s},
        FrameRow{"HugeName", "\x1BLJ\x02\x08\xFF\xFF\xFF\xFF\x7Fn\0"s},
        FrameRow{
            "FunctionBeyondTheEnd",
            "\x1BLJ\x02\x02\x05"
            "ab"
            "\0"s},
        FrameRow{"HugeFunction", "\x1BLJ\x02\x02\xFF\xFF\xFF\xFF\x7F\0"s},
        FrameRow{
            "NoEndAfterAFunction",
            "\x1BLJ\x02\x02\x01"
            "a"s}),
    RowName());

TEST_P(BrokenDumpTest, IsNotWhole)
{
    EXPECT_FALSE(lua::isWholeDump(GetParam().chunk));
}

class LuaDumpFrameTest : public LuaStateFixture
{
protected:
    // Returns what the interpreter dumps for the function of that code.
    std::string dump(const std::string& code)
    {
        push("return string.dump(" + code + ")");
        std::size_t size = 0;
        const char* const bytes = lua_tolstring(state(), -1, &size);
        std::string dumped(bytes, size);
        lua_pop(state(), 1);
        return dumped;
    }
};

TEST_F(LuaDumpFrameTest, DumpsOfTheInterpreterAreWholeUpToTheirLastByte)
{
    std::string code = "function() local function a() end local t = {1.5, 'text'} return t";
    for (const std::string& dumped : {dump(code + " end"), dump(code + " end, true")})
    {
        EXPECT_TRUE(lua::isWholeDump(dumped));
        EXPECT_FALSE(lua::isWholeDump(tbMemory::StringView(dumped.data(), dumped.size() - 1)));
    }
}

TEST_F(LuaDumpFrameTest, SourceTextIsNoDump)
{
    EXPECT_FALSE(lua::isDump("return 1"));
    EXPECT_FALSE(lua::isDump(""));
}

} // namespace tbScripts::test
