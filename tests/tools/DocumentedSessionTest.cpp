#include "tools/ToolFixture.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace tool::test
{

namespace
{

constexpr const char* PAGE = TBSCRIPTS_TESTS_FOLDER "/../docs/tbscripts.md";

// What stands between the fences of the page's only block of that kind.
std::string sessionOf(const std::string& page)
{
    const std::string fence = "```console\n";
    const std::size_t begin = page.find(fence) + fence.size();
    return page.substr(begin, page.find("```\n", begin) - begin);
}

std::string commandsOf(const std::string& session)
{
    std::string commands;
    std::istringstream stream(session);
    for (std::string line; std::getline(stream, line);)
        commands += line.rfind("$ ", 0) == 0 ? line.substr(2) + '\n' : "";
    return commands;
}

using DocumentedSessionTest = ToolFixture;

TEST_F(DocumentedSessionTest, GoesAsThePageSays)
{
    std::ifstream stream(PAGE);
    const std::string session =
        sessionOf({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
    write("scripts/setup.lua", "-- setup.lua\nspeed = tonumber(arg[1]) or 1\n");
    write("scripts/main.lua", "#!/usr/bin/env -S tbscripts run\nprint('speed is ' .. speed)\n");
    write("scripts/levels/gate.lua", "local guards = {'anna', 'bert'\nprint(#guards)\n");
    write("commands", commandsOf(session));

    // Each command sees the exit status of the one before.
    const Outcome outcome = runInShell(
        "PATH=\"$(dirname \"$TOOL\"):$PATH\"; exec 2>&1; last=0; while IFS= read -r command; do "
        "printf '$ %s\\n' \"$command\"; (exit $last); eval \"$command\"; last=$?; "
        "done <commands");

    EXPECT_EQ(outcome.output, session);
}

} // namespace

} // namespace tool::test
