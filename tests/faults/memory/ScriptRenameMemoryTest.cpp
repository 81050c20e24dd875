// A rename that gets no memory leaves the script where it was.

#include "support/RefusedMemory.h"

#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <gtest/gtest.h>

#include <new>

namespace tbScripts::test
{

namespace
{

constexpr const char* NAME = "a script that has a long name";
constexpr const char* NEW_NAME = "the same with another long name";

// Returns whether all requests of the rename were granted.
bool renameAfter(std::size_t allowedRequests)
{
    ScriptManager& manager = *ScriptManager::getInstance();
    const RefusedMemory memory(allowedRequests, RefusedMemory::SPAN::ALL_FURTHER);
    try
    {
        manager.rename(NAME, NEW_NAME);
    }
    catch (const std::bad_alloc&)
    {
    }
    return !memory.hasRefused();
}

} // namespace

class ScriptRenameMemoryTest : public ::testing::Test
{
protected:
    ScriptRenameMemoryTest() { ScriptManager::getInstance()->createOrRetrieve(NAME); }

    ~ScriptRenameMemoryTest() override { ScriptManager::getInstance()->kill(); }
};

TEST_F(ScriptRenameMemoryTest, RefusedRequestLeavesTheScriptFiledUnderItsName)
{
    Script* const script = ScriptManager::getInstance()->get(NAME);

    for (std::size_t allowed = 0; !renameAfter(allowed); ++allowed)
    {
        ASSERT_EQ(ScriptManager::getInstance()->get(NAME), script) << allowed;
        ASSERT_EQ(script->getName(), NAME) << allowed;
    }

    EXPECT_EQ(ScriptManager::getInstance()->get(NEW_NAME), script);
}

} // namespace tbScripts::test
