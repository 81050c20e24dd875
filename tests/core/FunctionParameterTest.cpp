#include "support/CountedObject.h"
#include "support/FakeScriptObjects.h"

#include <tbScripts/FunctionParameter.h>
#include <tbScripts/Script.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace tbScripts::test
{

namespace
{

// As a host's static object may do.
const FunctionParameter COPY_MADE_BEFORE_MAIN(FunctionParameter::VOID);

} // namespace

using FunctionParameterTest = FakeScriptObjectsFixture;

TEST_F(FunctionParameterTest, IsVoidByDefaultAndAsCopyOfTheVoidConstant)
{
    const FunctionParameter copy(FunctionParameter::VOID);

    EXPECT_EQ(FunctionParameter().getType(), 0U);
    EXPECT_EQ(FunctionParameter::VOID.getType(), 0U);
    EXPECT_EQ(copy.getType(), 0U);
    EXPECT_TRUE(copy.getString().isNull());
    EXPECT_EQ(copy.getScriptObject().getInterpreterReference(), nullptr);
}

TEST_F(FunctionParameterTest, StaticObjectMayCopyTheVoidConstant)
{
    EXPECT_EQ(COPY_MADE_BEFORE_MAIN.getType(), 0U);
    EXPECT_EQ(COPY_MADE_BEFORE_MAIN.getScriptObject().getUseCount(), 1U);
}

TEST_F(FunctionParameterTest, KindIsANumberOf32Bits)
{
    EXPECT_EQ(sizeof(FUNCTION_PARAMETER_TYPE), 4U);
    EXPECT_TRUE(std::is_unsigned_v<std::underlying_type_t<FUNCTION_PARAMETER_TYPE>>);
}

TEST_F(FunctionParameterTest, KeepsEveryBoolAndNumber)
{
    using Float = std::numeric_limits<float>;
    using Double = std::numeric_limits<double>;

    EXPECT_EQ(FunctionParameter(true).getType(), 1U);
    EXPECT_TRUE(FunctionParameter(true).getBool());
    EXPECT_EQ(FunctionParameter(false).getType(), 1U);
    EXPECT_FALSE(FunctionParameter(false).getBool());
    EXPECT_EQ(FunctionParameter(7).getType(), 2U);
    EXPECT_EQ(FunctionParameter(-2147483647 - 1).getInt(), -2147483647 - 1);
    EXPECT_EQ(FunctionParameter(2147483647).getInt(), 2147483647);
    EXPECT_EQ(FunctionParameter(0.5F).getType(), 3U);
    EXPECT_EQ(FunctionParameter(0.5F).getFloat(), 0.5F);
    EXPECT_EQ(FunctionParameter(-Float::infinity()).getFloat(), -Float::infinity());
    EXPECT_TRUE(std::isnan(FunctionParameter(Float::quiet_NaN()).getFloat()));
    EXPECT_EQ(FunctionParameter(0.1).getType(), 4U);
    EXPECT_EQ(FunctionParameter(0.1).getDouble(), 0.1);
    EXPECT_EQ(FunctionParameter(1.7976931348623157e308).getDouble(), 1.7976931348623157e308);
    EXPECT_TRUE(std::isnan(FunctionParameter(Double::quiet_NaN()).getDouble()));
}

TEST_F(FunctionParameterTest, CopiesACStringUpToItsZeroAndAllBytesOfAViewButNoneBehind)
{
    std::string text("a\0b\0", 4);
    const std::vector<char> unterminated = {'a', 'b'};

    const FunctionParameter fromPointer(text.c_str());
    const FunctionParameter fromView{tbMemory::StringView(text)};
    const FunctionParameter fromVector{tbMemory::StringView(unterminated.data(), 2)};
    text.assign("changed");

    EXPECT_EQ(fromPointer.getType(), 5U);
    EXPECT_EQ(fromPointer.getString(), "a");
    EXPECT_EQ(fromView.getType(), 5U);
    EXPECT_EQ(fromView.getString(), tbMemory::StringView("a\0b\0", 4));
    EXPECT_EQ(fromVector.getString(), "ab");
}

TEST_F(FunctionParameterTest, EndsItsStringWithAZero)
{
    const FunctionParameter parameter{tbMemory::StringView("abcdef", 3)};

    EXPECT_STREQ(parameter.getString().data(), "abc");
}

TEST_F(FunctionParameterTest, NullTextIsTheEmptyText)
{
    const char* const nothing = nullptr;

    const FunctionParameter fromPointer(nothing);
    const FunctionParameter fromView{tbMemory::StringView()};

    EXPECT_EQ(fromPointer.getType(), 5U);
    EXPECT_EQ(fromPointer.getString(), "");
    EXPECT_FALSE(fromPointer.getString().isNull());
    EXPECT_EQ(fromView.getType(), 5U);
    EXPECT_EQ(fromView.getString(), "");
    EXPECT_FALSE(fromView.getString().isNull());
}

TEST_F(FunctionParameterTest, ObjectIsOfKindSixIfTheScriptOwnsItElseOfKindSeven)
{
    int object = 0;

    for (const bool isOwned : {true, false})
    {
        const FunctionParameter parameter(&object, "Door", isOwned);
        const FunctionParameter nothing(nullptr, "Door", isOwned);

        EXPECT_EQ(parameter.getType(), isOwned ? 6U : 7U);
        EXPECT_EQ(parameter.getUserTypeObject(), &object);
        EXPECT_EQ(parameter.getUserTypeName(), "Door");
        EXPECT_EQ(parameter.getUserTypeView().getInterpreterView(), nullptr);
        EXPECT_EQ(nothing.getType(), isOwned ? 6U : 7U);
        EXPECT_EQ(nothing.getUserTypeObject(), nullptr);
        EXPECT_EQ(nothing.getUserTypeName(), "Door");
    }
}

TEST_F(FunctionParameterTest, CopiesAllBytesOfATypeNameAndTakesNullForTheEmptyName)
{
    std::string name("Door\0way", 8);

    const FunctionParameter parameter(nullptr, name, true);
    const FunctionParameter nameless(nullptr, tbMemory::StringView(), false);
    name.assign("changed");

    EXPECT_EQ(parameter.getUserTypeName(), tbMemory::StringView("Door\0way", 8));
    EXPECT_EQ(nameless.getUserTypeName(), "");
    EXPECT_FALSE(nameless.getUserTypeName().isNull());
}

TEST_F(FunctionParameterTest, NeverDestroysTheObject)
{
    CountedObject object;

    {
        const FunctionParameter owned(&object, "Door", true);
    }

    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(FunctionParameterTest, SharesTheReferenceThatItIsMadeFromAndTakesItsKind)
{
    for (const FUNCTION_PARAMETER_TYPE type :
         {PARAM_TYPE_SCRIPT_FUNCTION, PARAM_TYPE_SCRIPT_OBJECT})
    {
        auto reference = std::make_unique<ScriptObjectReference>(new FakeReference(type));

        const FunctionParameter parameter(*reference);

        EXPECT_EQ(parameter.getType(), type == PARAM_TYPE_SCRIPT_FUNCTION ? 8U : 9U);
        EXPECT_EQ(
            parameter.getScriptObject().getInterpreterReference(),
            reference->getInterpreterReference());
        EXPECT_EQ(reference->getUseCount(), 2U);
        reference.reset();
        EXPECT_EQ(CountedObject::getLiving(), 1);
        EXPECT_EQ(parameter.getScriptObject().getType(), parameter.getType());
    }
}

TEST_F(FunctionParameterTest, EmptyReferenceIsAnObjectThatDesignatesNothing)
{
    const FunctionParameter parameter{ScriptObjectReference()};

    EXPECT_EQ(parameter.getType(), 9U);
    EXPECT_EQ(parameter.getScriptObject().getInterpreterReference(), nullptr);
    EXPECT_EQ(parameter.getScriptObject().getType(), 0U);
}

TEST_F(FunctionParameterTest, IsNotMadeFromAKind)
{
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, FUNCTION_PARAMETER_TYPE>));
}

