/// The library's operations: entry, command line, configuration files, discovery, selection, paths, build information.
#pragma once

#include <cstdint>
#include <memory>
#include <regex>
#include <string>
#include <unordered_set>
#include <vector>

#include "testing/lutestsuite/lutestsuiteexport.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuitesetup.h"

class LbRTTI;
class LuTestSuiteEnvironment;
class XMLNode;

/// Static operations only. Unless stated otherwise they may be called by any thread, and print through LuTestSuiteOut.
class LUTESTSUITE_API LuTestSuiteUtils
{
public:
    LuTestSuiteUtils() = delete;

    // Entry -----------------------------------------------------------------------------------------------------------

    /// Runs the one mode that the arguments (the program's name first) ask for. False when they were refused (the
    /// reason was printed) or when a case of a run did not end "OK". Exceptions of the mode pass through: LbException,
    /// or a German message as std::wstring. By the thread that made the environment.
    static bool RunCommandLine(LuTestSuiteEnvironment& environment, int argumentCount, const wchar_t* const* arguments);

    // Command line ----------------------------------------------------------------------------------------------------

    enum EPlatform : std::uint32_t
    {
        eP_Win32 = 0,
        eP_x64 = 1
    };

    /// Fills the setup from the arguments (the program's name first). False when they were refused; the reason was
    /// printed and the options before it stay applied. When only the help text was asked for or nothing is left to do,
    /// it is printed and the setup selects no mode.
    static bool ProcessCommandLine(LuTestSuiteSetup& setup, int argumentCount, const wchar_t* const* arguments);

    /// The help text, German, lines ended by line feeds.
    static std::wstring GetCommandLineHelp();

    /// Number of hardware threads, at least 1.
    static std::uint32_t GetDefaultThreadCount();

    /// "Release x64" or "Debug x64".
    static std::wstring GetBuildConfiguration();

    /// The platform of the build.
    static EPlatform GetPlatform();

    // Configuration files ---------------------------------------------------------------------------------------------

    /// Content of a configuration file, with the values that a missing file or key leaves.
    struct SConfigFileData
    {
        std::vector<std::wstring> dataDirHistory;
        std::unordered_set<std::wstring> tests; ///< stored selection: class name, ":", case name
        bool DEVerboseOutput = false;
        bool DEDebuggingSerialization = false;
        bool DEPredefinedBreakPoints = false;
        bool ExternalDebug = false;
        bool ExternalRelease = false;
        bool AssertDialog = true;
        bool Isolated = false;
        bool Parallel = false;
        std::uint32_t ThreadCount = 1;
        std::uint32_t RepetitionCount = 1;
        bool HTMLAuto = false;
        bool XMLAuto = false;
        bool OpenReport = true;
        bool TrackHeap = true;
        bool DumpHeap = false;
        bool SelectedFailed = false;
        std::uint64_t BreakAllocID = LuTestSuiteRun::c_NoBreak;
        std::uint64_t BreakAllocSize = LuTestSuiteRun::c_NoBreak;
    };

    /// Reads a configuration file over `data`: missing keys leave their fields unchanged, a missing file leaves all;
    /// history and selection are added to what is there. Throws a German message as std::wstring: "XML-Syntax Fehler"
    /// when the file is not such a configuration, or that it cannot be read.
    static void ReadConfigXML(const std::wstring& path, SConfigFileData& data);

    /// "true" or "false" exactly; any other text, or none, leaves `value` unchanged.
    static void GetBool(const XMLNode& node, bool& value);

    /// Leading white space, decimal digits, anything after them ignored, 0 without digits; too large a number gives the
    /// largest, a minus sign negates within the type ("-1" is the largest). No text leaves `value` unchanged.
    static void GetUInt32(const XMLNode& node, std::uint32_t& value);
    static void GetUInt64(const XMLNode& node, std::uint64_t& value);

    /// The data directories remembered in "LastConfig.xml" of the per-user folder, the latest first. A file that cannot
    /// be read costs one line of output.
    static std::vector<std::wstring> GetDataDirHistory();

    /// Fills run parameters from the child elements of `node`; missing elements leave their fields unchanged.
    static void GetRunParam(const XMLNode& node, LuTestSuiteRun::SParams& params);

