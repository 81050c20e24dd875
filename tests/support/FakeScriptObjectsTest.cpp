// The fakes are tested too: one that counts nothing proves nothing.

#include "support/FakeScriptObjects.h"

#include <memory>

namespace tbScripts::test
{

class FakeScriptObjectsTest : public FakeScriptObjectsFixture
{
};

TEST_F(FakeScriptObjectsTest, ReferencesAndViewsAreCountedWhileTheyLive)
{
    const FakeView view;

    const auto reference = std::make_unique<FakeReference>();

    EXPECT_EQ(CountedObject::getLiving(), 2);
}

TEST_F(FakeScriptObjectsTest, ViewMakesAReferenceOfItsKind)
{
    FakeView view(PARAM_TYPE_SCRIPT_FUNCTION);

    const std::unique_ptr<ScriptObjectInterpreterReference> reference(view.createReference());

    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(view.getLastReference(), reference.get());
}

TEST_F(FakeScriptObjectsTest, ViewThatLooksAtNothingMakesNoReference)
{
    FakeView view;
    view.lookAtNothing();

    EXPECT_EQ(view.createReference(), nullptr);
}

} // namespace tbScripts::test
