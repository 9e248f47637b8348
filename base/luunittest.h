/// The base class of unit tests.
///
/// A first test:
///
///     #include "base/luunittest.h"
///
///     class CMyTest : public LuUnitTest
///     {
///         LB_RTTI(CMyTest)
///         void InitSubtests() override
///         {
///             AddSubtest(L"adds", [this] { Check(1 + 1 == 2, L"%d", 1 + 1); });
///             AddFileSubtests(L"*.txt", [this](const std::wstring& path) { Info(L"reads %s", path); });
///         }
///     };
///     LB_RTTI_CLASS(CMyTest, LuUnitTest)
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/lbexport.h"
#include "base/lbfilelisting.h"
#include "base/lbformat.h"
#include "base/lbrtti.h"
#include "base/lustream.h"

/// A unit test with its sub-tests. The runner creates a new object for each case and calls, on one thread and in this
/// order: SetMessageStream, SetDataDirectory, InitSubtests, PrepareSubtest, RunUnitTest for one sub-test. Objects for
/// several cases may be used on several threads at once.
///
/// An object created for one case keeps only the sub-test of that case (see SelectSubtest). InitSubtests sees the
/// current files of the data directory: a case whose file was removed since the run began has no sub-test, and added
/// files are not cases of this run.
class LB_API LuUnitTest : public virtual IObject
{
    LB_RTTI(LuUnitTest)

public:
    enum EResult : std::uint32_t
    {
        eR_NoInput = 0,   ///< the input data could not be loaded
        eR_Passed = 1,    //
        eR_Failed = 2,    //
        eR_Exception = 3, ///< the sub-test threw an exception, or reports one that it caught
        eR_Different = 4  ///< output differs from a reference
    };

    /// The file in a unit test's folder that describes its cases; never a data set.
    static constexpr const wchar_t* sc_DescriptionFile = L"#ExtraInfo.xml";

    LuUnitTest();
    ~LuUnitTest() override;

    /// The stream for messages; the caller owns it and keeps it alive while it is used. Null: messages are dropped.
    virtual void SetMessageStream(LuStreamWriteText* stream);

    /// The unit test's own directory, with trailing separator.
    virtual void SetDataDirectory(const std::wstring& directory);
    const std::wstring& GetDataDirectory() const noexcept { return m_dataDirectory; }

    /// Names of the files in the data directory, ordered by code unit, read when this object first needs them after
    /// SetDataDirectory. The process reads a folder again only if it has changed, and all objects share the names.
    /// Valid until SetDataDirectory is called again.
    const LbFileNames& GetDataFileNames() const;

    /// Fills the list of sub-tests with AddSubtest and AddFileSubtests. Called once per object.
    virtual void InitSubtests() = 0;

    /// Called once per case after the debugging options are set. Does nothing by default.
    virtual void PrepareSubtest();

    /// Number of sub-tests that InitSubtests has added.
    virtual std::uint32_t GetSubtestCount() const;

    /// Throws LbException for an index out of range, like RunUnitTest.
    virtual std::wstring GetSubtestName(std::uint32_t subtest) const;

    /// True if the class itself disables a sub-test: its case is disabled unless a description file enables it. Called
    /// with indices below GetSubtestCount, and only on objects that keep all sub-tests.
    virtual bool IsSubtestDisabled(std::uint32_t subtest) const;

    /// Runs one sub-test. If it throws, the exception's text is reported as an error line and the result is
    /// eR_Exception.
    virtual EResult RunUnitTest(std::uint32_t subtest);

    /// The first sub-test with exactly that name. If the class overrides GetSubtestCount or GetSubtestName, calls them,
    /// beginning with the index where the name was last found; otherwise searches the added sub-tests. Passes on
    /// exceptions of the class.
    std::optional<std::uint32_t> FindSubtest(std::wstring_view name) const;

    /// For runners: selects the only sub-test that the object is used for. Call it after SetDataDirectory and before
    /// InitSubtests. `likely` is the index of this sub-test in another object of the class; it saves a search if the
    /// class overrides GetSubtestCount or GetSubtestName.
    ///
    /// The object then only counts all other sub-tests and looks up a single file of the data directory. If the class
    /// requests another sub-test, a second object provides it. The object keeps all sub-tests instead if the class
    /// overrides GetSubtestCount, GetSubtestName or RunUnitTest or has no record of its own that can create objects, or
    /// if the stored message stream or data directory is not the one that the runner passed.
    void SelectSubtest(std::wstring_view name, std::optional<std::uint32_t> likely = {});