    // Discovery -------------------------------------------------------------------------------------------------------

    /// Finds the unit tests of a data directory: each folder named after a registered class derived from LuUnitTest is
    /// that class's data directory, and is not searched further. Folders that cannot become a unit test cost a warning.
    /// The order of folders is the file system's; of a folder's sub-folders the last is searched first. Folders with
    /// ".svn" in their names are left out, linked folders are searched once. `removeDisabled` leaves out the cases that
    /// their description disables, and unit tests without any other case. An empty `dataDir` holds nothing. Throws
    /// nothing of its own.
    static std::vector<LuTestSuite::SUnitTest> ScanDirectoryForUnitTests(const std::wstring& dataDir,
                                                                         bool removeDisabled);

    /// Normalises a data directory given by the user: a path that does not exist but is a number selects that entry of
    /// GetDataDirHistory (0 is the first); a separator is put at the end.
    static void PreprocessDataDir(std::wstring& dataDir);

    // Selection -------------------------------------------------------------------------------------------------------

    /// Keeps the selected cases only; unit tests without any vanish, the order stays. Patterns are ECMAScript
    /// expressions, searched in the path name: directory and class name with "/" as separator, ":", case name; with
    /// `noRegex` they are plain ends of it. Excluding wins over including. Names stored in the configuration file are
    /// class name, ":", case name. Without any pattern and stored name all are selected. At least one selected case is
    /// kept whatever `maxCases`. Throws a German message as std::wstring naming an invalid pattern, a name too long to
    /// be matched, or the error in the configuration file.
    static void FilterTestCases(std::vector<LuTestSuite::SUnitTest>& tests, const std::wstring& includeConfigPath,
                                const std::vector<std::wstring>& includes, const std::vector<std::wstring>& excludes,
                                std::uint32_t maxCases, bool noRegex);

    /// The expression of a wildcard name: "*" is any text, "?" any character; "{" and "}" keep their meaning as
    /// repetition counts. To be matched against whole names. Throws std::regex_error for an invalid repetition count.
    static std::wregex GenerateWildcardRegex(const std::wstring& wildcard);

    // Paths and texts -------------------------------------------------------------------------------------------------

    /// The path with the platform's separator at its end, unless it ends in a separator (also for an empty path); and
    /// the path without one separator at its end. Nothing else changes.
    static std::wstring AddBackslash(const std::wstring& path);
    static std::wstring RemoveBackslash(const std::wstring& path);

    /// Last component, also of a directory string; and all before it, with its separator.
    static std::wstring GetFileNameOnly(const std::wstring& path);
    static std::wstring GetPrunedPath(const std::wstring& path);

    /// Splits at the last separator, which goes to the folder.
    static void SplitFileName(const std::wstring& path, std::wstring& folder, std::wstring& name);

    /// True when the directory exists, after creating it if need be.
    static bool AssertDirectory(const std::wstring& path);

    /// Folder of the present user's test-suite data, ends in a separator; created if need be, which may fail unseen.
    /// Throws LbException when the system knows no folder for the user's data.
    static std::wstring GetLocalTestSuiteDir();

    /// A time with its unit: "0 s" for exactly 0, else the number with `decimals` digits and "ns", "µs", "ms" or "s".
    /// Negative times come in nanoseconds.
    static std::wstring FormatTime(double seconds, std::uint32_t decimals);

    /// The text up to and including its `maxLines`-th line feed; all of it when it has fewer.
    static std::wstring GetTrimmedLines(const std::wstring& text, std::uint32_t maxLines);

    // Build information -----------------------------------------------------------------------------------------------

    /// Where the sources of the build came from.
    struct SSvnInfo
    {
        std::wstring Path;
        std::wstring WorkingCopyRootPath;
        std::wstring URL;
        std::wstring RepositoryRoot;
        std::wstring Revision;
        std::wstring LastChangedAuthor;
        std::wstring LastChangedRev;
        std::wstring LastChangedDate;
    };

