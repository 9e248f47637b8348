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
                                                       CDataSets::RTTI.GetCreate()));
        }
    }

    std::vector<std::unique_ptr<LbRTTI>> records;
};

const SRecords s_Records;

} // namespace
