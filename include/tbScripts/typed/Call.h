#pragma once

// What the typed layer and the library agree on: the descriptions that the compiler of a host makes
// of its functions, and the services by which a call reads its arguments. No header of the standard
// library: what a host pays for its bindings in compile time begins here.

#include "tbScripts/Api.h"

namespace tbScripts
{

class ScriptObjectReference;

namespace typed
{

using Size = decltype(sizeof(0));
using Integer = long long;
using Natural = unsigned long long;

/// Identity of a type of the host among the user types: its address. Shared libraries that are
/// loaded with hidden symbols have one each.
struct TypeId
{
    char unused;
};

template <typename T>
inline constexpr TypeId TYPE_ID{0};

/// What a parameter or a result is for scripts.
enum class KIND : unsigned char
{
    NOTHING, // no result
    BOOL,    // any value
    INT,     // without fraction, the nearest one in range
    FLOAT,
    DOUBLE,
    TEXT,          // with all its bytes
    OBJECT,        // an instance of `type`
    OBJECT_OR_NIL, // the same, or nil
    FUNCTION,      // a script function
    REFERENCE,     // a script function or a table
    OTHER,         // what `accepts` accepts
    REST           // all arguments from here on
};

struct Call;

/// A constant description of a parameter or result.
struct Parameter
{
    KIND kind = KIND::NOTHING;
    bool isOptional = false;        // nil will do, and so will no argument
    const TypeId* type = nullptr;   // of an object
    const char* expected = nullptr; // of other kinds: what messages call them

    /// Of other kinds: whether the value at `index` can be read. If `isStrict`, only without
    /// converting a string to a number or the reverse, which is how overloads are chosen.
    bool (*accepts)(Call& call, int index, bool isStrict) = nullptr;

    bool isTaken = false; // the object leaves the script, which has to own it
};

/// A string of a script, or of the host for scripts.
struct Text
{
    const char* data; // null for none
    Size size;
};

/// Says whether a leaf runs in an environment: meanwhile the library refuses its operations. An
/// entry sets `running` to 1 before it calls the function, and to 0 after it.
struct LeafGuard
{
    int running;
};

/// A function that compiled script code may call by itself, by the rules of C. It promises neither
/// to call the library nor to throw.
///
/// `entry` takes a `LeafGuard*`, and then each parameter as its kind says: BOOL as int (0 or 1),
/// INT as int, FLOAT, DOUBLE, TEXT as `const char*` and `size_t`, OBJECT and OBJECT_OR_NIL as
/// `void*`. The result is the same, but BOOL is int; a TEXT is written to a `Text*`, the last
/// parameter, and stays valid until the next leaf of the same thread; other kinds have no leaf.
/// It catches what the function throws, and numbers pass through `asNumber` (see LeafResult.h).
struct Leaf
{
    void (*entry)();
};

/// A plain data member: where it lies in the object, and whether it is a bool, int, float or
/// double.
struct Member
{
    Size offset;
    KIND kind;
    bool isReadOnly;
};

/// A constant description of a callable.
struct Signature
{
    /// Reads the arguments, calls the host and pushes the results; returns how many. `context` is
    /// the callable, null for one that the compiler knows.
    int (*run)(Call& call, void* context);

    const Parameter* parameters; // the result's first, then `count`
    unsigned char count;
    const Leaf* leaf; // null if there is none
};

/// How a call reaches its values. Indices count from 1, as arguments do; those of values that the
/// call itself has pushed follow. What does not fit is thrown as a message for the script, which
/// only the library catches.
struct Services
{
    double (*toDouble)(Call& call, int index);
    float (*toFloat)(Call& call, int index);
    int (*toInt)(Call& call, int index);
    bool (*toBool)(Call& call, int index);
    Text (*toText)(Call& call, int index);
    void* (*toObject)(Call& call, int index, const TypeId& type);       // never null
    void* (*toObjectOrNull)(Call& call, int index, const TypeId& type); // null for nil
    void (*toFunction)(Call& call, int index, ScriptObjectReference& reference);
    void (*toReference)(Call& call, int index, ScriptObjectReference& reference);

    /// The number at `index` without fraction, as a number of 64 bits without or with sign.
    Natural (*toInteger)(Call& call, int index);

    /// Takes the object away from the script, which must own it.
    void* (*takeObject)(Call& call, int index, const TypeId& type);

    /// The holder of that type with which the instance at `index` was made.
    void* (*toHolder)(Call& call, int index, const TypeId& type, const TypeId& holderType);

    /// Throws the message for the first argument that does not fit, before any is read or taken.
    void (*check)(Call& call);

    /// Throws the message for the value at `index`, which is not what is `expected`.
    void (*refuse)(Call& call, int index, const char* expected);

    int (*countArguments)(Call& call);
    void (*reserve)(Call& call, int count); // room for that many values
    bool (*isNone)(Call& call, int index);  // nil or no argument
    bool (*isOfKind)(Call& call, int index, KIND kind, const TypeId* type); // strictly

    /// Whether the value can be read as `parameter` says.
    bool (*accepts)(Call& call, int index, const Parameter& parameter);

    /// Whether the value is a number, or reads as one, between two that are powers of two or 0.
    bool (*isInteger)(Call& call, int index, double lowest, double beyond, bool isStrict);

    /// The same for an enumeration; if its values are declared, whether it is one of them.
    bool (*isEnumValue)(Call& call, int index, const TypeId& type);

    void (*pushNil)(Call& call);
    void (*pushBool)(Call& call, bool value);
    void (*pushDouble)(Call& call, double value);
    void (*pushInteger)(Call& call, Integer value); // throws if scripts have no such number
    void (*pushNatural)(Call& call, Natural value); // the same
    void (*pushText)(Call& call, Text text);        // null is nil
    void (*pushReference)(Call& call, const ScriptObjectReference& reference);

    /// Pushes an instance for an object of the host; nil for null.
    void (*pushObject)(Call& call, void* object, const TypeId& type);

    /// The same for an object that is part of the one at `index`, which is to live as long.
    void (*pushPart)(Call& call, void* object, const TypeId& type, int index);

    /// Pushes an instance that is to own an object, in two steps: the first may fail.
    void (*beginOwned)(Call& call, const TypeId& type);
    void (*endOwned)(Call& call, void* object);

    /// The same for an object that others own too: `release(holder)` gives this share up.
    void (*endShared)(
        Call& call,
        void* object,
        void* holder,
        const TypeId& holderType,
        void (*release)(void* holder));

    // Tables, without metamethods.
    int (*pushTable)(Call& call, int elements, int fields); // returns its index
    void (*setElement)(Call& call, int table, int number);  // takes the value on top
    void (*setField)(Call& call, int table);                // takes the key, and the value on top
    int (*getLength)(Call& call, int table);
    int (*pushElement)(Call& call, int table, int number); // returns the index of the value

    /// Begins a walk over fields; returns the index of the key. `pushNext` pushes a copy of the
    /// next key and its value behind it, until there is none left and the key is gone.
    int (*beginFields)(Call& call);
    bool (*pushNext)(Call& call, int table, int key);
    void (*drop)(Call& call, int count);
};

/// A running call. The interpreter's side is derived from it.
struct Call
{
    const Services& services;
    const Signature* signature;
};

} // namespace typed
} // namespace tbScripts
