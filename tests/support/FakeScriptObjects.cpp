#include "support/FakeScriptObjects.h"

namespace tbScripts::test
{

FakeReference::FakeReference(FUNCTION_PARAMETER_TYPE type)
    : ScriptObjectInterpreterReference(type)
{
}

FakeView::FakeView(FUNCTION_PARAMETER_TYPE type)
    : m_type(type)
    , m_lastReference(nullptr)
    , m_isEmpty(false)
{
}

ScriptObjectInterpreterReference* FakeView::createReference()
{
    m_lastReference = m_isEmpty ? nullptr : new FakeReference(m_type);
    return m_lastReference;
}

void FakeView::lookAtNothing()
{
    m_isEmpty = true;
}

ScriptObjectInterpreterReference* FakeView::getLastReference() const
{
    return m_lastReference;
}

void FakeScriptObjectsFixture::SetUp()
{
    CountedObject::restart();
}

void FakeScriptObjectsFixture::TearDown()
{
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

} // namespace tbScripts::test
