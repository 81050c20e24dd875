#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

/// A test as a row: its name states a fact, its steps arrange, act and expect, in that order.
template <typename Fixture>
struct Fact
{
    const char* name;
    std::vector<std::function<void(Fixture&)>> steps;
};

/// The facts of a suite. Each row becomes a test of that suite, beside those written as `TEST_F`.
///
/// Steps are what a function like `run(...)` returns, or a lambda that gets the fixture. A failure
/// says which step of the row it happened in, counted from 1.
template <typename Fixture>
class Facts
{
public:
    Facts(
        const char* suite,
        const std::vector<Fact<Fixture>>& facts,
        const char* file = __builtin_FILE(),
        int line = __builtin_LINE())
    {
        for (const Fact<Fixture>& fact : facts)
        {
            const auto make = [fact]() -> Fixture* { return new Test(fact); };
            ::testing::RegisterTest(suite, fact.name, nullptr, nullptr, file, line, make);
        }
    }

private:
    class Test : public Fixture
    {
    public:
        explicit Test(Fact<Fixture> fact)
            : m_fact(std::move(fact))
        {
        }

        void TestBody() override
        {
            int number = 0;
            for (const auto& step : m_fact.steps)
            {
                SCOPED_TRACE("step " + std::to_string(++number));
                step(*this);
            }
        }

    private:
        Fact<Fixture> m_fact;
    };
};

} // namespace tbScripts::test
