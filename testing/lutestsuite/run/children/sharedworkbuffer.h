/// The work buffer that a run shares with a child process.
#pragma once

#include <memory>
#include <string>

#include "base/os/sharedmemory.h"
#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// A work buffer in a named mapping. Failures throw LbException with the operation's name.
class CSharedMemoryWorkBuffer : public IWorkBuffer, public INonCopyable
{
public:
    enum EOrigin
    {
        eO_Create, ///< a new mapping, removed with the object; the name must not exist
        eO_Open    ///< the mapping of another object; an access fails if there was none when this object was made
    };

    CSharedMemoryWorkBuffer(std::wstring name, EOrigin origin);

    /// The mapping is opened with the object and stays open: opening costs more than a small case, and a case may
    /// remove the name.
    CWorkBufferWriteView GetWriteAccess() override;
    CWorkBufferReadView GetReadAccess() override;

    const std::wstring& GetName() const noexcept { return m_name; }

    /// True if another object could be opened by the name. Call it only on the creating side.
    bool IsNamed() const { return m_memory && m_memory->IsNamed(); }

private:
    std::wstring m_name;
    std::unique_ptr<LbOs::CSharedMemory> m_memory; ///< on the creating side
    std::shared_ptr<void> m_writeView;
    std::shared_ptr<void> m_readView;
};

} // namespace LuTestSuiteRun
