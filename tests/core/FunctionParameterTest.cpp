#include "support/CountedObject.h"
#include "support/FakeScriptObjects.h"

#include <tbScripts/FunctionParameter.h>
#include <tbScripts/Script.h>

#include <cmath>
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

class FunctionParameterTest : public FakeScriptObjectsFixture
{
};

TEST_F(FunctionParameterTest, IsVoidByDefault)
{
    const FunctionParameter parameter;

    EXPECT_EQ(parameter.getType(), 0U);
}

TEST_F(FunctionParameterTest, VoidConstantIsVoid)
{
    EXPECT_EQ(FunctionParameter::VOID.getType(), 0U);
}

TEST_F(FunctionParameterTest, CopyOfTheVoidConstantIsVoid)
{
    const FunctionParameter copy(FunctionParameter::VOID);

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

TEST_F(FunctionParameterTest, KeepsBool)
{
    const FunctionParameter yes(true);
    const FunctionParameter no(false);

    EXPECT_EQ(yes.getType(), 1U);
    EXPECT_TRUE(yes.getBool());
    EXPECT_EQ(no.getType(), 1U);
    EXPECT_FALSE(no.getBool());
}

TEST_F(FunctionParameterTest, KeepsEveryInt)
{
    const FunctionParameter lowest(std::numeric_limits<int>::min());
    const FunctionParameter highest(std::numeric_limits<int>::max());

    EXPECT_EQ(lowest.getType(), 2U);
    EXPECT_EQ(lowest.getInt(), -2147483647 - 1);
    EXPECT_EQ(highest.getInt(), 2147483647);
}

TEST_F(FunctionParameterTest, KeepsEveryFloat)
{
    const FunctionParameter half(0.5F);
    const FunctionParameter infinite(-std::numeric_limits<float>::infinity());
    const FunctionParameter notANumber(std::numeric_limits<float>::quiet_NaN());

    EXPECT_EQ(half.getType(), 3U);
    EXPECT_EQ(half.getFloat(), 0.5F);
    EXPECT_EQ(infinite.getFloat(), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(notANumber.getFloat()));
}

TEST_F(FunctionParameterTest, KeepsEveryDouble)
{
    const FunctionParameter tenth(0.1);
    const FunctionParameter largest(1.7976931348623157e308);
    const FunctionParameter notANumber(std::numeric_limits<double>::quiet_NaN());

    EXPECT_EQ(tenth.getType(), 4U);
    EXPECT_EQ(tenth.getDouble(), 0.1);
    EXPECT_EQ(largest.getDouble(), 1.7976931348623157e308);
    EXPECT_TRUE(std::isnan(notANumber.getDouble()));
}

TEST_F(FunctionParameterTest, CopiesTextUpToItsZero)
{
    std::string text("one\0two", 7);

    const FunctionParameter parameter(text.c_str());
    text.assign("changed");

    EXPECT_EQ(parameter.getType(), 5U);
    EXPECT_EQ(parameter.getString(), "one");
}

TEST_F(FunctionParameterTest, CopiesAllBytesOfAView)
{
    std::string text("a\0b\0", 4);

    const FunctionParameter parameter{tbMemory::StringView(text)};
    text.assign("changed");

    EXPECT_EQ(parameter.getType(), 5U);
    EXPECT_EQ(parameter.getString(), tbMemory::StringView("a\0b\0", 4));
}

TEST_F(FunctionParameterTest, CopiesNoByteBehindTheEndOfAView)
{
    const std::vector<char> bytes = {'a', 'b'};

    const FunctionParameter parameter{tbMemory::StringView(bytes.data(), bytes.size())};

    EXPECT_EQ(parameter.getString(), "ab");
}

TEST_F(FunctionParameterTest, EndsItsTextWithAZero)
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

TEST_F(FunctionParameterTest, ObjectThatTheScriptOwnsIsOfKindSix)
{
    int object = 0;

    const FunctionParameter parameter(&object, "Door", true);

    EXPECT_EQ(parameter.getType(), 6U);
    EXPECT_EQ(parameter.getUserTypeObject(), &object);
    EXPECT_EQ(parameter.getUserTypeName(), "Door");
}

TEST_F(FunctionParameterTest, ObjectThatTheHostKeepsIsOfKindSeven)
{
    int object = 0;

    const FunctionParameter parameter(&object, "Door", false);

    EXPECT_EQ(parameter.getType(), 7U);
    EXPECT_EQ(parameter.getUserTypeObject(), &object);
    EXPECT_EQ(parameter.getUserTypeName(), "Door");
}

TEST_F(FunctionParameterTest, ObjectMayBeNull)
{
    const FunctionParameter parameter(nullptr, "Door", true);

    EXPECT_EQ(parameter.getType(), 6U);
    EXPECT_EQ(parameter.getUserTypeObject(), nullptr);
    EXPECT_EQ(parameter.getUserTypeName(), "Door");
}

TEST_F(FunctionParameterTest, CopiesAllBytesOfATypeName)
{
    std::string name("Door\0way", 8);

    const FunctionParameter parameter(nullptr, name, true);
    name.assign("changed");

    EXPECT_EQ(parameter.getUserTypeName(), tbMemory::StringView("Door\0way", 8));
}

TEST_F(FunctionParameterTest, NullTypeNameIsTheEmptyName)
{
    const FunctionParameter parameter(nullptr, tbMemory::StringView(), false);

    EXPECT_EQ(parameter.getUserTypeName(), "");
    EXPECT_FALSE(parameter.getUserTypeName().isNull());
}

TEST_F(FunctionParameterTest, LooksAtNoScriptValueWhenTheHostMadeIt)
{
    int object = 0;

    const FunctionParameter parameter(&object, "Door", true);

    EXPECT_EQ(parameter.getUserTypeView().getInterpreterView(), nullptr);
}

TEST_F(FunctionParameterTest, NeverDestroysTheObject)
{
    CountedObject object;

    {
        const FunctionParameter owned(&object, "Door", true);
    }

    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(FunctionParameterTest, TakesItsKindFromAReferenceToAFunction)
{
    const ScriptObjectReference reference(new FakeReference(PARAM_TYPE_SCRIPT_FUNCTION));

    const FunctionParameter parameter(reference);

    EXPECT_EQ(parameter.getType(), 8U);
    EXPECT_EQ(
        parameter.getScriptObject().getInterpreterReference(), reference.getInterpreterReference());
}

TEST_F(FunctionParameterTest, TakesItsKindFromAReferenceToAnObject)
{
    const ScriptObjectReference reference(new FakeReference(PARAM_TYPE_SCRIPT_OBJECT));

    const FunctionParameter parameter(reference);

    EXPECT_EQ(parameter.getType(), 9U);
    EXPECT_EQ(
        parameter.getScriptObject().getInterpreterReference(), reference.getInterpreterReference());
}

TEST_F(FunctionParameterTest, SharesTheReferenceThatItIsMadeFrom)
{
    const ScriptObjectReference reference(new FakeReference());

    const FunctionParameter parameter(reference);

    EXPECT_EQ(reference.getUseCount(), 2U);
}

TEST_F(FunctionParameterTest, KeepsTheValueOfAReferenceThatIsGone)
{
    auto reference = std::make_unique<ScriptObjectReference>(new FakeReference());

    const FunctionParameter parameter(*reference);
    reference.reset();

    EXPECT_EQ(CountedObject::getLiving(), 1);
    EXPECT_EQ(parameter.getScriptObject().getType(), 9U);
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
