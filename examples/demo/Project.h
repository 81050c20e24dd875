#pragma once

#include "demo/Summary.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace demo
{

/// The scripts of the match, loaded from a project on disk: one list of all scripts.
///
/// The library's script manager holds the scripts; the destructor of this object kills the manager.
class Project
{
public:
    /// Loads a project script list and compiles its scripts. Adds to each script a line that tells
    /// the host that the script runs; the line is not saved.
    explicit Project(const std::filesystem::path& list);

    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    ~Project();

    /// Declares in `environment` what the added lines call.
    ///
    /// Requires: this object outlives `environment`.
    void declareIn(tbScripts::Environment& environment);

    /// Runs the scripts of one folder of the project ("" for scripts in no folder) one after the
    /// other through `run(script)`. Reports and skips scripts that did not compile. Returns whether
    /// there were any.
    template <typename Scripts>
    bool run(const std::string& folder, Scripts& scripts)
    {
        bool isAny = false;
        for (const tbScripts::Script* const script : _findCompiled(folder))
        {
            isAny = true;
            _report(*script, scripts.run(*script));
        }
        return isAny;
    }

    /// Saves the project under another name, with every script as it was before it was loaded, and
    /// compares the two lists.
    void saveAgain(Summary& summary);

    int countRuns() const { return m_runs; }

    /// Returns how many scripts have told that they run.
    int countStarted() const { return static_cast<int>(m_started.size()); }

private:
    struct Entry
    {
        tbScripts::Script* script; // the manager's
        std::string authoredSources;
    };

    class Augmentation;

    std::vector<const tbScripts::Script*> _findCompiled(const std::string& folder) const;
    void _report(const tbScripts::Script& script, bool isDone);

    std::string m_name; // of the list, in the working folder
    std::vector<Entry> m_entries;
    std::set<int> m_started;
    int m_runs = 0;
};

} // namespace demo
