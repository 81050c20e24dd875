#pragma once

#include "support/Facts.h"
#include "tools/ToolFixture.h"

#include <functional>
#include <string>
#include <vector>

namespace tool::test
{

using tbScripts::test::Facts;

/// What rows of `Facts` about the tool are made of.
using ToolStep = std::function<void(ToolFixture&)>;

///@{ Makes something at `path`.
ToolStep file(const std::string& path, const std::string& bytes);
ToolStep folder(const std::string& path);
ToolStep fifo(const std::string& path);
ToolStep link(const std::string& target, const std::string& path);
///@}

/// Runs the tool, whatever it leaves.
ToolStep runs(const std::vector<std::string>& arguments);

/// Runs the tool, or a command of the shell, which has to leave `expected`.
ToolStep gives(const std::vector<std::string>& arguments, const Outcome& expected);
ToolStep shellGives(const std::string& command, const Outcome& expected);

/// Expects these bytes in the file at `path`.
ToolStep holds(const std::string& path, const std::string& bytes);

/// Expects nothing at `path`.
ToolStep isMissing(const std::string& path);

/// Expects these names, sorted, and no others.
ToolStep holdsOnly(const std::vector<std::string>& names);

} // namespace tool::test
