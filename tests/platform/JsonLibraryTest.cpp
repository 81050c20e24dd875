// The JSON library inside of TobrelExport is nobody else's business: a host may have another
// version.

#include <tbExport/Node.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace
{

void* findSymbol(const char* name)
{
    tbExport::Node node; // so that the library is there
    return dlsym(RTLD_DEFAULT, name);
}

TEST(JsonLibraryTest, IsNotExported)
{
    EXPECT_EQ(findSymbol("_ZN5boost4json5valueD1Ev"), nullptr);      // a destructor
    EXPECT_EQ(findSymbol("_ZN5boost4json6object6empty_E"), nullptr); // a variable
    EXPECT_EQ(findSymbol("_ZN5boost4json15make_error_codeENS0_5errorE"), nullptr);
    EXPECT_EQ(findSymbol("_ZTIN5boost6system12system_errorE"), nullptr); // a type's description
}

// Proves that the search above finds what is exported.
TEST(JsonLibraryTest, LeavesTheNodeExported)
{
    EXPECT_NE(findSymbol("_ZN8tbExport4NodeC1Ev"), nullptr);
}

} // namespace
