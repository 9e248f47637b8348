/// The named objects that a run shares with one child process.
#pragma once

#include <memory>
#include <string>

#include "base/inoncopyable.h"
#include "base/os/namedevent.h"
#include "testing/lutestsuite/run/children/sharedworkbuffer.h"

namespace LuTestSuiteRun
{

/// A work buffer and two events under new names. Used by one thread.
struct SChildObjects : public INonCopyable
{
    /// Throws LbException if an object cannot be created.
    SChildObjects();

    /// True if a child could still open all objects by name. On Linux, any process of the user can remove the names. A
    /// child that has already opened the objects does not need the names.
    bool AreNamed() const;

    const std::wstring requestId;
    const std::wstring responseId;
    CSharedMemoryWorkBuffer buffer;
    const std::unique_ptr<LbOs::CNamedEvent> request;
    const std::unique_ptr<LbOs::CNamedEvent> response;
};

} // namespace LuTestSuiteRun
