#include "tables/Character.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tables::test
{

namespace
{

// The bytes of each character, and in brackets those that belong to none.
std::vector<std::string> split(std::string_view string)
{
    std::vector<std::string> parts;
    while (!string.empty())
    {
        const Character character = takeCharacter(string);
        const std::string bytes(character.bytes);
        parts.push_back(character.isValid ? bytes : '[' + bytes + ']');
    }
    return parts;
}

using Parts = std::vector<std::string>;

TEST(CharacterTest, IsTakenWithAllItsBytes)
{
    EXPECT_EQ(
        split("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z"),
        (Parts{"a", "\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "z"}));
}

TEST(CharacterTest, IsOneByteWhereTheEncodingIsBroken)
{
    EXPECT_EQ(split("\xe2\x82z\xff"), (Parts{"[\xe2]", "[\x82]", "z", "[\xff]"}));
}

TEST(CharacterTest, MayBeNul)
{
    EXPECT_EQ(split(std::string_view("\0", 1)), Parts{std::string(1, '\0')});
}

TEST(CharacterTest, KnowsItsCodePoint)
{
    std::string_view euro = "\xe2\x82\xac";
    std::string_view broken = "\xe2\x82";

    EXPECT_EQ(takeCharacter(euro).codePoint, char32_t{0x20AC});
    EXPECT_EQ(takeCharacter(broken).codePoint, char32_t{0});
    EXPECT_EQ(broken, "\x82");
}

} // namespace

} // namespace tables::test
