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

/// Static operations only. Unless stated otherwise they may be called from any thread, and print through
/// LuTestSuiteOut.
class LUTESTSUITE_API LuTestSuiteUtils
{
public:
    LuTestSuiteUtils() = delete;

    // Entry -----------------------------------------------------------------------------------------------------------

    /// Runs the mode that the arguments (the program's name first) select. False if the arguments were refused (the
    /// reason was printed), or if a case of a run did not end "OK". Exceptions of the mode pass through: LbException,
    /// or a German message as std::wstring. Call it on the thread that created the environment.
    static bool RunCommandLine(LuTestSuiteEnvironment& environment, int argumentCount, const wchar_t* const* arguments);

    // Command line ----------------------------------------------------------------------------------------------------

    enum EPlatform : std::uint32_t
    {
        eP_Win32 = 0,
        eP_x64 = 1
    };

    /// Fills the setup from the arguments (the program's name first). False if they were refused; then the reason was
    /// printed, and earlier options stay applied. If the arguments request help or leave nothing to do, prints the help
    /// text; the setup then selects no mode.
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

    /// Content of a configuration file. A missing file or key leaves the initial values below.
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

    /// Reads a configuration file into `data`. Missing keys leave their fields unchanged, and a missing file leaves all
    /// fields unchanged. History and selection of the file are added to those in `data`. Throws a German message as
    /// std::wstring: "XML-Syntax Fehler" if the file is not a configuration, another message if the file cannot be
    /// read.
    static void ReadConfigXML(const std::wstring& path, SConfigFileData& data);

    /// Accepts exactly "true" or "false"; any other or missing text leaves `value` unchanged.
    static void GetBool(const XMLNode& node, bool& value);

    /// Reads decimal digits after optional white space and an optional sign, and ignores the rest; 0 if there are no
    /// digits. A number that is too large becomes the largest value; a minus sign negates within the type ("-1" is the
    /// largest value). Missing text leaves `value` unchanged.
    static void GetUInt32(const XMLNode& node, std::uint32_t& value);
    static void GetUInt64(const XMLNode& node, std::uint64_t& value);

    /// The data directories stored in "LastConfig.xml" in the per-user folder, the latest first. Prints one line if the
    /// file cannot be read.
    static std::vector<std::wstring> GetDataDirHistory();

    /// Fills run parameters from the child elements of `node`; missing elements leave their fields unchanged.
    static void GetRunParam(const XMLNode& node, LuTestSuiteRun::SParams& params);

    // Discovery -------------------------------------------------------------------------------------------------------

    /// Finds the unit tests of a data directory: a folder named after a registered class derived from LuUnitTest is
    /// that class's data directory and is not searched further. Prints a warning for a folder that cannot become a unit
    /// test. Keeps the order in which the file system lists the entries of a folder, but then searches its sub-folders
    /// from the last to the first. Skips folders with ".svn" in their names, and searches linked folders once. If
    /// `removeDisabled` is true, removes cases that their description disables, and unit tests that have no cases then.
    /// An empty `dataDir` has no unit tests. Throws no exceptions of its own.
    static std::vector<LuTestSuite::SUnitTest> ScanDirectoryForUnitTests(const std::wstring& dataDir,
                                                                         bool removeDisabled);

    /// Normalises the user's data directory: if the path does not exist but is a number, replaces it by the entry of
    /// GetDataDirHistory with that index (from 0). Appends a separator unless there is one or the path is empty.
    static void PreprocessDataDir(std::wstring& dataDir);

    // Selection -------------------------------------------------------------------------------------------------------

    /// Keeps only the selected cases, in their order; of these only the first `maxCases`, but at least one. Removes
    /// unit tests without cases. Patterns are ECMAScript expressions that are searched in the path name: directory and
    /// class name with "/" as separator, ":", case name. With `noRegex` a pattern is a literal suffix of the path name.
    /// Character classes such as "\w" contain only ASCII characters. Excludes win over includes. Names stored in the
    /// configuration file are class name, ":", case name. Without includes and stored names all cases are included.
    /// Throws a German message as std::wstring that names an invalid pattern, a pattern that needs too much stack, or
    /// the error in the configuration file. Throws LbException if a pattern must be searched on a thread of its own
    /// (look-aheads, word boundaries, back-references) and the system cannot start one.
    static void FilterTestCases(std::vector<LuTestSuite::SUnitTest>& tests, const std::wstring& includeConfigPath,
                                const std::vector<std::wstring>& includes, const std::vector<std::wstring>& excludes,
                                std::uint32_t maxCases, bool noRegex);

    /// The expression for a wildcard name, to be matched against whole names: "*" is any text, "?" any character; "{"
    /// and "}" keep their meaning as repetition counts, and no other character is an operator. Throws std::regex_error
    /// for an invalid repetition count.
    static std::wregex GenerateWildcardRegex(const std::wstring& wildcard);

    // Paths and texts -------------------------------------------------------------------------------------------------

    /// AddBackslash appends the platform's separator unless the path already ends with one; an empty path becomes a
    /// separator. RemoveBackslash removes one trailing separator. Both change nothing else.
    static std::wstring AddBackslash(const std::wstring& path);
    static std::wstring RemoveBackslash(const std::wstring& path);

