#pragma once

#include "tbLog/StringView.h"

namespace tbLog
{

/// Interface through which a host receives messages.
///
/// The order of the virtual operations is part of the interface: first the destructor, then `log`.
class Logger
{
public:
    virtual ~Logger() = default;

    /// Records `message`, which the component named by `source` reports.
    ///
    /// Valid until: the call returns, for both views; keep copies.
    virtual void log(const StringView& message, const StringView& source) = 0;

protected:
    Logger() = default;
    Logger(const Logger&) = default;
    Logger& operator=(const Logger&) = default;
};

} // namespace tbLog
