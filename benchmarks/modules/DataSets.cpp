#include <memory>
#include <vector>

#include "base/lbformat.h"
#include "base/luunittest.h"

/// Each file of its folder is a data set.
class CDataSets : public LuUnitTest
{
    LB_RTTI(CDataSets)

    void InitSubtests() override
    {
        AddFileSubtests(L"*", [](const std::wstring&) { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CDataSets, LuUnitTest)

/// Overrides RunUnitTest, so that the index of a case's sub-test must be found.
class CIndexedDataSets : public CDataSets
{
    LB_RTTI(CIndexedDataSets)

    EResult RunUnitTest(std::uint32_t subtest) override { return CDataSets::RunUnitTest(subtest); }
};
LB_RTTI_CLASS(CIndexedDataSets, CDataSets)

/// Gives its sub-tests names of its own.
class CNamedDataSets : public CDataSets
{
    LB_RTTI(CNamedDataSets)

    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        return L"my " + CDataSets::GetSubtestName(subtest);
    }
};
LB_RTTI_CLASS(CNamedDataSets, CDataSets)

namespace
{

/// The same class under a thousand names, one per folder.
struct SRecords
{
    static constexpr int c_Count = 1000;

    SRecords()
    {
        for (int index = 0; index < c_Count; ++index)
        {
            records.push_back(std::make_unique<LbRTTI>(LbFormat(L"CDataSets%d", index).c_str(), &CDataSets::RTTI,
                                                       CDataSets::RTTI.GetCreate(), CDataSets::RTTI.GetFacts()));
        }
    }

    std::vector<std::unique_ptr<LbRTTI>> records;
};

const SRecords s_Records;

} // namespace
