#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"
#include "tbScripts/ScriptObjectReference.h"
#include "tbScripts/ScriptObjectView.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tbScripts
{

class ScriptObjectInterpreterView;

/// Tagged value that crosses the border between host and script.
///
/// A read as another kind than its own returns the neutral value (false, 0, empty, null), never
/// another kind's bytes. No operation reports an error.
///
/// @code
/// const FunctionParameter five = 5;
/// std::cout << five.getInt() << ' ' << five.getDouble() << '\n'; // nothing is converted
/// @endcode
class TBSCRIPTS_API FunctionParameter
{
public:
    /// The result of a host function that has none. Usable before and after `main`.
    static const FunctionParameter VOID;

    /// Creates a value of kind `PARAM_TYPE_VOID`. It is inline and constexpr, so that `VOID` is
    /// initialised before any static object of a host.
    constexpr FunctionParameter() noexcept
        : m_storage()
        , m_type(PARAM_TYPE_VOID)
        , m_live(MEMBER::NONE)
        , m_acceptsAnyUserType(false)
        , m_grant(GRANT::NONE)
    {
    }

    ///@{
    /// Creates a value of the kind that corresponds to the type of `value`. These constructors and
    /// the getters are inline, because most host functions do little else.
    FunctionParameter(bool value) noexcept
        : FunctionParameter(PARAM_TYPE_BOOL, MEMBER::BOOL)
    {
        m_storage.boolean = value;
    }

    FunctionParameter(int value) noexcept
        : FunctionParameter(PARAM_TYPE_INT, MEMBER::INT)
    {
        m_storage.integer = value;
    }

    FunctionParameter(float value) noexcept
        : FunctionParameter(PARAM_TYPE_FLOAT, MEMBER::FLOAT)
    {
        m_storage.single = value;
    }

    FunctionParameter(double value) noexcept
        : FunctionParameter(PARAM_TYPE_DOUBLE, MEMBER::DOUBLE)
    {
        m_storage.number = value;
    }

    ///@}

    /// Copies the zero-terminated `text`; a null pointer creates the empty string.
    FunctionParameter(const char* text);

    /// Copies `text`, all of its bytes.
    FunctionParameter(const tbMemory::StringView& text);

    /// Creates a value of a user type from `object`, which may be null.
    ///
    /// `typeName` is the type's full name; an empty name creates a value without methods. So does a
    /// name that is not declared, which is logged (tag "LuaFunction"): once for each of the first
    /// 64 such names of an interpreter. Ownership: `scriptOwned` transfers the object to the script
    /// that receives the value; otherwise the host keeps it. The parameter itself never destroys
    /// the object. If a parameter and its copies arrive in scripts more than once, only the first
    /// script value that they create owns the object. Copying such a parameter allocates a few
    /// bytes; moving does not.
    ///
    /// @code
    /// auto* const made = new Point{arguments[0].getDouble(), arguments[1].getDouble()};
    /// return FunctionParameter(made, "Point", true); // the script owns it
    /// @endcode
    FunctionParameter(void* object, const tbMemory::StringView& typeName, bool scriptOwned);

    /// Shares `reference` and takes its kind. An empty reference creates a
    /// `PARAM_TYPE_SCRIPT_OBJECT` that designates nothing.
    FunctionParameter(const ScriptObjectReference& reference);

    /// Not offered: a kind would be taken for an `int`. Use `ofType`.
    FunctionParameter(FUNCTION_PARAMETER_TYPE type) = delete;

    /// Not offered: `nullptr` would be taken for a null string and create the empty one. Use
    /// `FunctionParameter::VOID` for no result, an empty `ScriptObjectReference` for nil.
    FunctionParameter(std::nullptr_t) = delete;

    /// Not offered: a pointer would be taken for a `bool`. Use the constructor for user types.
    template <
        typename T,
        typename = std::enable_if_t<!std::is_same<std::remove_cv_t<T>, char>::value>>
    FunctionParameter(T* object) = delete;

    /// Creates an empty value of kind `type`, which declares an expected result: zero, the empty
    /// string, an empty reference or a null object.
    ///
    /// `userTypeName` is the full name of the expected user type, empty to accept every user type;
    /// other kinds ignore it.
    ///
    /// @code
    /// std::array<FunctionParameter, 1> results{
    ///     FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, "Point")};
    /// @endcode
    static FunctionParameter ofType(
        FUNCTION_PARAMETER_TYPE type,
        const tbMemory::StringView& userTypeName = tbMemory::StringView());

    /// Returns an empty value with the same declaration: the same kind and, for user types, the
    /// declared type.
    FunctionParameter getDeclaration() const;

    ///@{
    /// Copies value and kind. References are shared, and so is the view of a user type.
    FunctionParameter(const FunctionParameter& other);
    FunctionParameter& operator=(const FunctionParameter& other);

    ///@}

    ///@{
    /// Moves the value. A moved-from string or user type becomes void; a moved-from reference still
    /// shares its value.
    FunctionParameter(FunctionParameter&& other) noexcept
        : FunctionParameter()
    {
        _takeFrom(other);
    }

    FunctionParameter& operator=(FunctionParameter&& other) noexcept;

    ///@}

    /// Releases string and reference. A host object is not destroyed.
    ~FunctionParameter()
    {
        if (_ownsSomething())
            _clear();
    }

    /// Returns the kind; a number above 9 is returned unchanged.
    FUNCTION_PARAMETER_TYPE getType() const { return m_type; }

    ///@{
    /// Returns the value; false or 0 for another kind. Nothing is converted. The kind need not be
    /// looked at: it agrees with the stored member for numbers and booleans.
    bool getBool() const { return m_live == MEMBER::BOOL && m_storage.boolean; }

    int getInt() const { return m_live == MEMBER::INT ? m_storage.integer : 0; }

    float getFloat() const { return m_live == MEMBER::FLOAT ? m_storage.single : 0.0F; }

    double getDouble() const { return m_live == MEMBER::DOUBLE ? m_storage.number : 0.0; }

    ///@}

    /// Returns the string, zero-terminated behind its end; a null view for another kind.
    ///
    /// Valid until: this parameter is changed or destroyed. The same holds for `getUserTypeName`.
    tbMemory::StringView getString() const
    {
        return _is(PARAM_TYPE_STRING, MEMBER::TEXT) ? tbMemory::StringView(m_storage.text)
                                                    : tbMemory::StringView();
    }

    /// Returns the full name of the user type; a null view for another kind.
    tbMemory::StringView getUserTypeName() const;

    /// Returns the host object, null for another kind.
    void* getUserTypeObject() const
    {
        return _holdsUserType() ? m_storage.userType.object : nullptr;
    }

    /// Returns a view on the script value that an owned user type was read from. The view is empty
    /// for other kinds, for values that the host created, and after the call that read the value.
    ScriptObjectView getUserTypeView() const;

    /// Returns the reference, an empty one for another kind.
    ///
    /// Valid until: this parameter is changed or destroyed.
    const ScriptObjectReference& getScriptObject() const;

    /// Replaces the stored value by the empty value of the current kind. Does nothing for numbers,
    /// booleans and void. None of the four `prepare` operations changes the kind.
    void prepareForInternalType();

    /// Replaces the stored value by an empty string.
    void prepareForString();

    /// Replaces the stored value by a null object of a type without name.
    void prepareForUserType();

    /// Replaces the stored value by an empty reference.
    void prepareForScriptObjectReference();

private:
    friend struct FunctionParameterAccess; // stores what a script passes, in place

    // Which member of the storage lives. Stored beside the kind, because a `prepare` operation may
    // create another member than the one that belongs to the kind.
    enum class MEMBER : std::uint8_t
    {
        NONE,
        BOOL,
        INT,
        FLOAT,
        DOUBLE,
        TEXT,
        USER_TYPE,
        REFERENCE
    };

    // Whether a script value that is created of this one owns the object: the first one, if the
    // host created this one for that. What was read from a script creates no owner.
    enum class GRANT : std::uint8_t
    {
        NONE,
        SOLE,  // nobody else has it: there is no copy
        SHARED // with all copies; `view` says whether one of them has used it
    };

    class SharedGrant;

    struct UserTypeValue
    {
        UserTypeValue();
        UserTypeValue(void* host, const tbMemory::StringView& name);
        UserTypeValue(const UserTypeValue& other);
        UserTypeValue(UserTypeValue&& other) noexcept;
        UserTypeValue& operator=(const UserTypeValue&) = delete;
        ~UserTypeValue();

        tbMemory::String typeName;
        void* object; // never owned

        // A shared pointer, as in `ScriptObjectView`. Shared by copies: a look at the value that
        // was read from a script, or a `SharedGrant`.
        alignas(void*) mutable unsigned char view[2 * sizeof(void*)];
    };

    union Storage
    {
        constexpr Storage() noexcept
            : firstWord(0)
        {
        }

        ~Storage() // NOLINT(modernize-use-equals-default): members are destroyed by kind
        {
        }

        std::uint64_t firstWord;
        bool boolean;
        std::int32_t integer;
        float single;
        double number;
        tbMemory::String text;
        UserTypeValue userType;
        ScriptObjectReference reference;
    };

    FunctionParameter(FUNCTION_PARAMETER_TYPE type, MEMBER member) noexcept
        : m_type(type)
        , m_live(member)
        , m_acceptsAnyUserType(false)
        , m_grant(GRANT::NONE)
    {
    }

    static MEMBER _memberOf(FUNCTION_PARAMETER_TYPE type);

    bool _is(FUNCTION_PARAMETER_TYPE type, MEMBER member) const
    {
        return m_type == type && m_live == member;
    }

    bool _holdsUserType() const
    {
        return m_live == MEMBER::USER_TYPE &&
               (m_type == PARAM_TYPE_USER_TYPE || m_type == PARAM_TYPE_USER_TYPE_OWNED);
    }

    // Members that own something come last in the enumeration.
    bool _ownsSomething() const { return m_live >= MEMBER::TEXT; }

    ///@{
    // Write the value of a member in place, whatever lived in the storage. The kind stays, and with
    // it what a user type was declared with.
    void _storeBool(bool value) { _makeRoomForPlain(MEMBER::BOOL).boolean = value; }

    void _storeInt(int value) { _makeRoomForPlain(MEMBER::INT).integer = value; }

    void _storeFloat(float value) { _makeRoomForPlain(MEMBER::FLOAT).single = value; }

    void _storeDouble(double value) { _makeRoomForPlain(MEMBER::DOUBLE).number = value; }

    void _storeString(const tbMemory::StringView& text)
    {
        if (m_live != MEMBER::TEXT)
            prepareForString();
        m_storage.text = text;
    }

    void _storeObject(void* object)
    {
        if (m_live != MEMBER::USER_TYPE)
            prepareForUserType();
        else if (m_grant != GRANT::NONE)
            _dropGrant();
        m_storage.userType.object = object;
    }

    void _storeReference(const ScriptObjectReference& reference);

    ///@}

    ///@{
    // The rest of a user type's value. Requires: the storage holds one; to store a view, that
    // `_storeObject` came before.
    void _storeTypeName(const tbMemory::StringView& typeName)
    {
        m_storage.userType.typeName = typeName;
    }

    bool _hasGrant() const
    {
        return m_grant == GRANT::SOLE || (m_grant == GRANT::SHARED && !_isSharedGrantUsed());
    }

    void _useGrant() const;
    void _shareGrant() const;
    void _dropGrant();
    bool _isSharedGrantUsed() const;

    ///@}

    // Null if the storage is prepared for every user type, or for another kind.
    const tbMemory::String* _findExpectedTypeName() const
    {
        const bool isForOneType = m_live == MEMBER::USER_TYPE && !m_acceptsAnyUserType;
        return isForOneType ? &m_storage.userType.typeName : nullptr;
    }

    Storage& _makeRoomForPlain(MEMBER member)
    {
        if (_ownsSomething())
            _clear();
        m_live = member;
        return m_storage;
    }

    // True if the storage holds `member` and the kind says so too.
    bool _holds(MEMBER member) const;

    void _clear() noexcept;
    void _copyFrom(const FunctionParameter& other);

    // Requires, like the copy: the storage holds nothing.
    void _takeFrom(FunctionParameter& other) noexcept
    {
        if (other._ownsSomething())
            _takeOwnedFrom(other);
        else
            _copyPlainFrom(other);
    }

    void _takeOwnedFrom(FunctionParameter& other) noexcept;

    // For numbers and booleans: their kind and their member always agree.
    void _copyPlainFrom(const FunctionParameter& other) noexcept
    {
        std::memcpy(&m_storage.firstWord, &other.m_storage.firstWord, sizeof(std::uint64_t));
        m_type = other.m_type;
        m_live = other.m_live;
    }

    Storage m_storage;
    FUNCTION_PARAMETER_TYPE m_type;
    MEMBER m_live;
    bool m_acceptsAnyUserType; // declared without type name; the name held is that of the value
    mutable GRANT m_grant;     // only for user types; using it is no change that a host can see
};

} // namespace tbScripts