    struct SPscmInfo
    {
        std::wstring Server;
        std::wstring Repository;
        std::wstring Branch;
        std::wstring Changeset;
        std::wstring ChangesetAuthor;
        std::wstring WorkspacePath;
    };

    /// The records that the build left in the library; null when it left none.
    static std::unique_ptr<SSvnInfo> GetSvnInfo();
    static std::unique_ptr<SPscmInfo> GetPscmInfo();

    /// File name of the module that holds a class; empty when there is none.
    static std::wstring GetModuleName(const LbRTTI& type);

    // Processes -------------------------------------------------------------------------------------------------------

    /// Starts a process and waits for its end, or ends it after the given time, and what it started with it. What a
    /// process that ended in time has left running goes on. The arguments are one text, quoted by the caller; the exit
    /// status is not looked at. A process that cannot be started, and one that is ended, cost a warning.
    static void ExecuteWithTimeout(const std::wstring& executable, const std::wstring& arguments,
                                   const std::wstring& workingDir, std::uint32_t timeoutSec);

    /// Ends all processes whose executable has exactly this file name, the present one among them. Those that are not
    /// the caller's to end go on.
    static void KillAllByName(const std::wstring& exeName);

    /// True when the parent process runs an executable of the same file name. Throws LbException when there is no
    /// parent any more, or it cannot be asked.
    static bool CheckForSameParentProcess();

    /// Never returns: parks the calling thread, so that a debugger can be attached.
    [[noreturn]] static void EnterDebugBreakpoint();

    // Auxiliary modes -------------------------------------------------------------------------------------------------

    /// Lists the selected unit tests and cases and how many were found, cases that are disabled left out. Without a
    /// data directory lists those of GetDataDirHistory, nothing when there are none. Throws what selection throws.
    static void RunQueryMode(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    /// Lists the selected cases that their descriptions disable, by unit test. Throws what selection throws.
    static void ListDisabledTestCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    /// Carries out the run that the setup's "file:name" names in a child process of a configured host, which may take 8
    /// hours, moves its reports to the archive, and renews the archive's overview. What becomes of the child is no
    /// failure. A name that the file does not hold, and a report that cannot be moved, cost a line of output. Throws a
    /// German message as std::wstring when the file or what it names is wrong or missing.
    static void RunArchiveMode(const LuTestSuiteSetup& setup);

    /// Finds the selected data sets whose files have the same content within one unit test, lists them, and deletes all
    /// but the oldest of each set, as the setup's duplicate mode says; eDM_None only names the unit tests. Files of
    /// 4 GiB and more are left out. What cannot be read or deleted costs a line of output. Throws what selection
    /// throws.
    static void RunDuplicateDetection(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    // Reports ---------------------------------------------------------------------------------------------------------

    /// Writes lines of indented markup; defined in lutestsuitemarkupwriter.h.
    class LUTESTSUITE_API LuMarkupWriter;

    /// Compares the two XML reports that the setup names in a page, and shows it if the setup says so. What is missing
    /// or cannot be read costs a line of output; nothing is written then.
    static void GenerateReportDiff(const LuTestSuiteSetup& setup);

    // Resources -------------------------------------------------------------------------------------------------------

    /// The bytes that the build embedded in this library under a name and a type, as they stand in their file; empty
    /// when there is no such resource.
    static std::string LoadResourceToString(const std::wstring& name, const std::wstring& type);

    /// The style sheet and the script of the HTML reports.
    static std::string GetDefaultStylesheet();
    static std::string GetJavascriptSource();

private:
    class LuOptionParser;

    using UnitTests = std::vector<LuTestSuite::SUnitTest>;

    static void processDir(const std::wstring& directory, const std::wstring& folderName, UnitTests& tests,
                           std::vector<std::wstring>& pendingDirs, bool removeDisabled);
    static void processExtraInfoFile(LuTestSuite::SUnitTest& test);
    static void processTestCaseNodes(LuTestSuite::SUnitTest& test, const std::vector<XMLNode>& nodes,
                                     const std::wstring& file);
    static void processParamNode(const XMLNode& node, LuTestSuite::ParameterMap& parameters, const std::wstring& file);
    static void removeDisabledCases(LuTestSuite::SUnitTest& test);
};
