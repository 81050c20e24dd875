#pragma once

#include "tbScripts/ScriptObjectReference.h"
#include "tbScripts/typed/Call.h"

// The services that push (see Services in tbScripts/typed/Call.h).
namespace tbScripts::lua::typedPushing
{

using typed::Call;

void pushNil(Call& call);
void pushBool(Call& call, bool value);
void pushDouble(Call& call, double value);
void pushInteger(Call& call, typed::Integer value);
void pushNatural(Call& call, typed::Natural value);
void pushText(Call& call, typed::Text text);
void pushReference(Call& call, const ScriptObjectReference& reference);
void pushObject(Call& call, void* object, const typed::TypeId& type);
void pushPart(Call& call, void* object, const typed::TypeId& type, int index);
void beginOwned(Call& call, const typed::TypeId& type);
void endOwned(Call& call, void* object);
void endShared(
    Call& call,
    void* object,
    void* holder,
    const typed::TypeId& holderType,
    void (*release)(void* holder));
int pushTable(Call& call, int elements, int fields);
void setElement(Call& call, int table, int number);
void setField(Call& call, int table);

} // namespace tbScripts::lua::typedPushing
