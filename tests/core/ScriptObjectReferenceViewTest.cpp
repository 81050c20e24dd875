// Views assigned to references, whose block other holders may share.

#include "support/FakeScriptObjects.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

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

} // namespace

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

TEST_F(ScriptObjectReferenceViewTest, EmptyReferenceTakesTheValue)
{
    ScriptObjectReference reference;

    reference = lookThroughView();

    EXPECT_EQ(reference.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(countLivingValues(), 1);
}

TEST_F(ScriptObjectReferenceViewTest, OnlyHolderReplacesItsValue)
{
    ScriptObjectReference reference(new FakeReference());

    reference = lookThroughView();

    EXPECT_EQ(reference.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(countLivingValues(), 1);
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

TEST_F(ScriptObjectReferenceViewTest, AllHoldersSeeTheNewValueAtCountOne)
{
    ScriptObjectReference reference(new FakeReference());
    const ScriptObjectReference other(reference);

    reference = lookThroughView();

    EXPECT_EQ(reference.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(other.getInterpreterReference(), view().getLastReference());
    EXPECT_EQ(reference.getUseCount(), 1U);
    EXPECT_EQ(other.getUseCount(), 1U);
}

TEST_F(ScriptObjectReferenceViewTest, ReplacedValueOfASharedBlockIsReleased)
{
    ScriptObjectReference reference(new FakeReference());
    const ScriptObjectReference other(reference);

    reference = lookThroughView();

    EXPECT_EQ(countLivingValues(), 1);
}

TEST_F(ScriptObjectReferenceViewTest, NewValueOutlivesTheHolderThatItWasAssignedTo)
{
    auto reference = std::make_unique<ScriptObjectReference>(new FakeReference());
    const ScriptObjectReference other(*reference);
    *reference = lookThroughView();

    reference.reset();

    EXPECT_EQ(countLivingValues(), 1);
    EXPECT_EQ(other.getType(), 9U);
}

TEST_F(ScriptObjectReferenceViewTest, NewValueOutlivesTheOtherHolder)
{
    ScriptObjectReference reference(new FakeReference());
    auto other = std::make_unique<ScriptObjectReference>(reference);
    reference = lookThroughView();

    other.reset();

    EXPECT_EQ(countLivingValues(), 1);
    EXPECT_EQ(reference.getType(), 9U);
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

} // namespace tbScripts::test
