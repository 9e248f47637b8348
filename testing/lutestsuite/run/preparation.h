/// Prepares the process for a run.
#pragma once

#include <string>

#include "base/inoncopyable.h"

class LuTestSuiteEnvironment;
struct LuTestSuiteSetup;

namespace LuTestSuiteRun
{

/// Loads the test modules, enables or disables assertion dialogs as the setup requests, and makes the executable's
/// folder the working directory. The destructor enables the dialogs again and restores the working directory.
class CPreparation : public INonCopyable
{
public:
    CPreparation(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment);
    ~CPreparation();

    /// The user's paths as full paths, determined before the run changed the working directory.
    const std::wstring& GetDataDirectory() const { return m_dataDirectory; }
    const std::wstring& GetIncludeConfig() const { return m_includeConfig; }

private:
    LuTestSuiteEnvironment& m_environment;
    bool m_assertDialog;
    std::wstring m_dataDirectory;
    std::wstring m_includeConfig;
};

} // namespace LuTestSuiteRun
