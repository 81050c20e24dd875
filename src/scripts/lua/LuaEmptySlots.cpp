#include "scripts/lua/LuaEmptySlots.h"

#include "core/lua/LuaDumpReader.h"
#include "scripts/lua/LuaTableStores.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

// A function is: four bytes (flags, parameters, registers, outer variables); the numbers of its
// constants that are objects, of those that are numbers and of its instructions; the size of its
// debug information; unless that is 0, its first line and the number of its lines; its
// instructions; two bytes for each outer variable; the objects, from the last to the first; the
// numbers; the debug information.
//
// An object is its kind, and for a string its bytes. A table is the numbers of its array's slots
// and of its keys; the values of the array; keys and values in turn.

namespace tbScripts::lua
{

namespace
{

constexpr std::size_t SIGNATURE_SIZE = 4;
constexpr std::string_view SIGNATURE("\x1BLJ\x02", SIGNATURE_SIZE);
constexpr std::size_t INSTRUCTION_SIZE = 4;
constexpr std::size_t OUTER_VARIABLE_SIZE = 2;

enum OBJECT : unsigned
{
    FUNCTION,
    TABLE,
    INTEGER_64,
    UNSIGNED_64,
    COMPLEX,
    STRING // plus its size
};

enum VALUE : unsigned
{
    NIL,
    FALSE_VALUE,
    TRUE_VALUE,
    INTEGER,
    NUMBER,
    STRING_VALUE // plus its size, as of an object: the same bytes
};

void appendNumber(std::string& target, std::uint64_t number)
{
    for (; number >= 0x80U; number >>= 7U)
        target.push_back(static_cast<char>((number & 0x7FU) | 0x80U));
    target.push_back(static_cast<char>(number));
}

bool skipNumbers(LuaDumpReader& reader, unsigned count)
{
    std::uint64_t number = 0;
    while (count > 0 && reader.readNumber(number))
        --count;
    return count == 0;
}

// Skips a value in a table.
bool skipValue(LuaDumpReader& reader)
{
    std::uint64_t kind = 0;
    if (!reader.readNumber(kind))
        return false;
    if (kind >= STRING_VALUE)
        return reader.skip(kind - STRING_VALUE);
    return skipNumbers(reader, kind == INTEGER ? 1 : kind == NUMBER ? 2 : 0);
}

// The bytes of a template table.
struct Template
{
    std::uint64_t arraySize = 0; // with the slot of index 0
    std::uint64_t keyCount = 0;
    tbMemory::StringView array;
    tbMemory::StringView pairs;
    std::vector<std::string_view> keys; // as they are written, sorted
};

bool readTemplate(LuaDumpReader& reader, Template& table)
{
    if (!reader.readNumber(table.arraySize) || !reader.readNumber(table.keyCount))
        return false;
    const std::size_t beginOfArray = reader.getPosition();
    for (std::uint64_t i = 0; i < table.arraySize; ++i)
    {
        if (!skipValue(reader))
            return false;
    }
    table.array = reader.getFrom(beginOfArray);
    const std::size_t beginOfPairs = reader.getPosition();
    for (std::uint64_t i = 0; i < table.keyCount; ++i)
    {
        const std::size_t beginOfKey = reader.getPosition();
        if (!skipValue(reader))
            return false;
        table.keys.push_back(reader.getFrom(beginOfKey));
        if (!skipValue(reader))
            return false;
    }
    table.pairs = reader.getFrom(beginOfPairs);
    std::sort(table.keys.begin(), table.keys.end());
    return true;
}

// A constant of a function that is an object.
struct Object
{
    std::uint64_t kind = 0;
    tbMemory::StringView bytes; // with its kind
};

bool skipObject(LuaDumpReader& reader, std::uint64_t kind)
{
    if (kind >= STRING)
        return reader.skip(kind - STRING);
    if (kind == TABLE)
    {
        std::uint64_t arraySize = 0;
        std::uint64_t keyCount = 0;
        if (!reader.readNumber(arraySize) || !reader.readNumber(keyCount))
            return false;
        for (std::uint64_t i = 0; i < arraySize + 2 * keyCount; ++i)
        {
            if (!skipValue(reader))
                return false;
        }
        return true;
    }
    return skipNumbers(reader, kind == FUNCTION ? 0 : kind == COMPLEX ? 4 : 2);
}

using StoreIterator = std::vector<LuaTableStore>::const_iterator;

// Writes the functions of a dump again, one after the other.
class FunctionSlots
{
public:
    // Appends `function` with its length. Returns whether it was changed.
    bool append(std::string& target, const tbMemory::StringView& function)
    {
        m_changed.clear();
        const bool isChanged =
            _read(function) && _write(m_changed) && std::string_view(function) != m_changed;
        const std::string_view result = isChanged ? m_changed : std::string_view(function);
        appendNumber(target, result.size());
        target.append(result);
        return isChanged;
    }

private:
    // Returns whether templates lack slots. If not, there is nothing to write.
    bool _read(const tbMemory::StringView& function)
    {
        LuaDumpReader reader(function);
        LuaFunctionCode code;
        std::uint64_t objectCount = 0;
        if (!_readHead(reader, objectCount, code.instructions))
            return false;
        m_head = reader.getFrom(0);
        if (!_readVariables(function, code.variables))
            return false;
        m_stores = findTableStores(code);
        if (m_stores.empty() || !_readObjects(reader, objectCount))
            return false;
        const std::size_t beginOfRest = reader.getPosition();
        reader.skip(reader.getRest());
        m_rest = reader.getFrom(beginOfRest);
        return true;
    }

