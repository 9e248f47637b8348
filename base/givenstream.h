/// The message stream that a runner gives to a unit-test object for one case. Not for use outside of this project.
#pragma once

#include <string>
#include <utility>

#include "base/lbexport.h"
#include "base/lustream.h"

/// A message stream that also stores the data directory that the runner gives to the unit-test object. If an override
/// of LuUnitTest::SetMessageStream or SetDataDirectory stores another stream or directory, LuUnitTest detects this by
/// the stream's class or by comparing the directories.
class LB_API LbGivenStream : public LuStreamWriteText
{
public:
    ~LbGivenStream() override;

    /// Call this before the unit-test object's SetDataDirectory.
    void SetDataDirectory(std::wstring directory) noexcept { m_directory = std::move(directory); }
    const std::wstring& GetDataDirectory() const noexcept { return m_directory; }

private:
    std::wstring m_directory;
};
