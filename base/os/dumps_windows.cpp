#include "base/os/dumps.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "base/os/childprocess.h"
#include "base/os/windows/debughelp.h"
#include "base/os/windows/namedobject.h"

// Needs windows.h before it.
#include <dbghelp.h>

namespace
{

using namespace LbOs;
using Windows::Deadline;

constexpr const wchar_t* c_NoTime = L"die Zeit reichte nicht";

/// The input of the thread that writes a dump. The thread may outlive the call that started it.
struct SJob
{
    Windows::Handle process;
    DWORD processId;
    std::optional<SCrashedThread> crashed;
    std::wstring file;
    Deadline deadline;
};

/// The result of the thread that writes a dump; ignored once the caller has given up.
class CResult
{
public:
    /// Unless the caller has given up, calls `finish`, which returns the reason for a failure or, on success, an empty
    /// text.
    void Set(const std::function<std::wstring()>& finish)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isAbandoned)
        {
            m_failure = finish();
            m_isSet.notify_one();
        }
    }

    std::wstring Wait(Deadline deadline)
    {
        std::unique_lock lock(m_mutex);
        m_isAbandoned = !m_isSet.wait_until(lock, deadline, [this] { return m_failure.has_value(); });
        return m_isAbandoned ? c_NoTime : *m_failure;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_isSet;
    std::optional<std::wstring> m_failure; ///< empty on success
    bool m_isAbandoned = false;
};

/// A new file that only the current user can read; null on failure.
Windows::Handle create(const std::wstring& path)
{
    Windows::COwnAccess access;
    const HANDLE file = CreateFileW(Windows::ToSystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0,
                                    access.Get(), CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return Windows::Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

/// Sets whether the file is deleted when it is closed, which happens at the end of this process at the latest.
bool setTemporary(HANDLE file, bool isTemporary)
{
    FILE_DISPOSITION_INFO info = {};
    info.DeleteFile = isTemporary ? TRUE : FALSE;
    return SetFileInformationByHandle(file, FileDispositionInfo, &info, sizeof(info)) != FALSE;
}

std::wstring describe(DWORD error)
{
    // The dump library reports an HRESULT.
    switch (error & 0xFFFFU)
    {
    case ERROR_PATH_NOT_FOUND:
        return L"den Ordner gibt es nicht";
    case ERROR_ACCESS_DENIED:
        return L"der Zugriff ist nicht erlaubt";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return L"der Datenträger ist voll";
    default:
        return L"Systemfehler " + std::to_wstring(error);
    }
}

/// Empty on success.
std::wstring write(const SJob& job, HANDLE file)
{
    const auto writeDump =
        Windows::FindSystemFunction<decltype(MiniDumpWriteDump)>(L"dbghelp.dll", "MiniDumpWriteDump");
    if (writeDump == nullptr)
    {
        return L"dbghelp.dll fehlt";
    }
    constexpr auto c_Type = static_cast<MINIDUMP_TYPE>(MiniDumpWithDataSegs | MiniDumpWithIndirectlyReferencedMemory);
    MINIDUMP_EXCEPTION_INFORMATION exception = {};
    if (job.crashed)
    {
        exception.ThreadId = static_cast<DWORD>(job.crashed->thread);
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        exception.ExceptionPointers = reinterpret_cast<EXCEPTION_POINTERS*>(job.crashed->context);
        exception.ClientPointers = TRUE;
    }
    if (writeDump(job.process.get(), job.processId, file, c_Type, job.crashed ? &exception : nullptr, nullptr,
                  nullptr) != FALSE)
    {
        return {};
    }
    const DWORD error = GetLastError();
    return WaitForSingleObject(job.process.get(), 0) == WAIT_OBJECT_0 ? std::wstring(L"der Prozess endete vorher")
                                                                      : describe(error);
}

/// Writes a dump. The file is deleted when it is closed, unless it is complete and the caller still waits.
void carryOut(const SJob& job, CResult& result)
{
    const auto lock = Windows::LockDebugHelp(job.deadline);
    if (!lock)
    {
        return;
    }
    const Windows::Handle file = create(job.file);
    if (!file || !setTemporary(file.get(), true))
    {
        result.Set([error = GetLastError()] { return describe(error); });
        return;
    }
    const std::wstring failure = write(job, file.get());
    result.Set([&] {
        const bool isKept = failure.empty() && setTemporary(file.get(), false);
        return isKept || !failure.empty() ? failure : describe(GetLastError());
    });
}

Windows::Handle duplicate(HANDLE process)
{
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return Windows::Handle(copy);
}

} // namespace

LbOs::SDump LbOs::WriteDump(const CChildProcess& child, const std::optional<SCrashedThread>& crashed,
                            const std::wstring& path, std::chrono::milliseconds longest)
try
{
    const Deadline deadline = std::chrono::steady_clock::now() + longest;
    const auto job = std::make_shared<SJob>(SJob{duplicate(reinterpret_cast<HANDLE>(child.GetWaitHandle())),
                                                 static_cast<DWORD>(child.GetId()), crashed, path + L".dmp", deadline});
    const auto result = std::make_shared<CResult>();
    // MiniDumpWriteDump cannot be stopped, so another thread calls it and continues without the caller after the
    // deadline.
    std::thread([job, result] { carryOut(*job, *result); }).detach();
    std::wstring failure = result->Wait(deadline);
    return failure.empty() ? SDump{job->file, L""} : SDump{L"", std::move(failure)};
}
catch (const std::system_error&)
{
    return {L"", L"ein Thread konnte nicht gestartet werden"};
}
