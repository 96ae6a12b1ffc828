#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

// Runs a fuzz target once over each file that is named, or that lies in a folder that is named,
// without libFuzzer. So every compiler and every sanitizer build replays what fuzzing has found.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& place) {
    if (!fs::is_directory(place))
        return {place};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

void run(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream)
        throw std::runtime_error(file.string() + " cannot be read");
    // A copy of exactly this size, so that a sanitizer sees the first byte that is read too many.
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    // Told before it runs and at once: the last name is the file that a failure belongs to.
    std::cout << file.string() << std::endl;
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int count, char** arguments) try {
    std::size_t runs = 0;
    for (int i = 1; i < count; ++i)
        for (const fs::path& file : filesIn(arguments[i])) {
            run(file);
            ++runs;
        }
    if (runs == 0) {
        std::cerr << "There is nothing to run: name files, or folders with files.\n";
        return EXIT_FAILURE;
    }
    std::cout << runs << " files held.\n";
    return EXIT_SUCCESS;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
}
