#pragma once

// The typed layer: functions, types and enumerations of the host, declared by what the compiler
// knows of them. It stands on the classes that this library declares with, `Function`, `UserType`
// and `Namespace`; both can be mixed in one environment, one namespace and one type.
//
// docs/guide/typed-bindings.md shows it by examples; docs/typed-bindings.md lists which types
// cross, and how.

#include "tbScripts/typed/Declarations.h"
#include "tbScripts/typed/Defaults.h"
#include "tbScripts/typed/Leaves.h"
#include "tbScripts/typed/Members.h"

namespace tbScripts
{

/// Marks a function as a leaf, where a callable is expected. It promises neither to call the
/// library nor to throw; so compiled script code may call it by itself, many times faster. A leaf
/// that calls the library all the same gets the neutral values, one that throws returns one; both
/// are logged.
///
/// @code
/// bind(environment, "quarter", leaf<&quarter>);
/// @endcode
template <auto F>
inline constexpr typed::LeafMark<F> leaf{};

///@{
/// Binds `callable`, a lambda, another function object or a pointer to a function, as the function
/// `name` of `scope`, an `Environment` or a `Namespace`, and returns it; null on failure. What the
/// callable takes and returns says what scripts pass and get.
///
/// An argument that does not fit is a script error with the message of declared functions. A
/// `std::string` or `std::exception` that the callable throws becomes one as well.
/// Ownership: as for `Environment::setFunc`; the function owns the callable.
///
/// @code
/// bind(environment, "halve", [](double n) { return n / 2; });
/// @endcode
template <typename Scope, typename Callable>
Function* bind(Scope& scope, const char* name, Callable&& callable)
{
    return typed::bindFunction(
        scope, name, typed::callableFor<void>(static_cast<Callable&&>(callable)));
}

/// The same; scripts may leave out the last arguments, or pass nil for them.
template <typename Scope, typename Callable, typename... D>
Function* bind(Scope& scope, const char* name, Callable callable, const Defaults<D...>& values)
{
    return typed::bindFunction(
        scope, name, typed::defaultedCallable(static_cast<Callable&&>(callable), values));
}

/// The same for a function that the compiler knows: `bind<&halve>(environment, "halve")`. With
/// several, the arguments of each call choose between them (see docs/typed-bindings.md).
template <auto F, auto... Others, typename Scope>
Function* bind(Scope& scope, const char* name)
{
    if constexpr (sizeof...(Others) == 0)
        return typed::bindFunction(scope, name, {&typed::FunctionSignature<F>::SIGNATURE});
    else
        return typed::bindFunction(scope, name, typed::overloads<F, Others...>());
}

/// The same for a member function of `object`, which scripts call without it. Ownership: the
/// host's; `object` outlives the function.
template <auto F, typename Scope, typename Self>
Function* bind(Scope& scope, const char* name, Self& object)
{
    using Object = typed::BareOf<Self>;
    return typed::bindFunction(
        scope,
        name,
        {&typed::MethodOnSignature<F, Object>::SIGNATURE, const_cast<Object*>(&object), nullptr});
}

///@}

///@{
/// Says in a line what a bound function does, for those who write scripts, and names its
/// parameters. Returns `function`, null if it is null or not typed.
template <int N>
Function* describe(Function* function, const char* text, const char* const (&parameterNames)[N])
{
    return typed::describe(function, text, parameterNames, N);
}

inline Function* describe(Function* function, const char* text)
{
    return typed::describe(function, text, nullptr, 0);
}

///@}

/// Makes one callable of several, which differ in what they take: the arguments of each call
/// choose.
template <typename... Callables>
typed::OwnedCallable overload(Callables&&... callables)
{
    typed::OwnedCallable owned[] = {
        typed::callableFor<void>(static_cast<Callables&&>(callables))...};
    typed::BoundCallable all[sizeof...(Callables)];
    for (typed::Size i = 0; i < sizeof...(Callables); ++i)
        all[i] = owned[i].release();
    return typed::bindOverloads(all, static_cast<int>(sizeof...(Callables)));
}

/// Declares what a user type offers, member by member. Does nothing if the type could not be
/// declared.
///
/// `F` is a member of `T` or of a base class, or a function that takes the instance as its first
/// parameter. Names, replacement and life are those of `UserType`.
template <typename T>
class TypeBinding
{
public:
    /// Declares members of `type`, which may be null.
    explicit TypeBinding(UserType* type)
        : m_type(type)
    {
    }

