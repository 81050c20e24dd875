// Measures how long the compiler takes for a host source that binds twenty functions, through the
// public interface and hand-written, in turn.

#include "tables/Table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int REPETITIONS = 9;
constexpr double GOAL = 2.0;

const std::vector<std::string> OPTIONS{TBSCRIPTS_BENCH_COMPILE_OPTIONS};

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// Returns the seconds of processor time that compiling `source` takes.
double compile(const std::string& source)
{
    std::vector<std::string> arguments{TBSCRIPTS_BENCH_COMPILER, "-std=c++17", "-O2", "-c"};
    arguments.insert(arguments.end(), OPTIONS.begin(), OPTIONS.end());
    arguments.insert(arguments.end(), {source, "-o", "/dev/null"});
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0)
    {
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || status != 0)
    {
        std::cerr << "benchmark: " << source << " does not compile\n";
        std::exit(EXIT_FAILURE);
    }
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
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

} // namespace

int main(int count, char** arguments)
{
    const std::string folder = TBSCRIPTS_BENCH_COMPILE_FOLDER;
    std::vector<double> library;
    std::vector<double> byHand;
    compile(folder + "/LibraryBinding.cpp"); // so that everything has been read once
    for (int i = 0; i < REPETITIONS; ++i)
    {
        library.push_back(compile(folder + "/LibraryBinding.cpp"));
        byHand.push_back(compile(folder + "/HandWrittenBinding.cpp"));
    }

    const double ratio = medianOf(library) / medianOf(byHand);
    using tables::ALIGNMENT;
    const std::string table = tables::layOutAsMarkdown(
        {{"host source", "library s", "hand-written s", "ratio", "goal", "met"},
         {"20 functions",
          number(medianOf(library), 3),
          number(medianOf(byHand), 3),
          number(ratio, 2),
          number(GOAL, 2),
          ratio <= GOAL ? "yes" : "NO"}},
        {ALIGNMENT::LEFT,
         ALIGNMENT::RIGHT,
         ALIGNMENT::RIGHT,
         ALIGNMENT::RIGHT,
         ALIGNMENT::RIGHT,
         ALIGNMENT::RIGHT});
    std::cout << table;
    if (count > 1)
        std::ofstream(arguments[1]) << table;
    return 0;
}