    /// True if InitSubtests has added a sub-test with the selected name. Passes on exceptions of the class.
    bool HasSelectedSubtest();

    /// Runs the first sub-test with the selected name, like RunUnitTest. Precondition: HasSelectedSubtest has returned
    /// true.
    EResult RunSelectedSubtest();

protected:
    /// Appends a sub-test. `function` takes no argument and returns an EResult or void: with void the sub-test passes
    /// unless it reports an error line (see GetResultByErrors). If several sub-tests have the same name, only the first
    /// is run.
    template<std::invocable F>
    void AddSubtest(std::wstring_view name, F function)
    {
        if (countSubtest(name))
        {
            addSubtest(name, [this, function = std::move(function)]() mutable { return getResult(function); });
        }
    }

    /// Wildcards of file names: a text, a list in braces, or an array, vector or span of texts. Does not copy the
    /// texts.
    class Wildcards
    {
    public:
        Wildcards() = default;
        Wildcards(std::initializer_list<std::wstring_view> list) : Wildcards(std::span(list.begin(), list.size())) {}
        Wildcards(std::span<const std::wstring_view> list) : m_list(list) {}

        template<std::convertible_to<std::wstring_view> Text>
        Wildcards(const Text& one) : m_one(one), m_list(&m_one, 1)
        {
        }

        template<std::convertible_to<std::span<const std::wstring_view>> List>
        Wildcards(const List& list) : m_list(list)
        {
        }

        template<typename List>
        requires std::convertible_to<const List&, std::span<const std::wstring>> ||
            std::convertible_to<const List&, std::span<const wchar_t* const>>
            Wildcards(const List& list) : m_views(std::begin(list), std::end(list)), m_list(m_views)
        {
        }

        Wildcards(const Wildcards&) = delete;
        Wildcards& operator=(const Wildcards&) = delete;

        std::span<const std::wstring_view> Get() const noexcept { return m_list; }

    private:
        std::wstring_view m_one;
        std::vector<std::wstring_view> m_views;
        std::span<const std::wstring_view> m_list;
    };

    /// Appends one sub-test for each file of the data directory that matches a wildcard ("*": any text, "?": one
    /// character, otherwise exact) and no excluded wildcard. Sub-tests are named after their files and ordered by name.
    /// These are never data sets: description files ("#ExtraInfo.xml"), files that CompareWithReference writes
    /// ("*.received", "*.received.runs"), the record of a review ("lutestsuite-review.pending*"), and temporary files
    /// of this library ("LuTestSuite-*.tmp"). `function` takes the file's full path and returns an EResult or void, as
    /// in AddSubtest.
    ///
    ///     AddFileSubtests({L"*.yaml", L"*.yml"}, L"*.expected.*", [this](const std::wstring& path) { ... });
    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(const Wildcards& wildcards, const Wildcards& excluded, F function)
    {
        const LbFilePattern pattern{wildcards.Get(), excluded.Get()};
        if (countFiles(pattern))
        {
            addFileSubtests(pattern, [this, function = std::move(function)](const std::wstring& path) mutable {
                return getResult(function, path);
            });
        }
    }

    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(const Wildcards& wildcards, F function)
    {
        AddFileSubtests(wildcards, {}, std::move(function));
    }

    /// Reports an error line ("\t\tERROR: ..."); the sub-test fails unless its function returns an EResult. Formats
    /// like LbFormat. If a run-time format is invalid, an error line with the location of its LbRuntimeFormat replaces
    /// the message; nothing is thrown, and the result is the same as with a valid format. The same applies to Info and
    /// Check.
    template<typename... T>
    void Error(LbFormatString<T...> format, const T&... arguments)
    {
        writeMessage(true, format.GetSource(), LbPackArguments(arguments...));
    }

    /// Reports an information line ("\t\tINFO:  ...").
    template<typename... T>
    void Info(LbFormatString<T...> format, const T&... arguments)
    {
        writeMessage(false, format.GetSource(), LbPackArguments(arguments...));
    }

    /// Reports an error line if the condition is false. Returns the condition. If it is true, formats nothing but still
    /// checks a run-time format.
    template<typename... T>
    bool Check(bool condition, LbFormatString<T...> format, const T&... arguments)
    {
        if (!condition)
        {
            Error(format, arguments...);
        }
        else if (!format.GetSource().IsChecked())
        {
            writeFormatMistake(format.GetSource(), LbPackArguments(arguments...));
        }
        return condition;
    }

