#pragma once

// Default arguments: values for the last parameters of a callable, which scripts may leave out.

#include "tbScripts/typed/Thunks.h"

namespace tbScripts
{

/// Values for the last parameters of a callable, in their order.
template <typename... D>
struct Defaults;

template <>
struct Defaults<>
{
    template <int I>
    const Defaults& at() const
    {
        return *this;
    }
};

template <typename First, typename... Others>
struct Defaults<First, Others...>
{
    First value;
    Defaults<Others...> others;

    template <int I>
    const auto& at() const
    {
        if constexpr (I <= 0)
            return value;
        else
            return others.template at<I - 1>();
    }
};

inline Defaults<> defaults()
{
    return {};
}

/// Makes default arguments: `bind(environment, "spawn", &spawn, defaults(10, "goblin"))`.
template <typename First, typename... Others>
auto defaults(First first, Others... others)
{
    return Defaults<First, Others...>{first, defaults(others...)};
}

namespace typed
{

template <typename C, typename R, typename I, typename D, typename... A>
struct DefaultedThunk;

template <typename C, typename R, Size... I, typename... D, typename... A>
struct DefaultedThunk<C, R, Indices<I...>, Defaults<D...>, A...>
{
    static constexpr int COUNT = sizeof...(A);
    static constexpr int FIRST_DEFAULT = COUNT - static_cast<int>(sizeof...(D));
    static_assert(
        FIRST_DEFAULT >= 0, "TobrelScripts: there are more default arguments than parameters");

    static_assert(
        ((static_cast<int>(I) < FIRST_DEFAULT || !isLValue<A> ||
          isConst<typename Referred<A>::Type>)&&...),
        "TobrelScripts: a parameter with a default argument is taken by value or const&");

    C callable;
    Defaults<D...> values;

    template <typename Type, int NUMBER>
    static BareOf<Type> read(Call& call, const Defaults<D...>& values)
    {
        using Value = BareOf<Type>;
        if constexpr (NUMBER >= FIRST_DEFAULT)
        {
            if (call.services.isNone(call, NUMBER + 1))
                return Value(values.template at<NUMBER - FIRST_DEFAULT>());
        }
        return Argument<Value>::read(call, NUMBER + 1);
    }

    static int run(Call& call, void* context)
    {
        auto& self = *static_cast<DefaultedThunk*>(context);
        if constexpr (isSame<R, void>)
        {
            self.callable(_passed<A, static_cast<int>(I)>(call, self.values)...);
            return 0;
        }
        else
            return Result<R, false>::push(
                call, self.callable(_passed<A, static_cast<int>(I)>(call, self.values)...));
    }

    static void destroy(void* context) { delete static_cast<DefaultedThunk*>(context); }

    static constexpr Parameter described(Parameter parameter, int number)
    {
        parameter.isOptional = parameter.isOptional || number >= FIRST_DEFAULT;
        return parameter;
    }

    static constexpr Parameter DESCRIBED[] = {
        ArgumentOf<R>::PARAMETER, described(ArgumentOf<A>::PARAMETER, static_cast<int>(I))...};

    static constexpr Signature SIGNATURE{&run, DESCRIBED, COUNT, nullptr};

private:
    // Objects without default are _passed as they are.
    template <typename Type, int NUMBER>
    static decltype(auto) _passed(Call& call, const Defaults<D...>& values)
    {
        if constexpr (NUMBER < FIRST_DEFAULT)
            return ArgumentOf<Type>::read(call, NUMBER + 1);
        else
            return read<Type, NUMBER>(call, values);
    }
};

template <typename C, typename... D>
BoundCallable defaultedCallable(C callable, const Defaults<D...>& values)
{
    static_assert(
        hasOneSignature<C>(0), "TobrelScripts: a callable with several signatures cannot be bound");
    using Type = TypeOfCallable<typename CallOperator<C, isClass<C>>::Type>;
    using Thunk = typename Type::template Defaulted<C, Defaults<D...>>;
    return {&Thunk::SIGNATURE, new Thunk{static_cast<C&&>(callable), values}, &Thunk::destroy};
}

} // namespace typed
} // namespace tbScripts
