/// Measures the cost of reviewing 1,000, 2,800, 10,000 and 100,000 files that differ from their references. The
/// differences have ten causes. In the three variants, each file has one cause, up to three causes, or up to three
/// causes in lines with values that differ between files. Measures the search at the end of a run, the first screen,
/// and accepting all. Ends with status 1 if a limit is exceeded, if there are more than 15 decisions, or if files are
/// left.

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbreceivedfile.h"
#include "base/lbuniqueid.h"
#include "testing/lutestsuiterunner/commands/reviewdecisions.h"
#include "testing/lutestsuiterunner/console/changetext.h"
#include "testing/lutestsuiterunner/review/changes.h"

namespace
{

constexpr int c_Causes = 10;
constexpr std::size_t c_MostDecisions = 15;
/// The first screen of 2,800 files with 100 lines each may take a second.
constexpr double c_ScreenLimitPerFile = 1.0 / 2800;

bool s_isMissed = false;

template<typename F>
double measure(const F& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void write(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

enum class ECauses
{
    One,       ///< each file has one cause
    Several,   ///< each file has up to three causes
    OwnValues, ///< each file has up to three causes, in lines with values that differ between files
};

/// Makes a line that a cause changes. The lines of two causes differ in a letter and not only in digits.
std::string makeLine(const char* word, int cause, int number, ECauses causes)
{
    const std::string value = causes == ECauses::OwnValues ? " of " + std::to_string(number) + ".5" : "";
    return word + std::string(" ") + static_cast<char>('A' + cause) + value + "\n";
}

/// Makes files that differ from each other. Each has three differences from its reference.
void makeFiles(const std::filesystem::path& folder, int count, ECauses causes)
{
    constexpr int c_Lines = 100;
    constexpr int c_Distance = 40;
    for (int number = 0; number < count; ++number)
    {
        const std::filesystem::path directory = folder / ("C" + std::to_string(number / 500));
        std::filesystem::create_directories(directory);
        std::string expected;
        std::string received;
        for (int line = 0; line < c_Lines; ++line)
        {
            const bool isChanged = line % c_Distance == number % 7;
            const int other = causes == ECauses::One ? 0 : line / c_Distance * (number % 3) * (1 + number % 4);
            const int cause = (number + other) % c_Causes;
            const std::string own = "line " + std::to_string(line) + " of file " + std::to_string(number) + "\n";
            expected += isChanged ? makeLine("old", cause, number, causes) : own;
            received += isChanged ? makeLine("new", cause, number, causes) : own;
        }
        const std::filesystem::path reference = directory / (std::to_string(number) + ".expected");
        write(reference, expected);
        write(reference.string() + ".received", received);
        write(reference.string() + ".received.runs",
              "3 " + LbEncoding::ToUtf8(LbReceivedFile::GetChecksum(received)) + " " + std::string(32, '0') + "\n");
    }
}

const char* getName(ECauses causes)
{
    return causes == ECauses::One ? "one cause" : causes == ECauses::Several ? "1 to 3 causes" : "own values";
}

void measureFiles(int count, ECauses causes)
{
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / LbEncoding::ToUtf8(LbUniqueId::Generate()) / "";
    makeFiles(folder, count, causes);
    const std::wstring directory = folder.wstring();
    std::vector<Runner::SChange> changes;
    const double search = measure([&] { static_cast<void>(Runner::FindReceived(directory)); });
    const double screen = measure([&] {
        changes = Runner::GroupChanges(Runner::FindReceived(directory).references);
        for (const Runner::SChange& change : changes)
        {
            static_cast<void>(Runner::DescribeChange(change, directory, {}));
        }
    });
    const double decisions = measure([&] {
        Runner::CReviewDecisions all(directory, {});
        for (const Runner::SChange& change : changes)
        {
            all.Carry(Runner::EDecision::Accept, change);
        }
    });
    const bool isMissed = screen > c_ScreenLimitPerFile * count || changes.size() > c_MostDecisions ||
                          !Runner::FindReceived(directory).references.empty();
    s_isMissed = s_isMissed || isMissed;
    std::printf("%7d files, %s: search %.3f s, %zu decisions, first screen %.3f s, all accepted %.3f s%s\n", count,
                getName(causes), search, changes.size(), screen, decisions, isMissed ? "  LIMIT MISSED" : "");
    std::filesystem::remove_all(folder);
}

} // namespace

int main()
{
    for (const int count : {1000, 2800, 10000, 100000})
    {
        for (const ECauses causes : {ECauses::One, ECauses::Several, ECauses::OwnValues})
        {
            measureFiles(count, causes);
        }
    }
    return s_isMissed ? 1 : 0;
}
