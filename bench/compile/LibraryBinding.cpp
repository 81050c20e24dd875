// The same twenty host functions, bound through the public interface, with all of its headers.

#include "Game.h"

#include <tbScripts/Api.h>
#include <tbScripts/BuiltInFunction.h>
#include <tbScripts/CompilationResult.h>
#include <tbScripts/ContentLoadResult.h>
#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/ExecutionResult.h>
#include <tbScripts/Function.h>
#include <tbScripts/FunctionParameter.h>
#include <tbScripts/FunctionParameterType.h>
#include <tbScripts/Interpreter.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ProjectQueries.h>
#include <tbScripts/ResourceDeclAugmentCallback.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>
#include <tbScripts/ScriptObjectInterpreterReference.h>
#include <tbScripts/ScriptObjectInterpreterView.h>
#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>
#include <tbScripts/StringUtils.h>
#include <tbScripts/UserType.h>
#include <tbScripts/UserTypeDescriptors.h>
#include <tbScripts/Version.h>

#include <initializer_list>
#include <utility>

namespace
{

using namespace tbScripts;

using Arguments = tbMemory::BufferView<FunctionParameter>;

void define(
    Function* function,
    std::initializer_list<FUNCTION_PARAMETER_TYPE> parameters,
    Function::Callable callable)
{
    if (!function)
        return;
    for (const FUNCTION_PARAMETER_TYPE type : parameters)
        function->addParameter(type);
    function->setFunction(std::move(callable));
}

} // namespace

void bindGameInLibrary(Environment& environment)
{
    define(
        environment.setFunc("spawn"),
        {PARAM_TYPE_STRING},
        [](const Arguments& arguments) { return bench::spawn(arguments[0].getString()); });
    define(
        environment.setFunc("despawn"),
        {PARAM_TYPE_INT},
        [](const Arguments& arguments)
        {
            bench::despawn(arguments[0].getInt());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("exists"),
        {PARAM_TYPE_INT},
        [](const Arguments& arguments) { return bench::exists(arguments[0].getInt()); });
    define(
        environment.setFunc("countEntities"),
        {},
        [](const Arguments&) { return bench::countEntities(); });
    define(
        environment.setFunc("nameOf"),
        {PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return FunctionParameter(bench::nameOf(arguments[0].getInt()).c_str()); });
    define(
        environment.setFunc("rename"),
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        [](const Arguments& arguments)
        {
            bench::rename(arguments[0].getInt(), arguments[1].getString());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("lifeOf"),
        {PARAM_TYPE_INT},
        [](const Arguments& arguments) { return bench::lifeOf(arguments[0].getInt()); });
    define(
        environment.setFunc("setLife"),
        {PARAM_TYPE_INT, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            bench::setLife(arguments[0].getInt(), arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("heal"),
        {PARAM_TYPE_INT, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            bench::heal(arguments[0].getInt(), arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("isHostile"),
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return bench::isHostile(arguments[0].getInt(), arguments[1].getInt()); });
    define(
        environment.setFunc("heightOf"),
        {PARAM_TYPE_INT},
        [](const Arguments& arguments) { return bench::positionOf(arguments[0].getInt()).y; });
    define(
        environment.setFunc("moveTo"),
        {PARAM_TYPE_INT, PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            bench::moveTo(
                arguments[0].getInt(), arguments[1].getDouble(), arguments[2].getDouble());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("distance"),
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return bench::distance(arguments[0].getInt(), arguments[1].getInt()); });
    define(
        environment.setFunc("nearest"),
        {PARAM_TYPE_INT, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        { return bench::nearest(arguments[0].getInt(), arguments[1].getDouble()); });
    define(
        environment.setFunc("say"),
        {PARAM_TYPE_INT, PARAM_TYPE_STRING},
        [](const Arguments& arguments)
        {
            bench::say(arguments[0].getInt(), arguments[1].getString());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("play"),
        {PARAM_TYPE_STRING, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            bench::play(arguments[0].getString(), arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("setWeather"),
        {PARAM_TYPE_STRING, PARAM_TYPE_DOUBLE, PARAM_TYPE_BOOL},
        [](const Arguments& arguments)
        {
            bench::setWeather(
                arguments[0].getString(), arguments[1].getDouble(), arguments[2].getBool());
            return FunctionParameter::VOID;
        });
    define(
        environment.setFunc("timeOfDay"), {}, [](const Arguments&) { return bench::timeOfDay(); });
    define(
        environment.setFunc("random"),
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return bench::random(arguments[0].getInt(), arguments[1].getInt()); });
    define(
        environment.setFunc("translate"),
        {PARAM_TYPE_STRING},
        [](const Arguments& arguments)
        { return FunctionParameter(bench::translate(arguments[0].getString()).c_str()); });
}
