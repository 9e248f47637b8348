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
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/lbexport.h"
#include "base/lbformat.h"
#include "base/lbrtti.h"
#include "base/lustream.h"

/// A unit test with its sub-tests. The runner makes a fresh object for each case and calls, on one thread and in this
/// order: SetMessageStream, SetDataDirectory, InitSubtests, PrepareSubtest, RunUnitTest for one sub-test. Objects of
/// several cases may live on several threads at once.
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

    /// Names of the files of the data directory, ordered by code unit, as they were at the first call after
    /// SetDataDirectory: large folders are read once.
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

protected:
    /// Appends a sub-test. `function` takes nothing and returns an EResult, or returns nothing: then the sub-test has
    /// passed unless it reported an error line. Of several sub-tests with one name only the first is ever run.
    template<std::invocable F>
    void AddSubtest(std::wstring name, F function)
    {
        if constexpr (std::is_void_v<std::invoke_result_t<F&>>)
        {
            addSubtest(std::move(name), [this, function = std::move(function)]() mutable {
                function();
                return GetResultByErrors();
            });
        }
        else
        {
            addSubtest(std::move(name), std::move(function));
        }
    }

    /// Appends one sub-test per file of the data directory whose name matches the wildcard ("*": any characters, "?":
    /// one character; exact otherwise), ordered by name, named after the file. Description files ("#ExtraInfo.xml") are
    /// left out. `function` takes the file's full path and returns as in AddSubtest.
    template<std::invocable<const std::wstring&> F>
    void AddFileSubtests(std::wstring_view wildcard, const F& function)
    {
        for (const std::wstring& name : GetDataFileNames())
        {
            if (isDataSet(name, wildcard))
            {
                // The path is made when it is needed: the list is filled anew for each case.
                AddSubtest(name, [this, function, subtest = m_subtests.size()] {
                    return function(m_dataDirectory + m_subtests[subtest].name);
                });
            }
        }
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
    struct SSubtest
    {
        std::wstring name;
        std::function<EResult()> function;
    };

    void addSubtest(std::wstring name, std::function<EResult()> function);
    static bool isDataSet(std::wstring_view fileName, std::wstring_view wildcard);
    void writeMessage(bool isError, const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    bool writeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments);
    void writeMessageLine(bool isError, std::wstring_view text);

    LuStreamWriteText* m_messages = nullptr;
    std::wstring m_dataDirectory;
    mutable std::optional<std::vector<std::wstring>> m_dataFileNames;
    std::vector<SSubtest> m_subtests;
    bool m_hasErrors = false;
};
