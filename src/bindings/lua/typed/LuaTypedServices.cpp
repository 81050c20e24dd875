#include "bindings/lua/typed/LuaTypedCall.h"
#include "bindings/lua/typed/LuaTypedPushing.h"
#include "bindings/lua/typed/LuaTypedReading.h"

namespace tbScripts::lua
{

namespace reading = typedReading;
namespace pushing = typedPushing;

// In the order of the structure: a field that is missing here is an error of the compiler.
const typed::Services TYPED_SERVICES{
    &reading::toDouble,    &reading::toFloat,     &reading::toInt,          &reading::toBool,
    &reading::toText,      &reading::toObject,    &reading::toObjectOrNull, &reading::toFunction,
    &reading::toReference, &reading::toInteger,   &reading::takeObject,     &reading::toHolder,
    &reading::check,       &reading::refuse,      &reading::countArguments, &reading::reserve,
    &reading::isNone,      &reading::isOfKind,    &reading::accepts,        &reading::isInteger,
    &reading::isEnumValue, &pushing::pushNil,     &pushing::pushBool,       &pushing::pushDouble,
    &pushing::pushInteger, &pushing::pushNatural, &pushing::pushText,       &pushing::pushReference,
    &pushing::pushObject,  &pushing::pushPart,    &pushing::beginOwned,     &pushing::endOwned,
    &pushing::endShared,   &pushing::pushTable,   &pushing::setElement,     &pushing::setField,
    &reading::getLength,   &reading::pushElement, &reading::beginFields,    &reading::pushNext,
    &reading::drop};

} // namespace tbScripts::lua
