// The example of docs/script-value-bytes.md.

#include "docs/DocumentPage.h"
#include "support/ScriptValueFixture.h"

#include <sstream>

namespace tbScripts::test
{

namespace
{

// The hexadecimal pairs that each line begins with; two blanks end them.
Bytes bytesIn(const std::string& block)
{
    Bytes bytes;
    std::istringstream stream(block);
    for (std::string line; std::getline(stream, line);)
    {
        std::istringstream pairs(line.substr(0, line.find("  ")));
        for (std::string pair; pairs >> pair;)
            bytes.push_back(static_cast<unsigned char>(std::stoi(pair, nullptr, 16)));
    }
    return bytes;
}

} // namespace

using DocumentedBytesTest = ScriptValueFixture;

TEST_F(DocumentedBytesTest, ExampleIsWhatIsWritten)
{
    const auto blocks = blocksOf("script-value-bytes.md", "");
    ASSERT_EQ(blocks.size(), 1U);

    const Bytes written = write("{x = 1}");

    EXPECT_EQ(written.size(), 24U);
    EXPECT_EQ(written, bytesIn(blocks[0]));
}

TEST_F(DocumentedBytesTest, ExampleIsReadBack)
{
    const auto blocks = blocksOf("script-value-bytes.md", "");
    ASSERT_EQ(blocks.size(), 1U);

    ASSERT_TRUE(read(bytesIn(blocks[0])));

    EXPECT_TRUE(holds("read.x == 1 and next(read, 'x') == nil"));
}

} // namespace tbScripts::test
