// Tables of compiled scripts against those of the same source that was never dumped.

#include "scripts/lua/LuaEmptySlots.h"

#include "core/lua/LuaPrivateState.h"
#include "scripts/lua/LuaCodeProbe.h"
#include "scripts/lua/LuaScriptStrategy.h"
#include "support/Matchers.h"
#include "support/RowName.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

// A table and how it is created, out of `i`, which is 7, `no`, which is nil, and functions.
struct ConstructorRow
{
    const char* row;
    const char* statements;
    bool doesCodeTellAll = true; // else slots are missing that no instruction uses
};

// Prints a value with everything in it, keys in order.
constexpr const char* PRINT = R"(
function show(value)
    if type(value) ~= 'table' then return tostring(value) end
    local parts = {}
    for k, v in pairs(value) do parts[#parts + 1] = tostring(k) .. '=' .. show(v) end
    table.sort(parts)
    return '{' .. table.concat(parts, ',') .. '}'
end
)";

constexpr const char* SURROUNDINGS = R"(
local i, no = 7, nil
local function f(...) return ... end
local function create() )";

// Counts the blocks of memory that the interpreter asks for.
class CountedAllocations
{
public:
    explicit CountedAllocations(lua_State* state)
        : m_state(state)
    {
        m_allocate = lua_getallocf(state, &m_data);
        lua_setallocf(state, &_allocate, this);
    }

    CountedAllocations(const CountedAllocations&) = delete;
    CountedAllocations& operator=(const CountedAllocations&) = delete;

    ~CountedAllocations() { lua_setallocf(m_state, m_allocate, m_data); }

    std::size_t get() const { return m_count; }

private:
    static void* _allocate(void* self, void* block, std::size_t oldSize, std::size_t newSize)
    {
        auto& counted = *static_cast<CountedAllocations*>(self);
        if (newSize != 0)
            ++counted.m_count;
        return counted.m_allocate(counted.m_data, block, oldSize, newSize);
    }

    lua_State* m_state;
    lua_Alloc m_allocate;
    void* m_data = nullptr;
    std::size_t m_count = 0;
};

std::string bytesOf(const tbMemory::Buffer& code)
{
    return std::string(reinterpret_cast<const char*>(code.data()), code.size());
}

int appendToBuffer(lua_State* /*state*/, const void* bytes, std::size_t size, void* target)
{
    static_cast<tbMemory::Buffer*>(target)->append(bytes, size);
    return 0;
}

// What the interpreter itself writes.
tbMemory::Buffer dumpOf(const std::string& sources)
{
    tbMemory::Buffer code;
    const lua::LuaPrivateState state;
    EXPECT_EQ(luaL_loadbuffer(state.get(), sources.data(), sources.size(), sources.c_str()), 0);
    EXPECT_EQ(lua_dump(state.get(), &appendToBuffer, &code), 0);
    return code;
}

tbMemory::Buffer compiledByLibrary(const std::string& sources)
{
    lua::LuaScriptStrategy compiler(std::make_shared<const tbMemory::String>("test"));
    EXPECT_TRUE(compiler.load(sources));
    return compiler.getBytecode()->code;
}

// What a chunk that returns a value has returned, and what its second run asked for.
struct Outcome
{
    std::string shown;
    std::size_t allocations;
};

Outcome outcomeOf(const std::string& chunk)
{
    const lua::LuaPrivateState owner;
    lua_State* const state = owner.get();
    for (const lua_CFunction open : {&luaopen_base, &luaopen_table, &luaopen_string})
    {
        lua_pushcfunction(state, open);
        lua_call(state, 0, 0);
    }
    lua_gc(state, LUA_GCSTOP, 0);
    EXPECT_EQ(luaL_loadstring(state, PRINT), 0);
    lua_call(state, 0, 0);
    EXPECT_EQ(luaL_loadbuffer(state, chunk.data(), chunk.size(), "chunk"), 0)
        << lua_tostring(state, -1);
    lua_call(state, 0, 1);
    lua_pushvalue(state, -1);
    lua_call(state, 0, 0);

    Outcome outcome{"", 0};
    lua_getglobal(state, "show");
    lua_pushvalue(state, -2);
    {
        const CountedAllocations counted(state);
        lua_call(state, 0, 1);
        outcome.allocations = counted.get();
    }
    lua_call(state, 1, 1);
    outcome.shown = lua_tostring(state, -1);
    return outcome;
}

std::string chunkOf(const std::string& statements)
{
    return SURROUNDINGS + statements + " end return create";
}

std::string manyKeys(int count, const char* value)
{
    std::string statements = "return { a1 = 1";
    for (int i = 0; i < count; ++i)
        statements += ", key" + std::to_string(i) + " = " + value;
    return statements + " }";
}

