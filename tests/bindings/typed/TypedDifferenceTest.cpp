// The same host, declared in each way that there is: random calls give the same results, errors and
// log entries in all of them. A further way is one more row of WAYS.
//
// TBSCRIPTS_CALLS in the process's environment says how many calls; by default it is 100000.

#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/UserType.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

namespace
{

using CallParameters = tbMemory::BufferView<FunctionParameter>;

struct Probe
{
    double scaled(double factor) const { return number * factor; }

    void move(int steps, bool isBack)
    {
        count = (isBack ? -(steps % 1000) : steps % 1000) + count % 1000;
    }

    double number = 1.5;
    float weight = 0.25F;
    int count = 3;
    bool isOn = true;
    std::array<int, 8> slots{};
};

bool negated(bool value)
{
    return !value;
}

int opposite(int value)
{
    return ~value;
}

float halfOf(float value)
{
    return value / 2;
}

double doubled(double value)
{
    return value * 2;
}

std::string_view firstHalf(std::string_view text)
{
    return text.substr(0, (text.size() + 1) / 2);
}

double weighed(bool isHeavy, int count, float weight, double factor, std::string_view text)
{
    return (isHeavy ? 2 : 1) * (count % 1000 + static_cast<double>(weight)) * factor +
           static_cast<double>(text.size());
}

int countOf(const Probe* probe)
{
    return probe ? probe->count : -1;
}

double sumOf(const Probe& one, const Probe& other)
{
    return one.number + other.number;
}

int slotAt(const Probe& probe, int index)
{
    return probe.slots[static_cast<std::size_t>(index) % probe.slots.size()];
}

void setSlotAt(Probe& probe, int index, int value)
{
    probe.slots[static_cast<std::size_t>(index) % probe.slots.size()] = value;
}

double scaledProbe(const Probe& probe, double factor)
{
    return probe.scaled(factor);
}

void moveProbe(Probe& probe, int steps, bool isBack)
{
    probe.move(steps, isBack);
}

Probe* probeOf(const FunctionParameter& parameter)
{
    return static_cast<Probe*>(parameter.getUserTypeObject());
}

void describe(
    Function* function,
    const std::vector<FUNCTION_PARAMETER_TYPE>& types,
    const Function::Callable& callable)
{
    for (const FUNCTION_PARAMETER_TYPE type : types)
        function->addParameter(type, type == PARAM_TYPE_USER_TYPE ? "Probe" : "");
    function->setFunction(callable);
}

template <typename T>
void describeField(
    UserType& type,
    const char* name,
    FUNCTION_PARAMETER_TYPE kind,
    T Probe::*member,
    T (FunctionParameter::*get)() const)
{
    UserTypeFieldDescriptor field;
    field.name = name;
    field.type = kind;
    field.getter = [member](void* object)
    { return FunctionParameter(static_cast<Probe*>(object)->*member); };
    field.setter = [member, get](const CallParameters& arguments)
    { probeOf(arguments[0])->*member = (arguments[1].*get)(); };
    type.setField(field);
}

void describeType(Environment& world)
{
    UserType& type = *world.setUserType("Probe");
    type.setConstructor([](const CallParameters&) { return new Probe; });
    type.setDestructor([](void* object) { delete static_cast<Probe*>(object); });
    describeField(type, "number", PARAM_TYPE_DOUBLE, &Probe::number, &FunctionParameter::getDouble);
    describeField(type, "weight", PARAM_TYPE_FLOAT, &Probe::weight, &FunctionParameter::getFloat);
    describeField(type, "count", PARAM_TYPE_INT, &Probe::count, &FunctionParameter::getInt);
    describeField(type, "isOn", PARAM_TYPE_BOOL, &Probe::isOn, &FunctionParameter::getBool);
    describe(
        type.setMethod("scaled", false),
        {PARAM_TYPE_DOUBLE},
        [](const CallParameters& arguments)
        { return probeOf(arguments[0])->scaled(arguments[1].getDouble()); });
    describe(
        type.setMethod("move", false),
        {PARAM_TYPE_INT, PARAM_TYPE_BOOL},
        [](const CallParameters& arguments)
        {
            probeOf(arguments[0])->move(arguments[1].getInt(), arguments[2].getBool());
            return FunctionParameter::VOID;
        });
    type.setOperator(BUILT_IN_FUNCTION::ADD)
        ->setFunction([](const CallParameters& arguments)
                      { return sumOf(*probeOf(arguments[0]), *probeOf(arguments[1])); });
    UserTypeArrayDescriptor slots;
    slots.type = PARAM_TYPE_INT;
    slots.read = [](const CallParameters& arguments)
    { return slotAt(*probeOf(arguments[0]), arguments[1].getInt()); };
    slots.write = [](const CallParameters& arguments)
    { setSlotAt(*probeOf(arguments[0]), arguments[1].getInt(), arguments[2].getInt()); };
    type.setArrayAccess(slots);
}

void declareDescribed(Environment& world)
{
    describeType(world);
    describe(
        world.setFunc("negated"),
        {PARAM_TYPE_BOOL},
        [](const CallParameters& arguments) { return negated(arguments[0].getBool()); });
    describe(
        world.setFunc("opposite"),
        {PARAM_TYPE_INT},
        [](const CallParameters& arguments) { return opposite(arguments[0].getInt()); });
    describe(
        world.setFunc("halfOf"),
        {PARAM_TYPE_FLOAT},
        [](const CallParameters& arguments) { return halfOf(arguments[0].getFloat()); });
    describe(
        world.setFunc("doubled"),
        {PARAM_TYPE_DOUBLE},
        [](const CallParameters& arguments) { return doubled(arguments[0].getDouble()); });
    describe(
        world.setFunc("firstHalf"),
        {PARAM_TYPE_STRING},
        [](const CallParameters& arguments)
        { return tbMemory::StringView(firstHalf(arguments[0].getString())); });
    describe(
        world.setFunc("weighed"),
        {PARAM_TYPE_BOOL, PARAM_TYPE_INT, PARAM_TYPE_FLOAT, PARAM_TYPE_DOUBLE, PARAM_TYPE_STRING},
        [](const CallParameters& arguments)
        {
            return weighed(
                arguments[0].getBool(),
                arguments[1].getInt(),
                arguments[2].getFloat(),
                arguments[3].getDouble(),
                arguments[4].getString());
        });
    describe(
        world.setFunc("countOf"),
        {PARAM_TYPE_USER_TYPE},
        [](const CallParameters& arguments) { return countOf(probeOf(arguments[0])); });
}

TypeBinding<Probe> declareTypedFields(Environment& world)
{
    return bindType<Probe>(world, "Probe")
        .constructor<>()
        .field<&Probe::number>("number")
        .field<&Probe::weight>("weight")
        .field<&Probe::count>("count")
        .field<&Probe::isOn>("isOn")
        .op<&sumOf>(BUILT_IN_FUNCTION::ADD);
}

void declareTyped(Environment& world)
{
    declareTypedFields(world)
        .method<&Probe::scaled>("scaled")
        .method<&Probe::move>("move")
        .index<&slotAt, &setSlotAt>();
    bind<&negated>(world, "negated");
    bind<&opposite>(world, "opposite");
    bind<&halfOf>(world, "halfOf");
    bind<&doubled>(world, "doubled");
    bind<&firstHalf>(world, "firstHalf");
    bind<&weighed>(world, "weighed");
    bind<&countOf>(world, "countOf");
}

void declareLeaves(Environment& world)
{
    declareTypedFields(world)
        .method("scaled", leaf<&scaledProbe>)
        .method("move", leaf<&moveProbe>)
        .index(leaf<&slotAt>, leaf<&setSlotAt>);
    bind(world, "negated", leaf<&negated>);
    bind(world, "opposite", leaf<&opposite>);
    bind(world, "halfOf", leaf<&halfOf>);
    bind(world, "doubled", leaf<&doubled>);
    bind(world, "firstHalf", leaf<&firstHalf>);
    bind(world, "weighed", leaf<&weighed>);
    bind(world, "countOf", leaf<&countOf>);
}

struct Way
{
    const char* name;
    void (*declare)(Environment& world);
};

constexpr Way WAYS[] = {
    {"described", &declareDescribed}, {"typed", &declareTyped}, {"leaves", &declareLeaves}};

constexpr const char* PRELUDE = R"(
    mine, other = Probe.new(), Probe.new()
    dead = Probe.new()
    getmetatable(dead).__gc(dead)
    shown = {}
    local function shownOf(value)
        if value ~= value then return 'nan' end
        if type(value) == 'number' then return string.format('%.17g', value) end
        if type(value) == 'string' or type(value) == 'boolean' then return tostring(value) end
        return type(value)
    end
    function show(...)
        local line = {}
        for i = 1, select('#', ...) do line[i] = shownOf((select(i, ...))) end
        shown[#shown + 1] = table.concat(line, ' ')
    end
    function again(f, ...)
        local result
        for i = 1, 80 do result = f(...) end
        return result
    end
)";

constexpr const char* ARGUMENTS[] = {
    "nil",
    "true",
    "false",
    "0",
    "-0",
    "1",
    "-1",
    "3",
    "2147483647",
    "2147483648",
    "-2147483648",
    "-2147483649",
    "4294967296",
    "1e300",
    "-1e300",
    "0/0",
    "1/0",
    "-1/0",
    "0.5",
    "-7.9",
    "16777217",
    "3.4e38",
    "3.5e38",
    "1e-310",
    "''",
    "'text'",
    "'12'",
    "' 0x1F '",
    "'1e5'",
    "'-0'",
    "'nan'",
    "'inf'",
    "'12 '",
    "'1x'",
    "{}",
    "print",
    "function() end",
    "coroutine.create(print)",
    "io.stdout",
    "mine",
    "other",
    "dead",
    "Probe"};

constexpr const char* INDICES[] = {"0", "1", "5", "7.9", "-1", "'3'", "2147483647"};

constexpr const char* FUNCTIONS[] = {
    "negated", "opposite", "halfOf", "doubled", "firstHalf", "weighed", "countOf"};

constexpr const char* FIELDS[] = {"number", "weight", "count", "isOn", "nothing"};

class Calls
{
public:
    // A statement that makes one random call and shows what comes of it.
    std::string next()
    {
        switch (m_random() % 8)
        {
        case 0:
            return guarded("return " + self() + "." + any(FIELDS));
        case 1:
        {
            const std::string field = self() + "." + any(FIELDS);
            return guarded(field + " = " + argument() + " return " + field);
        }
        case 2:
        {
            const std::string slot = self() + "[" + any(INDICES) + "]";
            return guarded(slot + " = " + argument() + " return " + slot);
        }
        case 3:
            return called(self() + ".scaled", object() + ", " + arguments());
        case 4:
            return called(self() + ".move", object() + ", " + arguments()) + " " +
                   guarded("return mine.count, other.count");
        case 5:
            return guarded("return " + object() + " + " + object());
        default:
            return called(any(FUNCTIONS), arguments());
        }
    }

private:
    template <std::size_t N>
    std::string any(const char* const (&texts)[N])
    {
        return texts[m_random() % N];
    }

