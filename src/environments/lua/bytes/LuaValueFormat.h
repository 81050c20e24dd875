#pragma once

// The records of script values as bytes. Format: docs/script-value-bytes.md.

#include "core/ByteWords.h"
#include "core/lua/LuaText.h"

#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstring>

namespace tbScripts::lua
{

constexpr unsigned char TAG_BOOLEAN = 'b';
constexpr unsigned char TAG_FUNCTION = 'f';
constexpr unsigned char TAG_NUMBER_KEY = 'i';
constexpr unsigned char TAG_TEXT_KEY = 'k';
constexpr unsigned char TAG_NUMBER = 'n';
constexpr unsigned char TAG_TEXT = 's';
constexpr unsigned char TAG_INSTANCE = 'u';
constexpr unsigned char TAG_TABLE = '{';
constexpr unsigned char TAG_TABLE_END = '}';

// Sizes of the records of fixed size, and the smallest sizes of the others. A shorter buffer is
// nil.
constexpr std::size_t BOOLEAN_SIZE = 4;
constexpr std::size_t NUMBER_SIZE = 12;
constexpr std::size_t LEAST_TEXT_SIZE = 3;
constexpr std::size_t LEAST_INSTANCE_SIZE = 12;
constexpr std::size_t TABLE_START_SIZE = 4;
constexpr std::size_t TABLE_END_SIZE = 4;
constexpr std::size_t LEAST_TABLE_SIZE = TABLE_START_SIZE + TABLE_END_SIZE;

// Offsets of the parts of a record. The record of an instance with a type contains a string record,
// tag included, from its third byte on.
constexpr std::size_t TRUTH_OFFSET = 1;
constexpr std::size_t NUMBER_OFFSET = 4;
constexpr std::size_t TEXT_OFFSET = 1;
constexpr std::size_t TYPE_NAME_RECORD_OFFSET = 2;
constexpr std::size_t TYPE_NAME_OFFSET = TYPE_NAME_RECORD_OFFSET + TEXT_OFFSET;
constexpr std::size_t TRANSFER_OFFSET = 1;
constexpr std::size_t UNTYPED_POINTER_OFFSET = 4;

constexpr std::size_t POINTER_SIZE = 8;
constexpr std::size_t UNTYPED_INSTANCE_SIZE = UNTYPED_POINTER_OFFSET + POINTER_SIZE;

/// Every record but that of a function begins at a multiple of this.
constexpr std::size_t ALIGNMENT = QUAD;

/// Returns `size` rounded up to the next multiple of 4.
constexpr std::size_t pad4(std::size_t size)
{
    return (size + (ALIGNMENT - 1)) & ~(ALIGNMENT - 1);
}

/// Returns the size of a record with a string of `length` bytes: the tag, the string, a zero.
constexpr std::size_t textRecordSize(std::size_t length)
{
    return pad4(length + 2);
}

/// Returns the offset of the pointer in the record of an instance whose type's name has `length`
/// bytes.
constexpr std::size_t pointerOffset(std::size_t length)
{
    return textRecordSize(length) + 4;
}

/// Returns the size of the record of an instance whose type's name has `length` bytes.
constexpr std::size_t instanceRecordSize(std::size_t length)
{
    return pointerOffset(length) + POINTER_SIZE;
}

// Parts of a record may lie at any address, so these functions copy them.

inline void storeNumber(unsigned char* bytes, double number)
{
    static_assert(sizeof(number) == NUMBER_SIZE - NUMBER_OFFSET);
    std::memcpy(bytes, &number, sizeof(number));
}

inline double loadNumber(const unsigned char* bytes)
{
    double number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

inline void storePointer(unsigned char* bytes, void* pointer)
{
    static_assert(sizeof(pointer) <= POINTER_SIZE);
    std::memset(bytes, 0, POINTER_SIZE);
    std::memcpy(bytes, &pointer, sizeof(pointer));
}

inline void* loadPointer(const unsigned char* bytes)
{
    void* pointer = nullptr;
    std::memcpy(&pointer, bytes, sizeof(pointer));
    return pointer;
}

/// Returns the string at `position` of the `size` bytes at `data`. It ends with its first zero, or
/// with the bytes.
inline tbMemory::StringView
textIn(const unsigned char* data, std::size_t size, std::size_t position)
{
    if (position > size)
        return tbMemory::StringView("", 0);
    const auto* const text = reinterpret_cast<const char*>(data + position);
    return upToFirstNul(tbMemory::StringView(text, size - position));
}

/// Returns the size of the string record at the start of the `room` bytes at `record`; more than
/// `room` if the record does not end there.
///
/// The final zero is one of the last 4 bytes of the record, so the search goes 4 bytes at a time.
inline std::size_t textRecordSizeAt(const unsigned char* record, std::size_t room)
{
    const std::size_t size = sizeThroughQuadWithZero(record, room);
    return size != 0 ? size : pad4(room + 1);
}

} // namespace tbScripts::lua
