#pragma once

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <string>
#include <string_view>
#include <tuple>

namespace tbScripts::test
{

/// Code, success and message of a run or a call, in a form that compares and prints.
using Outcome = std::tuple<int, bool, std::string>;

inline Outcome outcomeOf(const ExecutionResult& result)
{
    return {result.code, result.success, std::string(std::string_view(result.message))};
}

inline Outcome lastOutcome(const Environment& environment)
{
    return outcomeOf(environment.getLastExecutionResult());
}

/// A Lua script that is ready to run, if its sources compile.
class CompiledScript
{
public:
    explicit CompiledScript(const std::string& sources, const std::string& name = "test")
    {
        m_script.setName(name);
        m_script.setTargetInterpreter(INTERPRETER_LUA);
        m_script.setSources(sources);
        m_script.load();
    }

    operator Script&() { return m_script; }

    Script* operator->() { return &m_script; }

private:
    Script m_script;
};

} // namespace tbScripts::test
