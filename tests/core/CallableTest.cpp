#include "tbScripts/Callable.h"

#include "tbScripts/FunctionParameter.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace tbScripts::test
{

namespace
{

using IntCallable = Callable<int(int)>;

int addOne(int number)
{
    return number + 1;
}

struct Counter
{
    int start = 0;

    int after(int steps) const { return start + steps; }

    int operator()(int steps) { return start += steps; } // changes itself
};

struct FourWords
{
    std::array<int*, 4> words{};

    int operator()(int index) const { return *words.at(static_cast<std::size_t>(index)); }
};

// Notes at its destruction whether the callable that held it has its new target by then.
struct Observer
{
    std::shared_ptr<const IntCallable*> holder;
    std::shared_ptr<int> seen;

    Observer(std::shared_ptr<const IntCallable*> observed, std::shared_ptr<int> result)
        : holder(std::move(observed))
        , seen(std::move(result))
    {
    }

    Observer(const Observer&) = default;
    Observer(Observer&&) = default;
    Observer& operator=(const Observer&) = delete;
    Observer& operator=(Observer&&) = delete;

    ~Observer()
    {
        if (holder && *holder)
            *seen = (**holder)(0);
    }

    int operator()(int) const { return -1; }
};

// Counts the bytes that its copies allocate.
struct Allocating
{
    static inline int blocks = 0;

    std::array<void*, 2> words{};

    static void* operator new(std::size_t size)
    {
        ++blocks;
        return ::operator new(size);
    }

    static void* operator new(std::size_t, void* room) { return room; }

    static void operator delete(void* block) { ::operator delete(block); }

    int operator()(int number) const { return number; }
};

struct AllocatingMore : Allocating
{
    void* third = nullptr;
};

static_assert(std::is_convertible_v<int (*)(int), IntCallable>);
static_assert(std::is_convertible_v<short (*)(double), IntCallable>);
static_assert(std::is_convertible_v<std::function<int(int)>, IntCallable>);
static_assert(std::is_convertible_v<int (Counter::*)(int) const, Callable<int(Counter&, int)>>);
static_assert(!std::is_convertible_v<int, IntCallable>);
static_assert(!std::is_convertible_v<int*, IntCallable>);
static_assert(!std::is_convertible_v<int (*)(std::string), IntCallable>);
static_assert(!std::is_convertible_v<std::string (*)(int), IntCallable>);
static_assert(!std::is_convertible_v<void (*)(int), IntCallable>);
static_assert(!std::is_convertible_v<int (Counter::*)(int) const, IntCallable>);
static_assert(std::is_convertible_v<IntCallable, std::function<int(int)>>);
static_assert(std::is_nothrow_move_constructible_v<IntCallable>);
static_assert(std::is_nothrow_move_assignable_v<IntCallable>);
static_assert(sizeof(IntCallable) == 4 * sizeof(void*));

} // namespace

class CallableTest : public ::testing::Test
{
protected:
    std::shared_ptr<int> m_token = std::make_shared<int>(5);
};

TEST_F(CallableTest, IsEmptyByDefault)
{
    EXPECT_FALSE(IntCallable());
    EXPECT_FALSE(IntCallable(nullptr));
    EXPECT_TRUE(IntCallable() == nullptr);
    EXPECT_TRUE(nullptr == IntCallable());
    EXPECT_FALSE(IntCallable() != nullptr);
    EXPECT_FALSE(nullptr != IntCallable());
}

TEST_F(CallableTest, EmptyOneThrows)
{
    EXPECT_THROW(IntCallable()(1), std::bad_function_call);
    EXPECT_THROW(Callable<void()>()(), std::bad_function_call);
}

TEST_F(CallableTest, NullPointersAreEmpty)
{
    EXPECT_FALSE(IntCallable(static_cast<int (*)(int)>(nullptr)));
    EXPECT_FALSE((Callable<int(Counter&, int)>(static_cast<int (Counter::*)(int) const>(nullptr))));
    EXPECT_FALSE(Callable<int(Counter&)>(static_cast<int Counter::*>(nullptr)));
}

TEST_F(CallableTest, WrappersWithoutTargetAreEmpty)
{
    EXPECT_FALSE(IntCallable(std::function<int(int)>()));
    EXPECT_FALSE(IntCallable(std::function<short(double)>()));
    EXPECT_FALSE(IntCallable(Callable<short(double)>()));
}

TEST_F(CallableTest, CallsFunctions)
{
    const IntCallable callable = addOne;
    EXPECT_TRUE(callable);
    EXPECT_TRUE(callable != nullptr);
    EXPECT_EQ(callable(1), 2);
    EXPECT_EQ(IntCallable(&addOne)(2), 3);
}

TEST_F(CallableTest, CallsLambdas)
{
    int added = 10;
    const IntCallable byReference = [&added](int number) { return added + number; };
    added = 20;
    EXPECT_EQ(byReference(1), 21);
    EXPECT_EQ(IntCallable([](int number) { return -number; })(3), -3);
    EXPECT_EQ(IntCallable([](auto number) { return 2 * number; })(3), 6);
}

TEST_F(CallableTest, CallsWrappers)
{
    const std::function<int(int)> standard = addOne;
    EXPECT_EQ(IntCallable(standard)(1), 2);
    EXPECT_EQ(IntCallable(Callable<short(double)>([](double) { return short{3}; }))(1), 3);
    EXPECT_EQ(IntCallable(std::bind(addOne, std::placeholders::_1))(1), 2);
    Counter counter;
    const IntCallable referring = std::ref(counter);
    referring(3);
    EXPECT_EQ(counter.start, 3);
}

TEST_F(CallableTest, CallsMembersOfObjectsPointersAndReferenceWrappers)
{
    Counter counter{3};
    EXPECT_EQ((Callable<int(Counter&, int)>(&Counter::after)(counter, 1)), 4);
    EXPECT_EQ((Callable<int(const Counter*, int)>(&Counter::after)(&counter, 1)), 4);
    EXPECT_EQ((Callable<int(Counter, int)>(&Counter::after)(counter, 1)), 4);
    EXPECT_EQ(
        (Callable<int(std::reference_wrapper<Counter>, int)>(&Counter::after)(counter, 1)), 4);
    EXPECT_EQ(
        (Callable<int(const std::shared_ptr<Counter>&)>(&Counter::start)(
            std::make_shared<Counter>(counter))),
        3);
    Callable<int&(Counter&)> (&Counter::start)(counter) = 7;
    EXPECT_EQ(counter.start, 7);
}

TEST_F(CallableTest, ConvertsTheResult)
{
    const Callable<FunctionParameter(bool)> callable = [](bool isSet) { return isSet; };
    EXPECT_EQ(callable(true).getType(), PARAM_TYPE_BOOL);
    const Callable<void*()> address = [this] { return m_token.get(); };
    EXPECT_EQ(address(), m_token.get());
    EXPECT_EQ(Callable<double()>([] { return 2; })(), 2.0);
}

TEST_F(CallableTest, DropsTheResultIfItReturnsNone)
{
    int calls = 0;
    const Callable<void(int)> callable = [&calls](int) { return ++calls; };
    callable(0);
    EXPECT_EQ(calls, 1);
}

TEST_F(CallableTest, PassesArgumentsOn)
{
    const Callable<std::unique_ptr<int>(std::unique_ptr<int>)> moving =
        [](std::unique_ptr<int> number) { return number; };
    EXPECT_EQ(*moving(std::make_unique<int>(4)), 4);
    int number = 1;
    Callable<void(int&)>([](int& changed) { changed = 2; })(number);
    EXPECT_EQ(number, 2);
}

TEST_F(CallableTest, ATargetMayChangeItself)
{
    const IntCallable callable = Counter{1};
    callable(2);
    EXPECT_EQ(callable(2), 5);
}

TEST_F(CallableTest, CopiesHaveTargetsOfTheirOwn)
{
    const IntCallable callable = Counter{1};
    const IntCallable copy = callable; // NOLINT(performance-unnecessary-copy-initialization)
    callable(2);
    EXPECT_EQ(copy(1), 2);

    const IntCallable capturing = [token = m_token](int number) { return *token + number; };
    EXPECT_EQ(m_token.use_count(), 2);
    IntCallable second = capturing;
    EXPECT_EQ(m_token.use_count(), 3);
    EXPECT_EQ(second(1), 6);
    second = nullptr;
    EXPECT_EQ(m_token.use_count(), 2);
}

TEST_F(CallableTest, MovingEmptiesTheSource)
{
    IntCallable capturing = [token = m_token](int number) { return *token + number; };
    IntCallable taken = std::move(capturing);
    EXPECT_FALSE(capturing); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(m_token.use_count(), 2);
    EXPECT_EQ(taken(1), 6);
    capturing = std::move(taken);
    EXPECT_FALSE(taken); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(capturing(1), 6);
    EXPECT_EQ(m_token.use_count(), 2);
}

TEST_F(CallableTest, AssignmentToItselfChangesNothing)
{
    IntCallable callable = [token = m_token](int number) { return *token + number; };
    IntCallable& same = callable;
    callable = same;
    EXPECT_EQ(callable(1), 6);
    callable = std::move(same);
    EXPECT_EQ(callable(1), 6);
    EXPECT_EQ(m_token.use_count(), 2);
}

TEST_F(CallableTest, SwapsTargets)
{
    IntCallable capturing = [token = m_token](int number) { return *token + number; };
    IntCallable other = addOne;
    capturing.swap(other);
    EXPECT_EQ(capturing(1), 2);
    std::swap(capturing, other);
    EXPECT_EQ(capturing(1), 6);
    EXPECT_EQ(m_token.use_count(), 2);
}

TEST_F(CallableTest, TheOldTargetIsDestroyedLast)
{
    IntCallable callable;
    const auto holder = std::make_shared<const IntCallable*>(nullptr);
    const auto seen = std::make_shared<int>(0);
    callable = Observer(holder, seen);
    *holder = &callable;
    callable = addOne;
    EXPECT_EQ(*seen, 1);
    *holder = nullptr;
}

TEST_F(CallableTest, TwoWordsNeedNoMemory)
{
    Allocating::blocks = 0;
    const IntCallable callable = Allocating();
    const IntCallable copy = callable; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy(1), 1);
    EXPECT_EQ(Allocating::blocks, 0);
}

TEST_F(CallableTest, MoreThanTwoWordsAreCopied)
{
    Allocating::blocks = 0;
    const IntCallable callable = AllocatingMore();
    EXPECT_EQ(Allocating::blocks, 1);
    const IntCallable copy = callable; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy(1), 1);
    EXPECT_EQ(Allocating::blocks, 2);

    std::array<int, 4> numbers{1, 2, 3, 4};
    const IntCallable large = FourWords{{&numbers[0], &numbers[1], &numbers[2], &numbers[3]}};
    EXPECT_EQ(IntCallable(large)(3), 4);
}

TEST_F(CallableTest, ExceptionsPassThrough)
{
    const IntCallable callable = [](int) -> int { throw std::string("refused"); };
    EXPECT_THROW(callable(1), std::string);
}

} // namespace tbScripts::test
