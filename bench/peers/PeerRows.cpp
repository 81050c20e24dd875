#include "peers/PeerRows.h"

#include "support/LuaHost.h"

#include <memory>

namespace bench
{

namespace
{

using Declare = void (*Peer::*)(lua_State*);
using Begin = PeerLoop (*Peer::*)(lua_State*);

// A row whose script defines `run(n)`.
PeerLoop
beginScript(const Peer& peer, const std::vector<Declare>& declarations, const std::string& source)
{
    auto host = std::make_shared<LuaHost>();
    for (const Declare declare : declarations)
        (peer.*declare)(host->getState());
    host->run(source);
    const int run = host->refer("run");
    return [host, run](std::size_t n)
    {
        host->collect();
        return host->call(run, static_cast<double>(n));
    };
}

PeerRow makeFunctionRow(const std::string& name, const std::string& statement)
{
    const std::string source =
        "local twice, trimmed, sumOfEight, keep = twice, trimmed, sumOfEight, keep\n"
        "function run(n) local sum = 0 local function step() end for i = 1, n do " +
        statement + " end return sum end";
    return {name, [source](const Peer& peer) {
                return beginScript(peer, {&Peer::declareFunctions}, source);
            }};
}

PeerRow makeCoroutineRow()
{
    const std::string source = "local twice = twice\n"
                               "function run(n) return coroutine.wrap(function() local sum = 0 "
                               "for i = 1, n do sum = sum + twice(i) end return sum end)() end";
    return {"double f(double) in a coroutine", [source](const Peer& peer) {
                return beginScript(peer, {&Peer::declareFunctions}, source);
            }};
}

// The statement creates bodies by NEW().
PeerRow makeBodyRow(const std::string& name, const std::string& statement)
{
    return {
        name,
        [statement](const Peer& peer)
        {
            const std::string created = peer.newBody;
            std::string repeated = statement;
            if (const std::size_t at = repeated.find("NEW()"); at != std::string::npos)
                repeated.replace(at, 5, created);
            const std::string source = "local massOf, Body = massOf, Body\n"
                                       "function run(n) local a, b, sum = " +
                                       created + ", " + created + ", 0 for i = 1, n do " +
                                       repeated + " end return sum + b.var + b[1] end";
            return beginScript(peer, {&Peer::declareBody, &Peer::declareFunctions}, source);
        }};
}

PeerRow makeMethodOnlyRow()
{
    return {
        "b:get() of a type with nothing but methods",
        [](const Peer& peer)
        {
            const std::string source =
                "function run(n) local b, sum = " + std::string(peer.newBody) +
                ", n for i = 1, n do sum = sum + b:get() end return sum end";
            return beginScript(peer, {&Peer::declareMethodOnly}, source);
        }};
}

PeerRow makeCallRow(const std::string& name, const std::string& source, Begin begin)
{
    return {
        name,
        [source, begin](const Peer& peer)
        {
            auto host = std::make_shared<LuaHost>();
            peer.declareFunctions(host->getState());
            host->run(source);
            // The loop may hold values of the state, so it goes first.
            return PeerLoop(
                [host, loop = (peer.*begin)(host->getState())](std::size_t n)
                {
                    host->collect();
                    return loop(n);
                });
        }};
}

} // namespace

std::vector<PeerRow> makePeerRows()
{
    return {
        makeFunctionRow("double f(double)", "sum = sum + twice(i)"),
        makeFunctionRow("text f(text)", "sum = sum + #trimmed(' entity 0042 ')"),
        makeFunctionRow("a::b::f(double)", "sum = sum + a.b.twice(i)"),
        makeFunctionRow("f with 8 parameters", "sum = sum + sumOfEight(i, 2, 3, 4, 5, 6, 7, 8)"),
        makeCoroutineRow(),
        makeFunctionRow("f(script function)", "keep(step)"),
        makeBodyRow("double f(T)", "sum = sum + massOf(b)"),
        makeBodyRow("b:set(b:get() + 1)", "b:set(b:get() + 1)"),
        makeMethodOnlyRow(),
        makeBodyRow("b.var = b.var + 1", "b.var = b.var + 1"),
        makeBodyRow("T.new() and its collection", "a = NEW() sum = sum + 1"),
        makeBodyRow("a + b, a new instance", "local c = a + b sum = sum + 1"),
        makeBodyRow("a < b", "if not (a < b) then sum = sum + 1 end"),
        makeBodyRow("sum = sum + b[1]", "sum = sum + b[1] + 1"),
        makeBodyRow("b[1] = i", "b[1] = i"),
        makeCallRow(
            "script function: double f(double)",
            "function step(x) return x * 2 end",
            &Peer::beginCalls),
        makeCallRow(
            "script function: f with 8 parameters",
            "function step(a, b, c, d, e, f, g, h) return a + b + c + d + e + f + g + h end",
            &Peer::beginCallsWithEight),
        makeCallRow(
            "script function: f with 3 results",
            "function step(x) return x, x + 1, x + 2 end",
            &Peer::beginCallsForThree),
        makeCallRow(
            "script function: f calls double g(double) of the host",
            "function step(x) return twice(x) end",
            &Peer::beginCalls)};
}

} // namespace bench
