/// The working directory of test code.
#pragma once

#include "base/inoncopyable.h"
#include "base/os/directories.h"

namespace LuTestSuite
{

/// Makes the executable's folder the working directory, where each case starts, unless it already is. A failure is only
/// traced. Any thread.
void EnterExecutableDirectory() noexcept;

/// The destructor restores the working directory if test code has changed it.
class CKeptWorkingDirectory : public INonCopyable
{
public:
    CKeptWorkingDirectory();
    ~CKeptWorkingDirectory();

private:
    LbOs::CHomeDirectory m_directory;
};

} // namespace LuTestSuite
