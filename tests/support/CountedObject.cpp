#include "support/CountedObject.h"

namespace tbScripts::test
{

namespace
{

int living = 0;
int made = 0;

} // namespace

CountedObject::CountedObject()
{
    ++living;
    ++made;
}

CountedObject::CountedObject(const CountedObject&)
    : CountedObject()
{
}

CountedObject& CountedObject::operator=(const CountedObject&) = default;

CountedObject::~CountedObject()
{
    --living;
}

int CountedObject::getLiving()
{
    return living;
}

int CountedObject::getMade()
{
    return made;
}

void CountedObject::restart()
{
    living = 0;
    made = 0;
}

} // namespace tbScripts::test
