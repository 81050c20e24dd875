// Damaged buffers: cut at every length, and changed at every offset. Whatever they are, they give a
// value or an empty reference, every read stays inside of them, and the interpreter is as before.

#include "support/EnvironmentStateFixture.h"
#include "support/RowName.h"

#include <tbScripts/UserType.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct DamageRow
{
    const char* row;
    const char* expression;
};

// Compiled code is trusted: changed, it may do anything. Cut off it is not accepted.
std::vector<DamageRow> functionRows()
{
    return {
        {"EmptyFunction", "function() end"},
        {"Function", "function(a) local function f() return a end return f() .. 'text' end"}};
}

std::vector<DamageRow> plainRows()
{
    return {
        {"Truth", "true"}, {"Number", "-1.5"}, {"Text", "'some text'"}, {"Instance", "T.new()"}};
}

std::vector<DamageRow> tableRows()
{
    return {
        {"EmptyTable", "{}"},
        {"List", "{1, 2, 3, 'four', false}"},
        {"Record", "{id = 1, name = 'entity', pos = {x = 1.5, y = -2}, alive = true}"},
        {"Records", "{{a = 1, b = 2}, {a = 3, b = 4}, {a = 5, b = 6, c = {7, {8, {9}}}}}"},
        {"OddKeys", "{['10'] = 1, nan = {2}, inf = 3, [true] = 4, f = print, [-0.5] = {}}"},
        {"Instances", "{T.new(), {a = T.new()}, 'text'}"},
        {"UntypedInstances", "{untyped, {a = untyped}, 'text'}"},
        {"TextsOfTags", "{'bbbb', '{{{{{{{{', '}', 'uuuuuuuuuuuuuuuu', k = 'iiiiiiiiiiiiiiii'}"}};
}

class DamageFixture : public OnRows<EnvironmentStateFixture, DamageRow>
{
protected:
    DamageFixture()
    {
        environment().setUserType("T")->setConstructor([this](const Parameters&)
                                                       { return &m_object; });
        environment().setObject("untyped", "Unknown", &m_object);
        run(std::string("v = ") + GetParam().expression);
        ScriptObjectReference value = environment().getScriptFunction("v");
        if (!value.getInterpreterReference())
            value = environment().getVar("v");
        const tbMemory::Buffer bytes = environment().serializeScriptObject(value, true);
        m_bytes.assign(bytes.begin(), bytes.end());
        EXPECT_GE(m_bytes.size(), 4U);
        value = ScriptObjectReference();
        m_slots = countRegistrySlots();
    }

    // Reads the first `size` bytes from a block of exactly that size, so that a check for reads
    // beyond it can tell. What comes of it is written again: it has to be a value.
    bool readCut(std::size_t size)
    {
        const std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
        std::copy_n(m_bytes.begin(), size, block.get());
        const ScriptObjectReference value = environment().deserializeScriptObject(
            tbMemory::BufferView<unsigned char>(block.get(), size));
        const bool isRead = value.getInterpreterReference() != nullptr;
        if (isRead)
        {
            EXPECT_TRUE(value.getType() == 8 || value.getType() == 9);
            environment().serializeScriptObject(value, false);
        }
        return isRead;
    }

    void expectInterpreterAsBefore()
    {
        EXPECT_EQ(stackHeight(), 0);
        EXPECT_EQ(countRegistrySlots(), m_slots);
    }

    int m_object = 0;
    std::vector<unsigned char> m_bytes;
    int m_slots = 0;
};

using CutBytesTest = DamageFixture;

INSTANTIATE_TEST_SUITE_P(
    Plain, CutBytesTest, ::testing::ValuesIn(CutBytesTest::named(plainRows())), RowName());
INSTANTIATE_TEST_SUITE_P(
    Tables, CutBytesTest, ::testing::ValuesIn(CutBytesTest::named(tableRows())), RowName());
INSTANTIATE_TEST_SUITE_P(
    Functions, CutBytesTest, ::testing::ValuesIn(CutBytesTest::named(functionRows())), RowName());

TEST_P(CutBytesTest, AreAValueOrNone)
{
    for (std::size_t size = 0; size < m_bytes.size(); ++size)
    {
        SCOPED_TRACE(size);
        readCut(size);
        expectInterpreterAsBefore();
    }

    EXPECT_TRUE(readCut(m_bytes.size()));
    environment().requestGarbageCollection();
}

using CutTableTest = DamageFixture;

ROWS(CutTableTest, tableRows());

TEST_P(CutTableTest, CannotBeReadWithoutItsEnd)
{
    for (std::size_t size = 8; size + 3 < m_bytes.size(); ++size)
        EXPECT_FALSE(readCut(size)) << size;

    expectInterpreterAsBefore();
}

using CutFunctionTest = DamageFixture;

ROWS(CutFunctionTest, functionRows());

TEST_P(CutFunctionTest, CannotBeRead)
{
    for (std::size_t size = 2; size < m_bytes.size(); ++size)
        EXPECT_FALSE(readCut(size)) << size;

    expectInterpreterAsBefore();
}

using ChangedBytesTest = DamageFixture;

INSTANTIATE_TEST_SUITE_P(
    Plain, ChangedBytesTest, ::testing::ValuesIn(ChangedBytesTest::named(plainRows())), RowName());
INSTANTIATE_TEST_SUITE_P(
    Tables, ChangedBytesTest, ::testing::ValuesIn(ChangedBytesTest::named(tableRows())), RowName());

TEST_P(ChangedBytesTest, AreAValueOrNone)
{
    int read = 0;
    for (std::size_t offset = 0; offset < m_bytes.size(); ++offset)
    {
        const unsigned char original = m_bytes[offset];
        for (int value = 0; value < 256; ++value)
        {
            m_bytes[offset] = static_cast<unsigned char>(value);
            read += readCut(m_bytes.size()) ? 1 : 0;
            ASSERT_EQ(stackHeight(), 0) << offset << ": " << value;
        }
        m_bytes[offset] = original;
    }

    EXPECT_GT(read, 256); // those of paddings at least
    expectInterpreterAsBefore();
    environment().requestGarbageCollection();
}

// Whole records are put where others were, so that what follows is met at every place.
TEST_P(ChangedBytesTest, OfOtherTagsAreAValueOrNone)
{
    const std::vector<unsigned char> original = m_bytes;
    for (std::size_t first = 0; first < m_bytes.size(); first += 4)
    {
        for (std::size_t second = 0; second < m_bytes.size(); second += 4)
        {
            std::copy_n(
                original.begin() + static_cast<std::ptrdiff_t>(second),
                4,
                m_bytes.begin() + static_cast<std::ptrdiff_t>(first));
            readCut(m_bytes.size());
            m_bytes = original;
        }
    }

    expectInterpreterAsBefore();
    environment().requestGarbageCollection();
}

// Damage behind the first quarter of a megabyte: readers of large buffers look ahead. Every read
// stays inside of the bytes, and the interpreter is as before.

constexpr const char* VALUE =
    "v = {long, 'first', {id = 1, name = 'a', pos = {x = 1, 'in'}, alive = true}, T.new(),"
    " {'b', '', 'some longer text', [0.5] = 'c'}, {untyped, 'd'}, f = print, 'last'}";

constexpr unsigned char CHANGES[] = {
    0, 1, 4, 'a', 'b', 'f', 'i', 'k', 'n', 's', 'u', '{', '|', '}', 0x7F, 0x80, 0xFF};

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

} // namespace

} // namespace tbScripts::test
