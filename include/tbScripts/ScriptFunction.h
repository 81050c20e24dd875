#pragma once

#include "tbScripts/ExecutionResult.h"
#include "tbScripts/ScriptObjectReference.h"
#include "tbScripts/typed/Declarations.h"

namespace tbScripts
{

namespace typed
{

/// A call of the host into a script: what it passes, and where the results go.
struct OutgoingCall
{
    int (*push)(Call& call, void* const* arguments); // returns how many values
    void (*read)(Call& call, int first, void* result);
    void* const* arguments;
    void* result;
};

/// Calls `function` and returns whether it completed with results that could be read. On failure:
/// logged (tag "LuaEnvironment"), and `result` says why. An empty `function` fails too.
TBSCRIPTS_API bool callScript(
    const ScriptObjectReference& function, const OutgoingCall& call, ExecutionResult& result);

/// The script function in global `name`, an empty reference for other values.
TBSCRIPTS_API ScriptObjectReference findScriptFunction(Environment& environment, const char* name);

template <typename I, typename... A>
struct OutgoingArguments;

template <Size... I, typename... A>
struct OutgoingArguments<Indices<I...>, A...>
{
    static int push(Call& call, [[maybe_unused]] void* const* arguments)
    {
        int count = 0;
        call.services.reserve(call, static_cast<int>(sizeof...(A)) + 4);
        ((count += Result<A, false>::push(
              call, static_cast<A&&>(*static_cast<typename Referred<A>::Type*>(arguments[I])))),
         ...);
        return count;
    }
};

template <typename R>
void readResult(Call& call, int first, void* result)
{
    *static_cast<R*>(result) = ArgumentOf<R>::read(call, first);
}

inline void readNothing(Call& /*call*/, int /*first*/, void* /*result*/) {}

template <typename R>
inline constexpr bool canBeAssigned = __is_assignable(R&, R);
template <>
inline constexpr bool canBeAssigned<void> = true;

template <typename R>
constexpr bool checkOutgoingResult()
{
    static_assert(
        !isLValue<R> && !isRValue<R>,
        "TobrelScripts: a script's result is returned by value or as a pointer");
    static_assert(
        !isTextView<BareOf<R>>(0) && !isSame<R, const char*>,
        "TobrelScripts: a script's string has to be copied; take std::string");
    static_assert(
        isSame<R, void> || !isClass<R> || __is_constructible(R),
        "TobrelScripts: a result without default cannot stand for a failed call; take a pointer");
    static_assert(
        canBeAssigned<R>, "TobrelScripts: a result that cannot be assigned is taken as a pointer");
    return checkType<BareOf<R>>();
}

} // namespace typed

template <typename Signature>
class ScriptFunction;

/// A function of a script that the host calls like one of its own. `R` is what the first result is
/// read as, or a tuple for several.
///
/// A call that fails is logged (tag "LuaEnvironment"), returns a value of `R` without arguments,
/// and leaves the reason in `getLastResult`. Copies share the script's function. It may outlive its
/// environment: calls fail then.
///
/// @code
/// const ScriptFunction<double(Unit&, int)> rate(environment, "rate");
/// Unit unit("Bob", 4);
/// const double rating = rate(unit, 3);
/// @endcode
template <typename R, typename... A>
class ScriptFunction<R(A...)>
{
    static_assert((typed::checkOutgoingResult<R>() && ... && typed::checkResult<A>()));

public:
    /// Creates one that designates nothing.
    ScriptFunction() = default;

    /// Designates the function that global `name` holds now; nothing if it holds another value.
    ScriptFunction(Environment& environment, const char* name)
        : m_reference(typed::findScriptFunction(environment, name))
    {
    }

    /// Designates the value of `reference`.
    explicit ScriptFunction(const ScriptObjectReference& reference)
        : m_reference(reference)
    {
    }

    /// Returns whether it designates a function.
    explicit operator bool() const { return m_reference.getInterpreterReference() != nullptr; }

    /// Calls the function with values as `bind` passes results: objects by value become the
    /// script's, those by reference or pointer stay the host's.
    R operator()(A... arguments) const
    {
        using Arguments = typed::OutgoingArguments<typed::IndicesUpTo<sizeof...(A)>, A...>;
        void* const addresses[sizeof...(A) + 1] = {_addressOf(arguments)..., nullptr};
        if constexpr (typed::isSame<R, void>)
        {
            typed::callScript(
                m_reference, {&Arguments::push, &typed::readNothing, addresses, nullptr}, m_result);
        }
        else
        {
            R result{};
            if (!typed::callScript(
                    m_reference,
                    {&Arguments::push, &typed::readResult<R>, addresses, &result},
                    m_result))
                return R{};
            return result;
        }
    }

    /// Returns how the last call through this object ended.
    const ExecutionResult& getLastResult() const { return m_result; }

    /// Returns the script's function.
    const ScriptObjectReference& getReference() const { return m_reference; }

    /// The same, to designate another one.
    ScriptObjectReference& editReference() { return m_reference; }

private:
    template <typename T>
    static void* _addressOf(T& argument)
    {
        return const_cast<typed::BareOf<T>*>(&argument);
    }

    ScriptObjectReference m_reference;
    mutable ExecutionResult m_result;
};

} // namespace tbScripts
