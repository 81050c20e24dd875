#pragma once

#include <cstdint>

namespace tbScripts
{

// The codes of results. The numbers are fixed: hosts store and compare them. docs/messages.md lists
// them with the messages that they come with.

///@{
/// Values of `ExecutionResult::code`.
constexpr std::int32_t EXECUTION_SUCCESS = 0;
constexpr std::int32_t EXECUTION_ERROR_IN_ERROR_HANDLER = 1;
constexpr std::int32_t EXECUTION_NO_INTERPRETER = 2;    ///< the environment has none
constexpr std::int32_t EXECUTION_OTHER_INTERPRETER = 3; ///< the script is compiled for another one
constexpr std::int32_t EXECUTION_NO_BYTECODE = 4;       ///< the script has no compiled form
constexpr std::int32_t EXECUTION_RUNTIME_ERROR = 5;
constexpr std::int32_t EXECUTION_OUT_OF_MEMORY = 6;
///@}

///@{
/// Values of `CompilationResult::errorCode`.
constexpr std::uint32_t COMPILATION_SUCCESS = 0;
constexpr std::uint32_t COMPILATION_NO_INTERPRETER = 2; ///< none was chosen for the script
constexpr std::uint32_t COMPILATION_SYNTAX_ERROR = 3;
constexpr std::uint32_t COMPILATION_OUT_OF_MEMORY = 4;
///@}

///@{
/// Values of `ContentLoadResult::status`.
constexpr unsigned int CONTENT_LOAD_SUCCESS = 0;
constexpr unsigned int CONTENT_LOAD_PARTIAL = 1; ///< an array, of which at least one element failed
constexpr unsigned int CONTENT_LOAD_FAILURE = 2; ///< unreadable, of the wrong kind, or incomplete
///@}

} // namespace tbScripts
