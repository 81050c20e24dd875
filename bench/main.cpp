// Measures the library against hand-written code for the interpreter's C interface, in
// one process. docs/performance.md explains the method and shows the last results.

#include "Options.h"
#include "Row.h"
#include "Runner.h"
#include "growth/GrowthRows.h"
#include "memory/Memory.h"
#include "report/ChartData.h"
#include "report/JsonReport.h"
#include "report/Tables.h"
#include "rows/Rows.h"
#include "support/Failure.h"
#include "support/LibraryHost.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

namespace
{

using namespace bench;

RowList makeRows()
{
    RowList rows;
    addHostFunctionRows(rows);
    addUserTypeRows(rows);
    addScriptCallRows(rows);
    addGlobalRows(rows);
    addReferenceRows(rows);
    addExecuteRows(rows);
    addCallingBackRows(rows);
    addScriptValueRows(rows);
    addCompileRows(rows);
    addDocumentRows(rows);
    addEnvironmentRows(rows);
    return rows;
}

bool isWanted(const Options& options, const std::string& name)
{
    return name.find(options.only) != std::string::npos;
}

void profileRow(const Row& row, const Options& options)
{
    const std::vector<Variant> variants = row.make(row.operations);
    const auto variant = static_cast<std::size_t>(options.profiledVariant);
    if (variant >= variants.size())
        fail(row.name + " has no such variant");
    for (int run = 0; run < options.repetitions; ++run)
    {
        if (variants[variant].prepare)
            variants[variant].prepare();
        variants[variant].run();
    }
}

RatioResult
ratioOf(const Row& row, std::size_t way, std::size_t rival, const std::vector<Timing>& timings)
{
    const bool isBinding = row.rivals[rival].kind == RIVAL_KIND::BINDING;
    return {
        row.subject,
        row.name,
        row.ways[way].way,
        row.rivals[rival],
        isBinding ? row.ways[way].goal : row.rivals[rival].goal,
        timings[way],
        timings[row.ways.size() + rival]};
}

void measureRow(const Row& row, const Options& options, Results& results)
{
    std::cerr << row.subject << ": " << row.name << '\n';
    const std::size_t operations = options.isSmoke ? row.leastOperations : row.operations;
    const std::vector<Variant> variants = row.make(operations);
    const std::vector<std::size_t> operationsOfEach(variants.size(), operations);
    const std::vector<Timing> timings =
        measure(row.name, variants, operationsOfEach, options.repetitions);
    for (std::size_t i = 0; i < row.rivals.size(); ++i)
    {
        for (std::size_t k = 0; k < row.ways.size(); ++k)
            results.ratios.push_back(ratioOf(row, k, i, timings));
    }
}

void measureGrowth(const GrowthRow& row, const Options& options, Results& results)
{
    std::cerr << "Growth: " << row.name << '\n';
    std::vector<Variant> variants;
    std::vector<std::size_t> operations;
    for (const std::size_t count : row.counts)
    {
        operations.push_back(row.isPerCount ? count : row.operations);
        variants.push_back(row.make(count, operations.back()));
    }
    results.growth.push_back(
        {row.name,
         row.countOf,
         row.counts,
         measure(row.name, variants, operations, options.repetitions)});
}

void writeReports(const std::filesystem::path& folder, const Results& results)
{
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "results.json") << std::string_view(makeJsonReport(results));
    std::ofstream(folder / "results.dat") << makeChartData(results);
    std::ofstream tables(folder / "results.md");
    printTables(tables, results);
}

Results measureAll(const Options& options)
{
    Results results;
    results.repetitions = options.repetitions;
    for (const Row& row : makeRows())
    {
        if (isWanted(options, row.subject + ": " + row.name))
            measureRow(row, options, results);
    }
    for (const GrowthRow& row : makeGrowthRows(options.isSmoke))
    {
        if (isWanted(options, "Growth: " + row.name))
            measureGrowth(row, options, results);
    }
    if (isWanted(options, "Memory"))
        results.memory = measureMemory(options.isSmoke);
    return results;
}

void profile(const Options& options)
{
    for (const Row& row : makeRows())
    {
        if (isWanted(options, row.subject + ": " + row.name))
            profileRow(row, options);
    }
}

} // namespace

int main(int count, char** arguments)
{
    const Options options = readOptions(count, arguments);
    failOnLibraryMessages();
    if (options.profiledVariant >= 0)
    {
        profile(options);
        return 0;
    }
    initialiseMeasuring();
    const Results results = measureAll(options);
    printTables(std::cout, results);
    if (!options.outputFolder.empty())
        writeReports(
            std::filesystem::path(options.outputFolder) / (options.isSmoke ? "smoke" : ""),
            results);
    return 0;
}
