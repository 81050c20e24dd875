#pragma once

#include <type_traits>

namespace tbScripts
{

/// Calls or reads a member of the object that is the first argument: what a `Callable` holds for a
/// pointer to a member.
template <typename T, typename Class>
struct MemberCallable
{
    T Class::*member; ///< never null

    /// Calls or reads the member of `object`: an object, a pointer or a wrapped reference.
    template <typename Object, typename... A>
    decltype(auto) operator()(Object&& object, A&&... arguments) const
    {
        return _call(_find(static_cast<Object&&>(object), 0), static_cast<A&&>(arguments)...);
    }

private:
    // The first that fits is taken: `int` before `long` before anything.
    template <
        typename Object,
        typename = std::enable_if_t<std::is_base_of_v<Class, std::remove_reference_t<Object>>>>
    static Object&& _find(Object&& object, int)
    {
        return static_cast<Object&&>(object);
    }

    template <typename Pointer>
    static auto _find(Pointer&& pointer, long) -> decltype(*static_cast<Pointer&&>(pointer))
    {
        return *static_cast<Pointer&&>(pointer);
    }

    template <typename Wrapper>
    static auto _find(Wrapper&& wrapper, ...) -> decltype(wrapper.get())
    {
        return wrapper.get();
    }

    template <typename Object, typename... A>
    decltype(auto) _call(Object&& object, A&&... arguments) const
    {
        if constexpr (std::is_function_v<T>)
            return (static_cast<Object&&>(object).*member)(static_cast<A&&>(arguments)...);
        else
            return (static_cast<Object&&>(object).*member);
    }
};

} // namespace tbScripts
