#pragma once

#include <cstddef>
#include <functional>

namespace tbScripts::test
{

/// Runs `work` on a thread whose stack has `stackSize` bytes, and waits for its end. Standard
/// threads offer no choice of that.
void runOnStackOf(std::size_t stackSize, const std::function<void()>& work);

} // namespace tbScripts::test
