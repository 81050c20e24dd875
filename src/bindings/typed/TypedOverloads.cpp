#include "bindings/BindingMessages.h"
#include "bindings/TypedCallable.h"
#include "core/LogSources.h"

#include "tbScripts/LogManager.h"

#include <memory>
#include <vector>

// How overloads are chosen: docs/typed-bindings.md#overloads

namespace tbScripts::typed
{

namespace
{

// Several callables with one name, in the order of their declaration.
struct Overloads
{
    std::vector<Counted<TypedCallable>> callables;
};

bool isNumber(KIND kind)
{
    return kind == KIND::INT || kind == KIND::FLOAT || kind == KIND::DOUBLE;
}

// Returns whether scripts cannot tell apart what the two parameters take.
bool areAlike(const Parameter& one, const Parameter& other)
{
    if (isNumber(one.kind) && isNumber(other.kind))
        return true;
    return one.kind == other.kind && one.type == other.type && one.accepts == other.accepts;
}

bool areAlike(const Signature& one, const Signature& other)
{
    if (one.count != other.count)
        return false;
    for (int i = 1; i <= one.count; ++i)
    {
        if (!areAlike(one.parameters[i], other.parameters[i]))
            return false;
    }
    return true;
}

bool fits(Call& call, const Parameter& parameter, int index, bool isStrict)
{
    if (parameter.isOptional && call.services.isNone(call, index))
        return true;
    if (parameter.kind == KIND::OTHER)
        return parameter.accepts(call, index, isStrict);
    return isStrict ? call.services.isOfKind(call, index, parameter.kind, parameter.type)
                    : call.services.accepts(call, index, parameter);
}

bool takesAny(const Signature& signature)
{
    return signature.count > 0 && signature.parameters[signature.count].kind == KIND::REST;
}

bool fits(Call& call, const Signature& signature, bool isStrict)
{
    if (call.services.countArguments(call) > signature.count && !takesAny(signature))
        return false;
    for (int i = 1; i <= signature.count; ++i)
    {
        if (!fits(call, signature.parameters[i], i, isStrict))
            return false;
    }
    return true;
}

const TypedCallable* choose(Call& call, const Overloads& overloads)
{
    for (const bool isStrict : {true, false})
    {
        for (const Counted<TypedCallable>& callable : overloads.callables)
        {
            if (fits(call, callable->getSignature(), isStrict))
                return callable.get();
        }
    }
    return nullptr;
}

int runOverloads(Call& call, void* context)
{
    const auto& overloads = *static_cast<const Overloads*>(context);
    const TypedCallable* const chosen = choose(call, overloads);
    if (!chosen)
    {
        call.services.refuse(call, 1, "arguments of one of the overloads");
        return 0; // not reached
    }
    call.signature = &chosen->getSignature();
    return chosen->getSignature().run(call, chosen->getContext());
}

void destroyOverloads(void* context)
{
    delete static_cast<Overloads*>(context);
}

// Destroys the callables that nobody has taken over yet.
struct Untaken
{
    ~Untaken()
    {
        for (; first < last; ++first)
        {
            if (first->destroy)
                first->destroy(first->context);
        }
    }

    const BoundCallable* first;
    const BoundCallable* last;
};

// Returns whether one of the callables takes the same arguments.
bool isTaken(const Overloads& overloads, const Signature& signature)
{
    for (const Counted<TypedCallable>& known : overloads.callables)
    {
        if (areAlike(known->getSignature(), signature))
            return true;
    }
    return false;
}

constexpr Parameter ANY_ARGUMENTS[] = {{KIND::OTHER}, {KIND::REST}};
constexpr Signature OVERLOADS{&runOverloads, ANY_ARGUMENTS, 1, nullptr};

} // namespace

BoundCallable bindOverloads(const BoundCallable* callables, int count)
{
    Untaken untaken{callables, callables + count};
    auto overloads = std::make_unique<Overloads>();
    while (untaken.first < untaken.last)
    {
        const Counted<TypedCallable> callable = holdTyped(*untaken.first++);
        if (!callable)
            continue;
        if (isTaken(*overloads, callable->getSignature()))
            LogManager::getInstance()->log(messages::overloadIsAmbiguous(), LOG_SOURCE_FUNCTION);
        else
            overloads->callables.push_back(callable);
    }
    return {&OVERLOADS, overloads.release(), &destroyOverloads};
}

} // namespace tbScripts::typed