    static std::string guarded(const std::string& code)
    {
        return "show(pcall(function() " + code + " end))\n";
    }

    // From a line of the script, which messages have, or without; now and then so often that it is
    // compiled.
    std::string called(const std::string& function, const std::string& passed)
    {
        const std::uint64_t kind = m_random() % 64;
        if (kind == 0)
            return guarded("return again(" + function + ", " + passed + ")");
        if (kind == 1)
        {
            return guarded(
                "local a for i = 1, 80 do a = " + function + "(" + passed + ") end return a");
        }
        return kind % 2 == 0 ? guarded("local a = " + function + "(" + passed + ") return a")
                             : "show(pcall(" + function + ", " + passed + "))\n";
    }

    std::string self() { return m_random() % 2 == 0 ? "mine" : "other"; }

    // Nil as an instance is the host's affair where it is described.
    std::string object()
    {
        const std::string chosen = m_random() % 8 == 0 ? argument() : self();
        return chosen == "nil" ? "1" : chosen;
    }

    std::string argument() { return any(ARGUMENTS); }

    std::string arguments()
    {
        std::string list = argument();
        for (std::size_t count = m_random() % 6; count > 0; --count)
            list += ", " + argument();
        return list;
    }

    // The standard fixes what this engine gives for a seed.
    std::mt19937_64 m_random{20240229};
};

int countOfCalls()
{
    const char* const count = std::getenv("TBSCRIPTS_CALLS");
    return count ? std::atoi(count) : 100000;
}

} // namespace

