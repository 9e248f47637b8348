/// Measures the search for duplicates at several sizes, as a whole process. Compares it with a listing (the host's -q
/// for the same folder) and with jdupes, fdupes and rmlint, where they are installed. Repeats each measurement, so the
/// cache is warm. Measures both sides of a ratio alternately, because other work on the machine changes times.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "benchmarks/support/datafolder.h"
#include "benchmarks/support/limits.h"

namespace
{

constexpr double c_TimesListingLimit = 1.0;
constexpr double c_TimesJdupesLimit = 1.5;

using Write = void (*)(const std::filesystem::path& directory, int files, std::size_t size);

/// Each file is one byte longer than the one before.
void writeDifferentSizes(const std::filesystem::path& directory, int files, std::size_t size)
{
    for (int file = 0; file < files; ++file)
    {
        std::ofstream(directory / std::to_string(file), std::ios::binary)
            << std::string(size + static_cast<std::size_t>(file), 'x');
    }
}

/// All files have one size. The first quarter consists of seven sets of identical files; each other file is unique.
void writeQuarterIdentical(const std::filesystem::path& directory, int files, std::size_t size)
{
    for (int file = 0; file < files; ++file)
    {
        std::string content(size, static_cast<char>('a' + file % 7));
        content.replace(0, 8, std::to_string(10'000'000 + (file < files / 4 ? 0 : file)));
        std::ofstream(directory / std::to_string(file), std::ios::binary) << content;
    }
}

/// All files have one size. The first quarter is identical; each other file differs from all others, in eight bytes at
/// `place` only.
void writeQuarterIdenticalButAt(std::size_t place, const std::filesystem::path& directory, int files, std::size_t size)
{
    for (int file = 0; file < files; ++file)
    {
        std::string content(size, 'a');
        content.replace(place, 8, std::to_string(10'000'000 + (file < files / 4 ? 0 : file)));
        std::ofstream(directory / std::to_string(file), std::ios::binary) << content;
    }
}

void writeQuarterIdenticalToTheEnd(const std::filesystem::path& directory, int files, std::size_t size)
{
    writeQuarterIdenticalButAt(size - 8, directory, files, size);
}

void writeQuarterIdenticalToTheMiddle(const std::filesystem::path& directory, int files, std::size_t size)
{
    writeQuarterIdenticalButAt(size / 2, directory, files, size);
}

bool runProgram(const std::string& command, const std::filesystem::path& folder)
{
    return std::system((command + " \"" + folder.string() + "\" >/dev/null 2>&1").c_str()) == 0;
}

/// The command that starts the host of this build. The caller appends the data directory.
std::string getHostCommand(const std::string& mode)
{
    const std::wstring folder = LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable);
    return '"' + LbEncoding::ToNative(folder) + "LuTestSuiteCLI\" --dll DataSets " + mode + " -d";
}

/// The arguments of the benchmark are the number of files and their size in bytes.
void besideProgram(benchmark::State& state, Write write, const std::string& command, double limit)
{
    const CDataFolder folder;
    const std::filesystem::path files = folder.GetPath() / "CDataSets";
    std::filesystem::create_directories(files);
    write(files, static_cast<int>(state.range(0)), static_cast<std::size_t>(state.range(1)));
    const std::string search = getHostCommand("--list-duplicates");
    std::vector<double> ratios;
    std::vector<double> others;
    for ([[maybe_unused]] const auto iteration : state)
    {
        bool isDone = false;
        bool isSearched = false;
        others.push_back(MeasureSeconds([&] { isDone = runProgram(command, folder.GetPath()); }));
        const double seconds = MeasureSeconds([&] { isSearched = runProgram(search, folder.GetPath()); });
        if (!isDone || !isSearched)
        {
            state.SkipWithError("a program is not installed, or failed");
            return;
        }
        ratios.push_back(seconds / others.back());
        state.SetIterationTime(seconds);
    }
    ReportMedian(state, "other", others);
    HoldMedian(state, "timesProgram", ratios, limit);
}

void setFiles(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({400, 1 << 20})
        ->Args({1'000, 4'000})
        ->Args({10'000, 4'000})
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(11);
}
BENCHMARK_CAPTURE(besideProgram, listing, writeDifferentSizes, getHostCommand("-q"), c_TimesListingLimit)
    ->Apply(setFiles)
    ->Name("duplicates/different sizes/listing");
BENCHMARK_CAPTURE(besideProgram, jdupes, writeQuarterIdentical, "jdupes -r", c_TimesJdupesLimit)
    ->Apply(setFiles)
    ->Name("duplicates/quarter identical/jdupes");
BENCHMARK_CAPTURE(besideProgram, jdupes, writeQuarterIdenticalToTheEnd, "jdupes -r", c_TimesJdupesLimit)
    ->Apply(setFiles)
    ->Name("duplicates/quarter identical to the end/jdupes");
BENCHMARK_CAPTURE(besideProgram, jdupes, writeQuarterIdenticalToTheMiddle, "jdupes -r", c_TimesJdupesLimit)
    ->Apply(setFiles)
    ->Name("duplicates/quarter identical to the middle/jdupes");
BENCHMARK_CAPTURE(besideProgram, fdupes, writeQuarterIdentical, "fdupes -r", c_TimesJdupesLimit)
    ->Apply(setFiles)
    ->Name("duplicates/quarter identical/fdupes");
BENCHMARK_CAPTURE(besideProgram, rmlint, writeQuarterIdentical, "rmlint -T df -o summary:stdout", c_TimesJdupesLimit)
    ->Apply(setFiles)
    ->Name("duplicates/quarter identical/rmlint");

} // namespace
