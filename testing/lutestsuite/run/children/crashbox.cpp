#include "testing/lutestsuite/run/children/crashbox.h"

#include <chrono>
#include <thread>

namespace LuTestSuiteRun
{

namespace
{

std::wstring toBoxName(const std::wstring& bufferName)
{
    return bufferName + L"-c";
}

SCrashBox& getBox(const std::shared_ptr<void>& view)
{
    return *static_cast<SCrashBox*>(view.get());
}

} // namespace

CCrashWatch::CCrashWatch(const std::wstring& bufferName)
    : m_memory(LbOs::CSharedMemory::Create(toBoxName(bufferName), sizeof(SCrashBox)))
{
    if (m_memory)
    {
        m_view = LbOs::MapSharedMemory(toBoxName(bufferName), sizeof(SCrashBox), LbOs::EMemoryAccess::Write);
    }
}

std::optional<LbOs::SCrashedThread> CCrashWatch::FindCrash() const
{
    if (!m_view || getBox(m_view).state.load(std::memory_order_acquire) != SCrashBox::eS_Crashed)
    {
        return std::nullopt;
    }
    const SCrashBox& box = getBox(m_view);
    return LbOs::SCrashedThread{box.thread, box.context, box.code};
}

void CCrashWatch::Release()
{
    if (m_view)
    {
        getBox(m_view).state.store(SCrashBox::eS_Read, std::memory_order_release);
    }
}

CCrashReporter::CCrashReporter(const std::wstring& bufferName, LbOs::CNamedEvent& response)
    : m_response(response),
      m_view(LbOs::MapSharedMemory(toBoxName(bufferName), sizeof(SCrashBox), LbOs::EMemoryAccess::Write))
{
}

void CCrashReporter::Report(const LbOs::SCrash& crash) noexcept
{
    constexpr std::chrono::milliseconds c_Longest(1500);
    if (!m_view || crash.context == 0)
    {
        return;
    }
    SCrashBox& box = getBox(m_view);
    box.thread = crash.thread;
    box.context = crash.context;
    box.code = crash.code;
    box.state.store(SCrashBox::eS_Crashed, std::memory_order_release);
    m_response.Set();
    const auto end = std::chrono::steady_clock::now() + c_Longest;
    while (box.state.load(std::memory_order_acquire) == SCrashBox::eS_Crashed && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace LuTestSuiteRun
