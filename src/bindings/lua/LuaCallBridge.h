#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaCallbackScope.h"
#include "core/lua/LuaStateHandle.h"

#include "tbScripts/FunctionParameter.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <string>

namespace tbScripts::lua
{

class LuaScriptObjectInterpreterView;

/// Carries values between stack slots and parameters, during one callback scope.
///
/// Errors travel as exceptions of type `std::string` that hold the message; whoever calls the
/// bridge decides what becomes of them. `functionName` is used in messages only.
class LuaCallBridge
{
public:
    explicit LuaCallBridge(LuaCallbackScope& scope);

    /// Returns whether the value in slot `stackIndex` is of the kind that `parameter` expects.
    bool accepts(const FunctionParameter& parameter, int stackIndex) const;

    /// Fills `parameter` from slot `stackIndex`, as its kind says.
    ///
    /// On failure: throws the message; the parameter holds the empty value of its kind.
    /// Stack: +0. A number that is read as a text becomes one in its slot.
    void readParameter(
        FunctionParameter& parameter,
        int stackIndex,
        const tbMemory::StringView& functionName) const;

    /// Pushes the value of `parameter` and returns the number of values pushed, 0 or 1.
    ///
    /// On failure: a kind that is no kind is logged (tag "LuaFunction") and pushes nothing.
    int pushParameter(
        const FunctionParameter& parameter, const tbMemory::StringView& functionName) const;

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
    // Gives up a text, user type or reference that the storage was prepared for, so that a number
    // or truth value may be written over it.
    static void _makeRoomForPlainValue(FunctionParameter& parameter);

    bool _acceptsInstance(const FunctionParameter& parameter, int stackIndex) const;

    void _readNumber(
        FunctionParameter& parameter,
        int stackIndex,
        const tbMemory::StringView& functionName) const;

    void _readText(
        FunctionParameter& parameter,
        int stackIndex,
        const tbMemory::StringView& functionName) const;

    void _readUserType(
        FunctionParameter& parameter,
        int stackIndex,
        const tbMemory::StringView& functionName) const;

    void _readReference(
        FunctionParameter& parameter,
        int stackIndex,
        const tbMemory::StringView& functionName) const;

    // Lends the value to a view of `parameter`; one that nobody else holds is used again.
    void _lendView(FunctionParameter& parameter, int stackIndex) const;

    [[noreturn]] void _throwTypeMismatch(
        int stackIndex,
        const tbMemory::StringView& expectedTypeName,
        const tbMemory::StringView& functionName) const;

    int _pushUserType(const FunctionParameter& parameter) const;

    // Pushes the very script value that `view` looks at, if the script still owns `object` through
    // it: a second owning box would destroy the object twice.
    bool _pushOriginal(const LuaScriptObjectInterpreterView& view, const void* object) const;

    LuaCallbackScope& m_scope;
    lua_State* m_state;
};

} // namespace tbScripts::lua
