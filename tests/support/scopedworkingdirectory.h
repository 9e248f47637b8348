/// The working directory of one test.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "base/inoncopyable.h"
#include "base/os/files.h"

/// Changes the working directory; the destructor restores the former one.
class ScopedWorkingDirectory : public INonCopyable
{
public:
    explicit ScopedWorkingDirectory(const std::wstring& path) : m_former(LbOs::GetWorkingDirectory())
    {
        EXPECT_TRUE(LbOs::SetWorkingDirectory(path));
    }
    ~ScopedWorkingDirectory() { EXPECT_TRUE(LbOs::SetWorkingDirectory(m_former)); }

private:
    std::wstring m_former;
};
