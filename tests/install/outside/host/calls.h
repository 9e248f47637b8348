/// A program without a test framework that calls every exported operation.
#pragma once

#include <string>

class LuTestSuiteEnvironment;

/// Folders for the calls' data and output.
struct SPlaces
{
    std::wstring data; ///< data directory, with trailing separator
    std::wstring work; ///< folder of this run, with trailing separator
};

/// Records the library's output during its lifetime, and keeps that output off the console. Only one object may exist
/// at a time.
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

/// Prints the failed check, which also changes the program's exit status.
void Expect(bool condition, const char* what);
bool HasFailed();

void WriteFile(const std::wstring& path, const std::string& bytes);

/// Does the task of a second process that this program has started: "park" writes a file and waits until the process is
/// killed; "ask" writes the answer about its parent.
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
void CallRunEvents(LuTestSuiteEnvironment& environment, const SPlaces& places);
void CallProcesses(const std::wstring& program, const SPlaces& places);
void CallReports(LuTestSuiteEnvironment& environment, const SPlaces& places);
