#pragma once

#include "tbScripts/ScriptObjectReference.h"
#include "tbScripts/typed/Call.h"

// The services that read (see Services in tbScripts/typed/Call.h).
namespace tbScripts::lua::typedReading
{

using typed::Call;

double toDouble(Call& call, int index);
float toFloat(Call& call, int index);
int toInt(Call& call, int index);
bool toBool(Call& call, int index);
typed::Text toText(Call& call, int index);
void* toObject(Call& call, int index, const typed::TypeId& type);
void* toObjectOrNull(Call& call, int index, const typed::TypeId& type);
void toFunction(Call& call, int index, ScriptObjectReference& reference);
void toReference(Call& call, int index, ScriptObjectReference& reference);
typed::Natural toInteger(Call& call, int index);
void* takeObject(Call& call, int index, const typed::TypeId& type);
void* toHolder(Call& call, int index, const typed::TypeId& type, const typed::TypeId& holderType);
void check(Call& call);
void refuse(Call& call, int index, const char* expected);
int countArguments(Call& call);
void reserve(Call& call, int count);
bool isNone(Call& call, int index);
bool isOfKind(Call& call, int index, typed::KIND kind, const typed::TypeId* type);
bool accepts(Call& call, int index, const typed::Parameter& parameter);
bool isInteger(Call& call, int index, double lowest, double beyond, bool isStrict);
bool isEnumValue(Call& call, int index, const typed::TypeId& type);
int getLength(Call& call, int table);
int pushElement(Call& call, int table, int number);
int beginFields(Call& call);
bool pushNext(Call& call, int table, int key);
void drop(Call& call, int count);

} // namespace tbScripts::lua::typedReading
