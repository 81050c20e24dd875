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

class FunctionParameterCopyTest : public FakeScriptObjectsFixture,
                                  public ::testing::WithParamInterface<ParameterKind>
{
};

INSTANTIATE_TEST_SUITE_P(
    AllKinds, FunctionParameterCopyTest, ::testing::ValuesIn(allParameterKinds()), RowName());

TEST_P(FunctionParameterCopyTest, CopyHasKindAndValue)
{
    const FunctionParameter value = GetParam().makeValue();

    const FunctionParameter copy(value);

    EXPECT_EQ(describe(copy), GetParam().description);
    EXPECT_EQ(describe(value), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, CopyKeepsItsValueWhenTheOriginalGoes)
{
    auto value = std::make_unique<FunctionParameter>(GetParam().makeValue());

    const FunctionParameter copy(*value);
    value.reset();

    EXPECT_EQ(describe(copy), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, OriginalKeepsItsValueWhenTheCopyIsAssignedOver)
{
    const FunctionParameter value = GetParam().makeValue();
    FunctionParameter copy(value);

    copy = FunctionParameter(-1);

    EXPECT_EQ(describe(value), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, MovedParameterHasKindAndValue)
{
    FunctionParameter value = GetParam().makeValue();

    const FunctionParameter moved(std::move(value));

    EXPECT_EQ(describe(moved), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, MoveLeavesTextsAndUserTypesVoid)
{
    FunctionParameter value = GetParam().makeValue();

    const FunctionParameter moved(std::move(value));

    EXPECT_EQ(describe(value), descriptionAfterMove(GetParam()));
}

TEST_P(FunctionParameterCopyTest, MovedFromParameterTakesAnotherValue)
{
    FunctionParameter value = GetParam().makeValue();
    const FunctionParameter moved(std::move(value));

    value = FunctionParameter("again");

    EXPECT_EQ(describe(value), "5 string:again");
    EXPECT_EQ(describe(moved), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, AssigningToItselfChangesNothing)
{
    FunctionParameter value = GetParam().makeValue();

    assign(value, value);

    EXPECT_EQ(describe(value), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, MovingToItselfChangesNothing)
{
    FunctionParameter value = GetParam().makeValue();

    moveAssign(value, value);

    EXPECT_EQ(describe(value), GetParam().description);
}

TEST_P(FunctionParameterCopyTest, AssignmentReturnsItsTarget)
{
    const FunctionParameter value = GetParam().makeValue();
    FunctionParameter target;

    FunctionParameter& result = target = value;

    EXPECT_EQ(&result, &target);
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

TEST_P(FunctionParameterAssignmentTest, CopyReplacesKindAndValue)
{
    const FunctionParameter source = sourceKind().makeValue();
    FunctionParameter target = targetKind().makeValue();

    target = source;

    EXPECT_EQ(describe(target), sourceKind().description);
    EXPECT_EQ(describe(source), sourceKind().description);
}

TEST_P(FunctionParameterAssignmentTest, MoveReplacesKindAndValue)
{
    FunctionParameter source = sourceKind().makeValue();
    FunctionParameter target = targetKind().makeValue();

    target = std::move(source);

    EXPECT_EQ(describe(target), sourceKind().description);
    EXPECT_EQ(describe(source), descriptionAfterMove(sourceKind()));
}

TEST_P(FunctionParameterAssignmentTest, ReferenceThatIsAssignedOverIsReleased)
{
    const FunctionParameter source = sourceKind().makeValue();
    FunctionParameter target = targetKind().makeValue();
    const int living = CountedObject::getLiving();
    const bool isTargetReference = targetKind().number == 8 || targetKind().number == 9;

    target = source;

    EXPECT_EQ(CountedObject::getLiving(), living - (isTargetReference ? 1 : 0));
}

class FunctionParameterSharingTest : public FakeScriptObjectsFixture
{
};

TEST_F(FunctionParameterSharingTest, CopyOfTextIsIndependent)
{
    FunctionParameter original("one");
    const FunctionParameter copy(original);

    original = FunctionParameter("two");

    EXPECT_EQ(copy.getString(), "one");
    EXPECT_EQ(original.getString(), "two");
}

TEST_F(FunctionParameterSharingTest, CopyOfTextKeepsEveryByte)
{
    const FunctionParameter original{tbMemory::StringView("a\0b", 3)};

    const FunctionParameter copy(original);

    EXPECT_EQ(copy.getString(), tbMemory::StringView("a\0b", 3));
}

TEST_F(FunctionParameterSharingTest, AssigningTextOverAnIntLeavesAText)
{
    FunctionParameter parameter(7);

    parameter = FunctionParameter("a text that does not fit into the object itself");

    EXPECT_EQ(describe(parameter), "5 string:a text that does not fit into the object itself");
}

TEST_F(FunctionParameterSharingTest, AssigningAnIntOverTextLeavesAnInt)
{
    FunctionParameter parameter("a text that does not fit into the object itself");

    parameter = FunctionParameter(7);

    EXPECT_EQ(describe(parameter), "2 int:7");
}

TEST_F(FunctionParameterSharingTest, CopyingAReferenceCountsOneMore)
{
    const FunctionParameter original{ScriptObjectReference(new FakeReference())};

    const FunctionParameter copy(original);

    EXPECT_EQ(original.getScriptObject().getUseCount(), 2U);
    EXPECT_EQ(copy.getScriptObject().getUseCount(), 2U);
}

TEST_F(FunctionParameterSharingTest, AssigningAReferenceCountsOneMore)
{
    const FunctionParameter original{ScriptObjectReference(new FakeReference())};
    FunctionParameter copy(7);

    copy = original;

    EXPECT_EQ(original.getScriptObject().getUseCount(), 2U);
}

TEST_F(FunctionParameterSharingTest, MovingAReferenceCountsOneMore)
{
    FunctionParameter original{ScriptObjectReference(new FakeReference())};

    const FunctionParameter moved(std::move(original));

    EXPECT_EQ(moved.getScriptObject().getUseCount(), 2U);
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

TEST_F(FunctionParameterSharingTest, SourceMayLiveThroughTheTargetOfACopy)
{
    auto* const holder = new HoldingReference();
    holder->held = FunctionParameter("held by what the target refers to");
    FunctionParameter target{ScriptObjectReference(holder)};

    target = holder->held;

    EXPECT_EQ(target.getString(), "held by what the target refers to");
}

TEST_F(FunctionParameterSharingTest, SourceMayLiveThroughTheTargetOfAMove)
{
    auto* const holder = new HoldingReference();
    holder->held = FunctionParameter("held by what the target refers to");
    FunctionParameter target{ScriptObjectReference(holder)};

    target = std::move(holder->held);

    EXPECT_EQ(target.getString(), "held by what the target refers to");
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
