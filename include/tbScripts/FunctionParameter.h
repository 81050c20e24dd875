#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"
#include "tbScripts/ScriptObjectReference.h"
#include "tbScripts/ScriptObjectView.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

namespace tbScripts
{

class ScriptObjectInterpreterView;

namespace lua
{
class LuaCallBridge;
}

/// Tagged value that crosses the border between host and script.
///
/// Reading one as another kind than its own gives the neutral value (false, 0, empty, null), never
/// another kind's bytes. No operation reports an error.
class TBSCRIPTS_API FunctionParameter
{
public:
    /// What a host function returns to say that there is no result. Usable before and after `main`.
    static const FunctionParameter VOID;

    /// Makes a value of kind `PARAM_TYPE_VOID`. Here and constexpr, so that `VOID` needs no code to
    /// be made and is there before any static object of a host.
    constexpr FunctionParameter() noexcept
        : m_storage()
        , m_type(PARAM_TYPE_VOID)
        , m_live(MEMBER::NONE)
        , m_acceptsAnyUserType(false)
    {
    }

    ///@{
    /// Makes a value of the kind that the type of `value` says. These, and what reads such values,
    /// are here because a host function does little else.
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

    /// Copies the zero-terminated `text`; a null pointer gives the empty text.
    FunctionParameter(const char* text);

    /// Copies `text`, all of its bytes.
    FunctionParameter(const tbMemory::StringView& text);

    /// Makes a value of a user type from `object`, which may be null.
    ///
    /// `typeName` is the type's full name; empty gives a value without methods. If `scriptOwned`,
    /// the script destroys the object that is handed to it, otherwise the host keeps it. The
    /// parameter itself never destroys it.
    FunctionParameter(void* object, const tbMemory::StringView& typeName, bool scriptOwned);

    /// Shares `reference`. The kind is that of the reference; an empty one gives
    /// `PARAM_TYPE_SCRIPT_OBJECT` that designates nothing.
    FunctionParameter(const ScriptObjectReference& reference);

    /// Not offered: a kind would be taken for an `int`. Use `ofType`.
    FunctionParameter(FUNCTION_PARAMETER_TYPE type) = delete;

    /// Not offered: a pointer would be taken for a `bool`. Use the constructor for user types.
    template <
        typename T,
        typename = std::enable_if_t<!std::is_same<std::remove_cv_t<T>, char>::value>>
    FunctionParameter(T* object) = delete;

    /// Makes an empty value of kind `type`, to declare what is expected: zero, the empty text, an
    /// empty reference or a null object.
    ///
    /// `userTypeName` is the full name of the expected user type, empty to accept every one. It is
    /// ignored for all other kinds.
    static FunctionParameter ofType(
        FUNCTION_PARAMETER_TYPE type,
        const tbMemory::StringView& userTypeName = tbMemory::StringView());

    /// Returns an empty value that expects what this one expects: the same kind, and for user types
    /// the type that was declared.
    FunctionParameter getDeclaration() const;

    ///@{
    /// Copies value and kind. References are shared, and so is the view of a user type.
    FunctionParameter(const FunctionParameter& other);
    FunctionParameter& operator=(const FunctionParameter& other);

    ///@}

    ///@{
    /// Takes the value. A moved-from text or user type becomes void; references stay shared.
    FunctionParameter(FunctionParameter&& other) noexcept
        : FunctionParameter()
    {
        _takeFrom(other);
    }

    FunctionParameter& operator=(FunctionParameter&& other) noexcept;

    ///@}

    /// Gives up text and reference. A host object is not destroyed.
    ~FunctionParameter()
    {
        if (_ownsSomething())
            _clear();
    }

    /// Returns the kind; a number above 9 is given back as it is.
    FUNCTION_PARAMETER_TYPE getType() const { return m_type; }

    ///@{
    /// Returns the value; false or 0 for another kind. Nothing is converted.
    bool getBool() const { return _is(PARAM_TYPE_BOOL, MEMBER::BOOL) && m_storage.boolean; }

    int getInt() const { return _is(PARAM_TYPE_INT, MEMBER::INT) ? m_storage.integer : 0; }

    float getFloat() const
    {
        return _is(PARAM_TYPE_FLOAT, MEMBER::FLOAT) ? m_storage.single : 0.0F;
    }

    double getDouble() const
    {
        return _is(PARAM_TYPE_DOUBLE, MEMBER::DOUBLE) ? m_storage.number : 0.0;
    }

    ///@}

    /// Returns the text, zero-terminated behind its end; a null view for another kind.
    ///
    /// Valid until: this parameter is changed or destroyed. The same holds for the name below.
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

    /// Returns a view on the script value that an owned user type was read from; looks at nothing
    /// for other kinds, for values that the host made, and once the call that read it is over.
    ScriptObjectView getUserTypeView() const;

    /// Returns the reference, an empty one for another kind.
    ///
    /// Valid until: this parameter is changed or destroyed.
    const ScriptObjectReference& getScriptObject() const;

    /// Gives the storage the empty value of the current kind; what it held is destroyed. Does
    /// nothing for numbers, truth values and void. None of these operations changes the kind.
    void prepareForInternalType();

    /// Gives the storage an empty text.
    void prepareForString();

    /// Gives the storage a null object of a type without name.
    void prepareForUserType();

    /// Gives the storage an empty reference.
    void prepareForScriptObjectReference();

private:
    friend class lua::LuaCallBridge; // fills the storage in place

    // Which member of the storage lives. Kept beside the kind, because preparing may give the
    // storage another member than the kind says.
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

    struct UserTypeValue
    {
        tbMemory::String typeName;
        void* object = nullptr;                            // never owned
        std::shared_ptr<ScriptObjectInterpreterView> view; // null unless read from a script
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

    // Numbers and truth values, which are always of the kind that is said.
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
};

} // namespace tbScripts
