#pragma once

#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/FunctionParameterAccess.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaCallbackScope.h"

#include "tbScripts/FunctionParameter.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <string>

namespace tbScripts::lua
{

class LuaScriptObjectInterpreterView;

/// Carries values between stack slots and parameters, during one callback scope.
///
/// Compatibility: an input without value is not pushed, so that later ones move up (decision 0006).
///
/// Errors travel as exceptions of type `std::string` that hold the message; whoever calls the
/// bridge decides what becomes of them.
class LuaCallBridge
{
public:
    /// `functionName` names the call in messages; it outlives the bridge.
    LuaCallBridge(LuaCallbackScope& scope, const tbMemory::String& functionName)
        : m_scope(scope)
        , m_state(scope.getThread())
        , m_functionName(functionName)
    {
    }

    /// Returns whether the value in slot `stackIndex` is of the kind that `parameter` expects.
    bool accepts(const FunctionParameter& parameter, int stackIndex) const;

    /// Fills `parameter` from slot `stackIndex`, as its kind says.
    ///
    /// On failure: throws the message; the parameter holds the empty value of its kind.
    /// Stack: +0. A number that is read as a text becomes one in its slot.
    void readParameter(FunctionParameter& parameter, int stackIndex) const
    {
        if (!_readFrequentKind(parameter, stackIndex))
            _read(parameter, stackIndex);
    }

    /// Does so if the value is of the kind that `parameter` expects. Returns false, and leaves
    /// `parameter` as it is, if not.
    bool readIfAccepted(FunctionParameter& parameter, int stackIndex) const
    {
        if (_readFrequentKind(parameter, stackIndex))
            return true;
        if (!accepts(parameter, stackIndex))
            return false;
        _read(parameter, stackIndex);
        return true;
    }

    /// Pushes the value of `parameter` and returns the number of values pushed, 0 or 1.
    ///
    /// On failure: a kind that is no kind is logged (tag "LuaFunction") and pushes nothing.
    int pushParameter(const FunctionParameter& parameter) const
    {
        if (parameter.getType() != PARAM_TYPE_DOUBLE)
            return _push(parameter);
        lua_pushnumber(m_state, parameter.getDouble());
        return 1;
    }

    /// Makes `parameter` designate `object`, without view, whatever type it was declared with.
    /// Returns false if it is not of a user type.
    static bool writeObject(FunctionParameter& parameter, void* object);

    /// Writes `index` into `parameter`. Returns false if it is no `int`.
    static bool writeIndex(FunctionParameter& parameter, int index);

    /// Returns the message for a value of kind `actualType` where `expectedTypeName` was expected,
    /// with the line that the calling script is at; -1 if no script is calling.
    static tbMemory::String buildTypeMismatchMessage(
        lua_State* state,
        lua_Debug& activation,
        int actualType,
        const tbMemory::StringView& expectedTypeName,
        const tbMemory::StringView& functionName);

    /// Returns the decimal text of `number`.
    static std::string intToDecimal(int number);

private:
    // Reads a number that is one, or an instance of the expected type. Returns false, and leaves
    // `parameter` as it is, for all the rest.
    bool _readFrequentKind(FunctionParameter& parameter, int stackIndex) const
    {
        const FUNCTION_PARAMETER_TYPE type = parameter.getType();
        if (type == PARAM_TYPE_DOUBLE)
            return _readPlainDouble(parameter, stackIndex);
        const bool isUserType = type == PARAM_TYPE_USER_TYPE || type == PARAM_TYPE_USER_TYPE_OWNED;
        return isUserType && _readExpectedInstance(parameter, stackIndex);
    }

    // Returns false for what is or may be none.
    bool _readPlainDouble(FunctionParameter& parameter, int stackIndex) const
    {
        const double number = lua_tonumber(m_state, stackIndex);
        if (number == 0.0)
            return false; // anything else reads as that
        FunctionParameterAccess::storeDouble(parameter, number);
        return true;
    }

    // Returns false for any other value than a living instance of the one type that is expected,
    // which lives too.
    bool _readExpectedInstance(FunctionParameter& parameter, int stackIndex) const;

    void _read(FunctionParameter& parameter, int stackIndex) const;

    int _push(const FunctionParameter& parameter) const;

    // Returns the instance in slot `stackIndex`; without box if there is none that lives and is of
    // the expected type.
    LuaInstance _expectedInstanceAt(const FunctionParameter& parameter, int stackIndex) const;

    void _readNumber(FunctionParameter& parameter, int stackIndex) const;

    void _readText(FunctionParameter& parameter, int stackIndex) const;

    void _readUserType(FunctionParameter& parameter, int stackIndex) const;

    void _readReference(FunctionParameter& parameter, int stackIndex) const;

    // Lends the value to a view of `parameter`; one that nobody else holds is used again.
    void _lendView(FunctionParameter& parameter, int stackIndex) const;

    [[noreturn]] void
    _throwTypeMismatch(int stackIndex, const tbMemory::StringView& expectedTypeName) const;

    int _pushUserType(const FunctionParameter& parameter) const;

    // Pushes the very script value that `parameter` was read from, if its view still looks at it
    // and the script owns `object` through it. Returns false, and pushes nothing, if not.
    bool _pushOriginal(const FunctionParameter& parameter, const void* object) const;

    // Logs once that nobody declared the type of a value that was pushed.
    void _reportUnknownType(const tbMemory::StringView& typeName) const;

    LuaCallbackScope& m_scope;
    lua_State* m_state;
    const tbMemory::String& m_functionName;
};

} // namespace tbScripts::lua
