#include "rows/ScriptRow.h"

#include <utility>

namespace bench
{

namespace
{

constexpr const char* BY_HAND = "hand-written";

std::vector<Variant> makeScriptVariants(const ScriptRow& script, std::size_t operations)
{
    const auto count = static_cast<double>(operations);
    auto library = std::make_shared<LibraryHost>();
    script.declareInLibrary(library->getEnvironment());
    library->run(script.source);
    const auto function = library->getEnvironment().getScriptFunction("run");

    auto byHand = std::make_shared<LuaHost>();
    script.declareByHand(byHand->getState());
    byHand->run(script.source);
    const int reference = byHand->refer("run");

    return {
        {[library, function, count] { return library->call(function, count); },
         [library] { library->collect(); }},
        {[byHand, reference, count] { return byHand->call(reference, count); },
         [byHand] { byHand->collect(); }}};
}

std::vector<Variant> makeHostVariants(const HostRow& row, std::size_t operations)
{
    auto library = std::make_shared<LibraryHost>();
    library->run(row.source);
    const LibraryLoop libraryLoop = row.beginInLibrary(*library);

    auto byHand = std::make_shared<LuaHost>();
    byHand->run(row.source);
    const LuaLoop luaLoop = row.beginByHand(*byHand);

    return {
        {[library, libraryLoop, operations] { return libraryLoop(*library, operations); },
         [library] { library->collect(); }},
        {[byHand, luaLoop, operations] { return luaLoop(*byHand, operations); },
         [byHand] { byHand->collect(); }}};
}

} // namespace

Row makeScriptRow(ScriptRow script)
{
    Row row{
        script.subject,
        script.name,
        {{RIVAL_KIND::BINDING, BY_HAND, script.goal}},
        MANY,
        MANY_IN_SMOKE,
        {}};
    row.make = [script = std::move(script)](std::size_t operations)
    { return makeScriptVariants(script, operations); };
    return row;
}

Row makeHostRow(HostRow host)
{
    Row row{
        host.subject,
        host.name,
        {{RIVAL_KIND::BINDING, BY_HAND, host.goal}},
        host.operations,
        MANY_IN_SMOKE,
        {}};
    row.make = [host = std::move(host)](std::size_t operations)
    { return makeHostVariants(host, operations); };
    return row;
}

} // namespace bench
