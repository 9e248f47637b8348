#include <string>

#include "base/luunittest.h"

class CShapes : public LuUnitTest
{
    LB_RTTI(CShapes)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.shape", [this](const std::wstring& path) {
            Check(path.find(L"flat") == std::wstring::npos, L"%s has no body", path);
        });
    }
};
LB_RTTI_CLASS(CShapes, LuUnitTest)
