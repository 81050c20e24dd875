// Members that compiled code reads and writes in the object itself.

#include "bindings/lua/leaves/LuaLeaves.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/LeafFixture.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace tbScripts::test
{

namespace
{

using typed::KIND;
using typed::Member;

using Body = LeafFixture::Body;

constexpr Member NUMBER{offsetof(Body, number), KIND::DOUBLE, false};
constexpr Member SMALL{offsetof(Body, small), KIND::FLOAT, false};
constexpr Member INTEGER{offsetof(Body, integer), KIND::INT, false};
constexpr Member FLAG{offsetof(Body, flag), KIND::BOOL, false};

struct WriteRow
{
    const char* row;
    Member member;
    const char* value;
    const char* expected; // what reading returns then; that of the body if it was not written
};

class LeafMemberWriteTest : public OnRows<LeafFixture, WriteRow>
{
};

} // namespace

TEST_P(LeafMemberWriteTest, WritesWhatFits)
{
    publishMember(GetParam().member);
    EXPECT_EQ(compiled("read(body)").find("slow"), std::string::npos);
    compiled(std::string("write(body, ") + GetParam().value + ")");
    EXPECT_EQ(compiled("read(body)"), GetParam().expected);
}

TEST_P(LeafMemberWriteTest, WritesNothingWithoutCompiler)
{
    publishMember(GetParam().member);
    EXPECT_EQ(uncompiled("read(body)"), "slow");
    EXPECT_EQ(uncompiled(std::string("write(body, ") + GetParam().value + ")"), "slow");
    EXPECT_EQ(m_body.number, 0.5);
    EXPECT_EQ(m_body.small, 0.25F);
    EXPECT_EQ(m_body.integer, 3);
    EXPECT_TRUE(m_body.flag);
}

ROWS(
    LeafMemberWriteTest,
    {"Double", NUMBER, "2.5", "2.5"},
    {"StringForDouble", NUMBER, "'2.5'", "0.5"},
    {"NilForDouble", NUMBER, "nil", "0.5"},
    {"Float", SMALL, "2.5", "2.5"},
    {"FloatIsRounded", SMALL, "16777217", "16777216"},
    {"BeyondFloats", SMALL, "1e300", "inf"},
    {"NilForFloat", SMALL, "nil", "0.25"},
    {"Integer", INTEGER, "-7.9", "-7"},
    {"BeyondIntegers", INTEGER, "2147483648", "3"},
    {"NanForInteger", INTEGER, "0/0", "3"},
    {"StringForInteger", INTEGER, "'1'", "3"},
    {"False", FLAG, "false", "false"},
    {"True", FLAG, "true", "true"},
    {"NilForBool", FLAG, "nil", "false"},
    {"StringForBool", FLAG, "''", "true"});

using LeafMemberTest = LeafFixture;

TEST_F(LeafMemberTest, WritesOnlyTheMember)
{
    publishMember(FLAG);
    compiled("write(body, false)");
    publishMember(SMALL);
    compiled("write(body, 9)");
    EXPECT_EQ(m_body.number, 0.5);
    EXPECT_EQ(m_body.small, 9);
    EXPECT_EQ(m_body.integer, 3);
    EXPECT_FALSE(m_body.flag);
}

TEST_F(LeafMemberTest, BelongsToAnInstance)
{
    publishMember(NUMBER);
    EXPECT_EQ(compiled("read({})"), "slow");
    EXPECT_EQ(compiled("write({}, 1)"), "slow");
    box("body").isDestroyed = true;
    EXPECT_EQ(compiled("read(body)"), "slow");
    EXPECT_EQ(compiled("write(body, 1)"), "slow");
    EXPECT_EQ(m_body.number, 0.5);
}

TEST_F(LeafMemberTest, IsNotWrittenIfItIsReadOnly)
{
    publishMember({NUMBER.offset, NUMBER.kind, true});
    EXPECT_EQ(compiled("read(body)"), "0.5");
    EXPECT_EQ(compiled("write(body, 1)"), "slow");
    EXPECT_EQ(m_body.number, 0.5);
}

TEST_F(LeafMemberTest, IsLeftAloneWhereItCannotLie)
{
    lua_pushnil(state());
    EXPECT_FALSE(lua::wrapReader(slot(), state(), BODY, NUMBER, nullptr)); // around no function
    lua_pop(state(), 1);
    lua_getglobal(state(), "print");
    EXPECT_FALSE(lua::wrapReader(slot(), state(), BODY, {1, KIND::DOUBLE, false}, nullptr));
    EXPECT_FALSE(lua::wrapReader(slot(), state(), BODY, {0, KIND::TEXT, false}, nullptr));
    EXPECT_FALSE(lua::wrapReader(slot(), state(), BODY, {1U << 31U, KIND::INT, false}, nullptr));
    EXPECT_TRUE(lua::wrapReader(slot(), state(), BODY, {1, KIND::BOOL, false}, nullptr));
    lua_pop(state(), 1);
}

// The interpreter takes some of these bits for a value of another kind.
TEST_F(LeafMemberTest, NumbersThatAreValuesForTheInterpreterAreLeftToTheFunction)
{
    publishMember(NUMBER);
    for (const std::uint64_t bits :
         {0xFFFFFFFFFFFFFFFFU, 0xFFFA000000000001U, 0xFFF8000000000000U, 0xFFF0000000000000U})
    {
        std::memcpy(&m_body.number, &bits, sizeof(bits));
        EXPECT_EQ(compiled("read(body)"), "slow") << bits;
    }
    m_body.number = std::numeric_limits<double>::infinity();
    EXPECT_EQ(compiled("read(body)"), "inf");
    m_body.number = -std::numeric_limits<double>::max();
    EXPECT_EQ(compiled("read(body)"), "-1.7976931348623e+308");
    m_body.number = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(compiled("read(body)"), "nan");
}

TEST_F(LeafMemberTest, SmallNumbersThatAreValuesForTheInterpreterAreLeftToTheFunction)
{
    publishMember(SMALL);
    for (const std::uint32_t bits : {0xFFFFFFFFU, 0xFFC00001U, 0xFF800000U})
    {
        std::memcpy(&m_body.small, &bits, sizeof(bits));
        EXPECT_EQ(compiled("read(body)"), "slow") << bits;
    }
    m_body.small = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(compiled("read(body)"), "nan");
}

// Reading a member is a load of compiled code, which may not outlast a store.
TEST_F(LeafMemberTest, IsReadAsItWasWrittenThroughAnotherInstance)
{
    publishMember(NUMBER);
    lua::pushInstance(slot(), state(), &m_body, false, "Body");
    lua_setglobal(state(), "same");
    EXPECT_EQ(
        run("local wrong, right = 0, 0 for i = 1, 300 do write(same, i) local read = read(body) "
            "if read == i then right = right + 1 elseif read ~= 'slow' then wrong = wrong + 1 end "
            "write(body, 0) end return wrong == 0 and right > 200"),
        "true");
}

} // namespace tbScripts::test
