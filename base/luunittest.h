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
#include <cstdint>
#include <functional>
#include <initializer_list>
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

/// A unit test with its sub-tests. The runner makes a fresh object for each case and calls, on one thread and in this
/// order: SetMessageStream, SetDataDirectory, InitSubtests, PrepareSubtest, RunUnitTest for one sub-test. Objects of
/// several cases may live on several threads at once.
///
/// An object that is made for one case keeps that sub-test only (see SelectSubtest). The files of the data directory
/// count as they are when InitSubtests asks for them: a case whose file was removed since the run began has no sub-test
/// any more, and files that were added are no cases of this run.
class LB_API LuUnitTest : public virtual IObject
{
    LB_RTTI(LuUnitTest)

public:
    enum EResult : std::uint32_t
    {
        eR_NoInput = 0,   ///< the input data could not be loaded
        eR_Passed = 1,    //
        eR_Failed = 2,    //
        eR_Exception = 3, ///< the test caught an exception of its own
        eR_Different = 4  ///< output differs from the reference run
    };

    /// The file of a unit test's folder that describes its cases; never a data set.
    static constexpr const wchar_t* sc_DescriptionFile = L"#ExtraInfo.xml";

    LuUnitTest();
    ~LuUnitTest() override;

    /// Where messages go; the stream is the caller's and outlives the use. Null: messages are dropped.
    virtual void SetMessageStream(LuStreamWriteText* stream);

    /// The unit test's own directory, with separator at its end.
    virtual void SetDataDirectory(const std::wstring& directory);
    const std::wstring& GetDataDirectory() const noexcept { return m_dataDirectory; }

    /// Names of the files of the data directory, ordered by code unit, as they are when this object first needs them
    /// after SetDataDirectory. The process reads a folder again only when it has changed, but the list itself costs
    /// time in proportion to its length, for each object that asks for it.
    const std::vector<std::wstring>& GetDataFileNames() const;

    /// Fills the list of sub-tests, by AddSubtest and AddFileSubtests. Called once per object.
    virtual void InitSubtests() = 0;

    /// Hook: called once per case after the debugging options are set. Does nothing by default.
    virtual void PrepareSubtest();

    /// Number of sub-tests that InitSubtests has filled in.
    virtual std::uint32_t GetSubtestCount() const;

    /// Throws LbException for an index out of range, as RunUnitTest does.
    virtual std::wstring GetSubtestName(std::uint32_t subtest) const;

    /// Runs one sub-test. An exception that leaves the sub-test is reported as an error line with its text, and the
    /// result is eR_Exception.
    virtual EResult RunUnitTest(std::uint32_t subtest);

    /// The first sub-test of exactly that name. Goes through GetSubtestCount and GetSubtestName where the class
    /// overrides one of them, and else looks the name up. Passes on what the class throws.
    std::optional<std::uint32_t> FindSubtest(std::wstring_view name) const;

    /// For runners: says ahead of InitSubtests which sub-test the object is for. Unless the class overrides
    /// GetSubtestCount, GetSubtestName or RunUnitTest, the object then keeps no other: sub-tests of other names are
    /// only counted, and of the data directory one file is asked for, however many there are. Should the class itself
    /// ask for another sub-test, a second object of it answers.
    void SelectSubtest(std::wstring_view name);

    /// True when InitSubtests has made a sub-test of the selected name. Passes on what the class throws.
    bool HasSelectedSubtest();

    /// Runs the first sub-test of that name, as RunUnitTest does. Only after HasSelectedSubtest has answered true.
    EResult RunSelectedSubtest();

protected:
    /// Appends a sub-test. `function` takes nothing and returns an EResult, or returns nothing: then the sub-test has
    /// passed unless it reported an error line. Of several sub-tests with one name only the first is ever run.
    template<std::invocable F>
    void AddSubtest(std::wstring_view name, F function)
    {
        if (countSubtest(name))
        {
            addSubtest(name, [this, function = std::move(function)]() mutable { return getResult(function); });
        }
    }

