/// The working directory of test code.
#pragma once

#include "base/inoncopyable.h"
#include "base/os/directories.h"

namespace LuTestSuite
{

/// Makes the executable's folder the working directory unless it already is, because each case starts there. A failure
/// only writes a trace. Any thread.
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
