/// A data-driven unit test: each text file of its directory is a case, and the file's first word determines the result.

#include <string>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/luunittest.h"

class CDataSetModel : public LuUnitTest
{
    LB_RTTI(CDataSetModel)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { return judge(path); });
    }

private:
    EResult judge(const std::wstring& path)
    {
        const std::wstring content = LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path));
        if (content.starts_with(L"gut"))
        {
            return eR_Passed;
        }
        if (content.starts_with(L"schlecht"))
        {
            Error(L"Inhalt: %s", content);
            return eR_Failed;
        }
        return content.starts_with(L"anders") ? eR_Different : eR_NoInput;
    }
};
LB_RTTI_CLASS(CDataSetModel, LuUnitTest)

/// Overrides only InitSubtests, but each case asks for the names of the files in the data directory.
class CAskingModel : public LuUnitTest
{
    LB_RTTI(CAskingModel)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt",
                        [this](const std::wstring&) { Check(!GetDataFileNames().empty(), L"keine Dateien"); });
    }
};
LB_RTTI_CLASS(CAskingModel, LuUnitTest)
