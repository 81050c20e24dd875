#include "environments/lua/bytes/LuaValueWriter.h"

#include "bindings/lua/leaves/LuaLeaves.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/LuaText.h"
#include "environments/lua/bytes/LuaValueFormat.h"

#include <array>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace tbScripts::lua
{

namespace
{

// The stack also holds the host's calls, so only so many open tables lie on it. Few values nest
// deeper.
constexpr std::size_t RESIDENT_DEPTH = 64;
constexpr int SLOTS_PER_TABLE = 2; // the table and its key
constexpr int SLOTS_FOR_WORK = 12; // fewer than the interpreter guarantees
constexpr int COMFORTABLE_SLOTS =
    static_cast<int>(RESIDENT_DEPTH) * SLOTS_PER_TABLE + SLOTS_FOR_WORK;

constexpr int DUMPED = 0;
constexpr int NO_MEMORY_FOR_DUMP = -1; // neither is a status of the interpreter
constexpr int DUMP_TOO_LONG = -2;

// The interpreter calls this; an exception would have to pass through the interpreter's frames.
int appendDumpedPiece(lua_State* /*state*/, const void* piece, std::size_t size, void* bytes)
{
    try
    {
        std::memcpy(static_cast<GrowingBytes*>(bytes)->extend(size), piece, size);
        return DUMPED;
    }
    catch (const std::bad_alloc&)
    {
        return NO_MEMORY_FOR_DUMP;
    }
    catch (const std::length_error&)
    {
        return DUMP_TOO_LONG;
    }
}

// Returns false for most strings that do not read as numbers: those that begin with a letter,
// unless their first and third letters are those of "inf" or "nan". Asking the interpreter takes
// far longer.
bool mayReadAsNumber(const tbMemory::StringView& text)
{
    const auto lowered = [&text](std::size_t i)
    { return static_cast<char>(text.data()[i] | 0x20); };
    if (text.empty() || lowered(0) < 'a' || lowered(0) > 'z')
        return true;
    return text.size() > 2 &&
           ((lowered(0) == 'i' && lowered(2) == 'f') || (lowered(0) == 'n' && lowered(2) == 'n'));
}

// Returns the box on top of the stack if its type was unknown when it was created, else null.
// Blocks of another size or with a metatable are foreign.
LuaInstanceBox* untypedBoxOnTop(lua_State* state)
{
    void* const block = lua_touserdata(state, -1);
    if (lua_objlen(state, -1) != INSTANCE_BOX_SIZE || !hasFlagsOfABox(block))
        return nullptr;
    if (!lua_getmetatable(state, -1))
        return static_cast<LuaInstanceBox*>(block);
    lua_pop(state, 1);
    return nullptr;
}

} // namespace

LuaValueWriter::LuaValueWriter(const LuaStateSlot& slot, bool transferOwnership, std::size_t limit)
    : m_slot(slot)
    , m_transferOwnership(transferOwnership)
    , m_bytes(limit)
    , m_markDepth(1)
    , m_residentDepth(0)
    , m_savedIndex(0)
    , m_ownersIndex(0)
    , m_ownerCount(0)
{
}

void LuaValueWriter::write(lua_State* state)
{
    const int type = lua_type(state, -1);
    bool isWritten = true;
    if (type == LUA_TTABLE || type == LUA_TUSERDATA)
        _prepareSideTables(state);
    if (type == LUA_TTABLE)
        isWritten = _writeTables(state);
    else if (type == LUA_TFUNCTION)
        isWritten = _writeFunction(state);
    else
        _writeValue(state, type);
    if (!isWritten)
        return;
    // The buffer first: if there is no memory for it, the instances must still own their objects.
    m_buffer = tbMemory::Buffer(m_bytes.data(), m_bytes.size());
    _releaseOwners(state);
}

tbMemory::Buffer LuaValueWriter::takeBuffer()
{
    return std::move(m_buffer);
}

// Stack: +3, two tables and a copy of the value below them.
void LuaValueWriter::_prepareSideTables(lua_State* state)
{
    lua_createtable(state, 0, 0);
    lua_createtable(state, 0, 0);
    m_ownersIndex = lua_gettop(state);
    m_savedIndex = m_ownersIndex - 1;
    // A call with thousands of arguments leaves no room.
    if (lua_checkstack(state, COMFORTABLE_SLOTS))
        m_residentDepth = RESIDENT_DEPTH;
    lua_pushvalue(state, m_savedIndex - 1);
}

// Stack: +0.
void LuaValueWriter::_writeValue(lua_State* state, int type)
{
    switch (type)
    {
    case LUA_TBOOLEAN:
        _putTag(TAG_BOOLEAN, lua_toboolean(state, -1) ? 1 : 0);
        break;
    case LUA_TNUMBER:
        _putNumber(TAG_NUMBER, lua_tonumber(state, -1));
        break;
    case LUA_TSTRING:
        _putText(TAG_TEXT, textAt(state, -1));
        break;
    case LUA_TUSERDATA:
        _writeInstance(state);
        break;
    default:
        // Compatibility: the value has no record, but in a table its key has one (decision 0014).
        break;
    }
}

bool LuaValueWriter::_writeFunction(lua_State* state)
{
    if (isLeaf(state, -1))
        return false; // it is a function of the host for scripts
    *m_bytes.extend(1) = TAG_FUNCTION;
    const int status = lua_dump(state, &appendDumpedPiece, &m_bytes);
    if (status == NO_MEMORY_FOR_DUMP)
        throw std::bad_alloc();
    if (status == DUMP_TOO_LONG)
        m_bytes.throwTooLong();
    return status == DUMPED; // functions of the host have no dump
}

// Writes the table on top of the stack and the tables in it. Returns false if one contains itself.
bool LuaValueWriter::_writeTables(lua_State* state)
{
    bool isOpened = _openTable(state);
    while (isOpened && !m_openTables.empty())
    {
        if (lua_next(state, -2) == 0)
        {
            _closeTable(state);
            continue;
        }
        _writeKey(state);
        const int type = lua_type(state, -1);
        if (type == LUA_TTABLE)
        {
            isOpened = _openTable(state);
            continue;
        }
        _writeValue(state, type);
        lua_pop(state, 1);
    }
    return isOpened;
}

// Writes the key under the topmost value. Stack: +0.
//
// Compatibility: a string that reads as a number becomes that number, and a key that is neither
// string nor number becomes the empty string (docs/script-value-bytes.md#writing).
void LuaValueWriter::_writeKey(lua_State* state)
{
    constexpr int INDEX = -2;
    const int type = lua_type(state, INDEX);
    if (type == LUA_TNUMBER)
    {
        _putNumber(TAG_NUMBER_KEY, lua_tonumber(state, INDEX));
        return;
    }
    const tbMemory::StringView text =
        type == LUA_TSTRING ? textAt(state, INDEX) : tbMemory::StringView();
    if (mayReadAsNumber(text) && lua_isnumber(state, INDEX))
        _putNumber(TAG_NUMBER_KEY, lua_tonumber(state, INDEX));
    else
        _putText(TAG_TEXT_KEY, text);
}

// Begins the table on top of the stack; its key in the table around it is below. Returns false if
// the table contains itself.
//
// Each table is compared with one open table only, the mark: the deepest whose depth is a power of
// two. That is enough. A table that contains itself makes the walk open the same tables again and
// again, so the depth grows past every power of two; as soon as the mark is among those that repeat
// and is deeper than a round is long, the next round meets it. That is at three times the depth
// where the first table is met again, at most.
//
// Stack: +1, the place of the first key; less the parent, if it is saved elsewhere.
bool LuaValueWriter::_openTable(lua_State* state)
{
    const void* const table = lua_topointer(state, -1);
    if (!m_openTables.empty() && m_openTables[m_markDepth - 1] == table)
        return false;
    if (m_openTables.size() >= m_residentDepth && !m_openTables.empty())
        _saveParent(state);
    m_openTables.push_back(table);
    if (m_openTables.size() == 2 * m_markDepth)
        m_markDepth *= 2;
    _putTag(TAG_TABLE, 0);
    lua_pushnil(state);
    return true;
}

// Stack: -1, the table; its key in the table around it is on top again.
void LuaValueWriter::_closeTable(lua_State* state)
{
    _putTag(TAG_TABLE_END, 0);
    m_openTables.pop_back();
    if (m_openTables.size() < m_markDepth && m_markDepth > 1)
        m_markDepth /= 2;
    lua_pop(state, 1);
    if (m_openTables.size() >= m_residentDepth && !m_openTables.empty())
        _restoreParent(state);
}

int LuaValueWriter::_savedSlot() const
{
    return static_cast<int>(m_openTables.size() - m_residentDepth) * SLOTS_PER_TABLE + 1;
}

// Stack: -2, the table and the key under the topmost value.
void LuaValueWriter::_saveParent(lua_State* state)
{
    const int slot = _savedSlot();
    lua_insert(state, -3);
    lua_rawseti(state, m_savedIndex, slot);
    lua_rawseti(state, m_savedIndex, slot + 1);
}

// Stack: +2, what `_saveParent` saved. The slots are reused, so nothing clears them.
void LuaValueWriter::_restoreParent(lua_State* state)
{
    const int slot = _savedSlot();
    lua_rawgeti(state, m_savedIndex, slot + 1);
    lua_rawgeti(state, m_savedIndex, slot);
}

// Writes the userdata on top of the stack. Stack: +0.
void LuaValueWriter::_writeInstance(lua_State* state)
{
    const LuaInstance instance = boxAt(m_slot, state, -1);
    const LuaInstanceBox* const box = instance.box ? instance.box : untypedBoxOnTop(state);
    const bool isUsable = instance.box ? instance.isUsable() : box && !box->isDestroyed;
    void* const object = isUsable ? box->object : nullptr;
    if (instance.box)
        _putTypedInstance(object, upToFirstNul(instance.typeName));
    else
        _putUntypedInstance(object);
    if (!isUsable || !box->gcEnabled || !m_transferOwnership)
        return;
    // Keeps the box alive until the whole value is written.
    lua_pushvalue(state, -1);
    lua_rawseti(state, m_ownersIndex, ++m_ownerCount);
}

// Stack: +0. Never raises.
void LuaValueWriter::_releaseOwners(lua_State* state) const
{
    for (int i = 1; i <= m_ownerCount; ++i)
    {
        lua_rawgeti(state, m_ownersIndex, i);
        static_cast<LuaInstanceBox*>(lua_touserdata(state, -1))->gcEnabled = false;
        lua_pop(state, 1);
    }
}

void LuaValueWriter::_putTag(unsigned char tag, unsigned char next)
{
    const std::array<unsigned char, ALIGNMENT> record{tag, next};
    std::memcpy(m_bytes.extend(record.size()), record.data(), record.size());
}

void LuaValueWriter::_putNumber(unsigned char tag, double number)
{
    unsigned char* const record = m_bytes.extend(NUMBER_SIZE);
    std::memset(record, 0, NUMBER_OFFSET);
    *record = tag;
    storeNumber(record + NUMBER_OFFSET, number);
}

void LuaValueWriter::_putText(unsigned char tag, const tbMemory::StringView& text)
{
    const std::size_t size = textRecordSize(text.size());
    unsigned char* const record = m_bytes.extend(size);
    std::memset(record + size - ALIGNMENT, 0, ALIGNMENT); // the final zero stands there
    *record = tag;
    if (!text.empty())
        std::memcpy(record + TEXT_OFFSET, text.data(), text.size());
}

void LuaValueWriter::_putTypedInstance(void* object, const tbMemory::StringView& typeName)
{
    unsigned char* const start = m_bytes.extend(TYPE_NAME_RECORD_OFFSET);
    start[0] = TAG_INSTANCE;
    start[1] = m_transferOwnership ? 1 : 0;
    _putText(TAG_TEXT, typeName);
    constexpr std::array<unsigned char, TYPE_NAME_RECORD_OFFSET> PADDING{};
    std::memcpy(m_bytes.extend(PADDING.size()), PADDING.data(), PADDING.size());
    storePointer(m_bytes.extend(POINTER_SIZE), object);
}

// Compatibility: without a type, byte 1 does not say whether ownership is transferred, and the
// pointer is stored at offset 4, while the reader reads it at offset 8 (decision 0014).
void LuaValueWriter::_putUntypedInstance(void* object)
{
    _putTag(TAG_INSTANCE, 0);
    storePointer(m_bytes.extend(POINTER_SIZE), object);
}

} // namespace tbScripts::lua
