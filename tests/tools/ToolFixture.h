#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace tool::test
{

/// What a finished process leaves.
struct Outcome
{
    int status = -1; // -1 if a signal ended it
    int signal = 0;
    std::string output;
    std::string errors;
};

/// Compares whole outcomes; printed in full where they differ.
bool operator==(const Outcome& left, const Outcome& right);
void PrintTo(const Outcome& outcome, std::ostream* stream);

/// Runs the built tool in a scratch folder of its own, which is the current one there and gone
/// afterwards. Paths are relative to it.
class ToolFixture : public ::testing::Test
{
public:
    /// Runs the tool with these arguments. Neither output is a terminal.
    Outcome run(const std::vector<std::string>& arguments) const;

    /// Runs a command of the shell, in which "$TOOL" is the tool.
    Outcome runInShell(const std::string& command) const;

    /// Runs the tool and interrupts it as Ctrl-C does, after giving way to it so many times.
    Outcome runInterrupted(const std::vector<std::string>& arguments, int turns) const;

    /// Runs the tool with a terminal as its standard error and returns what that one gets.
    std::string runOnTerminal(const std::vector<std::string>& arguments) const;

    /// Makes a file, and the folders on the way to it.
    void write(const std::string& path, std::string_view bytes) const;

    std::string read(const std::string& path) const;

    bool exists(const std::string& path) const;

    /// Returns the names of all files and folders below the scratch folder, sorted.
    std::vector<std::string> everything() const;

    std::string pathOf(const std::string& path) const;

protected:
    ToolFixture();
    ~ToolFixture() override;

private:
    std::string m_folder;
};

/// Shorthands for what a command leaves that said all on one of both ways.
Outcome success(const std::string& output);
Outcome failure(const std::string& errors, const std::string& output = {});
Outcome trouble(const std::string& errors, const std::string& output = {});

} // namespace tool::test
