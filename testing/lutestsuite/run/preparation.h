/// The process as runs need it, and as it was.
#pragma once

#include <string>

#include "base/inoncopyable.h"

class LuTestSuiteEnvironment;
struct LuTestSuiteSetup;

namespace LuTestSuiteRun
{

/// Loads the test modules, switches assertion dialogs and moves the working directory to the executable's folder; the
/// latter two for as long as the object lives.
class CPreparation : public INonCopyable
{
public:
    CPreparation(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);
    ~CPreparation();

    /// The user's paths, which are meant from the working directory that the run leaves.
    const std::wstring& GetDataDirectory() const { return m_dataDirectory; }
    const std::wstring& GetIncludeConfig() const { return m_includeConfig; }

private:
    LuTestSuiteEnvironment& m_environment;
    bool m_assertDialog;
    std::wstring m_dataDirectory;
    std::wstring m_includeConfig;
};

} // namespace LuTestSuiteRun
