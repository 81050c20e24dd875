#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/CompilationResult.h"
#include "tbScripts/Interpreter.h"

#include <tbExport/Exportable.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

struct ScriptState;
class ScriptStrategy;

/// Named source text together with its compiled form for one interpreter.
///
/// A new script has no interpreter; `setTargetInterpreter` chooses one, `load` compiles. A change
/// of the sources takes effect with the next `load`.
///
/// @code
/// Script script;
/// script.setName("patrol.lua");
/// script.setTargetInterpreter(INTERPRETER_LUA);
/// script.setSources(ContentLoader::inputDataStr("patrol.lua"));
/// if (!script.load())
///     std::cout << script.getLastCompilationResult().message << '\n';
/// @endcode
class TBSCRIPTS_API Script : public tbExport::Exportable
{
public:
    /// Creates a script without name, sources and interpreter.
    Script();

    ///@{
    /// Copies name and sources, and shares the compiled form.
    ///
    /// Compatibility: loading or unloading one changes both, and compile messages of both carry the
    /// name of the original (decision 0006).
    Script(const Script& other);
    Script& operator=(const Script& other);
    ///@}

    /// Releases the compiled form. An environment that is running it finishes its run.
    ~Script() override;

    /// Returns the interpreter that was chosen last, `INTERPRETER_UNKNOWN` for a new script.
    INTERPRETER getTargetInterpreter() const;

    /// Drops the compiled form and compiles for `interpreter` from here on.
    ///
    /// On failure: any value but `INTERPRETER_LUA` is logged (tag "Script") and disables the
    /// script.
    /// Compatibility: `getTargetInterpreter` still returns the earlier value then (decision 0006).
    void setTargetInterpreter(INTERPRETER interpreter);

    /// Returns the name, empty for a new script. Messages name the script by it.
    ///
    /// Valid until: the name changes or the script is destroyed.
    tbMemory::StringView getName() const;

    /// Replaces the name. The `ScriptManager` still lists the script under its old name; use
    /// `ScriptManager::rename` to change both.
    void setName(const tbMemory::StringView& name);

    /// Returns the source text, all of its bytes.
    ///
    /// Valid until: the sources change or the script is destroyed.
    tbMemory::StringView getSources() const;

    /// Replaces the source text; compiles nothing.
    void setSources(const tbMemory::StringView& sources);

    /// Compiles the sources up to their first NUL and returns whether that worked. Sources that are
    /// compiled code are refused like a syntax error.
    ///
    /// On failure: the script has no compiled form any more and `getLastCompilationResult` says
    /// why. A script with an interpreter logs the reason too (tag "LuaScript").
    bool load();

    /// Drops the compiled form. The last compilation result stays.
    void unload();

    /// Returns the outcome of the last `load`; a success if there was none.
    ///
    /// Valid until: `setTargetInterpreter` or an assignment is called, or the last copy is
    /// destroyed.
    const CompilationResult& getLastCompilationResult() const;

    /// Adds the members "name", "type" and "sources" to `node`, an object. Does nothing for null.
    ///
    /// Format: docs/script-declarations.md.
    void exportClassToTree(tbExport::Node* node) override;

    /// Takes interpreter and sources from the members "type" and "sources" of `node`; a member that
    /// is missing or no string is ignored. Compiles nothing. Does nothing for null.
    ///
    /// Format: docs/script-declarations.md.
    /// Compatibility: "name" is not read (decision 0006).
    void importClassFromTree(tbExport::Node* node) override;

private:
    friend struct ScriptAccess; // lends the compiled form to environments, which run it

    ScriptStrategy* _getStrategy() const;

    ScriptState* m_state; // owned
};

} // namespace tbScripts
