#include "rows/TypedBody.h"

#include "support/Workload.h"

#include <tbScripts/Bind.h>

namespace bench
{

namespace
{

using tbScripts::BUILT_IN_FUNCTION;
using tbScripts::TypeBinding;

using tbScripts::bindType;
using tbScripts::leaf;

double valueOf(const Body& body)
{
    return body.value;
}

void setValueOf(Body& body, double value)
{
    body.value = value;
}

double getMassOf(const Body& body)
{
    return body.mass;
}

void setMassOf(Body& body, double mass)
{
    body.mass = mass;
}

double readElement(Body& body, int index)
{
    return elementOf(body, index);
}

void writeElement(Body& body, int index, double value)
{
    elementOf(body, index) = value;
}

// What creates instances cannot be a leaf.
TypeBinding<Body> bindCreation(tbScripts::Environment& environment)
{
    return bindType<Body>(environment, "Body").constructor<>().op<&sumOf>(BUILT_IN_FUNCTION::ADD);
}

} // namespace

void bindTypedBody(tbScripts::Environment& environment)
{
    // As fields the members would be leaves by themselves.
    bindCreation(environment)
        .method<&valueOf>("get")
        .method<&setValueOf>("set")
        .property<&valueOf, &setValueOf>("var")
        .property<&getMassOf, &setMassOf>("mass")
        .index<&readElement, &writeElement>()
        .op<&isLess>(BUILT_IN_FUNCTION::LT);
}

void bindBodyOfLeaves(tbScripts::Environment& environment)
{
    bindCreation(environment)
        .method("get", leaf<&valueOf>)
        .method("set", leaf<&setValueOf>)
        .field<&Body::value>("var")
        .field<&Body::mass>("mass")
        .index(leaf<&readElement>, leaf<&writeElement>)
        .op(BUILT_IN_FUNCTION::LT, leaf<&isLess>);
}

void bindTypedMethodOnly(tbScripts::Environment& environment)
{
    bindType<Body>(environment, "Body").constructor<>().method<&valueOf>("get");
}

void bindMethodOnlyOfLeaves(tbScripts::Environment& environment)
{
    bindType<Body>(environment, "Body").constructor<>().method("get", leaf<&valueOf>);
}

} // namespace bench
