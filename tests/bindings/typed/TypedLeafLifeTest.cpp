#include "support/EnvironmentFixture.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <string>

namespace tbScripts::test
{

namespace
{

double addOne(double number)
{
    return number + 1;
}

double addTwo(double number)
{
    return number + 2;
}

const char* spelled(int number)
{
    if (number == 0)
        return nullptr;
    return number % 2 == 0 ? "even, and rather long" : "odd";
}

std::string numbered(int number)
{
    return "text " + std::to_string(number);
}

struct Ground
{
    double height = 5;
};

double heightOf(const Ground& ground)
{
    return ground.height;
}

double heightAt(const Ground& ground, int number)
{
    return ground.height + number;
}

bool hasText(const char* text)
{
    return text[0] != 0;
}

struct Hill : Ground
{
    int trees = 6;
};

struct Peak : Hill
{
    bool isSnowy = true;
};

struct Shell
{
    virtual ~Shell() = default;

    double size = 7;
};

// Ground does not begin where the whole object does.
struct Snail : Shell, Ground
{
    double speed = 8;
};

} // namespace

/// What leaves and plain members do when the host ends or replaces what they belong to.
class TypedLeafLifeTest : public EnvironmentFixture
{
protected:
    TypedLeafLifeTest()
    {
        run("function hot(f, n) local last for i = 1, n or 300 do last = f(i) end return last end");
    }

