#include "tbscripts/FileReading.h"

#include "port/FileReading.h"

#include <utility>

namespace tool
{

FileContent readFile(const std::string& path)
{
    tbScripts::port::FileContent content = tbScripts::port::readFile(path);
    switch (content.reading)
    {
    case tbScripts::port::READING::DONE:
        return {std::move(content.bytes), {}};
    case tbScripts::port::READING::FAILED:
        return {{}, content.reason.message()};
    case tbScripts::port::READING::FOLDER:
        return {{}, "is a folder, not a file"};
    case tbScripts::port::READING::NOT_REGULAR:
        return {{}, "is not a regular file"};
    }
    return {};
}

} // namespace tool
