#pragma once

#include <string>

namespace bench
{

struct Options
{
    bool isSmoke = false;     // few operations, once: does everything still work?
    int repetitions = 11;     // of each side of each row
    std::string only;         // part of the names of the rows to measure
    std::string outputFolder; // where the reports go; empty for none
    int profiledVariant = -1; // runs this variant of the chosen rows and measures nothing
};

/// Ends the program after printing help, or what is wrong with the arguments.
Options readOptions(int count, char** arguments);

} // namespace bench
