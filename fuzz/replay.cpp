/// Runs a fuzzer without libFuzzer on the inputs of a folder and on fixed variations of each input.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

using Input = std::vector<std::uint8_t>;

constexpr int c_Variations = 100;

Input readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Changes, removes or repeats a part of the input.
Input vary(Input input, std::mt19937& random)
{
    constexpr unsigned c_Kinds = 3;
    if (input.empty())
    {
        return input;
    }
    const auto first = static_cast<std::ptrdiff_t>(random() % input.size());
    const auto length = static_cast<std::ptrdiff_t>(random() % (input.size() - static_cast<std::size_t>(first))) + 1;
    const auto begin = input.begin() + first;
    switch (random() % c_Kinds)
    {
    case 0:
        *begin = static_cast<std::uint8_t>(random());
        break;
    case 1:
        input.erase(begin, begin + length);
        break;
    default:
        const Input part(begin, begin + length);
        input.insert(input.end(), part.begin(), part.end());
    }
    return input;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::fputs("Usage: replay FOLDER\n", stderr);
        return EXIT_FAILURE;
    }
    const std::filesystem::directory_iterator folder(arguments[1]);
    std::vector<std::filesystem::path> files(begin(folder), {});
    std::ranges::sort(files);
    std::mt19937 random; // NOLINT(cert-msc51-cpp): the same variations in each run
    int count = 0;
    for (const std::filesystem::path& file : files)
    {
        const Input seed = readFile(file);
        LLVMFuzzerTestOneInput(seed.data(), seed.size());
        for (int variation = 0; variation < c_Variations; ++variation)
        {
            const Input input = vary(seed, random);
            LLVMFuzzerTestOneInput(input.data(), input.size());
        }
        count += 1 + c_Variations;
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