    /// Compares a text with the reference file at `path`, which is relative to the data directory unless it is
    /// absolute. Narrow texts are used unchanged, wide texts as UTF-8. Line ends "\r\n" in the file or the text count
    /// as "\n".
    ///
    /// If text and file are equal, removes the files of an earlier difference and returns GetResultByErrors. If they
    /// differ or the file does not exist, reports the first differing line as an error line, writes the text to
    /// "<path>.received" and returns eR_Different. "<path>.received.runs" counts how many runs in a row have produced
    /// this text (see base/lbreceivedfile.h); the command "review" of LuTestSuiteRunner accepts the text as the new
    /// reference.
    ///
    /// Throws LbException with a German message if a file cannot be read or written. Several cases must not compare
    /// with one reference at the same time.
    EResult CompareWithReference(std::string_view received, const std::wstring& path);
    EResult CompareWithReference(std::wstring_view received, const std::wstring& path);

    /// The same for bytes, which are compared exactly: reports the first differing byte instead of a line.
    EResult CompareWithReference(std::span<const std::byte> received, const std::wstring& path);

    /// True if an error line or a difference from a reference was reported since RunUnitTest began.
    bool HasErrors() const noexcept { return m_hasErrors || m_hasDifferences; }

    /// eR_Failed after an error line, eR_Different if there were only differences from references, otherwise eR_Passed.
    EResult GetResultByErrors() const noexcept
    {
        return m_hasErrors ? eR_Failed : m_hasDifferences ? eR_Different : eR_Passed;
    }

private:
    using Function = std::function<EResult()>;
    using FileFunction = std::function<EResult(const std::wstring&)>;

    /// The sub-tests added by one call of AddFileSubtests.
    struct SFiles
    {
        std::shared_ptr<const LbFileListing> listing;
        std::span<const std::uint32_t> ranks;
        FileFunction function;
    };

    /// The sub-tests added by one call of AddSubtest or AddFileSubtests.
    struct SEntry
    {
        std::uint32_t first; ///< index of its first sub-test
        std::wstring name;
        Function function;
        std::unique_ptr<SFiles> files; ///< set by AddFileSubtests, instead of name and function
    };

    template<typename F, typename... A>
    EResult getResult(F& function, const A&... arguments)
    {
        if constexpr (std::is_void_v<std::invoke_result_t<F&, const A&...>>)
        {
            function(arguments...);
            return GetResultByErrors();
        }
        else
        {
            return function(arguments...);
        }
    }

    /// Counts the call. False if the object does not need the sub-test.
    bool countSubtest(std::wstring_view name) noexcept
    {
        ++m_calls;
        return !m_isForOne || (!m_selectedFunction && name == m_selected);
    }
    bool countFiles(const LbFilePattern& pattern);

    void addSubtest(std::wstring_view name, Function function);
    void addFileSubtests(const LbFilePattern& pattern, FileFunction function);

    template<typename F>
    EResult guard(const F& run);
    EResult runHere(std::uint32_t subtest);
    const SEntry& getEntry(std::uint32_t subtest) const;
    std::optional<std::uint32_t> findPlain(std::wstring_view name) const;
    std::optional<std::uint32_t> find(std::wstring_view name, std::optional<std::uint32_t> likely) const;
    LbClassFacts getFacts() const;
    LuUnitTest& getComplete() const;
    void writeMessage(bool isError, const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    bool writeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    void writeMessageLine(bool isError, std::wstring_view text);
    EResult compareWithReference(std::string_view received, const std::wstring& path, bool isText);

    LuStreamWriteText* m_messages = nullptr;
    std::wstring m_dataDirectory;
    mutable LbFileNames m_dataFileNames; ///< without a listing until the names are needed
    std::vector<SEntry> m_entries;
    std::uint32_t m_count = 0; ///< sub-tests of all entries
    std::uint32_t m_calls = 0; ///< number of calls of AddSubtest and AddFileSubtests
    bool m_hasFiles = false;   ///< AddFileSubtests was called

    std::wstring m_selected;
    std::optional<std::uint32_t> m_likely;          ///< where the selected sub-test is searched first
    bool m_isForOne = false;                        ///< keeps only the selected sub-test
    Function m_selectedFunction;                    ///< used if m_isForOne
    std::optional<std::uint32_t> m_selectedSubtest; ///< used if not m_isForOne
    mutable std::unique_ptr<LuUnitTest> m_complete; ///< a second object with all sub-tests

    bool m_hasErrors = false;
    bool m_hasDifferences = false; ///< from references
};
