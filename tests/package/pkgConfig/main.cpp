#include <tbLog/Logger.h>
#include <tbScripts/LogManager.h>

#include <string>
#include <string_view>

namespace
{

class OwnLogger : public tbLog::Logger
{
public:
    void log(const tbLog::StringView& message, const tbLog::StringView& source) override
    {
        m_lastEntry = std::string(std::string_view(source)) + ": ";
        m_lastEntry += std::string_view(message);
    }

    const std::string& getLastEntry() const { return m_lastEntry; }

private:
    std::string m_lastEntry;
};

} // namespace

int main()
{
    OwnLogger logger;
    tbScripts::LogManager::getInstance()->setReceiver(&logger);

    tbScripts::LogManager::getInstance()->log("found", "Consumer");

    tbScripts::LogManager::getInstance()->kill();
    return logger.getLastEntry() == "Consumer: found" ? 0 : 1;
}
