#include "tools/ToolSteps.h"

#include <filesystem>
#include <sys/stat.h>

namespace tool::test
{

ToolStep file(const std::string& path, const std::string& bytes)
{
    return [=](ToolFixture& test) { test.write(path, bytes); };
}

ToolStep folder(const std::string& path)
{
    return [=](ToolFixture& test) { std::filesystem::create_directories(test.pathOf(path)); };
}

ToolStep fifo(const std::string& path)
{
    return [=](ToolFixture& test) { EXPECT_EQ(::mkfifo(test.pathOf(path).c_str(), 0600), 0); };
}

ToolStep link(const std::string& target, const std::string& path)
{
    return [=](ToolFixture& test) { std::filesystem::create_symlink(target, test.pathOf(path)); };
}

ToolStep runs(const std::vector<std::string>& arguments)
{
    return [=](ToolFixture& test) { test.run(arguments); };
}

ToolStep gives(const std::vector<std::string>& arguments, const Outcome& expected)
{
    return [=](ToolFixture& test) { EXPECT_EQ(test.run(arguments), expected); };
}

ToolStep shellGives(const std::string& command, const Outcome& expected)
{
    return [=](ToolFixture& test) { EXPECT_EQ(test.runInShell(command), expected); };
}

ToolStep holds(const std::string& path, const std::string& bytes)
{
    return [=](ToolFixture& test)
    {
        EXPECT_TRUE(test.exists(path)) << path;
        EXPECT_EQ(test.read(path), bytes) << path;
    };
}

ToolStep isMissing(const std::string& path)
{
    return [=](ToolFixture& test) { EXPECT_FALSE(test.exists(path)) << path; };
}

ToolStep holdsOnly(const std::vector<std::string>& names)
{
    return [=](ToolFixture& test) { EXPECT_EQ(test.everything(), names); };
}

} // namespace tool::test
