#pragma once

#include <tbScripts/Interpreter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tbScripts::test
{

/// A fixture with an environment that tests leave without interpreter, or start anew.
template <typename Base>
class Switching : public Base
{
protected:
    void TearDown() override
    {
        EXPECT_THAT(this->m_log.takeEntries(), ::testing::IsEmpty());
        this->destroyEnvironment();
        if (m_isDisabled)
            this->m_log.takeEntries(); // without interpreter the teardown warns
        Base::TearDown();
    }

    /// Leaves the environment without interpreter and without unread entries.
    void disable()
    {
        this->environment().setEnvironmentFor(INTERPRETER_UNKNOWN);
        this->m_log.takeEntries();
        m_isDisabled = true;
    }

    /// Starts the interpreter anew; what was declared is inert then.
    void restart() { this->environment().setEnvironmentFor(INTERPRETER_LUA); }

private:
    bool m_isDisabled = false;
};

} // namespace tbScripts::test