    void bindGround()
    {
        bindType<Ground>(environment(), "Ground").field<&Ground::height>("height");
    }
};

TEST_F(TypedLeafLifeTest, ZeroTerminatedResultsHaveTheirOwnLengths)
{
    bind(environment(), "spelled", leaf<&spelled>);
    run("all = {} hot(function(i) all[i] = spelled(i) end)"
        " for i = 1, 300 do assert(all[i] == (i % 2 == 0 and 'even, and rather long' or 'odd')) "
        "end");
    is("hot(function(i) return spelled(i % 3) end)", "nil");
    is("hot(function(i) return spelled(i % 3 + 1) end)", "odd");
}

TEST_F(TypedLeafLifeTest, FunctionOfAnEarlierInterpreterCanBeChanged)
{
    Function* const function = bind(environment(), "f", leaf<&addOne>);
    Function* const other = bind(environment(), "g", leaf<&addOne>);
    is("hot(f)", "301");
    environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
    function->setFunction([](const Parameters&) { return FunctionParameter(9); });
    other->reset();
    restart();
    run("function hot(f) local last for i = 1, 300 do last = f(i) end return last end");
    bind(environment(), "f", leaf<&addTwo>);
    forgetLog(); // declared before
    is("hot(f)", "302");
    EXPECT_EQ(environment().getFunc("g"), other);
    restart();
    bind(environment(), "f", leaf<&addOne>);
    forgetLog();
    is("f(1)", "2");
}

TEST_F(TypedLeafLifeTest, FunctionThatAScriptKeptCallsTheLatestLeaf)
{
    bind(environment(), "f", leaf<&addOne>);
    run("kept = f  function g(i) return kept(i) end  hot(g)");
    bind(environment(), "f", leaf<&addTwo>);
    forgetLog(); // declared before
    is("hot(g)", "302");
    is("hot(function(i) return kept(i) end)", "302");
    is("hot(f)", "302");
}

TEST_F(TypedLeafLifeTest, LeafDoesNotReplaceWhatAScriptHasWrittenOverIt)
{
    bind(environment(), "f", leaf<&addOne>);
    run("kept = f  f = 'mine'");
    bind(environment(), "f", leaf<&addTwo>);
    forgetLog(); // declared before
    is("f", "mine");
    is("hot(kept)", "302");
}

TEST_F(TypedLeafLifeTest, ElementFunctionThatIsSetBeneathReplacesTheLeaf)
{
    bindType<Ground>(environment(), "Ground").constructor<>().index(leaf<&heightAt>);
    run("ground = Ground.new()  function read(i) return ground[i] end");
    is("hot(read)", "305");
    environment()
        .getUserType("Ground")
        ->getMethod("__arrayRead")
        ->setFunction([](const Parameters&) { return FunctionParameter(1); });
    environment()
        .getUserType("Ground")
        ->getMethod("__arrayRead")
        ->addParameter(PARAM_TYPE_USER_TYPE, "Ground");
    environment().getUserType("Ground")->getMethod("__arrayRead")->addParameter(PARAM_TYPE_INT);
    is("hot(read)", "1");
}

TEST_F(TypedLeafLifeTest, FinalisersInsideALeafsResultMayCallTheLibrary)
{
    bind(environment(), "numbered", leaf<&numbered>);
    int ended = 0;
    declareAction("count", [&] { environment().setVar("ended", ++ended); });
    run("jit.off()  ended, made = 0, 0"
        " for i = 1, 30000 do"
        "   local proxy = newproxy(true)  getmetatable(proxy).__gc = count  proxy = nil"
        "   for k = 1, 5 do numbered(i * 5 + k) end"
        " end");
    collect();
    is("ended", "30000");
}

TEST_F(TypedLeafLifeTest, FinalisersInsideALeafsArgumentMayCallTheLibrary)
{
    bind(environment(), "numbered", leaf<&hasText>);
    int ended = 0;
    declareAction("count", [&] { environment().setVar("ended", ++ended); });
    run("jit.off()  ended, made = 0, 0"
        " for i = 1, 30000 do"
        "   local proxy = newproxy(true)  getmetatable(proxy).__gc = count  proxy = nil"
        "   for k = 1, 5 do numbered(i * 5 + k + 0.5) end"
        " end");
    collect();
    is("ended", "30000");
}

TEST_F(TypedLeafLifeTest, FunctionThatAFinaliserEndsDuringItsBindingIsNone)
{
    declareAction(
        "release",
        [this]
        {
            if (Namespace* const scope = environment().getNamespace("scope"))
                scope->release();
        });
    for (int i = 0; i < 300; ++i)
    {
        Namespace* const scope = environment().setNamespace("scope");
        run("i = " + std::to_string(i) +
            " collectgarbage('stop')  local proxy = newproxy(true)"
            " getmetatable(proxy).__gc = release  proxy = nil  local more = {}"
            " for k = 1, 100 do more[k] = {} end  collectgarbage('setpause', 0)"
            " collectgarbage('setstepmul', 1000000)  collectgarbage('restart')");
        Function* const function = bind(*scope, "f", leaf<&addOne>);
        if (function)
        {
            EXPECT_EQ(function->getName(), "f");
        }
    }
    forgetLog();
}

TEST_F(TypedLeafLifeTest, InheritedMembersEndWithTheClassBetween)
{
    bindGround();
    bindType<Hill>(environment(), "Hill").base<Ground>();
    bindType<Peak>(environment(), "Peak").base<Hill>().constructor<>();
    run("peak = Peak.new()  function read() return peak.height end"
        " function write(i) peak.height = i end");
    is("hot(read)", "5");
    run("hot(write)");
    environment().getUserType("Hill")->clear();
    raises("hot(read)", "Expected an instance of user type 'Peak'.");
    raises("hot(write)", "Expected an instance of user type 'Peak'.");
}

TEST_F(TypedLeafLifeTest, InheritedMembersOutliveTheirClass)
{
    Namespace* const scope = environment().setNamespace("scope");
    bindType<Ground>(*scope, "Ground").field<&Ground::height>("height");
    bindType<Hill>(*scope, "Hill").base<Ground>();
    bindType<Peak>(environment(), "Peak").base<Hill>().constructor<>();
    run("peak = Peak.new()  function read() return peak.height end"
        " function write(i) peak.height = i end");
    is("hot(read)", "5");
    run("hot(write)");
    environment().getNamespace("scope")->release();
    collect();
    collect();
    EXPECT_NE(errorOf("hot(read)"), "");
    EXPECT_NE(errorOf("hot(write)"), "");
}

TEST_F(TypedLeafLifeTest, MembersOfInstancesWithoutObjectAreRefused)
{
    bindType<Hill>(environment(), "Hill")
        .field<&Hill::trees>("trees")
        .get()
        ->setConstructor([](const Parameters&) { return nullptr; });
    run("empty = Hill.new()");
    raises("return empty.trees", "Expected an instance of user type 'Hill'.");
    raises("empty.trees = 2", "Expected an instance of user type 'Hill'.");
    raises("hot(function() return empty.trees end)", "Expected an instance of user type 'Hill'.");
}

TEST_F(TypedLeafLifeTest, MembersOfSecondBasesAreFound)
{
    bindGround();
    bindType<Shell>(environment(), "Shell").field<&Shell::size>("size");
    bindType<Snail>(environment(), "Snail")
        .base<Shell>()
        .base<Ground>()
        .constructor<>()
        .field<&Snail::speed>("speed");
    bind(environment(), "heightOf", leaf<&heightOf>);
    run("snail = Snail.new()");
    is("hot(function(i) snail.height = i  return heightOf(snail) + snail.size + snail.speed end)",
       "315");
}

} // namespace tbScripts::test
