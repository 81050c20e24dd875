// Preparing gives the storage an empty value, whatever it held and whatever the kind says.

#include "support/FakeScriptObjects.h"
#include "support/ParameterKinds.h"
#include "support/RowName.h"

#include <tbScripts/FunctionParameter.h>

#include <string>

namespace tbScripts::test
{

class FunctionParameterPrepareTest : public FakeScriptObjectsFixture,
                                     public ::testing::WithParamInterface<ParameterKind>
{
protected:
    static bool isText() { return GetParam().number == 5; }

    static bool isUserType() { return GetParam().number == 6 || GetParam().number == 7; }

    static bool isReference() { return GetParam().number == 8 || GetParam().number == 9; }

    // Nothing can be read but the kind.
    static std::string onlyTheKind() { return std::to_string(GetParam().number); }

    static std::string emptyValue()
    {
        if (isText())
            return onlyTheKind() + " string:";
        return isUserType() ? onlyTheKind() + " type:" : onlyTheKind();
    }
};

INSTANTIATE_TEST_SUITE_P(
    AllKinds, FunctionParameterPrepareTest, ::testing::ValuesIn(allParameterKinds()), RowName());

TEST_P(FunctionParameterPrepareTest, OwnKindGetsItsEmptyValueAndNumbersKeepTheirs)
{
    const bool isEmptied = isText() || isUserType() || isReference();
    FunctionParameter parameter = GetParam().makeValue();

    parameter.prepareForInternalType();

    EXPECT_EQ(describe(parameter), isEmptied ? emptyValue() : GetParam().description);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, TextStorageDestroysWhatWasHeldAndKeepsTheKind)
{
    FunctionParameter parameter = GetParam().makeValue();

    parameter.prepareForString();

    EXPECT_EQ(describe(parameter), isText() ? emptyValue() : onlyTheKind());
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, UserTypeStorageDestroysWhatWasHeldAndKeepsTheKind)
{
    FunctionParameter parameter = GetParam().makeValue();

    parameter.prepareForUserType();

    EXPECT_EQ(describe(parameter), isUserType() ? emptyValue() : onlyTheKind());
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, ReferenceStorageDestroysWhatWasHeldAndKeepsTheKind)
{
    FunctionParameter parameter = GetParam().makeValue();

    parameter.prepareForScriptObjectReference();

    EXPECT_EQ(describe(parameter), onlyTheKind());
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_P(FunctionParameterPrepareTest, StorageOfAnotherKindIsDestroyedByTheNextPreparation)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForString();
    parameter.prepareForUserType();
    parameter.prepareForScriptObjectReference();
    parameter.prepareForString();

    parameter.prepareForInternalType();

    EXPECT_EQ(describe(parameter), emptyValue());
}

TEST_P(FunctionParameterPrepareTest, StorageOfAnotherKindIsNoValueToCopy)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForUserType();

    const FunctionParameter copy(parameter);

    EXPECT_EQ(describe(copy), isUserType() ? emptyValue() : onlyTheKind());
}

TEST_P(FunctionParameterPrepareTest, StorageOfAnotherKindIsDestroyedByAssignment)
{
    const FunctionParameter source("text");
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForUserType();

    parameter = source;

    EXPECT_EQ(describe(parameter), "5 string:text");
}

TEST_P(FunctionParameterPrepareTest, PreparedStorageTakesTheValueOfItsKindAgain)
{
    FunctionParameter parameter = GetParam().makeValue();
    parameter.prepareForInternalType();

    parameter = GetParam().makeValue();

    EXPECT_EQ(describe(parameter), GetParam().description);
}

TEST_P(FunctionParameterPrepareTest, PreparedReferenceHasABlockOfItsOwn)
{
    FunctionParameter parameter = GetParam().makeValue();
    const FunctionParameter copy(parameter);

    parameter.prepareForScriptObjectReference();

    EXPECT_EQ(parameter.getScriptObject().getUseCount(), 1U);
    EXPECT_EQ(copy.getScriptObject().getUseCount(), 1U);
    EXPECT_EQ(copy.getScriptObject().getInterpreterReference() != nullptr, isReference());
}

} // namespace tbScripts::test
