// A mixed scenario, run as usual and with the collector at its most aggressive: a new cycle begins
// as soon as one ends, and every host function collects everything. Nothing may differ.

#include "support/EnvironmentFixture.h"
#include "support/RowName.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

enum class COLLECTOR
{
    AS_USUAL,
    AGGRESSIVE
};

std::ostream& operator<<(std::ostream& stream, COLLECTOR collector)
{
    return stream << (collector == COLLECTOR::AS_USUAL ? "AsUsual" : "Aggressive");
}

class AggressiveCollectorTest : public EnvironmentFixture,
                                public ::testing::WithParamInterface<COLLECTOR>
{
protected:
    AggressiveCollectorTest()
    {
        if (isAggressive())
            run("collectgarbage('setpause', 0) collectgarbage('setstepmul', 5000)");
    }

    static bool isAggressive() { return GetParam() == COLLECTOR::AGGRESSIVE; }

    // As `declare`; the function collects before and after it works.
    void declareCollecting(
        const std::string& name,
        const std::vector<FUNCTION_PARAMETER_TYPE>& types,
        Function::Callable callable)
    {
        declare(
            name,
            types,
            [this, callable = std::move(callable)](const Parameters& parameters)
            {
                collect();
                FunctionParameter result = callable(parameters);
                collect();
                return result;
            });
    }

    void collect()
    {
        if (isAggressive())
            environment().requestGarbageCollection();
    }

    std::string textOf(const char* name)
    {
        return std::string(std::string_view(environment().getVar(name, "none")));
    }
};

VALUES(AggressiveCollectorTest, ::testing::Values(COLLECTOR::AS_USUAL, COLLECTOR::AGGRESSIVE));

TEST_P(AggressiveCollectorTest, TextsSurviveTheirWayThroughTheHost)
{
    declareCollecting(
        "join",
        {PARAM_TYPE_STRING, PARAM_TYPE_STRING},
        [](const Parameters& parameters)
        {
            std::string joined(std::string_view(parameters[0].getString()));
            joined += std::string_view(parameters[1].getString());
            return FunctionParameter(joined.c_str());
        });

    run("local all = '' for i = 1, 100 do all = join(all, tostring(i % 10)) end result = all");

    std::string expected;
    for (int i = 1; i <= 100; ++i)
        expected += std::to_string(i % 10);
    EXPECT_EQ(textOf("result"), expected);
}

TEST_P(AggressiveCollectorTest, TextArgumentIsTheHostsOwn)
{
    std::string kept;
    declareCollecting(
        "keep",
        {PARAM_TYPE_STRING},
        [&](const Parameters& parameters)
        {
            collect();
            kept = std::string(std::string_view(parameters[0].getString()));
            return FunctionParameter::VOID;
        });

    run("keep(string.rep('ab', 1000)) collectgarbage()");

    EXPECT_EQ(kept.size(), 2000U);
    EXPECT_EQ(kept.substr(1996), "abab");
}

TEST_P(AggressiveCollectorTest, ReferencesKeepWhatScriptsForget)
{
    std::vector<ScriptObjectReference> tables;
    std::vector<ScriptObjectReference> functions;
    declareCollecting(
        "give",
        {PARAM_TYPE_SCRIPT_OBJECT, PARAM_TYPE_SCRIPT_FUNCTION},
        [&](const Parameters& parameters)
        {
            tables.push_back(parameters[0].getScriptObject());
            functions.push_back(parameters[1].getScriptObject());
            return FunctionParameter::VOID;
        });
    run("for i = 1, 50 do local t = {i} give(t, function() return t[1] end) end");
    collect();

    int sum = 0;
    for (const ScriptObjectReference& function : functions)
    {
        std::vector<FunctionParameter> outputs{FunctionParameter(0)};
        Parameters outputView(outputs);
        EXPECT_TRUE(environment().callScriptFunction(function, {}, outputView));
        sum += outputs[0].getInt();
    }

    EXPECT_EQ(sum, 1275);
    EXPECT_EQ(tables.size(), 50U);
}

