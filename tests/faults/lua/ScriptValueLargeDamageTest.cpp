// Damage behind the first quarter of a megabyte: readers of large buffers look ahead. Every read
// stays inside of the bytes, and the interpreter is as before.

#include "support/EnvironmentStateFixture.h"

#include <tbScripts/UserType.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

constexpr const char* VALUE =
    "v = {long, 'first', {id = 1, name = 'a', pos = {x = 1, 'in'}, alive = true}, T.new(),"
    " {'b', '', 'some longer text', [0.5] = 'c'}, {untyped, 'd'}, f = print, 'last'}";

constexpr unsigned char CHANGES[] = {
    0, 1, 4, 'a', 'b', 'f', 'i', 'k', 'n', 's', 'u', '{', '|', '}', 0x7F, 0x80, 0xFF};

} // namespace

class ScriptValueLargeDamageTest : public EnvironmentStateFixture
{
protected:
    ScriptValueLargeDamageTest()
    {
        environment().setUserType("T")->setConstructor([this](const Parameters&)
                                                       { return &m_object; });
        environment().setObject("untyped", "Unknown", &m_object);
        run("long = ('x'):rep(263000)");
        run(VALUE);
        const tbMemory::Buffer bytes =
            environment().serializeScriptObject(environment().getVar("v"), true);
        m_bytes.assign(bytes.begin(), bytes.end());
        m_tail = LONG_TEXT_END;
        m_slots = countRegistrySlots();
    }

    // Returns the value of the first `size` bytes, in a block of exactly that size, so that a check
    // for reads beyond it can tell.
    ScriptObjectReference readCut(std::size_t size)
    {
        const std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
        std::copy_n(m_bytes.begin(), size, block.get());
        return environment().deserializeScriptObject(
            tbMemory::BufferView<unsigned char>(block.get(), size));
    }

    // The start of the table, a key, and the record of the long text.
    static constexpr std::size_t LONG_TEXT_END = 4 + 12 + 263004;

    int m_object = 0;
    std::vector<unsigned char> m_bytes;
    std::size_t m_tail = 0;
    int m_slots = 0;
};

TEST_F(ScriptValueLargeDamageTest, WholeBytesAreRead)
{
    environment().setVar("read", readCut(m_bytes.size()));

    run("assert(read[1] == long and read[2] == 'first' and read[3].name == 'a')");
    run("assert(read[3].pos[1] == 'in' and read[5][3] == 'some longer text')");
    run("assert(read[5][1] == 'b' and read[5][2] == '' and read[5][0.5] == 'c')");
    run("assert(read[6][2] == 'd' and read[7] == 'last' and getmetatable(read[4]) == T)");
}

TEST_F(ScriptValueLargeDamageTest, BytesWithoutTheirEndCannotBeRead)
{
    for (std::size_t size = m_tail; size + 3 < m_bytes.size(); ++size)
        EXPECT_EQ(readCut(size).getInterpreterReference(), nullptr) << size;

    EXPECT_GT(m_bytes.size() - m_tail, 300U);
    EXPECT_EQ(stackHeight(), 0);
    EXPECT_EQ(countRegistrySlots(), m_slots);
}

TEST_F(ScriptValueLargeDamageTest, ChangedBytesAreAValueOrNone)
{
    int read = 0;
    for (std::size_t offset = m_tail; offset < m_bytes.size(); ++offset)
    {
        const unsigned char original = m_bytes[offset];
        for (const unsigned char change : CHANGES)
        {
            m_bytes[offset] = change;
            read += environment().deserializeScriptObject(m_bytes).getType() == 9 ? 1 : 0;
            ASSERT_EQ(stackHeight(), 0) << offset << ": " << int(change);
        }
        m_bytes[offset] = original;
    }

    EXPECT_GT(read, 1000);
    EXPECT_EQ(countRegistrySlots(), m_slots);
    environment().requestGarbageCollection();
}

} // namespace tbScripts::test
