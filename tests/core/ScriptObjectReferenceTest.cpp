#include "support/FakeScriptObjects.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

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

using ScriptObjectReferenceTest = FakeScriptObjectsFixture;

TEST_F(ScriptObjectReferenceTest, IsEmptyAndOfNoKindUnlessItHasAValue)
{
    FakeView view;
    view.lookAtNothing();
    ScriptObjectInterpreterReference* const nothing = nullptr;
    const ScriptObjectReference fromNull(nothing);
    const ScriptObjectReference fromAViewOnNothing{ScriptObjectView()};
    const ScriptObjectReference fromAViewThatAnchorsNothing{ScriptObjectView(&view)};
    const ScriptObjectReference byDefault;

    for (const ScriptObjectReference* reference :
         {&fromNull, &fromAViewOnNothing, &fromAViewThatAnchorsNothing, &byDefault})
    {
        EXPECT_EQ(reference->getUseCount(), 1U);
        EXPECT_EQ(reference->getInterpreterReference(), nullptr);
        EXPECT_EQ(reference->getType(), 0U);
    }
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

TEST_F(ScriptObjectReferenceTest, CopySharesTheValueAndLeavesItAtItsEnd)
{
    const ScriptObjectReference original(new FakeReference());

    {
        const ScriptObjectReference copy(original);
        EXPECT_EQ(copy.getInterpreterReference(), original.getInterpreterReference());
        EXPECT_EQ(original.getUseCount(), 2U);
        EXPECT_EQ(copy.getUseCount(), 2U);
    }

    EXPECT_EQ(original.getUseCount(), 1U);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectReferenceTest, CopyOfAnEmptyOneSharesItsBlock)
{
    const ScriptObjectReference original;

    const ScriptObjectReference copy(original);

    EXPECT_EQ(original.getUseCount(), 2U);
    EXPECT_EQ(copy.getInterpreterReference(), nullptr);
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

TEST_F(ScriptObjectReferenceTest, AssigningItselfOrAHolderOfTheSameValueChangesNothing)
{
    ScriptObjectReference reference(new FakeReference());

    assign(reference, reference);
    moveAssign(reference, reference);
    EXPECT_NE(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
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

using ScriptObjectViewTest = FakeScriptObjectsFixture;

TEST_F(ScriptObjectViewTest, LooksAtNothingByDefaultAndMadeFromNull)
{
    ScriptObjectInterpreterView* const nothing = nullptr;
    const std::shared_ptr<ScriptObjectInterpreterView> nobody;

    EXPECT_EQ(ScriptObjectView().getInterpreterView(), nullptr);
    EXPECT_EQ(ScriptObjectView(nothing).getInterpreterView(), nullptr);
    EXPECT_EQ(ScriptObjectView(nobody).getInterpreterView(), nullptr);
}

TEST_F(ScriptObjectViewTest, SharesWhatASharedPointerOwns)
{
    const auto view = std::make_shared<FakeView>();
    {
        const ScriptObjectView shown(view);
        ScriptObjectView copy(shown);
        const ScriptObjectView moved(std::move(copy));
        EXPECT_EQ(shown.getInterpreterView(), view.get());
        EXPECT_EQ(moved.getInterpreterView(), view.get());
        EXPECT_GT(view.use_count(), 1);
    }
    EXPECT_EQ(view.use_count(), 1);
}

TEST_F(ScriptObjectViewTest, LooksThroughWhatItIsMadeFromAsDoCopyAndMoveWithoutOwningIt)
{
    FakeView lent;

    {
        ScriptObjectView view(&lent);
        const ScriptObjectView copy(view);
        EXPECT_EQ(view.getInterpreterView(), &lent);
        EXPECT_EQ(copy.getInterpreterView(), &lent);
        const ScriptObjectView moved(std::move(view));
        EXPECT_EQ(moved.getInterpreterView(), &lent);
    }

    EXPECT_EQ(CountedObject::getLiving(), 1);
    EXPECT_EQ(lent.getLastReference(), nullptr) << "a view anchored its value by itself";
}

TEST_F(ScriptObjectViewTest, LastOfItsCopiesDestroysWhatItShares)
{
    auto shared = std::make_shared<FakeView>();
    auto view = std::make_unique<ScriptObjectView>(shared);
    auto copy = std::make_unique<ScriptObjectView>(*view);

    shared.reset();
    view.reset();
    EXPECT_EQ(CountedObject::getLiving(), 1);
    copy.reset();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(ScriptObjectViewTest, AssignmentLooksAtTheOtherValue)
{
    FakeView lent;
    const ScriptObjectView source(&lent);
    ScriptObjectView copied(std::make_shared<FakeView>());
    ScriptObjectView moved(std::make_shared<FakeView>());

    copied = source;
    moved = ScriptObjectView(source);

    EXPECT_EQ(copied.getInterpreterView(), &lent);
    EXPECT_EQ(moved.getInterpreterView(), &lent);
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(ScriptObjectViewTest, MovesWithoutThrowing)
{
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<ScriptObjectView>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<ScriptObjectView>);
}

TEST_F(ScriptObjectViewTest, EachReferenceMadeFromItHasAValueOfItsOwn)
{
    FakeView lent;
    const ScriptObjectView view(&lent);

    const ScriptObjectReference first(view);
    const ScriptObjectReference second(view);

    EXPECT_NE(first.getInterpreterReference(), second.getInterpreterReference());
    EXPECT_EQ(first.getUseCount(), 1U);
}

TEST_F(ScriptObjectViewTest, InterpreterSideIsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<FakeView>);
    EXPECT_FALSE(std::is_copy_assignable_v<FakeView>);
    EXPECT_TRUE(std::is_abstract_v<ScriptObjectInterpreterView>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ScriptObjectInterpreterView>);
}

// Views assigned to references, whose block other holders may share.

using Journal = std::vector<std::string>;

// Notes when it is destroyed.
class NotedReference : public FakeReference
{
public:
    explicit NotedReference(Journal& journal)
        : m_journal(journal)
    {
    }

    ~NotedReference() override { m_journal.emplace_back("value destroyed"); }

private:
    Journal& m_journal;
};

// Notes when it anchors, and the count of the reference that it anchors for.
class NotedView : public FakeView
{
public:
    NotedView(Journal& journal, const ScriptObjectReference& target)
        : m_journal(journal)
        , m_target(target)
    {
    }

    ScriptObjectInterpreterReference* createReference() override
    {
        m_journal.push_back("anchored at count " + std::to_string(m_target.getUseCount()));
        return FakeView::createReference();
    }

private:
    Journal& m_journal;
    const ScriptObjectReference& m_target;
};

class ScriptObjectReferenceViewTest : public FakeScriptObjectsFixture
{
protected:
    FakeView& view() { return *m_view; }

    ScriptObjectView lookThroughView() { return ScriptObjectView(m_view.get()); }

    void TearDown() override
    {
        m_view.reset();
        FakeScriptObjectsFixture::TearDown();
    }

    void SetUp() override
    {
        FakeScriptObjectsFixture::SetUp();
        m_view = std::make_unique<FakeView>();
    }

    // Without the view.
    static int countLivingValues() { return CountedObject::getLiving() - 1; }

private:
    std::unique_ptr<FakeView> m_view;
};

TEST_F(ScriptObjectReferenceViewTest, EmptyReferenceAndOnlyHolderTakeTheValue)
{
    ScriptObjectReference empty;
    ScriptObjectReference only(new FakeReference());

    for (ScriptObjectReference* reference : {&empty, &only})
    {
        *reference = lookThroughView();

        EXPECT_EQ(reference->getInterpreterReference(), view().getLastReference());
        EXPECT_EQ(reference->getUseCount(), 1U);
        EXPECT_EQ(countLivingValues(), 2);
    }
}

TEST_F(ScriptObjectReferenceViewTest, OnlyHolderGivesUpItsValueBeforeTheNewOneIsAnchored)
{
    Journal journal;
    ScriptObjectReference reference(new NotedReference(journal));
    NotedView noted(journal, reference);

    reference = ScriptObjectView(&noted);

    EXPECT_EQ(journal, (Journal{"value destroyed", "anchored at count 1"}));
}

TEST_F(ScriptObjectReferenceViewTest, SharedBlockCountsFromOneWhenTheNewValueIsAnchored)
{
    Journal journal;
    ScriptObjectReference reference(new NotedReference(journal));
    const ScriptObjectReference other(reference);
    NotedView noted(journal, other);

    reference = ScriptObjectView(&noted);

    EXPECT_EQ(journal.front(), "anchored at count 1");
}

TEST_F(ScriptObjectReferenceViewTest, AllHoldersSeeTheNewValueAtCountOneAndTheOldOneIsReleased)
{
    ScriptObjectReference reference(new FakeReference());
    const ScriptObjectReference other(reference);

    reference = lookThroughView();

    EXPECT_EQ(reference.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(other.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(other.getUseCount(), 1U);
    EXPECT_EQ(countLivingValues(), 1);
}

TEST_F(ScriptObjectReferenceViewTest, NewValueOutlivesEitherHolder)
{
    for (const bool isTargetFirst : {true, false})
    {
        auto target = std::make_unique<ScriptObjectReference>(new FakeReference());
        auto other = std::make_unique<ScriptObjectReference>(*target);
        *target = lookThroughView();

        (isTargetFirst ? target : other).reset();

        EXPECT_EQ(countLivingValues(), 1);
        EXPECT_EQ((isTargetFirst ? other : target)->getType(), 9U);
    }
}

TEST_F(ScriptObjectReferenceViewTest, LastOfManyHoldersReleasesTheNewValueOnce)
{
    std::vector<ScriptObjectReference> holders(1, ScriptObjectReference(new FakeReference()));
    holders.resize(5, holders.front());
    holders[2] = lookThroughView();
    holders.push_back(holders[4]);

    while (holders.size() > 1)
        holders.pop_back();
    EXPECT_EQ(countLivingValues(), 1);
    holders.clear();

    EXPECT_EQ(countLivingValues(), 0);
}

TEST_F(ScriptObjectReferenceViewTest, ViewsAssignedOneAfterTheOtherReleaseEachValueOnce)
{
    ScriptObjectReference reference(new FakeReference());
    ScriptObjectReference other(reference);

    reference = lookThroughView();
    other = lookThroughView();
    reference = lookThroughView();

    EXPECT_EQ(countLivingValues(), 1);
    EXPECT_EQ(other.getInterpreterReference(), view().getLastReference());
}

TEST_F(ScriptObjectReferenceViewTest, HolderThatStaysBehindCountsAsOne)
{
    ScriptObjectReference staying;
    FakeView view;
    {
        ScriptObjectReference going(staying);
        going = ScriptObjectView(&view);
    }

    EXPECT_EQ(staying.getUseCount(), 1U);
}

TEST_F(ScriptObjectReferenceViewTest, HolderMayTakeAnotherValueAfterwards)
{
    ScriptObjectReference reference(new FakeReference());
    ScriptObjectReference other(reference);
    reference = lookThroughView();

    other = ScriptObjectReference();

    EXPECT_EQ(other.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(countLivingValues(), 1);
}

TEST_F(ScriptObjectReferenceViewTest, ViewOnNothingEmptiesTheOnlyHolder)
{
    ScriptObjectReference reference(new FakeReference());

    reference = ScriptObjectView();

    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(countLivingValues(), 0);
}

TEST_F(ScriptObjectReferenceViewTest, ViewOnNothingLeavesTheValueOfASharedBlock)
{
    auto* const value = new FakeReference();
    ScriptObjectReference reference(value);
    const ScriptObjectReference other(reference);

    reference = ScriptObjectView();

    EXPECT_EQ(reference.getInterpreterReference(), value);
    EXPECT_EQ(other.getInterpreterReference(), value);
    EXPECT_EQ(other.getUseCount(), 1U);
}

TEST_F(ScriptObjectReferenceViewTest, ViewThatAnchorsNothingEmptiesAllHolders)
{
    ScriptObjectReference reference(new FakeReference());
    const ScriptObjectReference other(reference);
    view().lookAtNothing();

    reference = lookThroughView();

    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(other.getInterpreterReference(), nullptr);
    EXPECT_EQ(countLivingValues(), 0);
}

} // namespace

} // namespace tbScripts::test
