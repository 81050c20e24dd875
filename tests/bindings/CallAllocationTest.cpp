// What runs in every frame of a host has to do without the heap. First calls may allocate.

#include "support/AllocationCounter.h"
#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <algorithm>

namespace tbScripts::test
{

namespace
{

struct CallShape
{
    const char* row;
    std::vector<FUNCTION_PARAMETER_TYPE> types;
    const char* arguments;
    FunctionParameter result;
};

class CallAllocationTest : public EnvironmentFixture
{
protected:
    /// Calls the host function `call` 100 times, as `callText` says, and returns the allocations
    /// after the first of them.
    std::size_t countWhileCalling(const std::string& callText)
    {
        AllocationCounter counter;
        std::size_t count = 99;
        declareAction("start", [&counter] { counter = AllocationCounter(); });
        declareAction("stop", [&] { count = counter.count(); });
        run(callText + " start() for i = 1, 100 do " + callText + " end stop()");
        return count;
    }

    ScriptObjectReference m_callBack; // the script function `callBack`
};

using HostFunctionAllocationTest = OnRows<CallAllocationTest, CallShape>;

TEST_P(HostFunctionAllocationTest, IsZeroPerCall)
{
    int calls = 0;
    declare(
        "call",
        GetParam().types,
        [&calls](const Parameters&)
        {
            ++calls;
            return GetParam().result;
        });

    const std::size_t count =
        countWhileCalling(std::string("local value = call(") + GetParam().arguments + ")");

    EXPECT_EQ(count, 0U);
    EXPECT_EQ(calls, 101);
}

ROWS(
    HostFunctionAllocationTest,
    {"NothingToNothing", {}, "", FunctionParameter::VOID},
    {"IntToInt", {PARAM_TYPE_INT}, "7", 7},
    {"FloatToFloat", {PARAM_TYPE_FLOAT}, "0.5", 0.5F},
    {"DoubleToDouble", {PARAM_TYPE_DOUBLE}, "0.5", 0.5},
    {"BoolToBool", {PARAM_TYPE_BOOL}, "true", true},
    {"AllOfThem",
     {PARAM_TYPE_INT, PARAM_TYPE_FLOAT, PARAM_TYPE_DOUBLE, PARAM_TYPE_BOOL},
     "1, 2, 3, false",
     7},
    {"NullObject", {PARAM_TYPE_USER_TYPE}, "nil", FunctionParameter::VOID},
    {"ShortText", {PARAM_TYPE_STRING}, "'spear'", 7},
    {"LongTextThatFitsTheEarlierOne",
     {PARAM_TYPE_STRING},
     "'a text that is too long for the storage inside a text object, by far'",
     7});

TEST_F(CallAllocationTest, CounterSeesWhatACallableAllocates)
{
    declare("call", {}, [](const Parameters&) { return FunctionParameter(std::string(70, 'x')); });
    EXPECT_GE(countWhileCalling("call()"), 100U);
}

TEST_F(CallAllocationTest, ShorterTextsReuseTheStorageOfALongerOne)
{
    std::size_t longest = 0;
    declare(
        "call",
        {PARAM_TYPE_STRING},
        doing([&longest](const Parameters& parameters)
              { longest = std::max(longest, parameters[0].getString().size()); }));
    run("call(string.rep('x', 1000))");
    EXPECT_EQ(countWhileCalling("call(string.rep('x', 10 * (i or 1)))"), 0U);
    EXPECT_EQ(longest, 1000U);
}

TEST_F(CallAllocationTest, CallsFromACoroutineAreFreeToo)
{
    declare("call", {PARAM_TYPE_INT}, [](const Parameters& parameters) { return parameters[0]; });
    run("step = coroutine.wrap(function() while true do call(7) coroutine.yield() end end)");
    EXPECT_EQ(countWhileCalling("step()"), 0U);
}

TEST_F(CallAllocationTest, EnteredAgainItIsFreeOnceTheDepthWasReached)
{
    declare(
        "call",
        {PARAM_TYPE_INT},
        [this](const Parameters& parameters)
        {
            Parameters outputs;
            if (parameters[0].getInt() > 0)
            {
                environment().callScriptFunction(
                    m_callBack, {FunctionParameter(parameters[0].getInt() - 1)}, outputs);
            }
            return parameters[0].getInt();
        });
    run("function callBack(n) call(n) end");
    m_callBack = environment().getScriptFunction("callBack");

    const std::size_t count = countWhileCalling("call(5)");

    EXPECT_EQ(count, 0U);
}

struct ScriptCallShape
{
    const char* row;
    std::vector<FunctionParameter> inputs;
    std::vector<FunctionParameter> outputs;
};

using ScriptCallAllocationTest = OnRows<EnvironmentFixture, ScriptCallShape>;

TEST_P(ScriptCallAllocationTest, IsZeroPerCall)
{
    run("calls = 0 function pass(...) calls = calls + 1 return ... end");
    const ScriptObjectReference function = environment().getScriptFunction("pass");
    const std::vector<FunctionParameter>& inputs = GetParam().inputs;
    std::vector<FunctionParameter> outputs = GetParam().outputs;
    Parameters outputView(outputs);
    environment().callScriptFunction(function, inputs, outputView);

    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        environment().callScriptFunction(function, inputs, outputView);

    EXPECT_EQ(counter.count(), 0U);
    EXPECT_EQ(environment().getVar("calls", 0), 101);
}

ROWS(
    ScriptCallAllocationTest,
    {"NothingToNothing", {}, {}},
    {"Ints", {1, 2}, {0, 0}},
    {"Floats", {0.5F}, {0.0F}},
    {"Doubles", {0.5}, {0.0}},
    {"Bools", {true}, {false}},
    {"AllOfThem", {1, 0.5F, 0.5, true}, {0, 0.0F, 0.0, false}},
    {"TextThatFits", {"spear"}, {""}});

} // namespace

} // namespace tbScripts::test
