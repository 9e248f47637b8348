#include "tests/lutestsuite/selection/discoverymodels.h"

#include <limits>
#include <stdexcept>

#include "base/luunittest.h"
#include "base/os/files.h"

discoverymodels::SJournal& discoverymodels::SJournal::GetInstance()
{
    static SJournal s_journal;
    return s_journal;
}

namespace
{

using discoverymodels::SJournal;

/// Cases "eins" and "zwei".
class CScanNamed : public LuUnitTest
{
    LB_RTTI(CScanNamed)
    void InitSubtests() override
    {
        AddSubtest(L"eins", [] {});
        AddSubtest(L"zwei", [] {});
    }
};

/// A case for each text file, and one case without a file.
class CScanFiles : public LuUnitTest
{
    LB_RTTI(CScanFiles)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [](const std::wstring&) {});
        AddSubtest(L"benannt", [] {});
    }
};

/// Ignores its data directory.
class CScanOwnDirectory : public LuUnitTest
{
    LB_RTTI(CScanOwnDirectory)
    void SetDataDirectory(const std::wstring&) override {}
    void InitSubtests() override
    {
        AddSubtest(L"daten.bin", [] {});
    }
};

/// Disables its second case.
class CScanDisables : public LuUnitTest
{
    LB_RTTI(CScanDisables)
    void InitSubtests() override
    {
        AddSubtest(L"eins", [] {});
        AddSubtest(L"zwei", [] {});
    }
    bool IsSubtestDisabled(std::uint32_t subtest) const override { return subtest == 1; }
};

class CScanEmpty : public LuUnitTest
{
    LB_RTTI(CScanEmpty)
    void InitSubtests() override {}
};

/// Names its case after the working directory, then changes the working directory.
class CScanMoves : public LuUnitTest
{
    LB_RTTI(CScanMoves)
    void InitSubtests() override
    {
        AddSubtest(LbOs::GetWorkingDirectory(), [] {});
        LbOs::SetWorkingDirectory(LbOs::GetTemporaryDirectory());
    }
};

/// Cannot be created by name.
class CScanAbstract : public LuUnitTest
{
    LB_RTTI(CScanAbstract)
};

/// Not a unit test.
class CScanObject : public IObject
{
    LB_RTTI(CScanObject)
};

class CScanThrowsWhenMade : public LuUnitTest
{
    LB_RTTI(CScanThrowsWhenMade)
    void InitSubtests() override {}

public:
    CScanThrowsWhenMade() { throw std::runtime_error("constructor"); }
};

class CScanThrowsOnInit : public LuUnitTest
{
    LB_RTTI(CScanThrowsOnInit)
    void InitSubtests() override
    {
        AddSubtest(L"eins", [] {});
        throw std::wstring(L"Konfiguration");
    }
};

class CScanThrowsOnDirectory : public LuUnitTest
{
    LB_RTTI(CScanThrowsOnDirectory)
    void SetDataDirectory(const std::wstring&) override { throw 42; }
    void InitSubtests() override
    {
        AddSubtest(L"eins", [] {});
    }
};

/// Throws for the third of four names.
class CScanThrowsOnName : public LuUnitTest
{
    LB_RTTI(CScanThrowsOnName)
    void InitSubtests() override {}
    std::uint32_t GetSubtestCount() const override { return 4; }
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        if (subtest == 2)
        {
            throw std::runtime_error("name");
        }
        return L"Fall " + std::to_wstring(subtest);
    }
};

/// Reports an impossible number of names and throws for the third.
class CScanHugeCount : public LuUnitTest
{
    LB_RTTI(CScanHugeCount)
    void InitSubtests() override {}
    std::uint32_t GetSubtestCount() const override { return std::numeric_limits<std::uint32_t>::max(); }
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        if (subtest == 2)
        {
            throw std::runtime_error("name");
        }
        return L"Fall " + std::to_wstring(subtest);
    }
};

/// Records the calls made on it.
class CScanJournal : public LuUnitTest
{
    LB_RTTI(CScanJournal)
    void SetMessageStream(LuStreamWriteText*) override { note(L"SetMessageStream"); }
    void SetDataDirectory(const std::wstring& directory) override { note(L"SetDataDirectory " + directory); }
    void InitSubtests() override { note(L"InitSubtests"); }
    void PrepareSubtest() override { note(L"PrepareSubtest"); }
    std::uint32_t GetSubtestCount() const override
    {
        note(L"GetSubtestCount");
        return 2;
    }
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        note(L"GetSubtestName " + std::to_wstring(subtest));
        return std::to_wstring(subtest);
    }
    EResult RunUnitTest(std::uint32_t) override
    {
        note(L"RunUnitTest");
        return eR_Passed;
    }

    static void note(const std::wstring& call)
    {
        // Records equal calls in a row only once, because the count may be requested more than once.
        std::vector<std::wstring>& calls = SJournal::GetInstance().calls;
        if (calls.empty() || calls.back() != call)
        {
            calls.push_back(call);
        }
    }

public:
    CScanJournal() { ++SJournal::GetInstance().alive; }
    ~CScanJournal() override { --SJournal::GetInstance().alive; }
};

} // namespace

LB_RTTI_CLASS(CScanNamed, LuUnitTest)
LB_RTTI_CLASS(CScanFiles, LuUnitTest)
LB_RTTI_CLASS(CScanOwnDirectory, LuUnitTest)
LB_RTTI_CLASS(CScanDisables, LuUnitTest)
LB_RTTI_CLASS(CScanEmpty, LuUnitTest)
LB_RTTI_CLASS(CScanMoves, LuUnitTest)
LB_RTTI_ABSTRACT(CScanAbstract, LuUnitTest)
LB_RTTI_CLASS(CScanObject, IObject)
LB_RTTI_CLASS(CScanThrowsWhenMade, LuUnitTest)
LB_RTTI_CLASS(CScanThrowsOnInit, LuUnitTest)
LB_RTTI_CLASS(CScanThrowsOnDirectory, LuUnitTest)
LB_RTTI_CLASS(CScanThrowsOnName, LuUnitTest)
LB_RTTI_CLASS(CScanHugeCount, LuUnitTest)
LB_RTTI_CLASS(CScanJournal, LuUnitTest)

namespace
{

const LbRTTI s_MakesNothing(L"CScanMakesNothing", &LuUnitTest::RTTI,
                            []() -> std::unique_ptr<IObject> { return nullptr; });
const LbRTTI s_MakesNoUnitTest(L"CScanMakesNoUnitTest", &LuUnitTest::RTTI,
                               []() -> std::unique_ptr<IObject> { return std::make_unique<CScanObject>(); });

} // namespace
