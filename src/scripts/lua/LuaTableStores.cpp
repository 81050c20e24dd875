#include "scripts/lua/LuaTableStores.h"

#include "core/lua/LuaDumpReader.h"

#include <utility>

namespace tbScripts::lua
{

namespace
{

// Of LuaJIT 2.1. isCodeUnderstood finds out if the interpreter has others.
enum OPERATION : unsigned
{
    LAST_COMPARISON = 11,
    IST = 14,
    ISF = 15,
    KSTR = 39,
    KSHORT = 41,
    TDUP = 53,
    TSETV = 60,
    TSETS = 61,
    TSETB = 62,
    TSETM = 63,
    JMP = 88
};

struct Instruction
{
    unsigned operation = 0;
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;

    unsigned d() const { return b << 8U | c; }
};

constexpr std::size_t INSTRUCTION_SIZE = 4;

Instruction instructionAt(const tbMemory::StringView& instructions, std::size_t index)
{
    const auto* const bytes =
        reinterpret_cast<const unsigned char*>(instructions.data()) + index * INSTRUCTION_SIZE;
    return {bytes[0], bytes[1], bytes[3], bytes[2]};
}

// The local variables that are in scope while one goes through the instructions. They have the
// lowest registers, in the order in which they were declared.
class Variables
{
public:
    explicit Variables(const tbMemory::StringView& records)
        : m_reader(records)
    {
        _readNext();
    }

    std::size_t getCount() const { return m_ends.size(); }

    // Goes on to an instruction. Returns whether variables have come into scope.
    bool goTo(std::uint64_t position)
    {
        bool areNew = false;
        while (m_hasNext && m_begin <= position)
        {
            _leave(m_begin);
            m_ends.push_back(m_begin + m_size);
            areNew = true;
            _readNext();
        }
        _leave(position);
        return areNew;
    }

private:
    void _leave(std::uint64_t position)
    {
        while (!m_ends.empty() && m_ends.back() <= position)
            m_ends.pop_back();
    }

    // A record is a name, or one byte for those that have none; how many instructions later than
    // that of the record before its scope begins; and the size of the scope.
    void _readNext()
    {
        constexpr unsigned NAMES = 7; // a first byte below is no name, and zero is the end
        unsigned byte = 0;
        m_hasNext = m_reader.readByte(byte) && byte != 0;
        while (m_hasNext && byte >= NAMES)
        {
            do
                m_hasNext = m_reader.readByte(byte);
            while (m_hasNext && byte != 0);
        }
        std::uint64_t distance = 0;
        m_hasNext = m_hasNext && m_reader.readNumber(distance) && m_reader.readNumber(m_size);
        m_begin += distance;
    }

    LuaDumpReader m_reader;
    bool m_hasNext = false;
    std::uint64_t m_begin = 0;
    std::uint64_t m_size = 0;
    std::vector<std::uint64_t> m_ends; // of those in scope
};

// Goes through the instructions and knows which constructors are not complete yet. Those that are
// nested have higher registers.
class StoreFinder
{
public:
    explicit StoreFinder(const LuaFunctionCode& code)
        : m_code(code)
        , m_variables(code.variables)
    {
    }

    std::vector<LuaTableStore> find()
    {
        const std::size_t count = m_code.instructions.size() / INSTRUCTION_SIZE;
        for (std::size_t i = 0; i < count; ++i)
        {
            // Scopes count the function's head as an instruction. They begin behind whole
            // statements, so that no constructor is left.
            if (m_variables.goTo(i + 1))
                m_open.clear();
            const Instruction instruction = instructionAt(m_code.instructions, i);
            _look(instruction, i);
            m_before = instruction;
        }
        return std::move(m_stores);
    }

private:
    struct Constructor
    {
        unsigned tableRegister;
        unsigned table;
    };

    // Whether a jump leads to an instruction. Few functions ask.
    bool _isTarget(std::size_t index)
    {
        if (m_targets.empty())
            _findTargets();
        return m_targets[index];
    }

    void _findTargets()
    {
        constexpr std::size_t NO_DISTANCE = 0x8000;
        m_targets.assign(m_code.instructions.size() / INSTRUCTION_SIZE, false);
        for (std::size_t i = 0; i < m_targets.size(); ++i)
        {
            const Instruction instruction = instructionAt(m_code.instructions, i);
            const std::size_t target = i + 1 + instruction.d() - NO_DISTANCE;
            if (instruction.operation == JMP && target < m_targets.size())
                m_targets[target] = true;
        }
    }

    // The constructors of tables in `firstRegister` and those behind are complete.
    void _endFrom(std::size_t firstRegister)
    {
        while (!m_open.empty() && m_open.back().tableRegister >= firstRegister)
            m_open.pop_back();
    }

    void _look(const Instruction& instruction, std::size_t index)
    {
        switch (instruction.operation)
        {
        case IST:
        case ISF:
            break;
        case TDUP:
            _endFrom(instruction.a);
            // A variable gets tables that are complete.
            if (instruction.a >= m_variables.getCount())
                m_open.push_back({instruction.a, instruction.d()});
            break;
        case TSETV:
        case TSETS:
        case TSETB:
            _endFrom(std::size_t{instruction.b} + 1);
            if (!m_open.empty() && m_open.back().tableRegister == instruction.b)
                _add(instruction, index);
            break;
        case TSETM: // the table is in front of the values
            if (!m_open.empty() && m_open.back().tableRegister + 1 == instruction.a)
                m_stores.push_back({m_open.back().table, STORE_KIND::REST, 0});
            _endFrom(instruction.a == 0 ? 0 : instruction.a - 1);
            break;
        default: // changes its first register, or those from it on, if it is no comparison
            if (instruction.operation > LAST_COMPARISON)
                _endFrom(instruction.a);
            break;
        }
    }

    void _add(const Instruction& store, std::size_t index)
    {
        const unsigned table = m_open.back().table;
        if (store.operation == TSETS)
            m_stores.push_back({table, STORE_KIND::KEY, store.c});
        else if (store.operation == TSETB)
            m_stores.push_back({table, STORE_KIND::INDEX, store.c});
        // Keys whose numbers do not fit into the instruction come out of a register.
        else if (m_before.a != store.c || _isTarget(index))
            return;
        else if (m_before.operation == KSTR)
            m_stores.push_back({table, STORE_KIND::KEY, m_before.d()});
        else if (m_before.operation == KSHORT)
            m_stores.push_back({table, STORE_KIND::INDEX, m_before.d()});
    }

    const LuaFunctionCode& m_code;
    Variables m_variables;
    Instruction m_before;
    std::vector<bool> m_targets; // of jumps, if somebody has asked
    std::vector<Constructor> m_open;
    std::vector<LuaTableStore> m_stores;
};

bool hasTemplates(const tbMemory::StringView& instructions)
{
    for (std::size_t i = 0; i < instructions.size(); i += INSTRUCTION_SIZE)
    {
        if (static_cast<unsigned char>(instructions.data()[i]) == TDUP)
            return true;
    }
    return false;
}

} // namespace

std::vector<LuaTableStore> findTableStores(const LuaFunctionCode& code)
{
    if (!hasTemplates(code.instructions))
        return {};
    return StoreFinder(code).find();
}

} // namespace tbScripts::lua