    // Returns whether every template was understood.
    bool _write(std::string& target)
    {
        // Objects are counted from the last.
        std::stable_sort(
            m_stores.begin(),
            m_stores.end(),
            [](const LuaTableStore& left, const LuaTableStore& right)
            { return left.table > right.table; });
        StoreIterator store = m_stores.begin();
        target.append(std::string_view(m_head));
        for (std::size_t i = 0; i < m_objects.size(); ++i)
        {
            const StoreIterator first = store;
            while (store != m_stores.end() && store->table == m_objects.size() - 1 - i)
                ++store;
            if (first == store)
                target.append(std::string_view(m_objects[i].bytes));
            else if (!_writeTemplate(target, m_objects[i], first, store))
                return false;
        }
        target.append(std::string_view(m_rest));
        return store == m_stores.end();
    }

    bool
    _readHead(LuaDumpReader& reader, std::uint64_t& objectCount, tbMemory::StringView& instructions)
    {
        unsigned outerVariables = 0;
        std::uint64_t numberCount = 0;
        std::uint64_t firstLine = 0;
        constexpr std::size_t FLAGS_PARAMETERS_REGISTERS = 3;
        return reader.skip(FLAGS_PARAMETERS_REGISTERS) && reader.readByte(outerVariables) &&
               reader.readNumber(objectCount) && reader.readNumber(numberCount) &&
               reader.readNumber(m_instructionCount) && reader.readNumber(m_debugSize) &&
               m_debugSize != 0 && reader.readNumber(firstLine) && reader.readNumber(m_lineCount) &&
               reader.readBytes(m_instructionCount * INSTRUCTION_SIZE, instructions) &&
               reader.skip((m_outerVariables = outerVariables) * OUTER_VARIABLE_SIZE);
    }

    // Debug information is the line of each instruction, the names of outer variables, and records
    // of local variables.
    bool _readVariables(const tbMemory::StringView& function, tbMemory::StringView& variables) const
    {
        constexpr std::uint64_t LINES_OF_ONE_BYTE = 0x100;
        constexpr std::uint64_t LINES_OF_TWO_BYTES = 0x10000;
        const unsigned lineSize = m_lineCount < LINES_OF_ONE_BYTE    ? 1
                                  : m_lineCount < LINES_OF_TWO_BYTES ? 2
                                                                     : 4;
        if (m_debugSize > function.size() - m_head.size())
            return false;
        LuaDumpReader reader(tbMemory::StringView(
            function.end() - m_debugSize, static_cast<std::size_t>(m_debugSize)));
        if (!reader.skip(m_instructionCount * lineSize))
            return false;
        for (unsigned i = 0; i < m_outerVariables; ++i)
        {
            unsigned byte = 1;
            while (byte != 0)
            {
                if (!reader.readByte(byte))
                    return false;
            }
        }
        return reader.readBytes(reader.getRest(), variables);
    }

