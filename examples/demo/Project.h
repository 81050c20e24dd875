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

/// The scripts of the match, as a project on disk has them: one list of all.
///
/// They live in the library's script manager, which ends with this object.
class Project
{
public:
    /// Loads a project script list and compiles what is in it. To each script a line is added, for
    /// as long as it is here, with which it tells the host that it runs.
    explicit Project(const std::filesystem::path& list);

    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    ~Project();

    /// Declares in `environment` what the added lines call.
    ///
    /// Requires: this object outlives `environment`.
    void declareIn(tbScripts::Environment& environment);

    /// Runs the scripts of one folder of the project, "" for those in none, one after the other in
    /// whatever has `run(script)`. One that did not compile is reported and left out. Returns
    /// whether there were any.
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
