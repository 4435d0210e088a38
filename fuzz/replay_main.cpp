// A stand-in for libFuzzer where the compiler has none: every file named on
// the command line, or found in a folder named there, is handed to the target
// once.  It finds no new inputs, but replays a corpus under the sanitizers.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

static void runFile(const std::filesystem::path &p)
{
    std::ifstream in(p, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path p(argv[i]);
        if (argv[i][0] == '-')
            continue; // libFuzzer options mean nothing here
        if (std::filesystem::is_directory(p)) {
            for (const auto &e : std::filesystem::recursive_directory_iterator(p))
                if (e.is_regular_file()) {
                    runFile(e.path());
                    ++count;
                }
        } else {
            runFile(p);
            ++count;
        }
    }
    std::printf("replayed %d inputs\n", count);
    return 0;
}
