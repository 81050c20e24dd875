#include "rows/BareCompiler.h"
#include "rows/ProjectText.h"
#include "rows/Rows.h"
#include "support/Failure.h"

#include <tbScripts/Script.h>

#include <memory>
#include <string>

namespace bench
{

namespace
{

constexpr std::size_t SCRIPTS = 1000;
constexpr std::size_t SCRIPTS_IN_SMOKE = 20;
constexpr std::size_t SOURCE_SIZE = 1500;

Variant makeLibraryVariant(std::size_t scripts)
{
    auto compiled = std::make_shared<std::vector<tbScripts::Script>>(scripts);
    for (std::size_t i = 0; i < scripts; ++i)
    {
        (*compiled)[i].setTargetInterpreter(tbScripts::INTERPRETER_LUA);
        (*compiled)[i].setSources(makeScriptSource(i, SOURCE_SIZE).c_str());
    }
    return {
        [compiled]
        {
            double done = 0.0;
            for (tbScripts::Script& script : *compiled)
                done += script.load() ? 1.0 : 0.0;
            return done;
        },
        {}};
}

Variant makeBareVariant(std::size_t scripts)
{
    auto sources = std::make_shared<std::vector<std::string>>();
    for (std::size_t i = 0; i < scripts; ++i)
        sources->push_back(makeScriptSource(i, SOURCE_SIZE));
    auto bytecodes = std::make_shared<std::vector<std::string>>(scripts);
    auto compiler = std::make_shared<BareCompiler>();
    return {
        [sources, bytecodes, compiler]
        {
            double done = 0.0;
            for (std::size_t i = 0; i < sources->size(); ++i)
            {
                const std::string& source = (*sources)[i];
                (*bytecodes)[i] = compiler->compile(source.c_str(), source.size());
                done += (*bytecodes)[i].empty() ? 0.0 : 1.0;
            }
            return done;
        },
        {}};
}

} // namespace

void addCompileRows(RowList& rows)
{
    rows.push_back(
        {"Scripts and documents",
         "compile of 1,000 scripts, per script",
         {{RIVAL_KIND::LIMIT, "bare compiles in one state", 0.0}},
         SCRIPTS,
         SCRIPTS_IN_SMOKE,
         [](std::size_t scripts) {
             return std::vector<Variant>{makeLibraryVariant(scripts), makeBareVariant(scripts)};
         }});
}

} // namespace bench
