// Measures what the compiler needs for host sources that bind the same through the public interface
// and hand-written, in turn: processor time, memory, the size of the code, and instructions where
// the kernel lets perf count them.
//
// Why: docs/decisions/0033-callables-of-our-own.md

#include "RepeatedSource.h"
#include "tables/Table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

const std::vector<std::string> OPTIONS{TBSCRIPTS_BENCH_COMPILE_OPTIONS};
const std::string FOLDER = TBSCRIPTS_BENCH_COMPILE_FOLDER;
const std::string OBJECT = "binding.o";

struct Binding
{
    std::string name;
    std::string source;
    double goal; // as a ratio to the first binding; 0 for that one
};

struct Host
{
    std::string name;
    int repetitions;
    std::vector<Binding> bindings; // the hand-written one first
};

struct Cost
{
    std::vector<double> seconds;
    double mebibytes = 0;
    double codeBytes = 0;
    double instructions = 0; // 0 if they cannot be counted
};

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

std::vector<std::string> compilationOf(const std::string& source)
{
    std::vector<std::string> command{TBSCRIPTS_BENCH_COMPILER, "-std=c++17", "-O2", "-c"};
    command.insert(command.end(), OPTIONS.begin(), OPTIONS.end());
    command.insert(command.end(), {"-I" + FOLDER, source, "-o", OBJECT});
    return command;
}

// Returns whether the command has succeeded.
bool run(std::vector<std::string> command, rusage& usage)
{
    std::vector<char*> pointers;
    for (std::string& argument : command)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0)
    {
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    int status = 0;
    return wait4(child, &status, 0, &usage) == child && status == 0;
}

void compile(const std::string& source, Cost& cost)
{
    rusage usage{};
    if (!run(compilationOf(source), usage))
    {
        std::cerr << "benchmark: " << source << " does not compile\n";
        std::exit(EXIT_FAILURE);
    }
    cost.seconds.push_back(secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime));
    cost.mebibytes = static_cast<double>(usage.ru_maxrss) / 1024;
}

// The instructions of one compilation in user mode.
double countInstructions(const std::string& source)
{
    const std::string counts = "instructions.txt";
    std::vector<std::string> command{
        "perf", "stat", "-x", ",", "-e", "instructions:u", "-o", counts, "--"};
    const std::vector<std::string> compilation = compilationOf(source);
    command.insert(command.end(), compilation.begin(), compilation.end());
    rusage usage{};
    if (!run(command, usage))
        return 0;
    std::ifstream file(counts);
    std::string line;
    while (std::getline(file, line))
    {
        if (line.find("instructions") != std::string::npos)
            return std::strtod(line.c_str(), nullptr); // 0 for "<not supported>"
    }
    return 0;
}

// What `size` prints as "text" of the object that was compiled last.
double measureCode()
{
    double bytes = 0;
    if (FILE* const output = popen(("size " + OBJECT).c_str(), "r"))
    {
        char heading[256];
        if (!std::fgets(heading, sizeof heading, output) || std::fscanf(output, "%lf", &bytes) != 1)
            bytes = 0;
        pclose(output);
    }
    return bytes;
}

double medianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::string number(double value, int digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::vector<Cost> measure(const Host& host)
{
    std::vector<Cost> costs(host.bindings.size());
    Cost first; // so that everything has been read once
    for (const Binding& binding : host.bindings)
        compile(binding.source, first);
    for (int i = 0; i < host.repetitions; ++i)
    {
        for (std::size_t k = 0; k < costs.size(); ++k)
        {
            compile(host.bindings[k].source, costs[k]);
            costs[k].codeBytes = measureCode();
        }
    }
    for (std::size_t k = 0; k < costs.size(); ++k)
        costs[k].instructions = countInstructions(host.bindings[k].source);
    return costs;
}

void addRows(const Host& host, std::vector<std::vector<std::string>>& rows)
{
    const std::vector<Cost> costs = measure(host);
    const bool areCounted = costs.front().instructions > 0;
    const auto valueOf = [areCounted](const Cost& cost)
    { return areCounted ? cost.instructions : medianOf(cost.seconds); };
    for (std::size_t k = 0; k < costs.size(); ++k)
    {
        const Binding& binding = host.bindings[k];
        const double ratio = valueOf(costs[k]) / valueOf(costs.front());
        rows.push_back(
            {host.name,
             binding.name,
             number(medianOf(costs[k].seconds), 2),
             areCounted ? number(costs[k].instructions / (1 << 30), 2) : "",
             number(costs[k].mebibytes, 0),
             number(costs[k].codeBytes / 1024, 1),
             binding.goal > 0 ? number(ratio, 2) : "",
             binding.goal > 0 ? number(binding.goal, 2) : "",
             binding.goal > 0 ? (ratio <= binding.goal ? "yes" : "NO") : ""});
    }
}

// Returns the path of a source in the working directory with 20 classes in place of one.
std::string repeated(const std::string& name)
{
    std::ifstream original(FOLDER + "/units/" + name);
    std::ostringstream text;
    text << original.rdbuf();
    std::ofstream(name) << bench::repeatMarked(text.str(), 20);
    return name;
}

} // namespace

int main(int count, char** arguments)
{
    repeated("Units.h");
    const std::vector<Host> hosts{
        {"20 functions",
         9,
         {{"hand-written", FOLDER + "/HandWrittenBinding.cpp", 0},
          {"typed", FOLDER + "/TypedBinding.cpp", 1.3},
          {"described", FOLDER + "/LibraryBinding.cpp", 2}}},
        // A further way to bind classes is one more source in `units` and one more line here.
        {"20 classes of 25 members",
         5,
         {{"hand-written", repeated("HandWrittenUnits.cpp"), 0},
          {"typed", repeated("TypedUnits.cpp"), 1.25},
          {"described", repeated("DescribedUnits.cpp"), 3}}}};

    std::vector<std::vector<std::string>> rows{
        {"host source",
         "binding",
         "s",
         "Gi instructions",
         "MiB",
         "KiB code",
         "ratio",
         "goal",
         "met"}};
    for (const Host& host : hosts)
        addRows(host, rows);
    using tables::ALIGNMENT;
    std::vector<ALIGNMENT> alignments(rows.front().size(), ALIGNMENT::RIGHT);
    alignments[0] = alignments[1] = ALIGNMENT::LEFT;
    const std::string table = tables::layOutAsMarkdown(rows, alignments);
    std::cout << table;
    if (count > 1)
        std::ofstream(arguments[1]) << table;
    return 0;
}
