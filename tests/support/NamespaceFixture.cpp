#include "support/NamespaceFixture.h"

#include "support/CountedObject.h"

#include <utility>

namespace tbScripts::test
{

NamespaceFixture::NamespaceFixture()
    : m_scope(environment().setNamespace("a"))
{
    CountedObject::restart();
}

Namespace& NamespaceFixture::scope() const
{
    return *m_scope;
}

void NamespaceFixture::makeCounted(UserType* type)
{
    ASSERT_NE(type, nullptr);
    type->setConstructor([](const Parameters&) { return new CountedObject; });
    type->setDestructor([](void* object) { delete static_cast<CountedObject*>(object); });
}

void NamespaceFixture::bindAnswer(Function* function, int answer)
{
    ASSERT_NE(function, nullptr);
    function->setFunction([answer](const Parameters&) { return FunctionParameter(answer); });
}

void NamespaceFixture::bindHolding(Function* function, std::shared_ptr<const void> farewell)
{
    ASSERT_NE(function, nullptr);
    function->setFunction([held = std::move(farewell)](const Parameters&)
                          { return FunctionParameter::VOID; });
}

} // namespace tbScripts::test
