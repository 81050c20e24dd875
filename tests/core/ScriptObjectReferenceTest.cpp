#include "support/FakeScriptObjects.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace tbScripts::test
{

namespace
{

// Assigned through functions, so that the compiler does not see one object on both sides.
void assign(ScriptObjectReference& target, const ScriptObjectReference& source)
{
    target = source;
}

void moveAssign(ScriptObjectReference& target, ScriptObjectReference& source)
{
    target = std::move(source);
}

} // namespace

class ScriptObjectReferenceTest : public FakeScriptObjectsFixture
{
};

TEST_F(ScriptObjectReferenceTest, IsEmptyByDefault)
{
    const ScriptObjectReference reference;

    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(ScriptObjectReferenceTest, EmptyOneIsOfNoKind)
{
    EXPECT_EQ(ScriptObjectReference().getType(), 0U);
}

TEST_F(ScriptObjectReferenceTest, OwnsWhatItIsMadeFrom)
{
    auto* const value = new FakeReference();

    {
        const ScriptObjectReference reference(value);
        EXPECT_EQ(reference.getInterpreterReference(), value);
        EXPECT_EQ(reference.getUseCount(), 1U);
        EXPECT_EQ(CountedObject::getLiving(), 1);
    }

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(ScriptObjectReferenceTest, MadeFromNullIsEmpty)
{
    ScriptObjectInterpreterReference* const nothing = nullptr;

    const ScriptObjectReference reference(nothing);

    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(ScriptObjectReferenceTest, HasTheKindOfItsValue)
{
    const ScriptObjectReference function(new FakeReference(PARAM_TYPE_SCRIPT_FUNCTION));
    const ScriptObjectReference object(new FakeReference(PARAM_TYPE_SCRIPT_OBJECT));

    EXPECT_EQ(function.getType(), 8U);
    EXPECT_EQ(object.getType(), 9U);
}

TEST_F(ScriptObjectReferenceTest, ValueOfUnknownKindIsOfNoKind)
{
    struct ValueOfUnknownKind final : ScriptObjectInterpreterReference
    {
    };

    const ScriptObjectReference reference(new ValueOfUnknownKind());

    EXPECT_EQ(reference.getType(), 0U);
}

TEST_F(ScriptObjectReferenceTest, AnchorsWhatAViewLooksAt)
{
    FakeView view(PARAM_TYPE_SCRIPT_FUNCTION);

    const ScriptObjectReference reference{ScriptObjectView(&view)};

    EXPECT_NE(view.getLastReference(), nullptr);
    EXPECT_EQ(reference.getInterpreterReference(), view.getLastReference());
    EXPECT_EQ(reference.getType(), 8U);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

TEST_F(ScriptObjectReferenceTest, MadeFromAViewOnNothingIsEmpty)
{
    const ScriptObjectReference reference{ScriptObjectView()};

    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(ScriptObjectReferenceTest, MadeFromAViewThatAnchorsNothingIsEmpty)
{
    FakeView view;
    view.lookAtNothing();

    const ScriptObjectReference reference{ScriptObjectView(&view)};

    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(ScriptObjectReferenceTest, CopySharesTheValue)
{
    const ScriptObjectReference original(new FakeReference());

    const ScriptObjectReference copy(original);

    EXPECT_EQ(copy.getInterpreterReference(), original.getInterpreterReference());
    EXPECT_EQ(original.getUseCount(), 2U);
    EXPECT_EQ(copy.getUseCount(), 2U);
}

TEST_F(ScriptObjectReferenceTest, CopyOfAnEmptyOneSharesItsBlock)
{
    const ScriptObjectReference original;

    const ScriptObjectReference copy(original);

    EXPECT_EQ(original.getUseCount(), 2U);
    EXPECT_EQ(copy.getInterpreterReference(), nullptr);
}

TEST_F(ScriptObjectReferenceTest, EndOfACopyLeavesTheValue)
{
    const ScriptObjectReference original(new FakeReference());

    {
        const ScriptObjectReference copy(original);
    }

    EXPECT_EQ(original.getUseCount(), 1U);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectReferenceTest, LastHolderReleasesTheValueOnce)
{
    auto first = std::make_unique<ScriptObjectReference>(new FakeReference());
    auto second = std::make_unique<ScriptObjectReference>(*first);
    auto third = std::make_unique<ScriptObjectReference>(*second);

    first.reset();
    second.reset();
    EXPECT_EQ(CountedObject::getLiving(), 1);
    third.reset();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(ScriptObjectReferenceTest, MoveSharesTheValueAndDoesNotEmptyTheSource)
{
    ScriptObjectReference source(new FakeReference());

    const ScriptObjectReference moved(std::move(source));

    EXPECT_NE(moved.getInterpreterReference(), nullptr);
    EXPECT_EQ(source.getInterpreterReference(), moved.getInterpreterReference());
    EXPECT_EQ(source.getUseCount(), 2U);
    EXPECT_EQ(moved.getUseCount(), 2U);
}

TEST_F(ScriptObjectReferenceTest, MovesWithoutThrowing)
{
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<ScriptObjectReference>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<ScriptObjectReference>);
}

TEST_F(ScriptObjectReferenceTest, IsNotMadeFromAPointerOrViewUnasked)
{
    EXPECT_FALSE((std::is_convertible_v<ScriptObjectInterpreterReference*, ScriptObjectReference>));
    EXPECT_FALSE((std::is_convertible_v<ScriptObjectView, ScriptObjectReference>));
}

TEST_F(ScriptObjectReferenceTest, AssignmentGivesUpTheOwnValueAndSharesTheOther)
{
    const ScriptObjectReference source(new FakeReference());
    ScriptObjectReference target(new FakeReference());

    target = source;

    EXPECT_EQ(target.getInterpreterReference(), source.getInterpreterReference());
    EXPECT_EQ(source.getUseCount(), 2U);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectReferenceTest, AssignmentLeavesTheOwnValueToItsOtherHolders)
{
    const ScriptObjectReference source(new FakeReference());
    ScriptObjectReference target(new FakeReference());
    const ScriptObjectReference other(target);

    target = source;

    EXPECT_EQ(other.getUseCount(), 1U);
    EXPECT_NE(other.getInterpreterReference(), source.getInterpreterReference());
    EXPECT_EQ(CountedObject::getLiving(), 2);
}

TEST_F(ScriptObjectReferenceTest, AssigningToItselfChangesNothing)
{
    ScriptObjectReference reference(new FakeReference());

    assign(reference, reference);

    EXPECT_NE(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectReferenceTest, AssigningAHolderOfTheSameValueChangesNothing)
{
    ScriptObjectReference reference(new FakeReference());
    const ScriptObjectReference copy(reference);

    reference = copy;

    EXPECT_EQ(reference.getUseCount(), 2U);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectReferenceTest, MoveAssignmentSwapsTheValues)
{
    auto* const first = new FakeReference();
    auto* const second = new FakeReference();
    ScriptObjectReference source(first);
    ScriptObjectReference target(second);

    target = std::move(source);

    EXPECT_EQ(target.getInterpreterReference(), first);
    EXPECT_EQ(source.getInterpreterReference(), second);
    EXPECT_EQ(target.getUseCount(), 1U);
    EXPECT_EQ(CountedObject::getLiving(), 2);
}

TEST_F(ScriptObjectReferenceTest, MovingToItselfChangesNothing)
{
    ScriptObjectReference reference(new FakeReference());

    moveAssign(reference, reference);

    EXPECT_NE(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

TEST_F(ScriptObjectReferenceTest, AssignmentsReturnTheirTarget)
{
    FakeView view;
    ScriptObjectReference source;
    ScriptObjectReference target;

    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(&(target = std::move(source)), &target);
    EXPECT_EQ(&(target = ScriptObjectView(&view)), &target);
}

TEST_F(ScriptObjectReferenceTest, InterpreterSideIsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<FakeReference>);
    EXPECT_FALSE(std::is_copy_assignable_v<FakeReference>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ScriptObjectInterpreterReference>);
}

} // namespace tbScripts::test
