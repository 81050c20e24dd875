#include "environments/lua/bytes/LuaValueReader.h"

#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/LuaText.h"
#include "environments/lua/bytes/LuaValueFormat.h"
#include "environments/lua/chunks/LuaDump.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tbScripts::lua
{

namespace
{

constexpr int SLOTS_PER_TABLE = 2; // the table and the key that is being read
constexpr int SLOTS_FOR_WORK = 12; // fewer than the interpreter guarantees
constexpr int COMFORTABLE_SLOTS =
    static_cast<int>(LuaValueReader::RESIDENT_DEPTH) * SLOTS_PER_TABLE + LuaRecentKeys::CAPACITY +
    2 * LuaStringsAhead::CAPACITY +
    SLOTS_FOR_WORK; // those strings are on the stack twice for a time

// A larger value wastes more memory for neighbouring tables that differ than it saves for equal
// ones.
constexpr int MAX_EXPECTED_FIELDS = 16;

// Looking ahead costs a tenth if the strings are in the processor's caches, as those of small
// values mostly are.
constexpr std::size_t LEAST_SIZE_TO_LOOK_AHEAD = std::size_t{256} * 1024;

constexpr const char* CHUNK_NAME = "Deserialization";

// Returns the whole view `bytes` at the first call, and nothing at the second.
const char* readChunk(lua_State* /*state*/, void* bytes, std::size_t* size)
{
    const tbMemory::StringView chunk =
        std::exchange(*static_cast<tbMemory::StringView*>(bytes), tbMemory::StringView());
    *size = chunk.size();
    return chunk.data();
}

// Returns the smallest size of a whole buffer with this tag; 0 for tags that no buffer begins with.
std::size_t leastSize(unsigned char tag)
{
    switch (tag)
    {
    case TAG_BOOLEAN:
        return BOOLEAN_SIZE;
    case TAG_NUMBER:
        return NUMBER_SIZE;
    case TAG_TEXT:
        return LEAST_TEXT_SIZE;
    case TAG_INSTANCE:
        return LEAST_INSTANCE_SIZE;
    case TAG_TABLE:
        return LEAST_TABLE_SIZE;
    default:
        return 0;
    }
}

} // namespace

LuaValueReader::LuaValueReader(
    const LuaStateSlot& slot, const tbMemory::BufferView<unsigned char>& bytes)
    : m_slot(slot)
    , m_data(bytes.data())
    , m_size(bytes.size())
    , m_position(0)
    , m_key(KEY::NONE)
    , m_depth(0)
    , m_residentDepth(0)
    , m_stringsAhead(m_data, m_size)
    , m_savedIndex(0)
    , m_ownersIndex(0)
{
}

// Compatibility: booleans, numbers and strings are script objects too (decision 0026).
FUNCTION_PARAMETER_TYPE LuaValueReader::getType() const
{
    return _isFunction() ? PARAM_TYPE_SCRIPT_FUNCTION : PARAM_TYPE_SCRIPT_OBJECT;
}

bool LuaValueReader::read(lua_State* state)
{
    if (m_size == 0)
        return false;
    if (_isFunction())
        return _pushFunction(state);
    const unsigned char tag = *m_data;
    const std::size_t least = leastSize(tag);
    if (least == 0)
        return false;
    if (m_size < least)
    {
        lua_pushnil(state);
        return true;
    }
    if (tag == TAG_TABLE || tag == TAG_INSTANCE)
        _prepareSideTables(state);
    return tag == TAG_TABLE ? _readTables(state) : _pushValue(state, tag);
}

// The interpreter raises nothing here: it allocates nothing.
void LuaValueReader::handOverOwnership(lua_State* state) const
{
    const int count = static_cast<int>(m_ownedObjects.size());
    for (int i = 1; i <= count; ++i)
    {
        lua_rawgeti(state, m_ownersIndex, i);
        static_cast<LuaInstanceBox*>(lua_touserdata(state, -1))->gcEnabled = true;
        lua_pop(state, 1);
    }
}

bool LuaValueReader::_isFunction() const
{
    return m_size > 0 && *m_data == TAG_FUNCTION;
}

// Stack: +1, the function, or the interpreter's message if the bytes are no function.
bool LuaValueReader::_pushFunction(lua_State* state)
{
    tbMemory::StringView chunk(reinterpret_cast<const char*>(m_data + 1), m_size - 1);
    if (isDump(chunk) && !isWholeDump(chunk))
        return false;
    if (lua_load(state, &readChunk, &chunk, CHUNK_NAME) != 0)
        return false;
    if (!m_slot.isMainThread(state))
    {
        // A coroutine may have another global table; the host's functions use the main thread's.
        m_slot.pushGlobals(state);
        lua_setfenv(state, -2);
    }
    return true;
}

// Stack: +2; the recent keys and the strings ahead if there is room.
void LuaValueReader::_prepareSideTables(lua_State* state)
{
    lua_createtable(state, 0, 0);
    lua_createtable(state, 0, 0);
    m_ownersIndex = lua_gettop(state);
    m_savedIndex = m_ownersIndex - 1;
    // A call with thousands of arguments leaves no room.
    if (!lua_checkstack(state, COMFORTABLE_SLOTS))
        return;
    m_residentDepth = RESIDENT_DEPTH;
    m_recentKeys.reserve(state);
    if (m_size >= LEAST_SIZE_TO_LOOK_AHEAD)
        m_stringsAhead.reserve(state);
}

// Reads the table at the position and the tables in it. Returns false if its end is missing or it
// is malformed. Stack: +1, the table.
bool LuaValueReader::_readTables(lua_State* state)
{
    _openTable(state);
    while (m_depth > 0)
    {
        if (m_position >= m_size || !_readRecord(state, m_data[m_position]))
            return false;
    }
    return true;
}

// Reads one record of a table. Returns false if the record makes the buffer unreadable.
bool LuaValueReader::_readRecord(lua_State* state, unsigned char tag)
{
    switch (tag)
    {
    case TAG_NUMBER_KEY:
        return _readNumberKey(state);
    case TAG_TEXT_KEY:
        _readTextKey(state);
        return true;
    case TAG_TABLE:
        if (m_key == KEY::NONE)
            return false;
        _openTable(state);
        return true;
    case TAG_TABLE_END:
        _closeTable(state);
        return true;
    case TAG_BOOLEAN:
    case TAG_NUMBER:
    case TAG_TEXT:
    case TAG_INSTANCE:
        if (m_key == KEY::NONE || !_pushValue(state, tag))
            return false;
        _setPair(state);
        return true;
    default:
        m_position += ALIGNMENT;
        return true;
    }
}

bool LuaValueReader::_readNumberKey(lua_State* state)
{
    if (!_has(NUMBER_SIZE))
        return false;
    _dropKey(state);
    const double number = loadNumber(m_data + m_position + NUMBER_OFFSET);
    m_position += NUMBER_SIZE;
    m_key = KEY::DROPPED;
    if (std::isnan(number))
        return true;
    lua_pushnumber(state, number);
    m_key = KEY::ON_STACK;
    ++m_fields.numberKeys;
    return true;
}

void LuaValueReader::_readTextKey(lua_State* state)
{
    _dropKey(state);
    const unsigned char* const record = m_data + m_position;
    std::size_t size = m_recentKeys.pushIfExpected(state, record, m_size - m_position);
    if (size == 0)
    {
        size = _pushText(state);
        if (_has(size))
            m_recentKeys.note(state, record, size);
    }
    m_position += size;
    m_key = KEY::ON_STACK;
    ++m_fields.textKeys;
}

// Drops a key that has no value. Stack: less the key, if there is one.
void LuaValueReader::_dropKey(lua_State* state)
{
    if (m_key == KEY::ON_STACK)
        lua_pop(state, 1);
    m_key = KEY::NONE;
}

// Stack: less the value on top, and its key.
void LuaValueReader::_setPair(lua_State* state)
{
    if (m_key == KEY::ON_STACK)
        lua_rawset(state, -3);
    else
        lua_pop(state, 1);
    m_key = KEY::NONE;
}

// Begins the table at the position. Stack: +1, the new table; less the table around it, if that is
// saved elsewhere.
void LuaValueReader::_openTable(lua_State* state)
{
    if (m_depth < m_residentDepth)
    {
        Level& level = m_levels[m_depth];
        lua_createtable(state, level.expected.numberKeys, level.expected.textKeys);
        level.keyAround = m_key;
        level.fieldsAround = m_fields;
    }
    else
    {
        lua_createtable(state, 0, 0);
        if (m_depth > 0)
            _saveTableAround(state);
    }
    ++m_depth;
    m_position += TABLE_START_SIZE;
    m_key = KEY::NONE;
    m_fields = Fields();
}

// Ends the table on top of the stack. Stack: -1, that table, and its key in the one around it. The
// root stays.
void LuaValueReader::_closeTable(lua_State* state)
{
    _dropKey(state);
    m_position += TABLE_END_SIZE;
    --m_depth;
    if (m_depth < m_residentDepth)
    {
        Level& level = m_levels[m_depth];
        level.expected.numberKeys = std::min(m_fields.numberKeys, MAX_EXPECTED_FIELDS);
        level.expected.textKeys = std::min(m_fields.textKeys, MAX_EXPECTED_FIELDS);
        m_key = level.keyAround;
        m_fields = level.fieldsAround;
        if (m_depth > 0)
            _setPair(state);
    }
    else if (m_depth > 0)
    {
        lua_rawgeti(state, m_savedIndex, _savedSlot());
        lua_replace(state, -2);
    }
}

// Sets the new table on top of the stack in the table around it, and saves the latter for
// `_closeTable`.
// Stack: only the new table, of those two and the key.
void LuaValueReader::_saveTableAround(lua_State* state)
{
    lua_pushvalue(state, -1);
    lua_insert(state, m_key == KEY::ON_STACK ? -4 : -3);
    _setPair(state);
    lua_rawseti(state, m_savedIndex, _savedSlot());
}

int LuaValueReader::_savedSlot() const
{
    return static_cast<int>(m_depth - m_residentDepth) + 1;
}

// Reads the value at the position, which is no table. Returns false if it is incomplete.
// Stack: +1, the value.
bool LuaValueReader::_pushValue(lua_State* state, unsigned char tag)
{
    switch (tag)
    {
    case TAG_BOOLEAN:
        if (!_has(TRUTH_OFFSET + 1))
            return false;
        lua_pushboolean(state, m_data[m_position + TRUTH_OFFSET]);
        m_position += BOOLEAN_SIZE;
        return true;
    case TAG_NUMBER:
        if (!_has(NUMBER_SIZE))
            return false;
        // A NaN is never stored with its own bits, which the interpreter could take for a pointer.
        lua_pushnumber(state, loadNumber(m_data + m_position + NUMBER_OFFSET));
        m_position += NUMBER_SIZE;
        return true;
    case TAG_TEXT:
        m_position += m_stringsAhead.push(state, m_position);
        return true;
    default:
        m_position += _pushInstance(state);
        return true;
    }
}

// Stack: +1, the string of the record at the position. Returns the size of the record.
std::size_t LuaValueReader::_pushText(lua_State* state)
{
    const tbMemory::StringView text = _textAt(TEXT_OFFSET);
    lua_pushlstring(state, text.data(), text.size());
    return textRecordSize(text.size());
}

// Stack: +1, the instance of the record at the position. Returns the size of the record.
//
// Compatibility: for an untyped instance the writer stores the pointer at offset 4, the reader
// reads it at offset 8 (docs/script-value-bytes.md#reading, decision 0014). Byte 2 counts only for
// an empty type name: it separates a type with that name from no type, which must not get such a
// pointer.
std::size_t LuaValueReader::_pushInstance(lua_State* state)
{
    const unsigned char* const record = m_data + m_position;
    const tbMemory::StringView typeName = _textAt(TYPE_NAME_OFFSET);
    const std::size_t offset = pointerOffset(typeName.size());
    void* const object = _has(offset + POINTER_SIZE) ? loadPointer(record + offset) : nullptr;
    const bool isUntyped = typeName.empty() &&
                           !(_has(TYPE_NAME_OFFSET) && record[TYPE_NAME_RECORD_OFFSET] == TAG_TEXT);

    pushInstance(m_slot, state, object, false, typeName);
    if (isUntyped)
    {
        lua_pushnil(state);
        lua_setmetatable(state, -2);
    }
    // Only the first of several instances of one object may destroy it.
    if (object && record[TRANSFER_OFFSET] != 0 && m_ownedObjects.insert(object).second)
    {
        lua_pushvalue(state, -1);
        lua_rawseti(state, m_ownersIndex, static_cast<int>(m_ownedObjects.size()));
    }
    return isUntyped ? UNTYPED_INSTANCE_SIZE : instanceRecordSize(typeName.size());
}

// Returns the string that begins that many bytes after the position. It ends with its first zero,
// or with the buffer.
tbMemory::StringView LuaValueReader::_textAt(std::size_t offset) const
{
    return textIn(m_data, m_size, m_position + offset);
}

} // namespace tbScripts::lua
