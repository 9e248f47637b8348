/// A unit test whose cases take the time that their data files state.

#include <chrono>
#include <string>
#include <thread>

#include "base/lbfilesystem.h"
#include "base/luunittest.h"

namespace
{

/// Each file contains a number of milliseconds. The case sleeps for that time, so many cases can run at once without
/// using processors.
class CDurationModel : public LuUnitTest
{
    LB_RTTI(CDurationModel)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.ms", [](const std::wstring& path) {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(LbFileSystem::ReadFile8Bit(path))));
        });
    }
};

} // namespace

LB_RTTI_CLASS(CDurationModel, LuUnitTest)
