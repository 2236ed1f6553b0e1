// Runs a fuzz target's check over files instead of generated inputs, so that the seeds and
// every past finding are replayed by the ordinary test suite without the fuzzing compiler.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int Replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", file.c_str());
        return 1;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::printf("replayed %s (%zu bytes)\n", file.c_str(), bytes.size());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    int failures = 0;
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        std::error_code ec;
        if (std::filesystem::is_directory(argv[i], ec)) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
                failures += Replay(entry.path());
                ++replayed;
            }
        } else {
            failures += Replay(argv[i]);
            ++replayed;
        }
    }
    std::printf("%d replayed, %d unreadable\n", replayed, failures);
    return failures == 0 && replayed > 0 ? 0 : 1;
}