class TypedDifferenceTest : public LogFixture
{
protected:
    TypedDifferenceTest()
    {
        for (const Way& way : WAYS)
        {
            m_worlds.push_back(std::make_unique<Environment>());
            m_worlds.back()->setEnvironmentFor(INTERPRETER_LUA);
            way.declare(*m_worlds.back());
            EXPECT_TRUE(runScript(*m_worlds.back(), PRELUDE)) << way.name;
        }
    }

    // What a script shows and what is logged meanwhile, in the world of that number.
    std::string outcomeOf(std::size_t number, const std::string& sources)
    {
        Environment& world = *m_worlds[number];
        EXPECT_TRUE(runScript(world, sources + "all = table.concat(shown, '\\n') shown = {}"))
            << WAYS[number].name << world.getLastExecutionResult().message;
        std::string outcome(world.getVar("all", tbMemory::StringView()));
        for (const LogEntry& entry : m_log.takeEntries())
            outcome += "\n[" + entry.source + "] " + entry.message;
        return outcome;
    }

    std::vector<std::unique_ptr<Environment>> m_worlds;
};

TEST_F(TypedDifferenceTest, RandomCallsGiveTheSameInAllWays)
{
    constexpr int CALLS_AT_ONCE = 100;
    Calls calls;
    for (int done = 0; done < countOfCalls() && !HasFailure(); done += CALLS_AT_ONCE)
    {
        std::string sources;
        for (int i = 0; i < CALLS_AT_ONCE; ++i)
            sources += calls.next();
        const std::string expected = outcomeOf(0, sources);
        for (std::size_t number = 1; number < m_worlds.size(); ++number)
            EXPECT_EQ(outcomeOf(number, sources), expected) << WAYS[number].name << "\n" << sources;
    }
}

} // namespace tbScripts::test