    /// GetFileNameOnly returns the last component of a path, even if the path ends with a separator. GetPrunedPath
    /// returns the path before that component, with separator.
    static std::wstring GetFileNameOnly(const std::wstring& path);
    static std::wstring GetPrunedPath(const std::wstring& path);

    /// Splits after the last separator.
    static void SplitFileName(const std::wstring& path, std::wstring& folder, std::wstring& name);

    /// Creates the directory if it does not exist; true if it exists afterwards.
    static bool AssertDirectory(const std::wstring& path);

    /// Folder of the current user's test-suite data, with trailing separator. Creates it if needed and ignores failure.
    /// Throws LbException if the system has no folder for user data.
    static std::wstring GetLocalTestSuiteDir();

    /// A time with unit: "0 s" for exactly 0, otherwise the number with `decimals` decimals and "ns", "µs", "ms" or
    /// "s". Negative times are in nanoseconds.
    static std::wstring FormatTime(double seconds, std::uint32_t decimals);

    /// The text up to and including its `maxLines`-th line feed; the whole text if it has fewer.
    static std::wstring GetTrimmedLines(const std::wstring& text, std::uint32_t maxLines);

    // Build information -----------------------------------------------------------------------------------------------

    /// The version-control origin of the build's sources. A field is empty if the build did not know it.
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

    /// Like SSvnInfo, with the fields of another version-control system.
    struct SPscmInfo
    {
        std::wstring Server;
        std::wstring Repository;
        std::wstring Branch;
        std::wstring Changeset;
        std::wstring ChangesetAuthor;
        std::wstring WorkspacePath;
    };

    /// The origin of the build's sources; null if unknown. Both read a record that the build embedded in this library;
    /// only GetPscmInfo first looks for a file lutestsuite-build.txt beside the host and, if there is one, reads that
    /// file instead.
    static std::unique_ptr<SSvnInfo> GetSvnInfo();
    static std::unique_ptr<SPscmInfo> GetPscmInfo();

    /// File name of the module that contains a class; empty if unknown.
    static std::wstring GetModuleName(const LbRTTI& type);

    // Processes -------------------------------------------------------------------------------------------------------

    /// Starts a process and waits for its end. If the process has not ended after the given time, ends it and its
    /// descendants; otherwise its descendants keep running. `arguments` is one text, in which the caller has quoted
    /// each argument that needs it. The exit status is ignored. Prints a warning if the process cannot be started or
    /// had to be ended.
    static void ExecuteWithTimeout(const std::wstring& executable, const std::wstring& arguments,
                                   const std::wstring& workingDir, std::uint32_t timeoutSec);

    /// Ends all processes whose executable has exactly this file name, including the current process. Processes that
    /// the caller has no right to end keep running.
    static void KillAllByName(const std::wstring& exeName);

    /// True if the parent process runs an executable of the same file name. Throws LbException if the parent has ended
    /// or cannot be queried.
    static bool CheckForSameParentProcess();

    /// Blocks the calling thread forever, so that a debugger can be attached.
    [[noreturn]] static void EnterDebugBreakpoint();

    // Auxiliary modes -------------------------------------------------------------------------------------------------

    /// Lists the selected unit tests and cases, except disabled cases, and prints how many were selected and found.
    /// Without a data directory, lists the entries of GetDataDirHistory instead. Exceptions of the selection pass
    /// through.
    static void RunQueryMode(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    /// Lists, for each unit test, the selected cases that their descriptions disable. Exceptions of the selection pass
    /// through.
    static void ListDisabledTestCases(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    /// Carries out the archive run that the setup names as "file:name": starts a child process, the host that the file
    /// specifies, and ends it if it still runs after 8 hours. Moves the reports of the run to the archive and updates
    /// the archive's overview. Ignores the child's exit status. Prints a line for a name that the file does not contain
    /// and for a report that cannot be moved. Throws a German message as std::wstring if the file is missing or
    /// invalid, or if a file or folder named in it is missing or invalid.
    static void RunArchiveMode(const LuTestSuiteSetup& setup);

    /// Finds, in each unit test, groups of selected data sets whose files have equal contents. Depending on the setup's
    /// duplicate mode, lists the groups, or deletes all but the oldest data set of each group; eDM_None only prints the
    /// names of the unit tests. Ignores files of 4 GiB or more. Prints a line for a file that cannot be read or
    /// deleted. Exceptions of the selection pass through.
    static void RunDuplicateDetection(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);

    // Reports ---------------------------------------------------------------------------------------------------------

    /// Writes lines of indented markup; defined in lutestsuitemarkupwriter.h.
    class LUTESTSUITE_API LuMarkupWriter;

    /// Writes a page that compares the two XML reports named in the setup, and opens the page if the setup requests
    /// that. If a report is missing or unreadable, prints a line and writes nothing.
    static void GenerateReportDiff(const LuTestSuiteSetup& setup);

    // Resources -------------------------------------------------------------------------------------------------------

    /// The bytes of a file that the build embedded in this library under a name and a type; empty if there is no such
    /// resource.
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
