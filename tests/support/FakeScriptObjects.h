#pragma once

#include "support/CountedObject.h"

#include <tbScripts/ScriptObjectInterpreterReference.h>
#include <tbScripts/ScriptObjectInterpreterView.h>

#include <gtest/gtest.h>

namespace tbScripts::test
{

/// A reference's interpreter side without interpreter. Its life is counted.
class FakeReference : public ScriptObjectInterpreterReference
{
public:
    explicit FakeReference(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_SCRIPT_OBJECT);

private:
    CountedObject m_counted;
};

/// A view's interpreter side without interpreter: makes fake references. Its life is counted too.
class FakeView : public ScriptObjectInterpreterView
{
public:
    explicit FakeView(FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_SCRIPT_OBJECT);

    /// Makes a reference, null once there is nothing to look at.
    ScriptObjectInterpreterReference* createReference() override;

    /// Lets the value go: no more references come from here.
    void lookAtNothing();

    /// Returns the reference that was made last, null before the first.
    ///
    /// Valid until: its owner destroys it.
    ScriptObjectInterpreterReference* getLastReference() const;

private:
    FUNCTION_PARAMETER_TYPE m_type;
    ScriptObjectInterpreterReference* m_lastReference; // not owned
    bool m_isEmpty;
    CountedObject m_counted;
};

/// Counts fakes. A test that leaves one alive, or destroys one twice, fails.
class FakeScriptObjectsFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace tbScripts::test
