#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tbScripts::test
{

/// Something to capture in a callable: when the last copy goes, so does a call of `action`. Tells
/// when a binding is destroyed, and acts at that moment.
inline std::shared_ptr<const void> makeFarewell(std::function<void()> action)
{
    static const char target = 0;
    return std::shared_ptr<const void>(
        &target, [action = std::move(action)](const void*) { action(); });
}

} // namespace tbScripts::test
