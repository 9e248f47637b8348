/// Unit tests whose cases change their own data directory.

#include "base/lustream.h"
#include "base/luunittest.h"
#include "base/os/files.h"

namespace
{

/// Each case reports that it ran. The case "a.txt" also deletes "b.txt" and creates "new.txt".
class CChangingModel : public LuUnitTest
{
    LB_RTTI(CChangingModel)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { run(path); });
    }

protected:
    void run(const std::wstring& path)
    {
        if (path.ends_with(L"a.txt"))
        {
            LbOs::RemoveFile(GetDataDirectory() + L"b.txt");
            LuStreamWriteBinaryFile(GetDataDirectory() + L"new.txt").Close();
        }
        Info(L"%s", path.substr(GetDataDirectory().size()));
    }
};

/// The same for a class that overrides RunUnitTest; each case also reports its index.
class CChangingIndexModel : public CChangingModel
{
    LB_RTTI(CChangingIndexModel)

    EResult RunUnitTest(std::uint32_t subtest) override
    {
        Info(L"%u", subtest);
        return CChangingModel::RunUnitTest(subtest);
    }
};

/// The same for a class that overrides GetSubtestName.
class CChangingNameModel : public CChangingModel
{
    LB_RTTI(CChangingNameModel)

    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        return L"my " + CChangingModel::GetSubtestName(subtest);
    }
};

/// The same for a class that overrides GetSubtestCount.
class CChangingCountModel : public CChangingModel
{
    LB_RTTI(CChangingCountModel)

    std::uint32_t GetSubtestCount() const override { return CChangingModel::GetSubtestCount(); }
};

} // namespace

LB_RTTI_CLASS(CChangingModel, LuUnitTest)
LB_RTTI_CLASS(CChangingIndexModel, CChangingModel)
LB_RTTI_CLASS(CChangingNameModel, CChangingModel)
LB_RTTI_CLASS(CChangingCountModel, CChangingModel)
