#pragma once

namespace tbScripts
{

// The tags that name the reporting component, each spelt once: hosts compare them as strings.
constexpr const char* LOG_SOURCE_ENVIRONMENT = "Environment";
constexpr const char* LOG_SOURCE_LUA_ENVIRONMENT = "LuaEnvironment";
constexpr const char* LOG_SOURCE_LUA_ENVIRONMENT_STRATEGY = "LuaEnvironmentStrategy";
constexpr const char* LOG_SOURCE_FUNCTION = "Function";
constexpr const char* LOG_SOURCE_LUA_FUNCTION = "LuaFunction";
constexpr const char* LOG_SOURCE_LUA_USER_TYPE = "LuaUserType";
constexpr const char* LOG_SOURCE_LUA_NAMESPACE = "LuaNamespace";
constexpr const char* LOG_SOURCE_SCRIPT = "Script";
constexpr const char* LOG_SOURCE_LUA_SCRIPT = "LuaScript";
constexpr const char* LOG_SOURCE_CONTENT_LOADER = "ContentLoader";
constexpr const char* LOG_SOURCE_INPUT_DATA = "ContentLoader::inputData";
constexpr const char* LOG_SOURCE_INPUT_DATA_SOURCES = "ContentLoader::inputDataSources";
constexpr const char* LOG_SOURCE_SEPARATOR = "-";

} // namespace tbScripts
