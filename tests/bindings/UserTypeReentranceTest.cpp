// Callables of a type that come back to the type while they run.

#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

#include <functional>
#include <string>

namespace tbScripts::test
{

class UserTypeReentranceTest : public UserTypeFixture
{
protected:
    UserTypeReentranceTest() { setHostObject("v", m_hostObject); }

    /// Calls the script function `name`, which gets and gives a number.
    double callScript(const std::string& name, double argument)
    {
        std::vector<FunctionParameter> outputs{0.0};
        call(name, {FunctionParameter(argument)}, outputs);
        return outputs[0].getDouble();
    }
};

TEST_F(UserTypeReentranceTest, GetterMayReadTheSameField)
{
    int depth = 0;
    setGetter(
        vec(),
        "depth",
        [&](void*)
        { return FunctionParameter(++depth == 5 ? 1.0 : callScript("read", 0.0) + 1.0); });
    run("function read() return v.depth end");
    is("v.depth", "5");
}

TEST_F(UserTypeReentranceTest, SetterSeesItsOwnValueAfterAnInnerWrite)
{
    std::vector<double> values;
    Vec inner;
    setHostObject("w", inner);
    setSetter(
        vec(),
        "x",
        PARAM_TYPE_DOUBLE,
        [&](const Parameters& parameters)
        {
            const double value = parameters[1].getDouble();
            if (value > 0.0)
                callScript("write", value - 1.0);
            vecOf(parameters[0]).x = parameters[1].getDouble();
            values.push_back(parameters[1].getDouble());
        });
    run("function write(value) if value > 0 then w.x = value else v.x = value end return 0 end");

    run("v.x = 3");

    EXPECT_THAT(values, ElementsAre(0.0, 1.0, 2.0, 3.0));
    EXPECT_EQ(m_hostObject.x, 3.0);
    EXPECT_EQ(inner.x, 2.0);
}

TEST_F(UserTypeReentranceTest, ArrayReadSeesItsOwnIndexAfterAnInnerRead)
{
    setReading(
        vec(),
        [&](const Parameters& parameters)
        {
            const int index = parameters[1].getInt();
            const double inner = index > 0 ? callScript("read", index - 1) : 0.0;
            EXPECT_EQ(parameters[0].getUserTypeObject(), &m_hostObject);
            return FunctionParameter(inner * 10.0 + parameters[1].getInt());
        });
    run("function read(index) return v[index] end");

    is("v[4]", "1234");
}

TEST_F(UserTypeReentranceTest, ArrayWriteSeesItsOwnValueAfterAnInnerWrite)
{
    std::vector<double> written;
    setWriting(
        vec(),
        PARAM_TYPE_DOUBLE,
        [&](const Parameters& parameters)
        {
            if (parameters[1].getInt() > 0)
                callScript("write", parameters[1].getInt() - 1);
            written.push_back(parameters[1].getInt() + parameters[2].getDouble());
        });
    run("function write(index) v[index] = index * 10 return 0 end");

    run("v[3] = 30");

    EXPECT_THAT(written, ElementsAre(0.0, 11.0, 22.0, 33.0));
}

TEST_F(UserTypeReentranceTest, MethodSeesItsOwnArgumentsAfterAnInnerCall)
{
    Vec inner;
    setHostObject("w", inner);
    declareMethod(
        "sum",
        {PARAM_TYPE_DOUBLE},
        [&](const Parameters& parameters)
        {
            const void* const object = parameters[0].getUserTypeObject();
            const double below = parameters[1].getDouble() > 0
                                     ? callScript("sum", parameters[1].getDouble() - 1)
                                     : 0;
            EXPECT_EQ(parameters[0].getUserTypeObject(), object);
            return below * 10 + parameters[1].getDouble();
        });
    run("function sum(n) return n % 2 == 0 and v:sum(n) or w:sum(n) end");

    is("v:sum(4)", "1234");
}

TEST_F(UserTypeReentranceTest, OperatorMayUseTheSameOperator)
{
    vec()
        .setOperator(BUILT_IN_FUNCTION::UNM)
        ->setFunction(
            [&](const Parameters& parameters)
            {
                Vec& object = vecOf(parameters[0]);
                object.x += 1.0;
                if (object.x < 4.0)
                    callScript("negate", 0.0);
                return object.x;
            });
    run("function negate() return -v end");

    is("-v", "4");
}

TEST_F(UserTypeReentranceTest, SetterMayWriteWhatIsAMismatch)
{
    bool isInner = false;
    std::vector<double> values;
    setSetter(
        vec(),
        "x",
        PARAM_TYPE_DOUBLE,
        [&](const Parameters& parameters)
        {
            if (!isInner)
            {
                isInner = true;
                callScript("writeText", 0.0);
            }
            values.push_back(parameters[1].getDouble());
        });
    run("function writeText() pcall(function() v.x = 'a' end) return 0 end");

    run("v.x = 7");

    EXPECT_THAT(values, ElementsAre(7.0));
}

namespace
{

const auto NO_KIND = FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(200));

} // namespace

TEST_F(UserTypeReentranceTest, GetterThatClearsItsTypeIsStillNamedInTheLog)
{
    setGetter(
        vec(),
        "a field with a name that has memory of its own",
        [this](void*)
        {
            vec().clear();
            return NO_KIND;
        });
    run("local x = v['a field with a name that has memory of its own']");
    expectLogged(
        "Error while filling output for function 'a field with a name that has memory of its "
        "own', parameter type not handled.",
        "LuaFunction");
}

TEST_F(UserTypeReentranceTest, ArrayReadThatReleasesItsTypeStillNamesItInTheLog)
{
    setReading(
        declareType("a long name of a namespace::Vec"),
        [this](const Parameters&)
        {
            environment().getNamespace("a long name of a namespace")->release();
            return NO_KIND;
        });
    run("local x = _G['a long name of a namespace'].Vec.new()[1]");
    expectLogged(
        "Error while filling output for function 'a long name of a namespace::Vec', parameter "
        "type not handled.",
        "LuaFunction");
}

TEST_F(UserTypeReentranceTest, ConstructorMayMakeInstances)
{
    int depth = 0;
    vec().setConstructor(
        [&](const Parameters&)
        {
            if (++depth < 4)
                callScript("make", 0.0);
            return &m_made.emplace_back();
        });
    run("function make() Vec.new() return 0 end");

    run("Vec.new()");
    collect();

    EXPECT_EQ(m_made.size(), 4U);
    EXPECT_EQ(m_destroyed.size(), 4U);
}

TEST_F(UserTypeReentranceTest, DestructorMayMakeAndUseInstances)
{
    declareField("x", &Vec::x);
    vec().setDestructor(
        [this](void* object)
        {
            m_destroyed.push_back(&vecAt(object));
            if (m_destroyed.size() == 1)
                callScript("make", 0.0);
        });
    run("function make() other = Vec.new() other.x = 3 return other.x end  Vec.new()");

    collect();

    isDestroyed({0});
    is("other.x", "3");
}

TEST_F(UserTypeReentranceTest, EachWorksInACoroutineThatTheOtherLeft)
{
    declareField("x", &Vec::x);
    declareMethod("yieldless", {}, returning(5));
    run("step = coroutine.wrap(function() "
        "    while true do v.x = v.x + 1  coroutine.yield(v:yieldless() + v.x) end end)");

    is("step()", "6");
    is("step()", "7");
}

} // namespace tbScripts::test
