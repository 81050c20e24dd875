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

/// Copies values between stack slots and parameters, during one callback scope.
///
/// Compatibility: an input without value is not pushed, so that later ones move up (decision 0006).
///
/// On an error it throws the message as a `std::string`, which the caller handles.
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
    /// Stack: +0. A number that is read as a string becomes a string in its slot.
    void readParameter(FunctionParameter& parameter, int stackIndex) const
    {
        if (!_readFrequentKind(parameter, stackIndex))
            _read(parameter, stackIndex);
    }

    /// The same if the value is of the kind that `parameter` expects; if not, returns false and
    /// leaves `parameter` unchanged.
    bool readIfAccepted(FunctionParameter& parameter, int stackIndex) const
    {
        if (_readFrequentKind(parameter, stackIndex))
            return true;
        if (!accepts(parameter, stackIndex))
            return false;
        _read(parameter, stackIndex);
        return true;
    }

    /// Pushes the value of `parameter` and returns the number of pushed values, 0 or 1.
    /// Compatibility: a void value or a null object pushes nothing, so that later inputs move up
    /// (decision 0006).
    ///
    /// On failure: a number outside the enumeration is logged (tag "LuaFunction") and pushes
    /// nothing.
    int pushParameter(const FunctionParameter& parameter) const
    {
        if (parameter.getType() != PARAM_TYPE_DOUBLE)
            return _push(parameter);
        lua_pushnumber(m_state, parameter.getDouble());
        return 1;
    }

    /// Stores `object` in `parameter`, without view, whatever type was declared. Returns false if
    /// `parameter` is not of a user type.
    static bool writeObject(FunctionParameter& parameter, void* object);

    /// Stores `index` in `parameter`. Returns false if `parameter` is no `int`.
    static bool writeIndex(FunctionParameter& parameter, int index);

    /// Returns the message for a value of kind `actualType` where `expectedTypeName` was expected,
    /// with the current line of the calling script; -1 if no script is calling.
    static tbMemory::String buildTypeMismatchMessage(
        lua_State* state,
        lua_Debug& activation,
        int actualType,
        const tbMemory::StringView& expectedTypeName,
        const tbMemory::StringView& functionName);

    /// Returns `number` as a decimal string.
    static std::string intToDecimal(int number);

private:
    // Reads a number, or an instance of the expected type. For all other values, returns false and
    // leaves `parameter` unchanged (docs/decisions/0017-checks-that-a-call-can-skip.md).
    bool _readFrequentKind(FunctionParameter& parameter, int stackIndex) const
    {
        const FUNCTION_PARAMETER_TYPE type = parameter.getType();
        if (type == PARAM_TYPE_DOUBLE)
            return _readPlainDouble(parameter, stackIndex);
        const bool isUserType = type == PARAM_TYPE_USER_TYPE || type == PARAM_TYPE_USER_TYPE_OWNED;
        return isUserType && _readExpectedInstance(parameter, stackIndex);
    }

    // Returns false for a value that is or may be no number.
    bool _readPlainDouble(FunctionParameter& parameter, int stackIndex) const
    {
        const double number = lua_tonumber(m_state, stackIndex);
        if (number == 0.0)
            return false; // a value that is no number reads as 0
        FunctionParameterAccess::storeDouble(parameter, number);
        return true;
    }

    // Returns false unless the value is an instance, not destroyed, of the one expected type, which
    // still exists.
    bool _readExpectedInstance(FunctionParameter& parameter, int stackIndex) const;

    void _read(FunctionParameter& parameter, int stackIndex) const;

    int _push(const FunctionParameter& parameter) const;

    // Returns the instance in slot `stackIndex`; without box if there is none of the expected type,
    // or if its object was destroyed.
    LuaInstance _expectedInstanceAt(const FunctionParameter& parameter, int stackIndex) const;

    void _readNumber(FunctionParameter& parameter, int stackIndex) const;

    void _readText(FunctionParameter& parameter, int stackIndex) const;

    void _readUserType(FunctionParameter& parameter, int stackIndex) const;

    void _readReference(FunctionParameter& parameter, int stackIndex) const;

    // Gives `parameter` a view of the value; reuses the old view if nothing else holds it.
    void _lendView(FunctionParameter& parameter, int stackIndex) const;

    [[noreturn]] void
    _throwTypeMismatch(int stackIndex, const tbMemory::StringView& expectedTypeName) const;

    int _pushUserType(const FunctionParameter& parameter) const;

    // Pushes the very script value that `parameter` was read from, if its view still shows that
    // value and the instance owns `object`. If not, returns false and pushes nothing.
    bool _pushOriginal(const FunctionParameter& parameter, const void* object) const;

    // Logs once that the type of a pushed value is not declared.
    void _reportUnknownType(const tbMemory::StringView& typeName) const;

    LuaCallbackScope& m_scope;
    lua_State* m_state;
    const tbMemory::String& m_functionName;
};

} // namespace tbScripts::lua
