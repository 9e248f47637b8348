#include "testing/lutestsuite/run/children/sharedworkbuffer.h"

#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"

namespace LuTestSuiteRun
{

namespace
{

/// Maps the whole buffer, unless that has been done.
void assertView(std::shared_ptr<void>& view, const std::wstring& name, LbOs::EMemoryAccess access,
                const wchar_t* operation)
{
    if (!view)
    {
        view = LbOs::MapSharedMemory(name, sizeof(SWorkBuffer), access);
    }
    if (!view)
    {
        throw LbException(operation, LbFormat(L"Der gemeinsame Speicher '%s' kann nicht geöffnet werden", name));
    }
}

} // namespace

CSharedMemoryWorkBuffer::CSharedMemoryWorkBuffer(std::wstring name, EOrigin origin) : m_name(std::move(name))
{
    if (origin == eO_Open)
    {
        return;
    }
    std::wstring failure;
    m_memory = LbOs::CSharedMemory::Create(m_name, sizeof(SWorkBuffer), &failure);
    if (!m_memory)
    {
        throw LbException(L"LuTestSuiteRun::CSharedMemoryWorkBuffer::CSharedMemoryWorkBuffer",
                          LbFormat(L"Der gemeinsame Speicher '%s' kann nicht angelegt werden (%s)", m_name, failure));
    }
}

CWorkBufferWriteView CSharedMemoryWorkBuffer::GetWriteAccess()
{
    assertView(m_writeView, m_name, LbOs::EMemoryAccess::Write,
               L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetWriteAccess");
    return {*static_cast<SWorkBuffer*>(m_writeView.get()), m_writeView};
}

CWorkBufferReadView CSharedMemoryWorkBuffer::GetReadAccess()
{
    assertView(m_readView, m_name, LbOs::EMemoryAccess::Read,
               L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetReadAccess");
    return {*static_cast<const SWorkBuffer*>(m_readView.get()), m_readView};
}

} // namespace LuTestSuiteRun
