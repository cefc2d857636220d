// Runs a fuzz target once over each of the files and folders that are named on the command line. A target
// ends the process where it finds something; the name printed last is the input.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <span>
#include <vector>

#include "Torv/Data/FileReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

std::vector<std::filesystem::path> inputsOf(const std::filesystem::path& path)
{
    if (!std::filesystem::is_directory(path))
        return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

void replay(const std::filesystem::path& path)
{
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    const std::string text = Torv::Data::FileReader::load(path.string());
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int argc, char** argv)
{
    int count = 0;
    try {
        for (const char* argument : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
            for (const auto& path : inputsOf(argument)) {
                replay(path);
                ++count;
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "Cannot replay: %s\n", error.what());
        return 1;
    }
    std::printf("%d inputs replayed\n", count);
    return count == 0 ? 1 : 0;
}