TEST_F(FunctionParameterTest, IsNotMadeFromALonePointer)
{
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, void*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, const void*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, int*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, unsigned char*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, const std::string*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, Script*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, const Script*>));
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, void (*)()>));
}

TEST_F(FunctionParameterTest, IsNotMadeFromTheNullLiteral)
{
    EXPECT_FALSE((std::is_constructible_v<FunctionParameter, std::nullptr_t>));
    EXPECT_FALSE((std::is_convertible_v<std::nullptr_t, FunctionParameter>));
    EXPECT_FALSE((std::is_assignable_v<FunctionParameter&, std::nullptr_t>));
}

TEST_F(FunctionParameterTest, IsMadeFromEveryKindOfText)
{
    EXPECT_TRUE((std::is_constructible_v<FunctionParameter, const char*>));
    EXPECT_TRUE((std::is_constructible_v<FunctionParameter, char*>));
    EXPECT_TRUE((std::is_constructible_v<FunctionParameter, const char(&)[4]>));
    EXPECT_TRUE((std::is_constructible_v<FunctionParameter, const std::string&>));
    EXPECT_TRUE((std::is_constructible_v<FunctionParameter, const tbMemory::String&>));
}

TEST_F(FunctionParameterTest, WritableTextIsNoTruthValue)
{
    char text[] = "door";

    const FunctionParameter parameter(text);

    EXPECT_EQ(parameter.getType(), 5U);
    EXPECT_EQ(parameter.getString(), "door");
}

TEST_F(FunctionParameterTest, IsConvertedFromValuesThatAHostReturns)
{
    EXPECT_TRUE((std::is_convertible_v<bool, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<int, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<float, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<double, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<const char*, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<tbMemory::StringView, FunctionParameter>));
    EXPECT_TRUE((std::is_convertible_v<ScriptObjectReference, FunctionParameter>));
}

TEST_F(FunctionParameterTest, MovesWithoutThrowing)
{
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<FunctionParameter>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<FunctionParameter>);
}

} // namespace tbScripts::test
