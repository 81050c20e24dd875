#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/CompilationResult.h"
#include "tbScripts/Interpreter.h"

#include <tbExport/Exportable.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts
{

class ScriptStrategy;

namespace lua
{
class LuaEnvironmentStrategy;
}

/// Named source text together with its compiled form for one interpreter.
///
/// A new script has no interpreter; `setTargetInterpreter` chooses one, `load` compiles. Changing
/// the sources leaves the compiled form as it is until the next `load`.
class TBSCRIPTS_API Script : public tbExport::Exportable
{
public:
    /// Makes a script without name, sources and interpreter.
    Script();

    ///@{
    /// Copies name and sources, and shares the compiled form.
    ///
    /// Kept: loading or unloading either one is seen by both. Messages of the shared compiler name
    /// the script that it was made for.
    Script(const Script& other);
    Script& operator=(const Script& other);
    ///@}

    /// Gives up the compiled form. Environments that are running it finish first.
    ~Script() override;

    /// Returns the interpreter that was chosen last, `INTERPRETER_UNKNOWN` at first.
    INTERPRETER getTargetInterpreter() const;

    /// Drops the compiled form and compiles for `interpreter` from here on.
    ///
    /// On failure: any value but `INTERPRETER_LUA` is logged (tag "Script") and disables the
    /// script. Kept: `getTargetInterpreter` then still gives the earlier value.
    void setTargetInterpreter(INTERPRETER interpreter);

    /// Returns the name; empty at first. Messages name the script by it.
    ///
    /// Valid until: the name changes or the script is destroyed.
    tbMemory::StringView getName() const;

    /// Replaces the name. A registry that files this script is not told.
    void setName(const tbMemory::StringView& name);

    /// Returns the source text, all of its bytes.
    ///
    /// Valid until: the sources change or the script is destroyed.
    tbMemory::StringView getSources() const;

    /// Replaces the source text; compiles nothing.
    void setSources(const tbMemory::StringView& sources);

    /// Compiles the sources up to their first NUL and returns whether that worked. Compiled code
    /// given as sources is refused like a syntax error.
    ///
    /// On failure: the compiled form is gone, `getLastCompilationResult` says why, and with an
    /// interpreter it is logged too (tag "LuaScript").
    bool load();

    /// Drops the compiled form. The last compilation result stays.
    void unload();

    /// Returns the outcome of the last `load`; a success if there was none.
    ///
    /// Valid until: `setTargetInterpreter`, an assignment, or the end of the last copy.
    const CompilationResult& getLastCompilationResult() const;

    /// Adds the members "name", "type" and "sources" to `node`, an object. Does nothing for null.
    ///
    /// Format: docs/script-declarations.md.
    void exportClassToTree(tbExport::Node* node) override;

    /// Takes interpreter and sources from the members "type" and "sources" of `node`; a member that
    /// is missing or no text is ignored. Compiles nothing. Does nothing for null.
    ///
    /// Kept: "name" is not read.
    /// Format: docs/script-declarations.md.
    void importClassFromTree(tbExport::Node* node) override;

private:
    friend class lua::LuaEnvironmentStrategy; // runs the compiled form

    ScriptStrategy* _getStrategy() const;

    // Shared with the strategy and with runs in progress, which may outlive this object and then
    // report with the last name.
    std::shared_ptr<tbMemory::String> m_name;

    tbMemory::String m_sources;
    std::shared_ptr<ScriptStrategy> m_strategy; // never null, shared by copies
    INTERPRETER m_targetInterpreter;
};

} // namespace tbScripts
