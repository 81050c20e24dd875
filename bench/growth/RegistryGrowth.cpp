#include "growth/GrowthRows.h"
#include "support/Failure.h"
#include "support/LibraryHost.h"

#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>
#include <tbScripts/ScriptObjectReference.h>

#include <deque>
#include <memory>
#include <string>

// Environments, scripts and references: using and making one where there are many.

namespace bench
{

namespace
{

using tbScripts::Environment;
using tbScripts::EnvironmentManager;
using tbScripts::Script;
using tbScripts::ScriptManager;

// Environments of the manager; the last one to hold them kills it.
class ManagedEnvironments
{
public:
    explicit ManagedEnvironments(std::size_t count)
        : m_count(count)
    {
        ++s_users;
        for (std::size_t i = 0; i < count; ++i)
        {
            Environment* const environment =
                EnvironmentManager::getInstance()->createOrRetrieve(nameOf(i).c_str());
            environment->setEnvironmentFor(tbScripts::INTERPRETER_LUA);
            environment->setVar("lives", 3);
        }
    }

    ManagedEnvironments(const ManagedEnvironments&) = delete;
    ManagedEnvironments& operator=(const ManagedEnvironments&) = delete;

    ~ManagedEnvironments()
    {
        if (--s_users == 0)
            EnvironmentManager::getInstance()->kill();
    }

    static std::string nameOf(std::size_t number) { return "world" + std::to_string(number); }

    std::string getLastName() const { return nameOf(m_count - 1); }

private:
    static inline int s_users = 0;

    std::size_t m_count;
};

Variant makeLookUpVariant(std::size_t count, std::size_t calls)
{
    auto environments = std::make_shared<ManagedEnvironments>(count);
    return {
        [environments, calls]
        {
            const std::string name = environments->getLastName();
            double sum = 0.0;
            for (std::size_t i = 0; i < calls; ++i)
            {
                sum += EnvironmentManager::getInstance()
                           ->createOrRetrieve(name.c_str())
                           ->getVar("lives", 0.0);
            }
            return sum;
        },
        {}};
}

Variant makeStartVariant(std::size_t count, std::size_t starts)
{
    auto environments = std::make_shared<std::deque<LibraryHost>>(count);
    return {
        [environments, starts]
        {
            for (std::size_t i = 0; i < starts; ++i)
            {
                Environment environment;
                environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);
            }
            return static_cast<double>(starts);
        },
        {}};
}

void fillScriptManager(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        ScriptManager::getInstance()->createOrRetrieve(("script" + std::to_string(i)).c_str());
}

// Has the manager hold `count` scripts at the beginning of each run.
Variant makeManagerVariant(std::size_t count, const std::function<double()>& run)
{
    return {
        run,
        [count]
        {
            ScriptManager::getInstance()->kill();
            fillScriptManager(count);
        }};
}

Variant makeScriptLookUpVariant(std::size_t count, std::size_t calls)
{
    return makeManagerVariant(
        count,
        [calls]
        {
            double found = 0.0;
            for (std::size_t i = 0; i < calls; ++i)
                found += ScriptManager::getInstance()->get("script0") ? 1.0 : 0.0;
            return found;
        });
}

Variant makeScriptMakingVariant(std::size_t count, std::size_t calls)
{
    return makeManagerVariant(
        count,
        [calls]
        {
            double made = 0.0;
            for (std::size_t i = 0; i < calls; ++i)
            {
                made += ScriptManager::getInstance()->createOrRetrieve("more") ? 1.0 : 0.0;
                ScriptManager::getInstance()->erase("more");
            }
            return made;
        });
}

Variant makeRotationVariant(std::size_t count, std::size_t calls)
{
    auto host = std::make_shared<LibraryHost>();
    auto scripts = std::make_shared<std::deque<Script>>(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        (*scripts)[i].setTargetInterpreter(tbScripts::INTERPRETER_LUA);
        (*scripts)[i].setSources(("last = " + std::to_string(i)).c_str());
        if (!(*scripts)[i].load())
            fail("a script does not compile");
    }
    return {
        [host, scripts, calls]
        {
            double done = 0.0;
            for (std::size_t i = 0; i < calls; ++i)
                done += host->getEnvironment().execute((*scripts)[i % scripts->size()]) ? 1.0 : 0.0;
            return done;
        },
        [host] { host->collect(); }};
}

Variant makeReferenceVariant(std::size_t count, std::size_t calls)
{
    auto host = std::make_shared<LibraryHost>();
    host->run("settings = {}");
    auto held = std::make_shared<std::vector<tbScripts::ScriptObjectReference>>();
    for (std::size_t i = 0; i < count; ++i)
        held->push_back(host->getEnvironment().getVar("settings"));
    return {
        [host, held, calls]
        {
            double taken = 0.0;
            for (std::size_t i = 0; i < calls; ++i)
            {
                const auto reference = host->getEnvironment().getVar("settings");
                taken += reference.getType() == tbScripts::PARAM_TYPE_VOID ? 0.0 : 1.0;
            }
            return taken;
        },
        {}};
}

} // namespace

void addRegistryGrowth(GrowthRowList& rows, const GrowthScale& scale)
{
    const auto add = [&](const char* name, const char* countOf, std::size_t operations, auto make) {
        rows.push_back({name, countOf, scale.counts, operations, false, make});
    };

    add("environment looked up, a global read", "environments", scale.calls, &makeLookUpVariant);
    add("environment started and ended", "environments", scale.declarations, &makeStartVariant);
    add("script looked up", "scripts", scale.calls, &makeScriptLookUpVariant);
    add("script made and erased", "scripts", scale.calls, &makeScriptMakingVariant);
    add("scripts executed in turn", "scripts", scale.calls, &makeRotationVariant);
    add("reference taken and dropped", "references", scale.calls, &makeReferenceVariant);
}

} // namespace bench
