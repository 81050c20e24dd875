#include "demo/ScriptFolder.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <system_error>

namespace demo
{

namespace
{

std::vector<std::filesystem::path> findScripts(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure))
    {
        if (entry.path().extension() == ".lua" && entry.is_regular_file(failure))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Reading files is the host's business: a script gets its text, wherever that comes from.
bool readFile(const std::filesystem::path& file, std::string& text)
{
    std::ifstream stream(file, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    return stream.good() || stream.eof();
}

// Returns null if that failed.
std::unique_ptr<tbScripts::Script> compileFile(const std::filesystem::path& file)
{
    const std::string name = file.filename().string();
    std::string sources;
    if (!readFile(file, sources))
    {
        std::cout << "  " << name << ": cannot be read\n";
        return nullptr;
    }

    auto script = std::make_unique<tbScripts::Script>();
    script->setName(name); // names the script in messages
    script->setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script->setSources(sources);
    if (script->load())
        return script;

    // The log has the message already; here it is at hand without one.
    const tbScripts::CompilationResult& result = script->getLastCompilationResult();
    std::cout << "  " << name << ": left out, error code " << result.errorCode << '\n';
    return nullptr;
}

} // namespace

std::vector<std::unique_ptr<tbScripts::Script>> compileFolder(const std::filesystem::path& folder)
{
    std::vector<std::unique_ptr<tbScripts::Script>> scripts;
    for (const std::filesystem::path& file : findScripts(folder))
    {
        if (std::unique_ptr<tbScripts::Script> script = compileFile(file))
            scripts.push_back(std::move(script));
    }
    return scripts;
}

} // namespace demo
