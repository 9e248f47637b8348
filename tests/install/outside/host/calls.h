/// A program without a test framework that calls every exported operation.
#pragma once

#include <string>

class LuTestSuiteEnvironment;

/// Where the calls find data and may write.
struct SPlaces
{
    std::wstring data; ///< data directory, with separator at its end
    std::wstring work; ///< folder of this run, with separator at its end
};

/// What the library prints, kept off the console as long as this lives. One at a time.
class CRecordedText
{
public:
    CRecordedText();
    ~CRecordedText();
    CRecordedText(const CRecordedText&) = delete;
    CRecordedText& operator=(const CRecordedText&) = delete;

    /// The text since the last call.
    std::wstring Take();
};

/// Says what failed; the program's status tells, too.
void Expect(bool condition, const char* what);
bool HasFailed();

void WriteFile(const std::wstring& path, const std::string& bytes);

/// What the program does when it has started itself: "park" writes a file and waits for its end, "ask" writes an
/// answer about its parent.
int WorkAsChild(const std::wstring& task, const std::wstring& answer);

void CallEnvironment(LuTestSuiteEnvironment& environment);
void CallOutput();
void CallHeapTracker();
void CallMarkupWriter(const SPlaces& places);
void CallPathsAndTexts(const SPlaces& places);
void CallConfiguration(const SPlaces& places);
void CallCommandLine(LuTestSuiteEnvironment& environment, const SPlaces& places);
void CallSelection(const SPlaces& places);
void CallAuxiliaryModes(LuTestSuiteEnvironment& environment, const SPlaces& places);
void CallRuns(LuTestSuiteEnvironment& environment, const SPlaces& places);
void CallProcesses(const std::wstring& program, const SPlaces& places);
void CallReports(LuTestSuiteEnvironment& environment, const SPlaces& places);
