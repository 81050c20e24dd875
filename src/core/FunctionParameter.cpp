#include "tbScripts/FunctionParameter.h"

#include "core/FunctionParameterAccess.h"
#include "core/ScriptObjectViewAccess.h"

#include "tbScripts/ScriptObjectInterpreterView.h"

#include <memory>
#include <new>
#include <utility>

namespace tbScripts
{

// What copies share of a value that the host created for a script to own: the first script value
// that one of them creates owns the object (docs/decisions/0020-one-owner-for-each-parameter.md).
// It is stored in place of the view, which only values that were read from a script have.
class FunctionParameter::SharedGrant final : public ScriptObjectInterpreterView
{
public:
    ScriptObjectInterpreterReference* createReference() override { return nullptr; }

    bool isUsed = false;
};

FunctionParameter::UserTypeValue::UserTypeValue()
    : object(nullptr)
{
    new (view) SharedView();
}

FunctionParameter::UserTypeValue::UserTypeValue(void* host, const tbMemory::StringView& name)
    : typeName(name)
    , object(host)
{
    new (view) SharedView();
}

FunctionParameter::UserTypeValue::UserTypeValue(const UserTypeValue& other)
    : typeName(other.typeName)
    , object(other.object)
{
    new (view) SharedView(sharedViewIn(other.view));
}

FunctionParameter::UserTypeValue::UserTypeValue(UserTypeValue&& other) noexcept
    : typeName(std::move(other.typeName))
    , object(other.object)
{
    new (view) SharedView(std::move(sharedViewIn(other.view)));
}

FunctionParameter::UserTypeValue::~UserTypeValue()
{
    sharedViewIn(view).~SharedView();
}

const FunctionParameter FunctionParameter::VOID;

FunctionParameter::FunctionParameter(const char* text)
    : FunctionParameter(tbMemory::StringView(text))
{
}

FunctionParameter::FunctionParameter(const tbMemory::StringView& text)
    : m_type(PARAM_TYPE_STRING)
    , m_live(MEMBER::TEXT)
    , m_acceptsAnyUserType(false)
    , m_grant(GRANT::NONE)
{
    new (&m_storage.text) tbMemory::String(text);
}

FunctionParameter::FunctionParameter(
    void* object, const tbMemory::StringView& typeName, bool scriptOwned)
    : m_type(scriptOwned ? PARAM_TYPE_USER_TYPE_OWNED : PARAM_TYPE_USER_TYPE)
    , m_live(MEMBER::USER_TYPE)
    , m_acceptsAnyUserType(typeName.empty())
    , m_grant(scriptOwned && object ? GRANT::SOLE : GRANT::NONE)
{
    new (&m_storage.userType) UserTypeValue(object, typeName);
}

FunctionParameter::FunctionParameter(const ScriptObjectReference& reference)
    : m_type(
          reference.getType() == PARAM_TYPE_SCRIPT_FUNCTION ? PARAM_TYPE_SCRIPT_FUNCTION
                                                            : PARAM_TYPE_SCRIPT_OBJECT)
    , m_live(MEMBER::REFERENCE)
    , m_acceptsAnyUserType(false)
    , m_grant(GRANT::NONE)
{
    new (&m_storage.reference) ScriptObjectReference(reference);
}

FunctionParameter
FunctionParameter::ofType(FUNCTION_PARAMETER_TYPE type, const tbMemory::StringView& userTypeName)
{
    FunctionParameter parameter;
    parameter.m_type = type;
    parameter.prepareForInternalType();
    if (parameter.m_live == MEMBER::NONE)
        parameter.m_live = _memberOf(type); // zero already
    if (parameter.m_live != MEMBER::USER_TYPE)
        return parameter;
    parameter.m_storage.userType.typeName = userTypeName;
    parameter.m_acceptsAnyUserType = userTypeName.empty();
    return parameter;
}

FunctionParameter FunctionParameter::getDeclaration() const
{
    return ofType(m_type, m_acceptsAnyUserType ? tbMemory::StringView() : getUserTypeName());
}

FunctionParameter::FunctionParameter(const FunctionParameter& other)
    : FunctionParameter()
{
    _copyFrom(other);
}

FunctionParameter& FunctionParameter::operator=(const FunctionParameter& other)
{
    if (this == &other)
        return *this;
    if (_holds(MEMBER::TEXT) && other._holds(MEMBER::TEXT))
    {
        m_storage.text = other.m_storage.text; // reuses its memory
        return *this;
    }
    FunctionParameter copy(
        other); // before anything is released: this parameter may keep `other` alive
    _clear();
    _takeFrom(copy);
    return *this;
}

FunctionParameter& FunctionParameter::operator=(FunctionParameter&& other) noexcept
{
    if (this == &other)
        return *this;
    FunctionParameter taken(std::move(other)); // first: the old value may keep `other` alive
    _clear();
    _takeFrom(taken);
    return *this;
}

tbMemory::StringView FunctionParameter::getUserTypeName() const
{
    return _holds(MEMBER::USER_TYPE) ? tbMemory::StringView(m_storage.userType.typeName)
                                     : tbMemory::StringView();
}

ScriptObjectView FunctionParameter::getUserTypeView() const
{
    if (!_holds(MEMBER::USER_TYPE) || !FunctionParameterAccess::getView(*this))
        return ScriptObjectView();
    return ScriptObjectViewAccess::make(sharedViewIn(m_storage.userType.view));
}

const ScriptObjectReference& FunctionParameter::getScriptObject() const
{
    return _holds(MEMBER::REFERENCE) ? m_storage.reference : ScriptObjectReference::EMPTY;
}

void FunctionParameter::prepareForInternalType()
{
    switch (_memberOf(m_type))
    {
    case MEMBER::TEXT:
        prepareForString();
        break;
    case MEMBER::USER_TYPE:
        prepareForUserType();
        break;
    case MEMBER::REFERENCE:
        prepareForScriptObjectReference();
        break;
    case MEMBER::NONE:
    case MEMBER::BOOL:
    case MEMBER::INT:
    case MEMBER::FLOAT:
    case MEMBER::DOUBLE:
        break;
    }
}

void FunctionParameter::prepareForString()
{
    _clear();
    new (&m_storage.text) tbMemory::String();
    m_live = MEMBER::TEXT;
}

void FunctionParameter::prepareForUserType()
{
    _clear();
    new (&m_storage.userType) UserTypeValue();
    m_live = MEMBER::USER_TYPE;
    m_acceptsAnyUserType = true;
}

void FunctionParameter::prepareForScriptObjectReference()
{
    _clear();
    new (&m_storage.reference) ScriptObjectReference();
    m_live = MEMBER::REFERENCE;
}

void FunctionParameter::_storeReference(const ScriptObjectReference& reference)
{
    _clear();
    new (&m_storage.reference) ScriptObjectReference(reference);
    m_live = MEMBER::REFERENCE;
}

void FunctionParameter::_useGrant() const
{
    if (m_grant == GRANT::SHARED)
        static_cast<SharedGrant&>(*sharedViewIn(m_storage.userType.view)).isUsed = true;
    else
        m_grant = GRANT::NONE;
}

void FunctionParameter::_shareGrant() const
{
    sharedViewIn(m_storage.userType.view) = std::make_shared<SharedGrant>();
    m_grant = GRANT::SHARED;
}

void FunctionParameter::_dropGrant()
{
    if (m_grant == GRANT::SHARED)
        sharedViewIn(m_storage.userType.view).reset();
    m_grant = GRANT::NONE;
}

bool FunctionParameter::_isSharedGrantUsed() const
{
    return static_cast<const SharedGrant&>(*sharedViewIn(m_storage.userType.view)).isUsed;
}

FunctionParameter::MEMBER FunctionParameter::_memberOf(FUNCTION_PARAMETER_TYPE type)
{
    switch (type)
    {
    case PARAM_TYPE_BOOL:
        return MEMBER::BOOL;
    case PARAM_TYPE_INT:
        return MEMBER::INT;
    case PARAM_TYPE_FLOAT:
        return MEMBER::FLOAT;
    case PARAM_TYPE_DOUBLE:
        return MEMBER::DOUBLE;
    case PARAM_TYPE_STRING:
        return MEMBER::TEXT;
    case PARAM_TYPE_USER_TYPE_OWNED:
    case PARAM_TYPE_USER_TYPE:
        return MEMBER::USER_TYPE;
    case PARAM_TYPE_SCRIPT_FUNCTION:
    case PARAM_TYPE_SCRIPT_OBJECT:
        return MEMBER::REFERENCE;
    case PARAM_TYPE_VOID:
        return MEMBER::NONE;
    }
    return MEMBER::NONE; // a number outside the enumeration is a kind without value
}

bool FunctionParameter::_holds(MEMBER member) const
{
    return m_live == member && _memberOf(m_type) == member;
}

void FunctionParameter::_clear() noexcept
{
    switch (m_live)
    {
    case MEMBER::TEXT:
        m_storage.text.~String();
        break;
    case MEMBER::USER_TYPE:
        m_storage.userType.~UserTypeValue();
        break;
    case MEMBER::REFERENCE:
        m_storage.reference.~ScriptObjectReference();
        break;
    case MEMBER::NONE:
    case MEMBER::BOOL:
    case MEMBER::INT:
    case MEMBER::FLOAT:
    case MEMBER::DOUBLE:
        break;
    }
    m_live = MEMBER::NONE;
    m_acceptsAnyUserType = false;
    m_grant = GRANT::NONE;
    m_storage.firstWord = 0;
}

// Requires: the storage holds nothing.
void FunctionParameter::_copyFrom(const FunctionParameter& other)
{
    if (!other._ownsSomething())
    {
        _copyPlainFrom(other);
        return;
    }
    m_type = other.m_type;
    if (!other._holds(other.m_live))
        return; // storage that was prepared for another kind holds no value
    if (other.m_grant == GRANT::SOLE)
        other._shareGrant();
    if (other.m_live == MEMBER::TEXT)
        new (&m_storage.text) tbMemory::String(other.m_storage.text);
    else if (other.m_live == MEMBER::USER_TYPE)
        new (&m_storage.userType) UserTypeValue(other.m_storage.userType);
    else
        new (&m_storage.reference) ScriptObjectReference(other.m_storage.reference);
    m_live = other.m_live;
    m_acceptsAnyUserType = other.m_acceptsAnyUserType;
    m_grant = other.m_grant;
}

void FunctionParameter::_takeOwnedFrom(FunctionParameter& other) noexcept
{
    m_type = other.m_type;
    if (!other._holds(other.m_live))
        return; // for the same reason
    if (other.m_live == MEMBER::TEXT)
        new (&m_storage.text) tbMemory::String(std::move(other.m_storage.text));
    else if (other.m_live == MEMBER::USER_TYPE)
        new (&m_storage.userType) UserTypeValue(std::move(other.m_storage.userType));
    else
        new (&m_storage.reference) ScriptObjectReference(std::move(other.m_storage.reference));
    m_live = other.m_live;
    m_acceptsAnyUserType = other.m_acceptsAnyUserType;
    m_grant = other.m_grant;
    if (m_live == MEMBER::REFERENCE)
        return; // moving a reference shares it
    other._clear();
    other.m_type = PARAM_TYPE_VOID;
}

} // namespace tbScripts
