# Every file by name, relative to the root. Tests compare these lists with the disk.

# Public headers.
set(TOBREL_SCRIPTS_HEADERS
    include/tbScripts/Api.h
    include/tbScripts/CompilationResult.h
    include/tbScripts/Environment.h
    include/tbScripts/ExecutionResult.h
    include/tbScripts/Function.h
    include/tbScripts/FunctionParameter.h
    include/tbScripts/FunctionParameterType.h
    include/tbScripts/Interpreter.h
    include/tbScripts/LogManager.h
    include/tbScripts/Script.h
    include/tbScripts/ScriptObjectInterpreterReference.h
    include/tbScripts/ScriptObjectInterpreterView.h
    include/tbScripts/ScriptObjectReference.h
    include/tbScripts/ScriptObjectView.h
    include/tbScripts/StringUtils.h
    include/tbScripts/Version.h)

# Sources and private headers.
set(TOBREL_SCRIPTS_SOURCES
    src/bindings/BindingMessages.h
    src/bindings/Function.cpp
    src/bindings/FunctionDefinition.cpp
    src/bindings/FunctionDefinition.h
    src/bindings/lua/LuaCallBridge.cpp
    src/bindings/lua/LuaCallBridge.h
    src/bindings/lua/LuaFunction.cpp
    src/bindings/lua/LuaFunction.h
    src/bindings/lua/LuaFunctionClosure.cpp
    src/bindings/lua/LuaFunctionClosure.h
    src/bindings/lua/LuaInstanceBox.cpp
    src/bindings/lua/LuaInstanceBox.h
    src/core/ExceptionContainment.h
    src/core/FunctionParameter.cpp
    src/core/LogManager.cpp
    src/core/LogSources.h
    src/core/ScriptObjectInterpreterReference.cpp
    src/core/ScriptObjectInterpreterView.cpp
    src/core/ScriptObjectReference.cpp
    src/core/ScriptObjectView.cpp
    src/core/StringUtils.cpp
    src/core/lua/LuaApi.h
    src/core/lua/LuaBoundary.cpp
    src/core/lua/LuaBoundary.h
    src/core/lua/LuaCallbackScope.cpp
    src/core/lua/LuaCallbackScope.h
    src/core/lua/LuaErrorText.cpp
    src/core/lua/LuaErrorText.h
    src/core/lua/LuaHostCall.cpp
    src/core/lua/LuaHostCall.h
    src/core/lua/LuaNumber.h
    src/core/lua/LuaScriptObjectInterpreterReference.cpp
    src/core/lua/LuaScriptObjectInterpreterReference.h
    src/core/lua/LuaScriptObjectInterpreterView.cpp
    src/core/lua/LuaScriptObjectInterpreterView.h
    src/core/lua/LuaStateHandle.cpp
    src/core/lua/LuaStateHandle.h
    src/core/lua/LuaTables.cpp
    src/core/lua/LuaTables.h
    src/core/lua/LuaText.h
    src/environments/DummyEnvironmentStrategy.cpp
    src/environments/DummyEnvironmentStrategy.h
    src/environments/Environment.cpp
    src/environments/EnvironmentBindings.h
    src/environments/EnvironmentMessages.h
    src/environments/EnvironmentRegistries.cpp
    src/environments/EnvironmentStrategy.cpp
    src/environments/EnvironmentStrategy.h
    src/environments/EnvironmentTeardown.cpp
    src/environments/lua/LuaEnvironmentStrategy.cpp
    src/environments/lua/LuaEnvironmentStrategy.h
    src/environments/lua/LuaGlobals.cpp
    src/environments/lua/LuaGlobals.h
    src/environments/lua/LuaScriptCalls.cpp
    src/environments/lua/LuaScriptCalls.h
    src/scripts/DummyScriptStrategy.cpp
    src/scripts/DummyScriptStrategy.h
    src/scripts/Script.cpp
    src/scripts/ScriptDeclaration.cpp
    src/scripts/ScriptMessages.h
    src/scripts/ScriptStrategy.cpp
    src/scripts/ScriptStrategy.h
    src/scripts/lua/LuaScriptStrategy.cpp
    src/scripts/lua/LuaScriptStrategy.h)

# The example host.
set(TOBREL_SCRIPTS_DEMO)

# Helpers of the tests: those that do with public headers, and those that see src/.
set(TOBREL_SCRIPTS_TEST_SUPPORT)
set(TOBREL_SCRIPTS_INTERNAL_TEST_SUPPORT)

# Tests of the shared library, of its inside, and of the stand-ins.
set(TOBREL_SCRIPTS_PUBLIC_TESTS)
set(TOBREL_SCRIPTS_INTERNAL_TESTS)
set(TOBREL_PLATFORM_TESTS
    tests/platform/BufferCastTest.cpp
    tests/platform/BufferTest.cpp
    tests/platform/BufferViewTest.cpp
    tests/platform/LoggerTest.cpp
    tests/platform/NodeTest.cpp
    tests/platform/ResourceManagerTest.cpp
    tests/platform/SingletonClassTest.cpp
    tests/platform/StringTest.cpp
    tests/platform/StringViewTest.cpp)
