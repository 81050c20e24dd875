// Calls of the typed layer. Its objects are of classes and globals of their own: scripts never pass
// them to described functions, which know only objects of the other kind.

#include "sequences/World.h"
#include "support/Require.h"

#include <tbScripts/Bind.h>
#include <tbScripts/ScriptFunction.h>

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::fuzz
{

namespace
{

// Numbered by their places, below 8 and 32: new ones go to the end.
constexpr std::array<const char*, 4> TYPED_TYPE_NAMES{"P", "Q", "n::P", "n::m::Q"};
constexpr std::array<const char*, 4> TYPED_FUNCTION_NAMES{"g0", "g1", "n_g0", "n_g1"};
constexpr std::array TYPED_STATEMENTS{
    "p0 = P.new(3)",
    "p1 = Q.new()",
    "p0 = n.P.new('4')",
    "p1 = n.m.Q.new(1, 2)",
    "p2 = g0(p0, p1)",
    "p0 = g1(p2)",
    "p2 = p0.number",
    "p0.number = p1",
    "p1.number = 7",
    "p2 = p1.label",
    "p0.label = p2",
    "p2 = p0:visit(p1)",
    "p2 = p0[1]",
    "p0[2] = p1",
    "p2 = p0.unknown",
    "p0.unknown = p2",
    "p2 = p0 + p1",
    "for key, value in pairs(p0) do p2 = value end",
    "p0, p1, p2 = p1, p2, p0",
    "p0 = nil collectgarbage()",
    "p1, p2 = nil collectgarbage() collectgarbage()",
    "pcall(function() getmetatable(p0).__gc(p0) end)",
    "pcall(function() p2:disableGc() p2:enableGc() end)",
    "p2 = {p0, p1, {p0}} p1 = p2",
    "pf = function(a, b) p0 = a return b, p1 end",
    "pf = function(a, b) g0(a, b) return g1(a) end",
    "pf = function(...) return pf(...) end",
    "pf = g0",
    "coroutine.wrap(function() p2 = g1(p0) p2 = p0.number end)()",
    "for i = 1, 70 do p2 = p0.number end"};

class Piece
{
public:
    Piece() { ++living; }

    explicit Piece(int first)
        : number(first)
    {
        ++living;
    }

    Piece(const Piece& other)
        : number(other.number)
        , label(other.label)
    {
        ++living;
    }

    Piece& operator=(const Piece&) = default;

    virtual ~Piece()
    {
        number = -1;
        --living;
    }

    int number = 1;
    std::string label = "a label that needs memory of its own";

    static int living;
};

int Piece::living = 0;

struct Front
{
    virtual ~Front() = default;

    double front = 0.5;
};

struct Derived : Front, Piece
{
    using Piece::Piece;
};

// Acts as host code does. What it got of a script may not exist afterwards.
void actOrThrow(World& world)
{
    world.trace("typed callable");
    world.act();
    switch (world.bytes().below(16))
    {
    case 13:
        throw std::string("typed");
    case 14:
        throw std::runtime_error("typed");
    case 15:
        throw 1;
    default:
        break;
    }
}

std::shared_ptr<World> tokenOf(World& world)
{
    return std::shared_ptr<World>(&world, [](World* ended) { ended->act(); });
}

// Functions of all shapes; those that act hold something whose end acts too.
typed::BoundCallable anyCallable(World& world)
{
    auto token = tokenOf(world);
    switch (world.bytes().choice<16>(10))
    {
    case 0:
        return typed::boundCallable(
            [token](const Piece& piece, std::optional<double> factor)
            {
                const double number = piece.number * factor.value_or(1);
                actOrThrow(*token);
                return number;
            });
    case 1:
        return typed::boundCallable(
            [token](std::unique_ptr<Piece> piece)
            {
                actOrThrow(*token);
                return piece;
            });
    case 2:
        return typed::boundCallable(
            [token](std::shared_ptr<Piece> piece)
            {
                actOrThrow(*token);
                return piece ? piece : std::make_shared<Piece>(4);
            });
    case 3:
        return typed::boundCallable(
            [token](const std::vector<Piece>& pieces)
            {
                actOrThrow(*token);
                return pieces;
            });
    case 4:
        return typed::boundCallable(
            [token](const std::map<std::string, double>& fields, const typed::Rest& rest)
            {
                actOrThrow(*token);
                return rest.size() > 0 ? std::map<std::string, double>{{"rest", 1}} : fields;
            });
    case 5:
        return typed::boundCallable(
            [token](const ScriptFunction<std::string(int)>& function)
            {
                actOrThrow(*token);
                return function(3);
            });
    case 6:
        return overload(
                   [token](const Derived& derived)
                   {
                       const int number = derived.number;
                       actOrThrow(*token);
                       return number;
                   },
                   [](const Piece& piece) { return piece.label; },
                   [](std::string_view text) { return std::string(text); })
            .release();
    case 7:
        return typed::boundCallable(
            [token]
            {
                actOrThrow(*token);
                return std::make_unique<Derived>(5);
            });
    case 8:
        return typed::boundCallable(
            [token](bool isShared) -> std::shared_ptr<Derived>
            {
                actOrThrow(*token);
                return isShared ? std::make_shared<Derived>(6) : nullptr;
            });
    default:
        return typed::boundCallable([](Piece one, const Piece* other)
                                    { return other ? *other : one; });
    }
}

void bindTypedFunction(World& world)
{
    world.trace("bind typed function");
    typed::OwnedCallable callable(anyCallable(world)); // first: it may act
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().numbered<8>(TYPED_FUNCTION_NAMES);
    typed::bindFunction(environment, name, callable.release());
}

// Declares a part of the type, as long as nothing else may have ended it.
template <typename T>
void bindParts(World& world, UserType* userType)
{
    const unsigned int activity = world.getActivity();
    const auto token = tokenOf(world);
    TypeBinding<T> type(userType);
    while (type.get() && activity == world.getActivity())
    {
        switch (world.bytes().choice<32>(12))
        {
        case 0:
            return;
        case 1:
            type.template constructor<int>();
            break;
        case 2:
            type.constructor(
                [token](const typed::Rest&)
                {
                    actOrThrow(*token);
                    return T(2);
                });
            break;
        case 3:
            type.constructor(
                [token]
                {
                    actOrThrow(*token);
                    return std::make_shared<T>(2);
                });
            break;
        case 4:
            type.template field<&T::number>("number");
            break;
        case 5:
            type.template field<&T::label>("label");
            break;
        case 6:
            type.property(
                "number",
                [token](const T&)
                {
                    actOrThrow(*token);
                    return 1;
                },
                [token](T&, int) { actOrThrow(*token); });
            break;
        case 7:
            type.method("visit", [token](T&, const ScriptObjectReference&) { actOrThrow(*token); });
            break;
        case 8:
            type.index(
                [token](const T&, int number)
                {
                    actOrThrow(*token);
                    return number;
                },
                [token](T&, int, double) { actOrThrow(*token); });
            break;
        case 9:
            type.names(
                [token](const T&, std::string_view name)
                {
                    const std::string kept(name);
                    actOrThrow(*token);
                    return kept;
                },
                [token](T&, std::string_view, bool) { actOrThrow(*token); });
            break;
        case 10:
            type.op(
                BUILT_IN_FUNCTION::ADD,
                [token](const T& one, const Piece& other)
                {
                    Piece sum(one.number ^ other.number);
                    actOrThrow(*token);
                    return sum;
                });
            break;
        default:
            typed::bindIteration(
                *type.get(),
                typed::boundCallable(
                    [token](const T&)
                    {
                        actOrThrow(*token);
                        return std::vector<int>{1, 2};
                    }));
            break;
        }
    }
}

// A name may be bound to another class than before.
void bindTypedType(World& world)
{
    world.trace("bind typed type");
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().numbered<8>(TYPED_TYPE_NAMES);
    const bool isDerived = world.bytes().flag();
    const unsigned int activity = world.getActivity();
    if (!isDerived)
        return bindParts<Piece>(world, bindType<Piece>(environment, name).get());
    TypeBinding<Derived> type = bindType<Derived>(environment, name);
    if (activity == world.getActivity() && world.bytes().flag())
        type.base<Piece>();
    if (activity == world.getActivity())
        bindParts<Derived>(world, type.get());
}

void clearTypedType(World& world)
{
    world.trace("clear typed type");
    UserType* const type =
        world.anyEnvironment().getUserType(world.bytes().numbered<8>(TYPED_TYPE_NAMES));
    if (type)
        type->clear();
}

void releaseTypedTypes(World& world)
{
    world.trace("release typed types");
    Namespace* const scope =
        world.anyEnvironment().getNamespace(world.bytes().flag() ? "n" : "n::m");
    if (scope)
        scope->release();
}

void runTypedScript(World& world)
{
    std::string sources;
    for (std::size_t count = world.bytes().below(8); count > 0; --count)
    {
        const char* const statement = world.bytes().numbered<32>(TYPED_STATEMENTS);
        sources += std::string("pcall(function() ") + statement + " end)\n";
    }
    world.trace("run typed script", sources);
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    script.load();
    world.anyEnvironment().execute(script);
}

void callTypedScript(World& world)
{
    world.trace("call script function");
    Environment& environment = world.anyEnvironment();
    switch (world.bytes().choice<8>(4))
    {
    case 0:
    {
        const ScriptFunction<std::string(int, const char*)> function(environment, "v3");
        function(world.bytes().byte(), "text");
        return;
    }
    case 1:
    {
        const ScriptFunction<std::unique_ptr<Piece>(std::unique_ptr<Derived>, double)> function(
            environment, "pf");
        function(std::make_unique<Derived>(3), 0.5);
        return;
    }
    case 2:
    {
        const ScriptFunction<std::shared_ptr<Piece>(std::shared_ptr<Piece>, Piece)> function(
            environment, "pf");
        function(std::make_shared<Piece>(3), Piece(4));
        return;
    }
    default:
    {
        const ScriptFunction<std::vector<std::string>(Piece)> function(environment, "g0");
        function(Piece(5));
        return;
    }
    }
}

} // namespace

void performTypedCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &bindTypedFunction},
         {1, &bindTypedType},
         {2, &clearTypedType},
         {3, &releaseTypedTypes},
         {4, &callTypedScript},
         {5, &runTypedScript},
         {6, &runTypedScript},
         {7, &runTypedScript}});
    world.bytes().caseOf(CALLS)(world);
}

int countTypedObjects()
{
    return Piece::living;
}

} // namespace tbScripts::fuzz