    using Wildcards = std::initializer_list<std::wstring_view>;

    /// Appends one sub-test per file of the data directory that matches a wildcard ("*": any characters, "?": one
    /// character; exact otherwise) and no excluded one, ordered by name, named after the file. Description files
    /// ("#ExtraInfo.xml") are left out. `function` takes the file's full path and returns as in AddSubtest.
    ///
    ///     AddFileSubtests({L"*.yaml", L"*.yml"}, {L"*.expected.*"}, [this](const std::wstring& path) { ... });
    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(Wildcards wildcards, Wildcards excluded, F function)
    {
        const LbFilePattern pattern{{wildcards.begin(), wildcards.end()}, {excluded.begin(), excluded.end()}};
        if (countFiles(pattern))
        {
            addFileSubtests(pattern, [this, function = std::move(function)](const std::wstring& path) mutable {
                return getResult(function, path);
            });
        }
    }

    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(Wildcards wildcards, F function)
    {
        AddFileSubtests(wildcards, {}, std::move(function));
    }

    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(std::wstring_view wildcard, F function)
    {
        AddFileSubtests({wildcard}, {}, std::move(function));
    }

    /// Reports an error line ("\t\tERROR: ..."); the sub-test has failed unless it returns a result of its own. Formats
    /// as LbFormat does. A mistake of a format that is made at run time becomes an error line with the place of its
    /// LbRuntimeFormat, instead of the line: it throws nothing and leaves the result as it would be without the
    /// mistake, here and in Info and Check.
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

    /// Reports an error line when the condition is false. Returns the condition. When it is true nothing is formatted,
    /// but a format that is made at run time is checked.
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

    /// True when an error line was reported since RunUnitTest began.
    bool HasErrors() const noexcept { return m_hasErrors; }
    EResult GetResultByErrors() const noexcept { return m_hasErrors ? eR_Failed : eR_Passed; }

private:
    using Function = std::function<EResult()>;
    using FileFunction = std::function<EResult(const std::wstring&)>;

    /// The sub-tests of a call of AddFileSubtests.
    struct SFiles
    {
        std::shared_ptr<const LbFileListing> listing;
        std::span<const std::uint32_t> ranks;
        FileFunction function;
    };

    /// What one call has appended.
    struct SEntry
    {
        std::uint32_t first; ///< index of its first sub-test
        std::wstring name;
        Function function;
        std::unique_ptr<SFiles> files; ///< in place of name and function
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

    /// False when the object has no use for the sub-test.
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
    const LbFileListing& getListing() const;
    const SEntry& getEntry(std::uint32_t subtest) const;
    std::optional<std::uint32_t> findPlain(std::wstring_view name) const;
    LbClassFacts getFacts() const;
    LuUnitTest& getComplete() const;
    void writeMessage(bool isError, const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    bool writeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    void writeMessageLine(bool isError, std::wstring_view text);

    LuStreamWriteText* m_messages = nullptr;
    std::wstring m_dataDirectory;
    mutable std::shared_ptr<const LbFileListing> m_listing;
    mutable std::optional<std::vector<std::wstring>> m_dataFileNames;
    std::vector<SEntry> m_entries;
    std::uint32_t m_count = 0; ///< of the sub-tests of all entries
    std::uint32_t m_calls = 0; ///< of AddSubtest and AddFileSubtests
    bool m_hasFiles = false;   ///< some of these calls were of the latter

    std::wstring m_selected;
    bool m_isForOne = false;                        ///< keeps the selected sub-test only
    Function m_selectedFunction;                    ///< then
    std::optional<std::uint32_t> m_selectedSubtest; ///< else
    mutable std::unique_ptr<LuUnitTest> m_complete; ///< keeps the others

    bool m_hasErrors = false;
};
