#include "environments/lua/chunks/LuaChunkMaker.h"

#include "core/lua/LuaPrivateState.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

namespace
{

// Compiled code begins with three bytes of signature, one of version and one of flags; the name of
// the chunk follows after its length. Then comes each function after its length, inner ones before
// the one that makes them, and a zero byte ends it all. Lengths are in groups of seven bits.
//
// So a function that makes another can be put behind any chunk in the place of that zero, and then
// makes that chunk. This one is taken from code that the same interpreter has compiled.
constexpr const char* MAKER_SOURCES = "return function(...) end";
constexpr std::size_t FLAGS_POSITION = 4;
constexpr unsigned char FLAG_OF_FOREIGN_FUNCTIONS = 4; // the only one in which chunks may differ
constexpr unsigned char END_OF_CODE = 0;

// The bytes of the function that makes another, and the final zero.
struct Maker
{
    std::array<char, 256> bytes{};
    std::size_t size = 0; // 0 if there is none
    unsigned char flags = 0;
};

// A part of compiled code that is read from its beginning.
struct Code
{
    const unsigned char* bytes;
    std::size_t size;
    std::size_t position;

    // Returns the next length, 0 at the end.
    std::size_t readLength()
    {
        std::size_t length = 0;
        for (unsigned shift = 0; position < size && shift < 64; shift += 7)
        {
            const unsigned char group = bytes[position++];
            length |= static_cast<std::size_t>(group & 0x7FU) << shift;
            if (group < 0x80U)
                return length;
        }
        return 0;
    }
};

int append(lua_State* /*state*/, const void* bytes, std::size_t size, void* target)
{
    Maker& maker = *static_cast<Maker*>(target);
    if (size > maker.bytes.size() - maker.size)
        return 1;
    std::memcpy(maker.bytes.data() + maker.size, bytes, size);
    maker.size += size;
    return 0;
}

// Leaves the last function of `maker`, and the final zero.
void keepLastFunction(Maker& maker)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(maker.bytes.data());
    Code code{bytes, maker.size, FLAGS_POSITION};
    maker.flags = static_cast<unsigned char>(code.readLength());
    code.position += code.readLength(); // the name
    std::size_t begin = 0;
    std::size_t end = 0;
    while (code.position < code.size)
    {
        const std::size_t start = code.position;
        const std::size_t length = code.readLength();
        if (length == 0)
            break;
        begin = start;
        code.position += length;
        end = code.position;
    }
    const bool isWhole = begin > 0 && end + 1 == code.size && bytes[end] == END_OF_CODE;
    maker.size = isWhole ? code.size - begin : 0;
    std::memmove(maker.bytes.data(), bytes + begin, maker.size);
}

int compileMaker(lua_State* state)
{
    Maker& maker = *static_cast<Maker*>(lua_touserdata(state, 1));
    if (luaL_loadstring(state, MAKER_SOURCES) != 0 || lua_dump(state, &append, &maker) != 0)
        maker.size = 0;
    return 0;
}

Maker makeMaker()
{
    Maker maker;
    const LuaPrivateState state;
    if (!state.get() || lua_cpcall(state.get(), &compileMaker, &maker) != 0)
        maker.size = 0;
    if (maker.size > 0)
        keepLastFunction(maker);
    return maker;
}

// What is loaded: the chunk without its end, then the maker.
struct Pieces
{
    std::array<const char*, 2> bytes;
    std::array<std::size_t, 2> sizes;
    std::size_t next;
};

const char* readPiece(lua_State* /*state*/, void* source, std::size_t* size)
{
    Pieces& pieces = *static_cast<Pieces*>(source);
    if (pieces.next == pieces.bytes.size())
        return nullptr;
    *size = pieces.sizes[pieces.next];
    return pieces.bytes[pieces.next++];
}

} // namespace

bool pushChunkMaker(lua_State* state, const LuaBytecode& bytecode, const char* chunkName)
{
    static const Maker MAKER = makeMaker();
    const tbMemory::Buffer& code = bytecode.code;
    const std::size_t size = code.size();
    if (MAKER.size == 0 || size <= FLAGS_POSITION || code.data()[size - 1] != END_OF_CODE ||
        ((code.data()[FLAGS_POSITION] ^ MAKER.flags) & ~FLAG_OF_FOREIGN_FUNCTIONS) != 0)
        return false;

    Pieces pieces{
        {reinterpret_cast<const char*>(code.data()), MAKER.bytes.data()},
        {size - 1, MAKER.size},
        0};
    if (lua_load(state, &readPiece, &pieces, chunkName) == 0)
        return true;
    lua_pop(state, 1);
    return false;
}

} // namespace tbScripts::lua
