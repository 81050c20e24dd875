// Runs the kept inputs once each, where there is no fuzzer: the paths of files and folders are the
// arguments.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

void replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

int replayAll(const std::filesystem::path& path)
{
    if (!std::filesystem::is_directory(path))
    {
        replay(path);
        return 1;
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        count += replayAll(entry.path());
    return count;
}

} // namespace

int main(int count, char** arguments)
{
    int replayed = 0;
    for (int i = 1; i < count; ++i)
        replayed += replayAll(arguments[i]);
    std::cout << replayed << " inputs\n";
    return replayed > 0 ? 0 : 1; // a corpus that is not found is no success
}
