#include <tbExport/ExporterLoadResult.h>

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::Node;

static_assert(std::is_nothrow_move_constructible_v<ExporterLoadResult>);
static_assert(std::is_nothrow_move_assignable_v<ExporterLoadResult>);
static_assert(!std::is_copy_constructible_v<ExporterLoadResult>);
static_assert(!std::is_copy_assignable_v<ExporterLoadResult>);

ExporterLoadResult makeLoaded(tbMemory::StringView text)
{
    Node root;
    root.setString(text);
    return ExporterLoadResult(std::move(root));
}

TEST(ExporterLoadResultTest, EmptyResultHasNoRootAndHasNotFailed)
{
    ExporterLoadResult result;

    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_FALSE(result.hasFailed());
    EXPECT_EQ(result.getError(), "");
    EXPECT_EQ(result.getErrorContext(), "");
}

TEST(ExporterLoadResultTest, LoadedResultOwnsItsRoot)
{
    ExporterLoadResult result = makeLoaded("text");

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getString(), "text");
    EXPECT_FALSE(result.hasFailed());
    EXPECT_EQ(result.getError(), "");
}

TEST(ExporterLoadResultTest, ConstResultGivesAConstRoot)
{
    const ExporterLoadResult result = makeLoaded("text");

    static_assert(std::is_same_v<decltype(result.getRoot()), const Node*>);
    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getString(), "text");
}

TEST(ExporterLoadResultTest, FailedResultHasTwoTextsAndNoRoot)
{
    const ExporterLoadResult result("what", "where");

    EXPECT_EQ(result.getRoot(), nullptr);
    EXPECT_TRUE(result.hasFailed());
    EXPECT_EQ(result.getError(), "what");
    EXPECT_EQ(result.getErrorContext(), "where");
}

TEST(ExporterLoadResultTest, MoveHandsTheRootOverAtItsAddress)
{
    ExporterLoadResult source = makeLoaded("text");
    Node* root = source.getRoot();

    ExporterLoadResult target(std::move(source));

    EXPECT_EQ(target.getRoot(), root);
    EXPECT_EQ(source.getRoot(), nullptr); // NOLINT(bugprone-use-after-move): the point
}

TEST(ExporterLoadResultTest, MoveOfAFailureLeavesAnEmptyResult)
{
    ExporterLoadResult source("what", "where");
    ExporterLoadResult target = makeLoaded("text");

    target = std::move(source);

    EXPECT_TRUE(target.hasFailed());
    EXPECT_EQ(target.getRoot(), nullptr);
    EXPECT_EQ(target.getError(), "what");
    EXPECT_EQ(target.getErrorContext(), "where");
    EXPECT_FALSE(source.hasFailed()); // NOLINT(bugprone-use-after-move): the point
    EXPECT_EQ(source.getError(), "");
    EXPECT_EQ(source.getErrorContext(), "");
}

TEST(ExporterLoadResultTest, AssignmentOfALoadedResultEndsTheFailure)
{
    ExporterLoadResult target("what", "where");

    target = makeLoaded("text");

    EXPECT_FALSE(target.hasFailed());
    EXPECT_EQ(target.getError(), "");
    EXPECT_EQ(target.getErrorContext(), "");
    ASSERT_NE(target.getRoot(), nullptr);
    EXPECT_EQ(target.getRoot()->getString(), "text");
}

TEST(ExporterLoadResultTest, AssignmentToItselfChangesNothing)
{
    ExporterLoadResult result = makeLoaded("text");
    ExporterLoadResult& same = result;

    result = std::move(same);

    ASSERT_NE(result.getRoot(), nullptr);
    EXPECT_EQ(result.getRoot()->getString(), "text");
}

TEST(ExporterLoadResultTest, RootMayBeMovedOutToOutliveTheResult)
{
    Node kept;
    {
        ExporterLoadResult result = makeLoaded("text");
        kept = std::move(*result.getRoot());
    }

    EXPECT_EQ(kept.getString(), "text");
}

} // namespace
