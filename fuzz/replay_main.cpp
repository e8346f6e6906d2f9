// fuzz/replay_main.cpp
// Replays every file of the given folders (or the given files) through the fuzz target, so that
// a corpus runs as an ordinary test without libFuzzer.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path p(argv[i]);
        if (std::filesystem::is_directory(p)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(p)) {
                if (!entry.is_regular_file()) continue;
                replay(entry.path());
                ++count;
            }
        } else {
            replay(p);
            ++count;
        }
    }
    std::printf("replayed %zu inputs\n", count);
    return count == 0 ? 1 : 0;  // an empty corpus is a broken test, not a passing one
}
