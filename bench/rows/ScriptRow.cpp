#include "rows/ScriptRow.h"

#include <utility>

namespace bench
{

namespace
{

constexpr const char* BY_HAND = "hand-written";

Variant makeLibraryVariant(
    const std::function<void(tbScripts::Environment&)>& declare,
    const std::string& source,
    double count)
{
    auto host = std::make_shared<LibraryHost>();
    declare(host->getEnvironment());
    host->run(source);
    const auto function = host->getEnvironment().getScriptFunction("run");
    return {
        [host, function, count] { return host->call(function, count); },
        [host] { host->collect(); }};
}

std::vector<Variant> makeScriptVariants(const ScriptRow& script, std::size_t operations)
{
    const auto count = static_cast<double>(operations);
    std::vector<Variant> variants;
    for (const auto& declare : {script.declareInLibrary, script.declareTyped, script.declareLeaf})
    {
        if (declare)
            variants.push_back(makeLibraryVariant(declare, script.source, count));
    }

    auto byHand = std::make_shared<LuaHost>();
    script.declareByHand(byHand->getState());
    byHand->run(script.source);
    const int reference = byHand->refer("run");
    variants.push_back(
        {[byHand, reference, count] { return byHand->call(reference, count); },
         [byHand] { byHand->collect(); }});
    return variants;
}

std::vector<Variant> makeHostVariants(const HostRow& row, std::size_t operations)
{
    std::vector<Variant> variants;
    for (const auto& begin : {row.beginInLibrary, row.beginTyped, row.beginLeaf})
    {
        if (!begin)
            continue;
        auto host = std::make_shared<LibraryHost>();
        host->run(row.source);
        variants.push_back(
            {[host, loop = begin(*host), operations] { return loop(*host, operations); },
             [host] { host->collect(); }});
    }

    auto byHand = std::make_shared<LuaHost>();
    byHand->run(row.source);
    const LuaLoop luaLoop = row.beginByHand(*byHand);
    variants.push_back(
        {[byHand, luaLoop, operations] { return luaLoop(*byHand, operations); },
         [byHand] { byHand->collect(); }});
    return variants;
}

std::vector<LibraryWay> waysOf(double goal, bool isTyped, double goalOfTyped, bool isLeaf)
{
    std::vector<LibraryWay> ways{{WAY::DESCRIBED, goal}};
    if (isTyped)
        ways.push_back({WAY::TYPED, goalOfTyped});
    if (isLeaf)
        ways.push_back({WAY::LEAF, goals::LEAF});
    return ways;
}

} // namespace

Row makeScriptRow(ScriptRow script)
{
    Row row{
        script.subject,
        script.name,
        {{RIVAL_KIND::BINDING, BY_HAND, 0.0}},
        MANY,
        MANY_IN_SMOKE,
        {},
        waysOf(
            script.goal,
            script.declareTyped != nullptr,
            goals::TYPED,
            script.declareLeaf != nullptr)};
    row.make = [script = std::move(script)](std::size_t operations)
    { return makeScriptVariants(script, operations); };
    return row;
}

Row makeHostRow(HostRow host)
{
    Row row{
        host.subject,
        host.name,
        {{RIVAL_KIND::BINDING, BY_HAND, 0.0}},
        host.operations,
        MANY_IN_SMOKE,
        {},
        waysOf(host.goal, host.beginTyped != nullptr, host.goalOfTyped, host.beginLeaf != nullptr)};
    row.make = [host = std::move(host)](std::size_t operations)
    { return makeHostVariants(host, operations); };
    return row;
}

} // namespace bench
