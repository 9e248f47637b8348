/// A data directory for a class whose files are its cases.
#pragma once

#include <filesystem>
#include <string>

#include "base/inoncopyable.h"
#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"

/// Each file of its folders is a case.
class CAuxiliaryFiles : public LuUnitTest
{
    LB_RTTI(CAuxiliaryFiles)

    void InitSubtests() override
    {
        AddFileSubtests(L"*", [](const std::wstring& /*path*/) {});
    }
};
LB_RTTI_CLASS(CAuxiliaryFiles, LuUnitTest)

/// A data directory that is removed with the object.
class CDataFolder : public INonCopyable
{
public:
    CDataFolder() : m_path(std::filesystem::temp_directory_path() / LbEncoding::ToNative(LbUniqueId::Generate())) {}
    ~CDataFolder() { std::filesystem::remove_all(m_path); }

    std::filesystem::path AddClass(const std::string& group) const
    {
        const std::filesystem::path folder = m_path / group / "CAuxiliaryFiles";
        std::filesystem::create_directories(folder);
        return folder;
    }

    const std::filesystem::path& GetPath() const { return m_path; }

    LuTestSuiteSetup GetSetup() const
    {
        LuTestSuiteSetup setup;
        setup.dataDir = LbPath::WithSeparator(m_path.wstring());
        return setup;
    }

private:
    std::filesystem::path m_path;
};

/// The process's environment, without output from runs.
inline LuTestSuiteEnvironment& GetBenchmarkEnvironment()
{
    static LuTestSuiteEnvironment s_Environment;
    LuTestSuiteOut::SetConsoleOut(false);
    return s_Environment;
}
