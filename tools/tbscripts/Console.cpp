#include "tbscripts/Console.h"

#include "port/Terminal.h"

#include "tbscripts/Escaping.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tool
{

namespace
{

void write(std::FILE* stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

} // namespace

void print(std::string_view text)
{
    write(stdout, text);
}

bool finishOutput()
{
    const bool hadFailed = std::ferror(stdout) != 0;
    if (std::fflush(stdout) == 0 && !hadFailed)
        return true;
    const int reason = errno;
    if (reason != EPIPE)
        report(std::string("tbscripts: standard output: ") + std::strerror(reason));
    return false;
}

void report(std::string_view line)
{
    std::fflush(stdout);
    write(stderr, std::string(line) + '\n');
}

void reportTrouble(std::string_view path, std::string_view reason)
{
    report("tbscripts: " + show(path) + ": " + escape(reason));
}

std::string show(std::string_view name)
{
    return name.empty() ? "''" : escape(name);
}

bool isOutputTerminal()
{
    return tbScripts::port::isOutputTerminal();
}

std::string count(std::size_t number, std::string_view what)
{
    return std::to_string(number) + ' ' + std::string(what) + (number == 1 ? "" : "s");
}

} // namespace tool
