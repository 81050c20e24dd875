// Parameters that carry an object for scripts to own, pushed more often than once.

#include "support/UserTypeFixture.h"

#include <utility>
#include <vector>

namespace tbScripts::test
{

class OwnedParameterTest : public UserTypeFixture
{
protected:
    OwnedParameterTest()
    {
        declare("give", {}, [this](const Parameters&) { return m_kept; });
        run("function take(instance) taken = instance end");
    }

    /// Calls the script function `take` with `input`, as it is.
    void pass(FunctionParameter& input)
    {
        Parameters inputs(&input, 1);
        Parameters outputs;
        EXPECT_TRUE(environment().callScriptFunction(
            environment().getScriptFunction("take"), inputs, outputs));
    }

    /// Collects what scripts have dropped and destroys the environment.
    void end()
    {
        collect();
        destroyEnvironment();
    }

    FunctionParameter m_kept;
};

class ReadParameterTest : public OwnedParameterTest
{
protected:
    ReadParameterTest()
    {
        Function* const keep = declare(
            "keep",
            {},
            [this](const Parameters& parameters)
            {
                m_kept = parameters[0];
                return FunctionParameter::VOID;
            });
        keep->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Vec");
    }
};

TEST_F(ReadParameterTest, ReturnedByALaterCallOwnsNothing)
{
    run("keep(Vec.new())  again = give()  again = nil");

    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, ReturnedWhileTheScriptKeepsItsInstanceOwnsNothing)
{
    run("v = Vec.new()  keep(v)  give()");

    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
    end();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, ReturnedAfterItsInstanceWasCollectedOwnsNothing)
{
    run("keep(Vec.new())");
    collect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));

    run("give()");
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, PassedToAScriptFunctionOwnsNothing)
{
    run("keep(Vec.new())");

    pass(m_kept);
    pass(m_kept);
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, InAnotherEnvironmentOwnsNothing)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    setMaker(*other.setUserType("Vec"));
    other.setFunc("give")->setFunction([this](const Parameters&) { return m_kept; });

    run("keep(Vec.new())");
    EXPECT_TRUE(runScript(other, "give()"));
    other.requestGarbageCollection();
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, OfTheHostsInstanceOwnsNothing)
{
    setHostObject("v", m_hostObject);

    run("keep(v)  give()");
    end();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(ReadParameterTest, OfTheHostsInstanceReturnedByTheSameCallOwnsNothing)
{
    setHostObject("v", m_hostObject);
    Function* const same =
        declare("same", {}, [](const Parameters& parameters) { return parameters[0]; });
    same->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Vec");

    run("same(v)");
    end();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(ReadParameterTest, OfAnArrayAccessOwnsNothing)
{
    UserTypeArrayDescriptor access;
    access.read = [this](const Parameters& parameters) { return m_kept = parameters[0]; };
    access.write = [this](const Parameters& parameters) { m_kept = parameters[0]; };
    access.type = PARAM_TYPE_DOUBLE;
    vec().setArrayAccess(access);

    run("local read = Vec.new()  local seen = read[1]  give()"
        "  Vec.new()[1] = 2  give()");
    end();

    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(ReadParameterTest, OfAFieldThatIsWrittenOwnsNothing)
{
    UserTypeFieldDescriptor field;
    field.setter = [this](const Parameters& parameters) { m_kept = parameters[0]; };
    field.name = "x";
    field.type = PARAM_TYPE_DOUBLE;
    vec().setField(field);

    run("Vec.new().x = 1  give()");
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, OfAScriptsResultOwnsNothing)
{
    run("function create() return Vec.new() end");
    std::vector<FunctionParameter> results{
        FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED, "Vec")};

    call("create", {}, results);
    pass(results[0]);
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ReadParameterTest, OverOneThatTheHostMadeOwnsNothing)
{
    run("function create() return Vec.new() end");
    std::vector<FunctionParameter> results;
    results.emplace_back(&m_hostObject, "Vec", true);
    const FunctionParameter copy = results[0];

    call("create", {}, results);
    pass(results[0]);
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

class MadeParameterTest : public OwnedParameterTest
{
protected:
    FunctionParameter make() { return FunctionParameter(&m_hostObject, "Vec", true); }

    /// Destroys the environment. The object must have been destroyed once.
    void expectOneOwner()
    {
        end();
        EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
    }
};

TEST_F(MadeParameterTest, ReturnedAtOnceIsAnOwner)
{
    declare("create", {}, [this](const Parameters&) { return make(); });

    run("create()");

    expectOneOwner();
}

TEST_F(MadeParameterTest, PassedTwiceIsAnOwnerOnce)
{
    FunctionParameter made = make();

    pass(made);
    pass(made);

    expectOneOwner();
}

TEST_F(MadeParameterTest, ReturnedTwiceIsAnOwnerOnce)
{
    m_kept = make();

    run("first, second = give(), give()");

    expectOneOwner();
}

TEST_F(MadeParameterTest, FirstOneIsTheOwner)
{
    m_kept = make();

    run("first, second = give(), give()  first = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(MadeParameterTest, CopyIsTheOwnerIfItComesFirst)
{
    FunctionParameter made = make();
    FunctionParameter copy = made;

    pass(copy);
    pass(made);

    expectOneOwner();
}

TEST_F(MadeParameterTest, CopiesOfCopiesAreOneOwner)
{
    FunctionParameter made = make();
    std::vector<FunctionParameter> copies{made, made};
    copies.push_back(copies[0]);
    FunctionParameter assigned;
    assigned = copies[1];

    pass(assigned);
    pass(made);
    for (FunctionParameter& copy : copies)
        pass(copy);

    expectOneOwner();
}

TEST_F(MadeParameterTest, CopyOfOneThatWasPassedIsNoOwner)
{
    FunctionParameter made = make();
    pass(made);

    FunctionParameter copy = made;
    pass(copy);

    expectOneOwner();
}

TEST_F(MadeParameterTest, MovedOneIsTheOwner)
{
    FunctionParameter made = make();
    const FunctionParameter copy = made;
    FunctionParameter moved = std::move(made);
    FunctionParameter assigned;
    assigned = std::move(moved);

    pass(moved);
    pass(assigned);

    expectOneOwner();
}

TEST_F(MadeParameterTest, CopyIsTheOwnerAfterTheEndOfTheOriginal)
{
    FunctionParameter copy;
    {
        const FunctionParameter made = make();
        copy = made;
    }

    pass(copy);

    expectOneOwner();
}

TEST_F(MadeParameterTest, AssignedToItselfIsAnOwnerOnce)
{
    FunctionParameter made = make();
    FunctionParameter& same = made;
    made = same;

    pass(made);
    pass(made);

    expectOneOwner();
}

TEST_F(MadeParameterTest, InTwoEnvironmentsIsAnOwnerOnce)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    setMaker(*other.setUserType("Vec"));
    other.setFunc("give")->setFunction([this](const Parameters&) { return m_kept; });
    m_kept = make();

    run("give()");
    EXPECT_TRUE(runScript(other, "give()"));
    other.requestGarbageCollection();

    expectOneOwner();
}

TEST_F(MadeParameterTest, PassedAfterItsInstanceWasCollectedIsNoOwner)
{
    m_kept = make();
    run("give()");
    collect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));

    run("give()");

    expectOneOwner();
}

TEST_F(MadeParameterTest, TwoForOneObjectAreTwoOwners)
{
    FunctionParameter first = make();
    FunctionParameter second = make();

    pass(first);
    pass(second);
    end();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject, &m_hostObject));
}

TEST_F(MadeParameterTest, OfATypeThatIsDeclaredLaterIsAnOwnerFromThenOn)
{
    FunctionParameter made(&m_hostObject, "Late", true);
    const FunctionParameter copy = made;
    pass(made);
    m_log.takeEntries(); // that the type is not declared
    declareType("Late");

    pass(made);
    pass(made);

    expectOneOwner();
}

TEST_F(MadeParameterTest, PreparedAnewCarriesNothing)
{
    FunctionParameter made = make();
    const FunctionParameter copy = made;
    made.prepareForUserType();

    pass(made);
    end();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(MadeParameterTest, CopiesLookAtNoScriptValue)
{
    const FunctionParameter made = make();
    const FunctionParameter copy = made;

    EXPECT_EQ(made.getUserTypeView().getInterpreterView(), nullptr);
    EXPECT_EQ(copy.getUserTypeView().getInterpreterView(), nullptr);
    EXPECT_EQ(copy.getUserTypeObject(), &m_hostObject);
    EXPECT_EQ(copy.getUserTypeName(), "Vec");
}

} // namespace tbScripts::test
