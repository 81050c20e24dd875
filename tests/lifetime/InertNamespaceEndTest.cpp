// Namespaces of an interpreter that is gone: what ends with them may take them, their parent or the
// whole environment along.

#include "support/Farewell.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

#include <string>
#include <tuple>
#include <utility>

namespace tbScripts::test
{

namespace
{

/// Something in a namespace that holds a farewell.
struct HolderRow
{
    const char* row;
    bool endsByDeclaration; // of the function "held" and of the type "T"
    void (*hold)(Namespace& inner, std::shared_ptr<const void> farewell);
};

Function::Callable holding(std::shared_ptr<const void> farewell)
{
    return doing([held = std::move(farewell)] {});
}

const std::vector<HolderRow>& allHolders()
{
    static const std::vector<HolderRow> rows{
        {"Function",
         true,
         [](Namespace& inner, std::shared_ptr<const void> farewell)
         { inner.setFunction("held")->setFunction(holding(std::move(farewell))); }},
        {"FunctionOfAnInnerNamespace",
         false,
         [](Namespace& inner, std::shared_ptr<const void> farewell) {
             inner.setNamespace("n")->setFunction("held")->setFunction(
                 holding(std::move(farewell)));
         }},
        {"Method",
         true,
         [](Namespace& inner, std::shared_ptr<const void> farewell) {
             inner.setUserType("T")
                 ->setMethod("held", false)
                 ->setFunction(holding(std::move(farewell)));
         }},
        {"Getter",
         true,
         [](Namespace& inner, std::shared_ptr<const void> farewell)
         {
             UserTypeFieldDescriptor field;
             field.name = "held";
             field.getter = [farewell](void*) { return FunctionParameter::VOID; };
             inner.setUserType("T")->setField(field);
         }},
        {"Constructor",
         false,
         [](Namespace& inner, std::shared_ptr<const void> farewell) {
             inner.setUserType("T")->setConstructor([farewell](const Parameters&)
                                                    { return nullptr; });
         }},
        {"Destructor", false, [](Namespace& inner, std::shared_ptr<const void> farewell) {
             inner.setUserType("T")->setDestructor([farewell](void*) {});
         }}};
    return rows;
}

enum class ENDING
{
    OF_ENVIRONMENT,
    BY_RELEASE,
    BY_RELEASE_OF_PARENT
};

using Case = std::tuple<HolderRow, ENDING>;

std::string nameOf(const Case& row)
{
    const std::vector<std::string> endings{"DestroysEnvironment", "Releases", "ReleasesParent"};
    return std::get<0>(row).row + endings.at(static_cast<std::size_t>(std::get<1>(row)));
}

} // namespace

class InertNamespaceEndTest : public OnValues<NamespaceFixture, Case>
{
protected:
    InertNamespaceEndTest()
        : m_inner(scope().setNamespace("b"))
    {
        // Things around it, so that there is more to go on with.
        for (const char* const name : {"f", "g", "h"})
        {
            m_inner->setFunction(name);
            m_inner->setUserType(name)->setMethod("m", false);
        }
        std::get<0>(GetParam()).hold(*m_inner, makeFarewell([this] { end(); }));
        restart();
    }

    void end()
    {
        if (m_isOver)
            return;
        m_hasEnded = true;
        switch (std::get<1>(GetParam()))
        {
        case ENDING::OF_ENVIRONMENT:
            destroyEnvironment();
            break;
        case ENDING::BY_RELEASE:
            m_inner->release();
            break;
        case ENDING::BY_RELEASE_OF_PARENT:
            scope().release();
            break;
        }
    }

    Namespace* m_inner; // good until it has ended
    bool m_hasEnded = false;
    bool m_isOver = false; // nothing is to end any more
};

INSTANTIATE_TEST_SUITE_P(
    Cases,
    InertNamespaceEndTest,
    ::testing::Combine(
        ::testing::ValuesIn(allHolders()),
        ::testing::Values(
            ENDING::OF_ENVIRONMENT, ENDING::BY_RELEASE, ENDING::BY_RELEASE_OF_PARENT)),
    [](const ::testing::TestParamInfo<Case>& row) { return nameOf(row.param); });

TEST_P(InertNamespaceEndTest, ReleaseSurvivesWhatEndsInIt)
{
    m_inner->release();
    EXPECT_TRUE(m_hasEnded);
}

TEST_P(InertNamespaceEndTest, ReleaseOfTheParentSurvivesWhatEndsInIt)
{
    if (std::get<1>(GetParam()) == ENDING::BY_RELEASE)
        m_inner = &scope(); // the inner one is gone by then
    scope().release();
    EXPECT_TRUE(m_hasEnded);
}

TEST_P(InertNamespaceEndTest, ReleaseFromInsideAHostFunctionSurvivesWhatEndsInIt)
{
    declareAction("act", [this] { m_inner->release(); });
    runScript(environment(), "act()");
    EXPECT_TRUE(m_hasEnded);
}

TEST_P(InertNamespaceEndTest, DeclaringItAgainSurvivesWhatEndsInIt)
{
    environment().setUserType("a::b::T");
    if (!m_hasEnded)
        m_inner->setFunction("held");
    EXPECT_EQ(m_hasEnded, std::get<0>(GetParam()).endsByDeclaration);
    m_isOver = true;
    forgetLog();
}

} // namespace tbScripts::test
