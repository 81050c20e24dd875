#include "support/TeardownFixture.h"

#include <memory>
#include <utility>

namespace tbScripts::test
{

namespace
{

// Foreign functions, because host functions are gone before most of a teardown.
constexpr const char* TRACE_LIBRARY =
    "local ffi = require('ffi') "
    "ffi.cdef('typedef struct { int32_t size; char letters[124]; } Trace;') "
    "local trace = ffi.cast('Trace**', traceObject)[0] "
    "local newproxy, getmetatable = newproxy, getmetatable "
    "function note(letter) "
    "    trace.letters[trace.size] = letter  trace.size = trace.size + 1 "
    "end "
    "local note = note "
    "function onEnd(letter, action) "
    "    local byte = letter:byte() "
    "    local value = newproxy(true) "
    "    getmetatable(value).__gc = function() note(byte)  if action then action() end end "
    "    return value "
    "end";

// Does something when it is destroyed.
class EndAction
{
public:
    explicit EndAction(std::function<void()> action)
        : m_action(std::move(action))
    {
    }

    EndAction(const EndAction&) = delete;
    EndAction& operator=(const EndAction&) = delete;

    ~EndAction() { m_action(); }

private:
    std::function<void()> m_action;
};

} // namespace

void TeardownTrace::add(char letter)
{
    letters[static_cast<std::size_t>(size++)] = letter;
}

std::string TeardownTrace::text() const
{
    return {letters.data(), static_cast<std::size_t>(size)};
}

TeardownFixture::TeardownFixture()
{
    environment().setObject("traceObject", "", &m_trace);
    run(TRACE_LIBRARY);
}

void TeardownFixture::declareWithEnd(const std::string& name, std::function<void()> action)
{
    // Shared, because callables are copied: only the last copy ends it.
    declare(
        name,
        {},
        [end = std::make_shared<EndAction>(std::move(action))](const Parameters&)
        { return FunctionParameter::VOID; });
}

void TeardownFixture::declareQuit(std::function<void()> action)
{
    declare(
        "quit",
        {},
        [this, action = std::move(action)](const Parameters&)
        {
            destroyEnvironment();
            action();
            return FunctionParameter::VOID;
        });
}

} // namespace tbScripts::test
