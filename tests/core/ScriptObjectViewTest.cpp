#include "support/FakeScriptObjects.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace tbScripts::test
{

class ScriptObjectViewTest : public FakeScriptObjectsFixture
{
};

TEST_F(ScriptObjectViewTest, LooksAtNothingByDefault)
{
    EXPECT_EQ(ScriptObjectView().getInterpreterView(), nullptr);
}

TEST_F(ScriptObjectViewTest, LooksThroughWhatItIsMadeFrom)
{
    FakeView lent;

    const ScriptObjectView view(&lent);

    EXPECT_EQ(view.getInterpreterView(), &lent);
}

TEST_F(ScriptObjectViewTest, MadeFromNullLooksAtNothing)
{
    ScriptObjectInterpreterView* const nothing = nullptr;

    EXPECT_EQ(ScriptObjectView(nothing).getInterpreterView(), nullptr);
    EXPECT_EQ(
        ScriptObjectView(std::shared_ptr<ScriptObjectInterpreterView>()).getInterpreterView(),
        nullptr);
}

TEST_F(ScriptObjectViewTest, DoesNotOwnWhatItWasLent)
{
    FakeView lent;

    {
        const ScriptObjectView view(&lent);
    }

    EXPECT_EQ(CountedObject::getLiving(), 1);
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

TEST_F(ScriptObjectViewTest, CopyLooksAtTheSameValue)
{
    FakeView lent;
    const ScriptObjectView view(&lent);

    const ScriptObjectView copy(view);

    EXPECT_EQ(copy.getInterpreterView(), &lent);
    EXPECT_EQ(view.getInterpreterView(), &lent);
}

TEST_F(ScriptObjectViewTest, MoveTakesTheValue)
{
    FakeView lent;
    ScriptObjectView view(&lent);

    const ScriptObjectView moved(std::move(view));

    EXPECT_EQ(moved.getInterpreterView(), &lent);
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

TEST_F(ScriptObjectViewTest, AnchorsNothingByItself)
{
    FakeView lent;

    const ScriptObjectView view(&lent);
    const ScriptObjectView copy(view);

    EXPECT_EQ(lent.getLastReference(), nullptr);
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

} // namespace tbScripts::test