    bool _readObjects(LuaDumpReader& reader, std::uint64_t count)
    {
        m_objects.clear();
        for (std::uint64_t i = 0; i < count; ++i)
        {
            Object object;
            const std::size_t begin = reader.getPosition();
            if (!reader.readNumber(object.kind) || !skipObject(reader, object.kind))
                return false;
            object.bytes = reader.getFrom(begin);
            m_objects.push_back(object);
        }
        return true;
    }

    bool _writeTemplate(
        std::string& target, const Object& object, StoreIterator first, StoreIterator last)
    {
        LuaDumpReader reader(object.bytes);
        std::uint64_t kind = 0;
        Template table;
        if (!reader.readNumber(kind) || kind != TABLE || !readTemplate(reader, table))
            return false;
        const std::uint64_t arraySize = _sizeOfArray(table, first, last);
        if (!_findAdditions(table, first, last))
            return false;
        appendNumber(target, TABLE);
        appendNumber(target, arraySize);
        appendNumber(target, table.keyCount + m_additions.size());
        target.append(std::string_view(table.array));
        for (std::uint64_t i = table.arraySize; i < arraySize; ++i)
            appendNumber(target, NIL);
        target.append(std::string_view(table.pairs));
        for (const std::string_view& key : m_additions)
        {
            target.append(key);
            // The reader would give the slot of an empty value to the next key that wants it.
            appendNumber(target, FALSE_VALUE);
        }
        return true;
    }

    static std::uint64_t
    _sizeOfArray(const Template& table, StoreIterator first, StoreIterator last)
    {
        const std::uint64_t firstIndex = std::max<std::uint64_t>(table.arraySize, 1);
        std::uint64_t nextIndex = firstIndex;
        for (; first != last; ++first)
        {
            // Indices that leave a gap were named in the source and have no slots in the array.
            if (first->kind == STORE_KIND::REST ||
                (first->kind == STORE_KIND::INDEX && first->operand == nextIndex))
                ++nextIndex;
        }
        return nextIndex == firstIndex ? table.arraySize : nextIndex;
    }

    // A key that the template has keeps its value. Returns whether all keys are strings.
    bool _findAdditions(const Template& table, StoreIterator first, StoreIterator last)
    {
        m_additions.clear();
        for (; first != last; ++first)
        {
            if (first->kind != STORE_KIND::KEY)
                continue;
            if (first->operand >= m_objects.size())
                return false;
            const Object& key = m_objects[m_objects.size() - 1 - first->operand];
            if (key.kind < STRING)
                return false;
            const std::string_view bytes = key.bytes;
            if (!std::binary_search(table.keys.begin(), table.keys.end(), bytes))
                m_additions.push_back(bytes);
        }
        std::sort(m_additions.begin(), m_additions.end());
        m_additions.erase(std::unique(m_additions.begin(), m_additions.end()), m_additions.end());
        return true;
    }

    std::uint64_t m_instructionCount = 0;
    std::uint64_t m_debugSize = 0;
    std::uint64_t m_lineCount = 0;
    unsigned m_outerVariables = 0;
    tbMemory::StringView m_head; // up to the objects
    std::vector<Object> m_objects;
    tbMemory::StringView m_rest; // behind the objects
    std::vector<LuaTableStore> m_stores;
    std::vector<std::string_view> m_additions; // keys of the template that is being written
    std::string m_changed;
};

} // namespace

std::string withEmptySlots(const tbMemory::StringView& dump)
{
    if (std::string_view(dump).substr(0, SIGNATURE_SIZE) != SIGNATURE)
        return {};
    LuaDumpReader reader(dump);
    std::uint64_t flags = 0;
    constexpr std::uint64_t OTHER_FORMS =
        DUMP_FLAG_BIG_ENDIAN | DUMP_FLAG_WITHOUT_DEBUG_INFORMATION;
    if (!reader.readFlags(flags) || (flags & OTHER_FORMS) != 0 || !reader.skipName(flags))
        return {};
    std::string restored(std::string_view(reader.getFrom(0)));
    FunctionSlots slots;
    bool isChanged = false;
    std::uint64_t size = 1;
    while (size != 0)
    {
        tbMemory::StringView function;
        if (!reader.readNumber(size) || !reader.readBytes(size, function))
            return {};
        if (size != 0 && slots.append(restored, function))
            isChanged = true;
    }
    if (!isChanged || reader.getRest() != 0)
        return {};
    appendNumber(restored, 0); // the end
    return restored;
}

} // namespace tbScripts::lua
