#include <tbLog/Logger.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <type_traits>

namespace
{

static_assert(std::is_abstract_v<tbLog::Logger>);
static_assert(std::has_virtual_destructor_v<tbLog::Logger>);

class LastEntryLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        m_message = std::string_view(message);
        m_source = std::string_view(source);
    }

    std::string m_message;
    std::string m_source;
};

TEST(LoggerTest, ReceivesMessageFirstAndSourceSecond)
{
    LastEntryLogger own;
    tbLog::Logger& logger = own;

    logger.log(tbLog::StringView("a message", 9), tbLog::StringView("Part", 4));

    EXPECT_EQ(own.m_message, "a message");
    EXPECT_EQ(own.m_source, "Part");
}

TEST(LogStringViewTest, DefaultViewIsOfNothing)
{
    const tbLog::StringView view;

    EXPECT_EQ(view.data(), nullptr);
    EXPECT_EQ(view.size(), 0u);
    EXPECT_EQ(std::string_view(view), "");
}

TEST(LogStringViewTest, KeepsEveryByte)
{
    const tbLog::StringView view("a\0b", 3);

    EXPECT_EQ(std::string_view(view), std::string_view("a\0b", 3));
}

TEST(LogStringViewTest, NullPointerWithSizeHasNoBytes)
{
    EXPECT_EQ(tbLog::StringView(nullptr, 3).size(), 0u);
}

} // namespace