    /// Returns the user type, null if it could not be declared. Ownership as for `setUserType`.
    UserType* get() const { return m_type; }

    /// Lets instances be passed where `Base` is expected, and gives them its members. `Base` is
    /// bound before, with its operators.
    template <typename Base>
    TypeBinding& base()
    {
        static_assert(
            __is_base_of(Base, T) && !typed::isSame<Base, T>,
            "TobrelScripts: this is no base class of the type");
        if (m_type)
            typed::bindBase(
                *m_type,
                typed::TYPE_ID<Base>,
                [](void* object) -> void* { return static_cast<Base*>(static_cast<T*>(object)); });
        return *this;
    }

    /// Lets scripts create objects with `new`, whose arguments are those of the constructor.
    template <typename... A>
    TypeBinding& constructor()
    {
        if (m_type)
            typed::bindConstructor(
                *m_type, {&typed::ConstructorSignature<T, A...>::SIGNATURE, nullptr, nullptr});
        return *this;
    }

    /// The same by a callable that returns a `T`, or a unique or shared pointer to one.
    template <typename Callable>
    TypeBinding& constructor(Callable&& callable)
    {
        if (m_type)
            typed::bindConstructor(
                *m_type, typed::callableFor<T>(static_cast<Callable&&>(callable)));
        return *this;
    }

    ///@{
    /// Declares a method. Several, and the arguments of each call choose between them.
    template <auto F, auto... Others>
    TypeBinding& method(const char* name)
    {
        if (m_type)
            typed::bindMethod(*m_type, name, typed::methods<T, F, Others...>());
        return *this;
    }

    template <typename Callable>
    TypeBinding& method(const char* name, Callable&& callable)
    {
        if (m_type)
            typed::bindMethod(
                *m_type, name, typed::callableFor<T>(static_cast<Callable&&>(callable)));
        return *this;
    }

    template <typename Callable, typename... D>
    TypeBinding& method(const char* name, Callable callable, const Defaults<D...>& values)
    {
        if (m_type)
            typed::bindMethod(
                *m_type, name, typed::defaultedCallable(static_cast<Callable&&>(callable), values));
        return *this;
    }

    ///@}

    ///@{
    /// Declares a function of the type, which scripts call as `Name.function()`.
    template <auto F, auto... Others>
    TypeBinding& function(const char* name)
    {
        if (m_type)
            typed::bindMethod(*m_type, name, typed::functions<F, Others...>());
        return *this;
    }

    template <typename Callable>
    TypeBinding& function(const char* name, Callable&& callable)
    {
        return method(name, static_cast<Callable&&>(callable));
    }

    ///@}

    /// Declares a data member as a field. Constant members, and those that cannot be assigned, are
    /// read only. An object that is a member is shown in place, and keeps its instance alive.
    template <auto F>
    TypeBinding& field(const char* name)
    {
        using Type = typed::TypeOfMember<decltype(F)>;
        static_assert(Type::IS_KNOWN, "TobrelScripts: a field is a pointer to a data member");
        using Value = typename Type::Value;
        if constexpr (
            typed::isPlain<typed::BareOf<Value>> &&
            typed::hasFixedPlace<T, Value, typename Type::Class>(0))
            _bindMember(name, typed::memberAt<T, Value>(F));
        else if constexpr (__is_assignable(Value&, const typed::BareOf<Value>&))
            _bindProperty(
                name, {&typed::MemberThunk<F, T>::READ}, {&typed::MemberThunk<F, T>::WRITE});
        else
            _bindProperty(name, {&typed::MemberThunk<F, T>::READ}, {});
        return *this;
    }

    /// The same, but scripts cannot write it.
    template <auto F>
    TypeBinding& readOnly(const char* name)
    {
        using Type = typed::TypeOfMember<decltype(F)>;
        static_assert(Type::IS_KNOWN, "TobrelScripts: a field is a pointer to a data member");
        return property<F>(name);
    }

