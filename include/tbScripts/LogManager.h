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

/// Where every message of the library goes.
///
/// Messages have no level. Without a receiver they are dropped. The instance is made by the first
/// `getInstance`; `kill` destroys it and forgets the receiver with it.
///
/// Format: docs/messages.md lists all texts and tags.
class TBSCRIPTS_API LogManager : public tbCommon::SingletonClass<LogManager>
{
public:
    ///@{
    /// Copies the receiver. `getInstance` goes on giving the instance that it gave before.
    LogManager(const LogManager& other);
    LogManager& operator=(const LogManager& other);
    ///@}

    /// Returns the receiver, null if messages are dropped.
    tbLog::Logger* getReceiver() const;

    /// Sends all further messages to `receiver`; null drops them.
    ///
    /// Ownership: the receiver stays the caller's and has to outlive its use here.
    void setReceiver(tbLog::Logger* receiver);

    /// Hands `message` and `source`, the short tag of the reporting component, to the receiver.
    ///
    /// Meanwhile the receiver is free to change the receiver, or to kill the manager. What it
    /// throws goes nowhere.
    void log(const tbMemory::StringView& message, const tbMemory::StringView& source);

private:
    friend class tbCommon::SingletonClass<LogManager>;

    LogManager();
    ~LogManager() override;

    tbLog::Logger* m_receiver; // not owned, null while logging is off
};

} // namespace tbScripts
