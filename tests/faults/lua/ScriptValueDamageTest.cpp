// Damaged buffers: cut at every length, and changed at every offset. Whatever they are, they give a
// value or an empty reference, every read stays inside of them, and the interpreter is as before.

#include "support/EnvironmentStateFixture.h"
#include "support/RowName.h"

#include <tbScripts/UserType.h>

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

void PrintTo(const DamageRow& row, std::ostream* stream)
{
    *stream << row.row;
}

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

} // namespace

class DamageFixture : public EnvironmentStateFixture,
                      public ::testing::WithParamInterface<DamageRow>
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

class CutBytesTest : public DamageFixture
{
};

INSTANTIATE_TEST_SUITE_P(Plain, CutBytesTest, ::testing::ValuesIn(plainRows()), RowName());
INSTANTIATE_TEST_SUITE_P(Tables, CutBytesTest, ::testing::ValuesIn(tableRows()), RowName());
INSTANTIATE_TEST_SUITE_P(Functions, CutBytesTest, ::testing::ValuesIn(functionRows()), RowName());

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

class CutTableTest : public DamageFixture
{
};

INSTANTIATE_TEST_SUITE_P(Tables, CutTableTest, ::testing::ValuesIn(tableRows()), RowName());

TEST_P(CutTableTest, CannotBeReadWithoutItsEnd)
{
    for (std::size_t size = 8; size + 3 < m_bytes.size(); ++size)
        EXPECT_FALSE(readCut(size)) << size;

    expectInterpreterAsBefore();
}

class CutFunctionTest : public DamageFixture
{
};

INSTANTIATE_TEST_SUITE_P(Code, CutFunctionTest, ::testing::ValuesIn(functionRows()), RowName());

TEST_P(CutFunctionTest, CannotBeRead)
{
    for (std::size_t size = 2; size < m_bytes.size(); ++size)
        EXPECT_FALSE(readCut(size)) << size;

    expectInterpreterAsBefore();
}

class ChangedBytesTest : public DamageFixture
{
};

INSTANTIATE_TEST_SUITE_P(Plain, ChangedBytesTest, ::testing::ValuesIn(plainRows()), RowName());
INSTANTIATE_TEST_SUITE_P(Tables, ChangedBytesTest, ::testing::ValuesIn(tableRows()), RowName());

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

} // namespace tbScripts::test
