#include "testing/lutestsuite/run/children/sharedworkbuffer.h"

#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"

namespace LuTestSuiteRun
{

namespace
{

void requireView(const std::shared_ptr<void>& view, const std::wstring& name, const wchar_t* operation)
{
    if (!view)
    {
        throw LbException(operation, LbFormat(L"Der gemeinsame Speicher '%s' kann nicht geöffnet werden", name));
    }
}

} // namespace

CSharedMemoryWorkBuffer::CSharedMemoryWorkBuffer(std::wstring name, EOrigin origin) : m_name(std::move(name))
{
    using LbOs::EMemoryAccess;
    if (origin == eO_Open)
    {
        m_writeView = LbOs::MapSharedMemory(m_name, sizeof(SWorkBuffer), EMemoryAccess::Write);
        m_readView = LbOs::MapSharedMemory(m_name, sizeof(SWorkBuffer), EMemoryAccess::Read);
        return;
    }
    std::wstring failure;
    m_memory = LbOs::CSharedMemory::Create(m_name, sizeof(SWorkBuffer), &failure);
    m_writeView = m_memory ? m_memory->Map(EMemoryAccess::Write) : nullptr;
    m_readView = m_memory ? m_memory->Map(EMemoryAccess::Read) : nullptr;
    if (!m_writeView || !m_readView)
    {
        throw LbException(L"LuTestSuiteRun::CSharedMemoryWorkBuffer::CSharedMemoryWorkBuffer",
                          LbFormat(L"Der gemeinsame Speicher '%s' kann nicht angelegt werden (%s)", m_name, failure));
    }
}

CWorkBufferWriteView CSharedMemoryWorkBuffer::GetWriteAccess()
{
    requireView(m_writeView, m_name, L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetWriteAccess");
    return {*static_cast<SWorkBuffer*>(m_writeView.get()), m_writeView};
}

CWorkBufferReadView CSharedMemoryWorkBuffer::GetReadAccess()
{
    requireView(m_readView, m_name, L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetReadAccess");
    return {*static_cast<const SWorkBuffer*>(m_readView.get()), m_readView};
}

} // namespace LuTestSuiteRun
