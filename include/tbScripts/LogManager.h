#pragma once

#include "tbScripts/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/StringView.h>

namespace tbLog
{
class Logger;
}

namespace tbScripts
{
class LogManager;
}

// One instance for the whole process: it lives in this library, hosts only refer to it.
extern template class TBSCRIPTS_API tbCommon::SingletonClass<tbScripts::LogManager>;

namespace tbScripts
{

/// Passes every message of the library to the host's receiver.
///
/// Messages have no level. Without a receiver they are dropped. The first `getInstance` creates the
/// instance; `kill` destroys it and forgets the receiver with it.
///
/// Format: docs/messages.md lists all messages and tags.
class TBSCRIPTS_API LogManager : public tbCommon::SingletonClass<LogManager>
{
public:
    ///@{
    /// Copies the receiver. `getInstance` still returns the same instance.
    LogManager(const LogManager& other);
    LogManager& operator=(const LogManager& other);
    ///@}

    /// Returns the receiver, null if messages are dropped.
    tbLog::Logger* getReceiver() const;

    /// Sends all further messages to `receiver`; null drops them.
    ///
    /// Ownership: the caller's; the receiver has to outlive its use here.
    void setReceiver(tbLog::Logger* receiver);

    /// Calls the receiver with `message` and `source`, the short tag of the reporting component.
    ///
    /// During the call the receiver may set another receiver or kill the manager. Exceptions that
    /// the receiver throws are discarded.
    void log(const tbMemory::StringView& message, const tbMemory::StringView& source);

private:
    friend class tbCommon::SingletonClass<LogManager>;

    LogManager();
    ~LogManager() override;

    tbLog::Logger* m_receiver; // not owned, null while logging is off
};

} // namespace tbScripts