std::string manyValues(int count)
{
    std::string statements = "return { 'first'";
    for (int n = 0; n < count; ++n)
        statements += ", i";
    return statements + " }";
}

// Statements that give `show` something, which is the value of the last expression.
const ConstructorRow CONSTRUCTORS[] = {
    {"Nothing", "return {}"},
    {"Constants", "return { a = 1, b = 'x', c = true, 1, 2, [10] = 5, [2.5] = 6 }"},
    {"VariablesAlone", "return { a = i, b = i, c = i, d = i, e = i }"},
    {"ConstantsAndVariables", "return { id = i, x = i, y = i, life = 100, kind = 'a' }"},
    {"NilStored", "return { a = no, b = i, c = no, d = 1 }"},
    {"FalseStored", "return { a = i == 8, b = false, c = not i }"},
    {"NilConstants", "return { a = nil, b = i, c = nil, d = 1 }", false},
    {"ArrayOfBoth", "return { 1, 2, i, i, i, i }"},
    {"ArrayWithGaps", "return { 1, nil, 3, no, i }"},
    {"ArrayOfVariables", "return { i, i, i }"},
    {"ArrayAndKeys", "return { 1, a = i, i, b = 2, i, i }"},
    {"KeysAndArrayOfVariables", "return { a = i, i, i, i }"},
    {"AllResults", "return { a = i, f(1, 2, 3) }"},
    {"AllResultsBehindOthers", "return { 'x', i, b = i, f(1) }"},
    {"NoResults", "return { 'x', b = i, f() }"},
    {"OneResult", "return { a = i, (f(1, 2)) }"},
    {"Nested", "return { a = i, p = { x = i, y = i, q = { i, 1, z = i } }, b = i }"},
    {"NestedInArray", "return { { x = i }, { x = i, y = 1 }, a = { i, 1, i }, { { 1, i } } }"},
    {"NestedConstants", "return { p = { x = 1 }, q = { 1, 2 }, r = {} }"},
    {"KeyTwice", "return { a = 1, a = i, b = i, b = 2, c = i, c = i }"},
    {"NumbersAsKeys", "return { [3] = i, [1] = i, x = i, [1000] = i, [-1] = i, [0] = i }", false},
    {"ComputedKeys", "return { [f('a')] = i, x = i, [i] = i, ['b c'] = i, [f(true)] = 1 }"},
    {"ChosenValues", "return { a = i == 7 and 'x' or 'y', b = no or i, c = no and 1, d = i < 3 }"},
    {"ChosenKeys", "return { x = 1, [no and 'a' or 'b'] = i, [i and 'c' or 'd'] = i }"},
    {"ChosenTables",
     "local t = no or { x = i, y = 1 } local s = i and { z = i } or {} s.t = t return s"},
    {"Functions", "return { f = show, g = function() return i end, a = f(i) } and 1"},
    {"Local", "local t = { a = i, b = 1 } return t"},
    {"LocalsAtOnce", "local t, s = { a = i, b = 1 }, { c = i, d = 1 } return { t = t, s = s }"},
    {"LocalThatGrows", "local t = { a = i } t.b = i t.c = i t.d = i t.e = i return t"},
    {"LocalThatMightGrow", "local t = { a = i } if no then t.b = i t.c = i end return t"},
    {"LocalAssigned", "local t t = { a = 1 } t.b = i if no then t.c = i end return t"},
    {"LocalAssignedVariables", "local t = {} t = { a = i } if no then t.c = i end return t"},
    {"OuterVariable",
     "local t local function g() t = { a = i, b = 1 } if no then t.c = 1 end end g() "
     "return t"},
    {"Global", "global = { a = i, b = 1 } if no then global.c = i end return global"},
    {"Field",
     "local t = {} t.a = { x = i, y = 1 } t.b = { x = i } if no then t.a.z = 1 end return t"},
    {"Argument", "return (f({ a = i, b = 1 }, { c = i }))"},
    {"ArgumentAlone", "return f { a = i, b = 1 }"},
    {"Method", "local o = { m = function(self, t) return t end } return o:m { a = i, b = 1 }"},
    {"MethodOfItself",
     "return ({ a = i, b = 1, m = function(self) self.m = nil return self end }):m()"},
    {"FieldOfItself", "return ({ a = i, b = { c = i } }).b"},
    {"Compared", "if { a = i } == { b = i } then return 1 end local t = { c = i } return t"},
    {"Loop", "local all = {} for n = 1, 5 do all[n] = { n = n, x = 1, t = { n } } end return all"},
    {"WhileLoop",
     "local n, t = 0 while n < 3 do n = n + 1 t = { n = n, t = t, c = 1 } end return t"},
    {"Iterated", "local all = {} for k, v in pairs { a = i, b = 1 } do all[k] = v end return all"},
    {"Lengths", "return { #{ 1, 2, i }, #{ i, 2 }, #{ n = i }, #{ 1, i, f(1, 2) } }"},
    {"Concatenated", "return { a = i .. 'x', b = { c = 'y' .. i } }"},
    {"Parameters",
     "local function g(a, b) local t = { a = a, b = b, 1 } return t end return g(1, i)"},
    {"Varargs", "local function g(...) return { n = select, ..., } end return #g(1, 2, 3)"},
    {"VarargsBehind", "local function g(...) return { 'x', a = i, ... } end return g(1, 2)"},
    {"ManyLocals",
     "local a, b, c, d = 1, 2, 3, 4 do local e, g = 5 end local t = { a = a, d = d, x = 1 } "
     "do local u = { t = t, b = b } return u end"},
};