    /// Declares a field that a getter computes, a data member or a method, and a setter if there is
    /// one. Without setter, writing has no effect.
    template <auto Getter, auto... Setter>
    TypeBinding& property(const char* name)
    {
        static_assert(
            sizeof...(Setter) <= 1, "TobrelScripts: a property has one getter and one setter");
        if constexpr (sizeof...(Setter) == 0)
            _bindProperty(name, {_getterOf<Getter>()}, {});
        else
            _bindProperty(name, {_getterOf<Getter>()}, {&typed::METHOD_SIGNATURE<Setter, T>...});
        return *this;
    }

    ///@{
    /// The same by callables that take the instance first.
    template <typename Getter>
    TypeBinding& property(const char* name, Getter&& getter)
    {
        if (m_type)
            typed::bindProperty(
                *m_type, name, typed::callableFor<T>(static_cast<Getter&&>(getter)), {});
        return *this;
    }

    template <typename Getter, typename Setter>
    TypeBinding& property(const char* name, Getter&& getter, Setter&& setter)
    {
        if (!m_type)
            return *this;
        typed::OwnedCallable owned(typed::callableFor<T>(static_cast<Getter&&>(getter)));
        const typed::BoundCallable other = typed::callableFor<T>(static_cast<Setter&&>(setter));
        typed::bindProperty(*m_type, name, owned.release(), other);
        return *this;
    }

    ///@}

    ///@{
    /// Declares an operator. Its operands are what the callable takes: `2 * v` is a function of a
    /// number and an instance.
    template <auto F, auto... Others>
    TypeBinding& op(BUILT_IN_FUNCTION which)
    {
        if (m_type)
            typed::bindOperator(*m_type, which, typed::methods<T, F, Others...>());
        return *this;
    }

    template <typename Callable>
    TypeBinding& op(BUILT_IN_FUNCTION which, Callable&& callable)
    {
        if (m_type)
            typed::bindOperator(
                *m_type, which, typed::callableFor<T>(static_cast<Callable&&>(callable)));
        return *this;
    }

    ///@}

    ///@{
    /// Declares what `#instance` is, and what `instance(...)` does.
    template <auto F>
    TypeBinding& length()
    {
        return method<F>("__len");
    }

    template <auto F, auto... Others>
    TypeBinding& call()
    {
        return method<F, Others...>("__call");
    }

    template <typename Callable>
    TypeBinding& call(Callable&& callable)
    {
        return method("__call", static_cast<Callable&&>(callable));
    }

    ///@}

    ///@{
    /// Declares `instance[number]`, and `instance[number] = value` if there is a `Write`.
    template <auto Read, auto... Write>
    TypeBinding& index()
    {
        static_assert(
            sizeof...(Write) <= 1, "TobrelScripts: an index has one reader and one writer");
        if (m_type)
            typed::bindIndex(*m_type, {&typed::METHOD_SIGNATURE<Read, T>}, _optional<Write...>());
        return *this;
    }

    template <typename Read, typename Write = decltype(nullptr)>
    TypeBinding& index(Read&& read, Write&& write = nullptr)
    {
        if (!m_type)
            return *this;
        typed::OwnedCallable owned(typed::callableFor<T>(static_cast<Read&&>(read)));
        const typed::BoundCallable other =
            typed::optionalCallableFor<T>(static_cast<Write&&>(write));
        typed::bindIndex(*m_type, owned.release(), other);
        return *this;
    }

    ///@}

    ///@{
    /// Declares what names that are neither fields nor methods read as, and what writing them does.
    template <auto Read, auto... Write>
    TypeBinding& names()
    {
        static_assert(sizeof...(Write) <= 1, "TobrelScripts: names have one reader and one writer");
        if (m_type)
            typed::bindNames(*m_type, {&typed::METHOD_SIGNATURE<Read, T>}, _optional<Write...>());
        return *this;
    }

    template <typename Read, typename Write = decltype(nullptr)>
    TypeBinding& names(Read&& read, Write&& write = nullptr)
    {
        if (!m_type)
            return *this;
        typed::OwnedCallable owned(typed::callableFor<T>(static_cast<Read&&>(read)));
        const typed::BoundCallable other =
            typed::optionalCallableFor<T>(static_cast<Write&&>(write));
        typed::bindNames(*m_type, owned.release(), other);
        return *this;
    }