TEST_P(AggressiveCollectorTest, NestedCallsKeepTheirValues)
{
    run("function step(n, text) if n == 0 then return text end "
        "return descend(n - 1, text .. n) end");
    declareCollecting(
        "descend",
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        [this](const Parameters& parameters)
        {
            std::vector<FunctionParameter> outputs{FunctionParameter("")};
            call("step", {parameters[0], parameters[1]}, outputs);
            collect();
            return outputs[0];
        });
    std::vector<FunctionParameter> outputs{FunctionParameter("")};

    call("step", {FunctionParameter(9), FunctionParameter(">")}, outputs);

    EXPECT_EQ(outputs[0].getString(), ">987654321");
}

TEST_P(AggressiveCollectorTest, CoroutinesAndTheHostInterleave)
{
    std::vector<std::string> heard;
    declareCollecting(
        "hear",
        {PARAM_TYPE_STRING},
        [&](const Parameters& parameters)
        {
            heard.emplace_back(std::string_view(parameters[0].getString()));
            environment().setVar("count", static_cast<int>(heard.size()));
            return FunctionParameter(environment().getVar("count", 0));
        });

    run(R"(
        local function worker(name)
            return coroutine.wrap(function()
                for i = 1, 3 do coroutine.yield(hear(name .. i)) end
            end)
        end
        local a, b = worker('a'), worker('b')
        last = 0
        for i = 1, 3 do a() last = b() end
    )");

    EXPECT_THAT(heard, ElementsAre("a1", "b1", "a2", "b2", "a3", "b3"));
    EXPECT_EQ(environment().getVar("last", 0), 6);
}

TEST_P(AggressiveCollectorTest, ErrorsKeepTheirTexts)
{
    declareCollecting(
        "fail",
        {PARAM_TYPE_STRING},
        [](const Parameters& parameters) -> FunctionParameter
        { throw std::string(std::string_view(parameters[0].getString())); });

    run("texts = '' for i = 1, 5 do local _, text = pcall(fail, 'error ' .. i) "
        "texts = texts .. text .. ';' end");

    EXPECT_EQ(textOf("texts"), "error 1;error 2;error 3;error 4;error 5;");
    EXPECT_EQ(m_log.takeEntries().size(), 5U);
}

TEST_P(AggressiveCollectorTest, GlobalsOfEveryKindKeepTheirValues)
{
    int object = 0;
    declareCollecting(
        "set",
        {PARAM_TYPE_INT},
        [&](const Parameters& parameters)
        {
            const std::string suffix = std::to_string(parameters[0].getInt());
            environment().setVar("b" + suffix, true);
            environment().setVar("n" + suffix, 0.5);
            environment().setVar("s" + suffix, ("text" + suffix).c_str());
            environment().setVar("r" + suffix, environment().getVar("s" + suffix));
            environment().setObject("o" + suffix, "", &object);
            return FunctionParameter::VOID;
        });

    run("for i = 1, 50 do set(i) end "
        "for i = 1, 50 do assert(_G['b' .. i] == true and _G['n' .. i] == 0.5 "
        "and _G['s' .. i] == 'text' .. i and _G['r' .. i] == 'text' .. i) end");

    EXPECT_EQ(environment().getObject("o50", tbMemory::StringView()), &object);
}

TEST_P(AggressiveCollectorTest, FunctionsComeAndGoWhileTheyRun)
{
    int calls = 0;
    declareCollecting(
        "renew",
        {PARAM_TYPE_STRING},
        [&](const Parameters& parameters)
        {
            ++calls;
            const std::string name(std::string_view(parameters[0].getString()));
            environment().setFunc(name);
            collect();
            return FunctionParameter(calls);
        });

    run("result = renew('renew') collectgarbage()");

    EXPECT_EQ(environment().getVar("result", 0), 1);
    m_log.takeEntries(); // that the name is declared again
}

TEST_P(AggressiveCollectorTest, FinalisersRunOnceEach)
{
    int finalised = 0;
    declareCollecting(
        "count",
        {},
        [&finalised](const Parameters&)
        {
            ++finalised;
            return FunctionParameter::VOID;
        });

    run("for i = 1, 100 do getmetatable(newproxy(true)).__gc = function() count() end end");
    environment().requestGarbageCollection();

    EXPECT_EQ(finalised, 100);
}

} // namespace tbScripts::test
