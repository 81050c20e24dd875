// Elements of instances that leaves read and write.

#include "bindings/lua/types/LuaTypeTable.h"
#include "support/LeafFixture.h"

#include <array>
#include <cstddef>
#include <memory>

namespace tbScripts::test
{

namespace
{

using typed::KIND;

using Elements = std::array<double, 4>;

double readElementOf(typed::LeafGuard* /*guard*/, void* object, int index)
{
    return static_cast<Elements*>(object)->at(static_cast<std::size_t>(index));
}

void writeElementOf(typed::LeafGuard* /*guard*/, void* object, int index, double value)
{
    static_cast<Elements*>(object)->at(static_cast<std::size_t>(index)) = value;
}

constexpr typed::TypeId VEC{0};

// The C functions know no array access here, so they return nothing.
class LeafElementTest : public LeafFixture
{
protected:
    LeafElementTest()
    {
        lua::LuaTypeTable::pushParts(slot(), state(), m_core);
        lua_setglobal(state(), "parts");
        m_core->bindTo(VEC);
        lua::pushInstance(slot(), state(), &m_elements, false, "Vec");
        lua_setglobal(state(), "vec");
        run("function look() local r for i = 1, 300 do r = vec[2] end return r end "
            "function write(value) for i = 1, 300 do vec[2] = value end end");
    }

    ~LeafElementTest() override { closeState(); }

    void publishRead()
    {
        static const typed::Leaf leaf{entryOf(&readElementOf)};
        static constexpr typed::Parameter parameters[] = {
            {KIND::DOUBLE}, {KIND::OBJECT, false, &VEC}, {KIND::INT}};
        static const typed::Signature signature{nullptr, parameters, 2, &leaf};
        publish(lua::ELEMENT_ACCESS::READ, signature);
    }

    void publishWrite()
    {
        static const typed::Leaf leaf{entryOf(&writeElementOf)};
        static constexpr typed::Parameter parameters[] = {
            {KIND::NOTHING}, {KIND::OBJECT, false, &VEC}, {KIND::INT}, {KIND::DOUBLE}};
        static const typed::Signature signature{nullptr, parameters, 3, &leaf};
        publish(lua::ELEMENT_ACCESS::WRITE, signature);
    }

    void publish(lua::ELEMENT_ACCESS access, const typed::Signature& signature)
    {
        lua_getglobal(state(), "parts");
        m_leaf = lua::LuaTypeTable::publishElementLeaf(handle(), state(), access, signature);
        lua_pop(state(), 1);
    }

    Elements m_elements{0.5, 1.5, 2.5, 3.5};
    std::shared_ptr<lua::LuaTypeCore> m_core = std::make_shared<lua::LuaTypeCore>(handle(), "Vec");
    std::unique_ptr<CompiledLeaf> m_leaf; // outlives the state
};

} // namespace

TEST_F(LeafElementTest, IsRead)
{
    publishRead();
    EXPECT_EQ(run("return look()"), "2.5");
    EXPECT_EQ(compiled("vec[i % 4]"), "0.5");
    EXPECT_EQ(compiled("vec.name"), "nil");
}

TEST_F(LeafElementTest, IsWritten)
{
    publishWrite();
    run("write(7)");
    EXPECT_EQ(m_elements, (Elements{0.5, 1.5, 7, 3.5}));
    run("write('8')");
    EXPECT_EQ(m_elements, (Elements{0.5, 1.5, 7, 3.5}));
}

TEST_F(LeafElementTest, IsReadByTheFunctionWithoutCompiler)
{
    publishRead();
    EXPECT_EQ(uncompiled("vec[2]"), "nil");
}

TEST_F(LeafElementTest, IsReadByTheFunctionAgainIfThatIsWanted)
{
    publishRead();
    EXPECT_EQ(run("return look()"), "2.5");
    m_leaf.reset();
    EXPECT_EQ(run("return look()"), "nil"); // by the code that was compiled before
    EXPECT_EQ(compiled("vec[2]"), "nil");
    publishRead();
    EXPECT_EQ(compiled("vec[2]"), "2.5");
}

TEST_F(LeafElementTest, IsNoneAfterTheEndOfTheType)
{
    publishRead();
    EXPECT_EQ(run("return look()"), "2.5");
    m_core->forgetTable();
    m_core->isAlive = false;
    EXPECT_THAT(run("return look()"), ::testing::HasSubstr("Vec"));
}

TEST_F(LeafElementTest, BelongsToTheTypeThatIsBoundToItsTypeOfTheHost)
{
    static constexpr typed::TypeId other{0};
    publishRead();
    EXPECT_EQ(run("return look()"), "2.5");
    m_core->bindTo(other);
    EXPECT_EQ(run("return look()"), "nil");
    m_core->bindTo(VEC);
    EXPECT_EQ(run("return look()"), "2.5");
}

} // namespace tbScripts::test