    ///@}

    ///@{
    /// Says in a line what the method `name` does, and names its parameters behind the instance.
    template <int N>
    TypeBinding&
    describe(const char* name, const char* text, const char* const (&parameterNames)[N])
    {
        if (m_type)
            typed::describe(typed::findMethod(*m_type, name), text, parameterNames, N);
        return *this;
    }

    TypeBinding& describe(const char* name, const char* text)
    {
        if (m_type)
            typed::describe(typed::findMethod(*m_type, name), text, nullptr, 0);
        return *this;
    }

    ///@}

    /// Lets scripts walk over the instance with `pairs`: over a table that `F` returns, a vector or
    /// a map. The walk does not see what changes meanwhile.
    template <auto F>
    TypeBinding& iteration()
    {
        if (m_type)
            typed::bindIteration(*m_type, {&typed::METHOD_SIGNATURE<F, T>});
        return *this;
    }

private:
    template <auto F>
    static constexpr const typed::Signature* _getterOf()
    {
        if constexpr (
            typed::TypeOfMember<decltype(F)>::IS_KNOWN &&
            !typed::TypeOfCallable<decltype(F)>::IS_KNOWN)
            return &typed::MemberThunk<F, T>::READ;
        else
            return &typed::METHOD_SIGNATURE<F, T>;
    }

    template <auto... F>
    static typed::BoundCallable _optional()
    {
        if constexpr (sizeof...(F) == 0)
            return {};
        else
            return {&typed::METHOD_SIGNATURE<F, T>...};
    }

    void _bindMember(const char* name, const typed::Member& member)
    {
        if (m_type)
            typed::bindMember(*m_type, name, member);
    }

    void _bindProperty(
        const char* name, const typed::BoundCallable& getter, const typed::BoundCallable& setter)
    {
        if (m_type)
            typed::bindProperty(*m_type, name, getter, setter);
    }

    UserType* m_type;
};

/// Declares `name` in `scope`, an `Environment` or a `Namespace`, as the user type for objects of
/// type `T`. Scripts destroy the objects that they own with `delete`; until a constructor is
/// declared, they create none.
///
/// A name that was declared before is declared anew, as by `setUserType`.
///
/// @code
/// bindType<Unit>(environment, "game::Unit")
///     .base<Entity>()
///     .constructor<std::string, int>()
///     .method<&Unit::hurt>("hurt")
///     .field<&Unit::health>("health")
///     .property<&Unit::getName, &Unit::setName>("name");
/// @endcode
template <typename T, typename Scope>
TypeBinding<T> bindType(Scope& scope, const char* name)
{
    static_assert(
        typed::isObjectClass<T>(),
        "TobrelScripts: only a class or struct of the host can be a user type");
    UserType* const type = typed::bindUserType(scope, name, typed::TYPE_ID<T>);
    if (type)
        typed::bindDestructor(*type, typed::destructorOf<T>());
    return TypeBinding<T>(type);
}

/// A value of an enumeration and its name in scripts.
template <typename T>
struct EnumValue
{
    const char* name; ///< zero-terminated
    T value;          ///< of the host
};

/// Declares `name` in `scope` as a table with the values of an enumeration: numbers by their names,
/// names by their numbers. From here on scripts can pass no other number where the host takes a
/// `T`. Returns false on failure.
///
/// @code
/// bindEnum<COLOR>(environment, "Color", {{"RED", COLOR::RED}, {"BLUE", COLOR::BLUE}});
/// @endcode
template <typename T, int N, typename Scope>
bool bindEnum(Scope& scope, const char* name, const EnumValue<T> (&values)[N])
{
    static_assert(__is_enum(T), "TobrelScripts: this is no enumeration");
    typed::Enumerator enumerators[N];
    for (int i = 0; i < N; ++i)
        enumerators[i] = {values[i].name, static_cast<typed::Integer>(values[i].value)};
    return typed::bindEnumeration(scope, name, typed::TYPE_ID<T>, enumerators, N);
}

} // namespace tbScripts
