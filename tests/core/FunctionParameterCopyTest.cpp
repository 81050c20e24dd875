// Copies, moves and assignments, from each kind and over each kind.

#include "support/FakeScriptObjects.h"
#include "support/ParameterKinds.h"
#include "support/RowName.h"

#include <tbScripts/FunctionParameter.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

namespace tbScripts::test
{

namespace
{

// References are shared by a move; all other values leave nothing behind.
std::string descriptionAfterMove(const ParameterKind& kind)
{
    const bool isGivenUp = kind.number >= 5 && kind.number <= 7;
    return isGivenUp ? "0" : kind.description;
}

// Assigned through a function, so that the compiler does not see one object on both sides.
void assign(FunctionParameter& target, const FunctionParameter& source)
{
    target = source;
}

void moveAssign(FunctionParameter& target, FunctionParameter& source)
{
    target = std::move(source);
}

std::string
nameOfPair(const ::testing::TestParamInfo<std::tuple<ParameterKind, ParameterKind>>& info)
{
    return std::get<0>(info.param).row + "Over" + std::get<1>(info.param).row;
}

// Keeps a parameter alive from within the interpreter's side.
class HoldingReference : public FakeReference
{
public:
    FunctionParameter held;
};

} // namespace

using FunctionParameterCopyTest = OnRows<FakeScriptObjectsFixture, ParameterKind>;

ROWS(FunctionParameterCopyTest, allParameterKinds());

TEST_P(FunctionParameterCopyTest, CopyHasKindAndValueAndIsIndependent)
{
    auto value = std::make_unique<FunctionParameter>(GetParam().makeValue());
    FunctionParameter other(*value);

    const FunctionParameter copy(*value);
    other = FunctionParameter(-1);

    EXPECT_EQ(describe(copy), GetParam().description);
    EXPECT_EQ(describe(*value), GetParam().description);
    value.reset();
    EXPECT_EQ(describe(copy), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, MoveTakesKindAndValueAndLeavesStringsAndUserTypesVoid)
{
    FunctionParameter value = GetParam().makeValue();

    const FunctionParameter moved(std::move(value));

    EXPECT_EQ(describe(moved), GetParam().description);
    EXPECT_EQ(describe(value), descriptionAfterMove(GetParam()));
    value = FunctionParameter("again");
    EXPECT_EQ(describe(value), "5 string:again");
    EXPECT_EQ(describe(moved), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, AssigningAndMovingToItselfChangeNothing)
{
    FunctionParameter value = GetParam().makeValue();

    assign(value, value);
    EXPECT_EQ(describe(value), GetParam().description);
    moveAssign(value, value);

    EXPECT_EQ(describe(value), GetParam().description);
}

class FunctionParameterAssignmentTest
    : public FakeScriptObjectsFixture,
      public ::testing::WithParamInterface<std::tuple<ParameterKind, ParameterKind>>
{
protected:
    static const ParameterKind& sourceKind() { return std::get<0>(GetParam()); }

    static const ParameterKind& targetKind() { return std::get<1>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(
    AllPairs,
    FunctionParameterAssignmentTest,
    ::testing::Combine(
        ::testing::ValuesIn(allParameterKinds()), ::testing::ValuesIn(allParameterKinds())),
    nameOfPair);

TEST_P(FunctionParameterAssignmentTest, CopyReplacesKindAndValueAndReleasesAReference)
{
    const FunctionParameter source = sourceKind().makeValue();
    FunctionParameter target = targetKind().makeValue();
    const int living = CountedObject::getLiving();
    const bool isTargetReference = targetKind().number == 8 || targetKind().number == 9;

    FunctionParameter& result = target = source;

    EXPECT_EQ(&result, &target);
    EXPECT_EQ(describe(target), sourceKind().description);
    EXPECT_EQ(describe(source), sourceKind().description);
    EXPECT_EQ(CountedObject::getLiving(), living - (isTargetReference ? 1 : 0));
}

TEST_P(FunctionParameterAssignmentTest, MoveReplacesKindAndValue)
{
    FunctionParameter source = sourceKind().makeValue();
    FunctionParameter target = targetKind().makeValue();

    target = std::move(source);

    EXPECT_EQ(describe(target), sourceKind().description);
    EXPECT_EQ(describe(source), descriptionAfterMove(sourceKind()));
}

using FunctionParameterSharingTest = FakeScriptObjectsFixture;

TEST_F(FunctionParameterSharingTest, CopyOfAStringKeepsEveryByteWhateverBecomesOfTheOriginal)
{
    FunctionParameter original{tbMemory::StringView("a\0b", 3)};
    const FunctionParameter copy(original);

    original = FunctionParameter("two");

    EXPECT_EQ(copy.getString(), tbMemory::StringView("a\0b", 3));
    EXPECT_EQ(original.getString(), "two");
}

TEST_F(FunctionParameterSharingTest, LongStringsAndIntsReplaceEachOther)
{
    FunctionParameter parameter(7);

    parameter = FunctionParameter("a text that does not fit into the object itself");
    EXPECT_EQ(describe(parameter), "5 string:a text that does not fit into the object itself");
    parameter = FunctionParameter(7);

    EXPECT_EQ(describe(parameter), "2 int:7");
}

TEST_F(FunctionParameterSharingTest, CopyingAssigningAndMovingAReferenceCountOneMoreEach)
{
    FunctionParameter original{ScriptObjectReference(new FakeReference())};

    const FunctionParameter copy(original);
    EXPECT_EQ(original.getScriptObject().getUseCount(), 2U);
    EXPECT_EQ(copy.getScriptObject().getUseCount(), 2U);
    FunctionParameter assigned(7);
    assigned = original;
    EXPECT_EQ(original.getScriptObject().getUseCount(), 3U);
    const FunctionParameter moved(std::move(original));

    EXPECT_EQ(moved.getScriptObject().getUseCount(), 4U);
    EXPECT_EQ(
        original.getScriptObject().getInterpreterReference(),
        moved.getScriptObject().getInterpreterReference());
}

TEST_F(FunctionParameterSharingTest, LastOfTwoCopiesReleasesTheReferenceOnce)
{
    auto original = std::make_unique<FunctionParameter>(ScriptObjectReference(new FakeReference()));
    auto copy = std::make_unique<FunctionParameter>(*original);

    original.reset();
    EXPECT_EQ(CountedObject::getLiving(), 1);
    copy.reset();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(CountedObject::getMade(), 1);
}

TEST_F(FunctionParameterSharingTest, SourceMayLiveThroughTheTarget)
{
    for (const bool isMoved : {false, true})
    {
        auto* const holder = new HoldingReference();
        holder->held = FunctionParameter("held by what the target refers to");
        FunctionParameter target{ScriptObjectReference(holder)};

        if (isMoved)
            target = std::move(holder->held);
        else
            target = holder->held;

        EXPECT_EQ(target.getString(), "held by what the target refers to") << isMoved;
    }
}

// What a value, and a declaration, of each kind reads as.
class FunctionParameterKindTest : public OnRows<FakeScriptObjectsFixture, ParameterKind>
{
protected:
    static bool isNumber(unsigned number) { return GetParam().number == number; }

    static bool isUserType() { return isNumber(6) || isNumber(7); }

    static bool isReference() { return isNumber(8) || isNumber(9); }
};

ROWS(FunctionParameterKindTest, allParameterKinds());

TEST_P(FunctionParameterKindTest, ValueSaysItsKindAndReadsAsNoOther)
{
    const FunctionParameter value = GetParam().makeValue();

    EXPECT_EQ(value.getType(), GetParam().number);
    EXPECT_EQ(value.getBool(), isNumber(1));
    EXPECT_EQ(value.getInt(), isNumber(2) ? 7 : 0);
    EXPECT_EQ(value.getFloat(), isNumber(3) ? 1.5F : 0.0F);
    EXPECT_EQ(value.getDouble(), isNumber(4) ? 2.5 : 0.0);
    EXPECT_EQ(value.getString(), isNumber(5) ? "text" : "");
    EXPECT_EQ(value.getString().isNull(), !isNumber(5));
    EXPECT_EQ(value.getUserTypeObject(), isUserType() ? &door : nullptr);
    EXPECT_EQ(value.getUserTypeName(), isUserType() ? "Door" : "");
    EXPECT_EQ(value.getUserTypeName().isNull(), !isUserType());
    EXPECT_EQ(value.getUserTypeView().getInterpreterView(), nullptr);
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

TEST_P(FunctionParameterKindTest, DeclaredParameterHasItsKindAndAnEmptyStringOrTypeNameAlone)
{
    const FunctionParameter declared = parameterOfNumber(GetParam().number);

    EXPECT_EQ(declared.getType(), GetParam().number);
    EXPECT_FALSE(declared.getBool());
    EXPECT_EQ(declared.getInt(), 0);
    EXPECT_EQ(declared.getFloat(), 0.0F);
    EXPECT_EQ(declared.getDouble(), 0.0);
    EXPECT_EQ(declared.getUserTypeObject(), nullptr);
    EXPECT_EQ(declared.getScriptObject().getInterpreterReference(), nullptr);
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

// Preparing gives the storage an empty value, whatever it held and whatever the kind says.
class FunctionParameterPrepareTest : public OnRows<FakeScriptObjectsFixture, ParameterKind>
{
protected:
    static bool isText() { return GetParam().number == 5; }

    static bool isUserType() { return GetParam().number == 6 || GetParam().number == 7; }

    static bool isReference() { return GetParam().number == 8 || GetParam().number == 9; }

    // Nothing can be read but the kind.
    static std::string onlyTheKind() { return std::to_string(GetParam().number); }

    static std::string emptyValue()
    {
        if (isText())
            return onlyTheKind() + " string:";
        return isUserType() ? onlyTheKind() + " type:" : onlyTheKind();
    }
};

ROWS(FunctionParameterPrepareTest, allParameterKinds());

TEST_P(FunctionParameterPrepareTest, OwnKindGetsItsEmptyValueAndNumbersKeepTheirs)
{
    const bool isEmptied = isText() || isUserType() || isReference();
    FunctionParameter parameter = GetParam().makeValue();

    parameter.prepareForInternalType();

    EXPECT_EQ(describe(parameter), isEmptied ? emptyValue() : GetParam().description);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, EveryStorageDestroysWhatWasHeldAndKeepsTheKind)
{
    FunctionParameter string = GetParam().makeValue();
    FunctionParameter userType = GetParam().makeValue();
    FunctionParameter reference = GetParam().makeValue();

    string.prepareForString();
    userType.prepareForUserType();
    reference.prepareForScriptObjectReference();

    EXPECT_EQ(describe(string), isText() ? emptyValue() : onlyTheKind());
    EXPECT_EQ(describe(userType), isUserType() ? emptyValue() : onlyTheKind());
    EXPECT_EQ(describe(reference), onlyTheKind());
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, StorageOfAnotherKindIsDestroyedByTheNextPreparation)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForString();
    parameter.prepareForUserType();
    parameter.prepareForScriptObjectReference();
    parameter.prepareForString();

    parameter.prepareForInternalType();

    EXPECT_EQ(describe(parameter), emptyValue());
}

TEST_P(FunctionParameterPrepareTest, StorageOfAnotherKindIsNoValueToCopyAndDestroyedByAssignment)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForUserType();

    const FunctionParameter copy(parameter);
    parameter = FunctionParameter("text");

    EXPECT_EQ(describe(copy), isUserType() ? emptyValue() : onlyTheKind());
    EXPECT_EQ(describe(parameter), "5 string:text");
}

TEST_P(FunctionParameterPrepareTest, PreparedStorageTakesTheValueOfItsKindAgain)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForInternalType();

    parameter = GetParam().makeValue();

    EXPECT_EQ(describe(parameter), GetParam().description);
}

TEST_P(FunctionParameterPrepareTest, PreparedReferenceHasABlockOfItsOwn)
{
    FunctionParameter parameter = GetParam().makeValue();
    const FunctionParameter copy(parameter);

    parameter.prepareForScriptObjectReference();

    EXPECT_EQ(parameter.getScriptObject().getUseCount(), 1U);
    EXPECT_EQ(copy.getScriptObject().getUseCount(), 1U);
    EXPECT_EQ(copy.getScriptObject().getInterpreterReference() != nullptr, isReference());
}

TEST(FunctionParameterStringTest, StringAssignedOverAStringReplacesIt)
{
    const FunctionParameter source("after");
    FunctionParameter target("before");

    assign(target, source);

    EXPECT_EQ(target.getString(), "after");
    EXPECT_EQ(source.getString(), "after");
}

} // namespace tbScripts::test
