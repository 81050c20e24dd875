// What a value, and a declaration, of each kind reads as.

#include "support/FakeScriptObjects.h"
#include "support/ParameterKinds.h"
#include "support/RowName.h"

#include <tbScripts/FunctionParameter.h>

namespace tbScripts::test
{

class FunctionParameterKindTest : public FakeScriptObjectsFixture,
                                  public ::testing::WithParamInterface<ParameterKind>
{
protected:
    static bool isNumber(unsigned number) { return GetParam().number == number; }

    static bool isUserType() { return isNumber(6) || isNumber(7); }

    static bool isReference() { return isNumber(8) || isNumber(9); }
};

INSTANTIATE_TEST_SUITE_P(
    AllKinds, FunctionParameterKindTest, ::testing::ValuesIn(allParameterKinds()), RowName());

TEST_P(FunctionParameterKindTest, ValueSaysItsKind)
{
    EXPECT_EQ(GetParam().makeValue().getType(), GetParam().number);
}

TEST_P(FunctionParameterKindTest, ValueReadsAsATruthValueOnlyIfItIsOne)
{
    EXPECT_EQ(GetParam().makeValue().getBool(), isNumber(1));
}

TEST_P(FunctionParameterKindTest, ValueReadsAsANumberOnlyOfItsOwnKind)
{
    const FunctionParameter value = GetParam().makeValue();

    EXPECT_EQ(value.getInt(), isNumber(2) ? 7 : 0);
    EXPECT_EQ(value.getFloat(), isNumber(3) ? 1.5F : 0.0F);
    EXPECT_EQ(value.getDouble(), isNumber(4) ? 2.5 : 0.0);
}

TEST_P(FunctionParameterKindTest, ValueReadsAsATextOnlyIfItIsOne)
{
    const FunctionParameter value = GetParam().makeValue();

    EXPECT_EQ(value.getString(), isNumber(5) ? "text" : "");
    EXPECT_EQ(value.getString().isNull(), !isNumber(5));
}

TEST_P(FunctionParameterKindTest, ValueReadsAsAnObjectOnlyIfItIsOne)
{
    const FunctionParameter value = GetParam().makeValue();

    EXPECT_EQ(value.getUserTypeObject(), isUserType() ? &door : nullptr);
    EXPECT_EQ(value.getUserTypeName(), isUserType() ? "Door" : "");
    EXPECT_EQ(value.getUserTypeName().isNull(), !isUserType());
    EXPECT_EQ(value.getUserTypeView().getInterpreterView(), nullptr);
}

TEST_P(FunctionParameterKindTest, ValueReadsAsAReferenceOnlyIfItIsOne)
{
    const FunctionParameter value = GetParam().makeValue();

    EXPECT_EQ(value.getScriptObject().getInterpreterReference() != nullptr, isReference());
    EXPECT_EQ(value.getScriptObject().getType(), isReference() ? GetParam().number : 0U);
}

// The empty reference that other kinds read as is one for all of them.
TEST_P(FunctionParameterKindTest, ViewAssignedToACopyOfItsReferenceGivesNoOtherKindOne)
{
    const FunctionParameter value = GetParam().makeValue();
    ScriptObjectReference copy(value.getScriptObject());
    FakeView view;

    copy = ScriptObjectView(&view);

    EXPECT_EQ(FunctionParameter::VOID.getScriptObject().getInterpreterReference(), nullptr);
    EXPECT_EQ(value.getScriptObject().getInterpreterReference() != nullptr, isReference());
}

TEST_P(FunctionParameterKindTest, DeclaredParameterHasItsKindAndNoValue)
{
    const FunctionParameter declared = parameterOfNumber(GetParam().number);

    EXPECT_EQ(declared.getType(), GetParam().number);
    EXPECT_FALSE(declared.getBool());
    EXPECT_EQ(declared.getInt(), 0);
    EXPECT_EQ(declared.getFloat(), 0.0F);
    EXPECT_EQ(declared.getDouble(), 0.0);
    EXPECT_EQ(declared.getUserTypeObject(), nullptr);
    EXPECT_EQ(declared.getScriptObject().getInterpreterReference(), nullptr);
}

TEST_P(FunctionParameterKindTest, DeclaredTextAndTypeNameAreEmptyButThere)
{
    const FunctionParameter declared = parameterOfNumber(GetParam().number);

    EXPECT_EQ(declared.getString(), "");
    EXPECT_EQ(declared.getString().isNull(), !isNumber(5));
    EXPECT_EQ(declared.getUserTypeName(), "");
    EXPECT_EQ(declared.getUserTypeName().isNull(), !isUserType());
}

TEST_P(FunctionParameterKindTest, DeclaredTypeNameIsKeptByUserTypesAlone)
{
    const FunctionParameter declared =
        FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(GetParam().number), "Door");

    EXPECT_EQ(declared.getUserTypeName(), isUserType() ? "Door" : "");
}

TEST_P(FunctionParameterKindTest, DeclarationOfAValueHasItsKindAndTypeButNoValue)
{
    const FunctionParameter declaration = GetParam().makeValue().getDeclaration();

    EXPECT_EQ(declaration.getType(), GetParam().number);
    EXPECT_EQ(declaration.getUserTypeName(), isUserType() ? "Door" : "");
    EXPECT_FALSE(declaration.getBool());
    EXPECT_EQ(declaration.getInt(), 0);
    EXPECT_EQ(declaration.getString(), "");
    EXPECT_EQ(declaration.getUserTypeObject(), nullptr);
    EXPECT_EQ(declaration.getScriptObject().getInterpreterReference(), nullptr);
}

} // namespace tbScripts::test
