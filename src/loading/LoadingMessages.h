#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

// The texts of reading and writing declarations. docs/messages.md lists them with their causes.
namespace tbScripts::messages
{

inline tbMemory::String declarationFileMissing(const tbMemory::StringView& path)
{
    return "Can't find Object Declaration file " + tbMemory::String(path);
}

constexpr const char* DECLARATION_PARSE_ERROR = "Object Declaration parse error :";

inline tbMemory::String fileNotOpened(const tbMemory::StringView& path)
{
    return "Error when trying to open file saving : " + tbMemory::String(path);
}

inline tbMemory::String pathTriedForSaving(const tbMemory::StringView& path)
{
    return "The path follows the working path, tried : " + tbMemory::String(path);
}

constexpr const char* SCRIPT_NOT_PARSED = "Script Declaration import error. Parsing error.";
constexpr const char* SCRIPT_ROOT_OF_WRONG_KIND =
    "Script Declaration import error. This is not an object nor an array.";
constexpr const char* SCRIPT_ENTRY_NO_OBJECT = "Script Declaration entry not an object.";
constexpr const char* SCRIPT_ENTRY_WITHOUT_NAME =
    "Script Declaration entry incomplete. There is no name field.";
constexpr const char* SCRIPT_NOT_CREATED = "Failed Script creation in Manager.";

} // namespace tbScripts::messages