class LuaEmptySlotsTest : public OnRows<::testing::Test, ConstructorRow>
{
};

ROWS(
    LuaEmptySlotsTest,
    std::vector<ConstructorRow>(std::begin(CONSTRUCTORS), std::end(CONSTRUCTORS)));

TEST_P(LuaEmptySlotsTest, TablesAreThoseOfTheSource)
{
    const std::string chunk = chunkOf(GetParam().statements);

    const Outcome ofSource = outcomeOf(chunk);
    const Outcome ofCode = outcomeOf(bytesOf(compiledByLibrary(chunk)));

    EXPECT_EQ(ofCode.shown, ofSource.shown);
    if (GetParam().doesCodeTellAll)
    {
        EXPECT_EQ(ofCode.allocations, ofSource.allocations);
    }
}

// A dump of every cut and with every byte changed in turn is read without harm; what comes out is
// not loaded, as no damaged dump is.
TEST_P(LuaEmptySlotsTest, DamagedCodeIsReadWithoutHarm)
{
    const std::string whole = bytesOf(dumpOf(chunkOf(GetParam().statements)));

    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        const std::unique_ptr<char[]> exact(new char[size]); // a sanitizer sees its end
        whole.copy(exact.get(), size);
        EXPECT_EQ(lua::withEmptySlots(tbMemory::StringView(exact.get(), size)), "") << size;
    }
    for (std::size_t i = 0; i < whole.size(); ++i)
    {
        for (const int change : {0x01, 0x7F, 0x80, 0xFF})
        {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ change);
            lua::withEmptySlots(damaged);
        }
    }
}

TEST(LuaEmptySlotsSizeTest, ManyKeysAndValuesHaveTheirSlots)
{
    for (const std::string& statements :
         {manyKeys(200, "i"), manyKeys(1000, "i"), manyValues(200), manyValues(1000)})
    {
        const std::string chunk = chunkOf(statements);
        const Outcome ofSource = outcomeOf(chunk);
        const Outcome ofCode = outcomeOf(bytesOf(compiledByLibrary(chunk)));
        EXPECT_EQ(ofCode.shown, ofSource.shown);
        EXPECT_EQ(ofCode.allocations, ofSource.allocations) << statements.substr(0, 40);
    }
}

TEST(LuaEmptySlotsSizeTest, CodeWithoutSuchTablesIsTheDump)
{
    for (const char* sources :
         {"", "return { a = 1, 2 }", "local t = {} t.a = t", "return { ... }, { [...] = 1 }"})
        EXPECT_EQ(bytesOf(compiledByLibrary(sources)), bytesOf(dumpOf(sources))) << sources;
}

TEST(LuaEmptySlotsSizeTest, CodeWithAllSlotsStaysAsItIs)
{
    const std::string sources = "local i = ... return { a = i, b = 1, 2, i }";
    const std::string code = bytesOf(compiledByLibrary(sources));
    ASSERT_NE(code, bytesOf(dumpOf(sources)));

    EXPECT_EQ(lua::withEmptySlots(code), "");
}

// Without debug information nobody knows where constructors are over.
TEST(LuaEmptySlotsSizeTest, CodeWithoutDebugInformationStaysAsItIs)
{
    const lua::LuaPrivateState owner;
    lua_State* const state = owner.get();
    lua_pushcfunction(state, &luaopen_string);
    lua_call(state, 0, 0);
    lua_getglobal(state, "string");
    lua_getfield(state, -1, "dump");
    ASSERT_EQ(luaL_loadstring(state, "local i = ... return { a = i, b = 1 }"), 0);
    lua_pushboolean(state, 1);
    lua_call(state, 2, 1);
    std::size_t size = 0;
    const char* const bytes = lua_tolstring(state, -1, &size);

    EXPECT_EQ(lua::withEmptySlots(tbMemory::StringView(bytes, size)), "");
}

TEST(LuaCodeProbeTest, InterpreterOfTheTestsIsUnderstood)
{
    EXPECT_TRUE(lua::isCodeUnderstood());
}

} // namespace

} // namespace tbScripts::test
