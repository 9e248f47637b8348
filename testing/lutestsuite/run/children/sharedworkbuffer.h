/// The work buffer that a run shares with a child process.
#pragma once

#include <memory>
#include <string>

#include "base/os/sharedmemory.h"
#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// A work buffer in a named block of shared memory. Failures throw LbException with the operation's name.
class CSharedMemoryWorkBuffer : public IWorkBuffer, public INonCopyable
{
public:
    enum EOrigin
    {
        eO_Create, ///< creates a block, which the object owns; its name must not exist yet
        eO_Open    ///< opens the block of another object; if there is none, GetReadAccess and GetWriteAccess throw
    };

    CSharedMemoryWorkBuffer(std::wstring name, EOrigin origin);

    /// The constructor maps the block and the object keeps it mapped, because mapping takes longer than a small case
    /// and because a case may remove the name.
    CWorkBufferWriteView GetWriteAccess() override;
    CWorkBufferReadView GetReadAccess() override;

    const std::wstring& GetName() const noexcept { return m_name; }

    /// True if another object could open the block by its name. Call it only on an object that has created a block.
    bool IsNamed() const { return m_memory && m_memory->IsNamed(); }

private:
    std::wstring m_name;
    std::unique_ptr<LbOs::CSharedMemory> m_memory; ///< null after eO_Open
    std::shared_ptr<void> m_writeView;
    std::shared_ptr<void> m_readView;
};

} // namespace LuTestSuiteRun
