#include <chrono>
#include <string>
#include <thread>

#include "base/luunittest.h"

class CShapes : public LuUnitTest
{
    LB_RTTI(CShapes)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.shape", [this](const std::wstring& path) {
            Check(path.find(L"flat") == std::wstring::npos, L"%s has no body", path);
            if (path.find(L"endless") != std::wstring::npos)
            {
                Info(L"%s has no end", path);
                std::this_thread::sleep_for(std::chrono::hours(1));
            }
        });
    }
};
LB_RTTI_CLASS(CShapes, LuUnitTest)
