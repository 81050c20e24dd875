// Texts that are read as declarations of scripts, which are compiled. Status, errors and scripts
// have to agree, whatever the text is.

#include "support/Require.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <cstddef>
#include <cstdint>

namespace tbScripts::fuzz
{

namespace
{

void checkScripts(const ContentLoadResult<Script>& result)
{
    const ScriptManager* const manager = ScriptManager::getInstance();
    for (const Script* const script : result.objects)
        require(manager->get(script->getName()) == script, "what was declared is filed");
    require(manager->getCount() <= result.objects.size(), "nothing else is filed");
}

void checkStatus(const ContentLoadResult<Script>& result)
{
    switch (result.status)
    {
    case 0:
        return require(result.errors.size() == 0, "a success has no errors");
    case 1:
        return require(result.errors.size() > 0, "an array that failed in part has errors");
    case 2:
        return require(
            result.errors.size() == 1 && result.objects.size() == 0,
            "of a failure there is one error and no script");
    default:
        return require(false, "there are three statuses");
    }
}

} // namespace

} // namespace tbScripts::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tbScripts;
    const tbMemory::StringView text(reinterpret_cast<const char*>(data), size);
    const ContentLoadResult<Script> result = ContentLoader::processScriptSources(text, true);
    fuzz::checkStatus(result);
    fuzz::checkScripts(result);
    ScriptManager::getInstance()->kill();
    return 0;
}
