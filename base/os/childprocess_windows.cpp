#include "base/os/childprocess.h"

#include <utility>
#include <vector>

#include "base/os/childoutput.h"
#include "base/os/windows/api.h"
#include "base/os/windows/namedobject.h"

namespace LbOs
{

struct CChildProcess::SState
{
    Windows::Handle process;
    Windows::Handle job;
    bool endsWithOwner = true;
};

namespace
{

/// Creates a job; null on failure. A job contains its processes and all processes that these start, and can end all of
/// them at once. With `endsWithOwner` the system ends them when the job's only handle is closed, at the latest when the
/// current process ends.
Windows::Handle makeJob(bool endsWithOwner)
{
    Windows::Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    const bool isReady =
        job.get() != nullptr && (!endsWithOwner || SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation,
                                                                           &limits, sizeof(limits)) != FALSE);
    return isReady ? std::move(job) : Windows::Handle();
}

/// The attributes for the start of a process.
class CStartAttributes
{
public:
    explicit CStartAttributes(HANDLE job) : m_job(job)
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_memory.resize(size);
        m_isReady = InitializeProcThreadAttributeList(get(), 1, 0, &size) != FALSE;
        m_isReady = m_isReady && UpdateProcThreadAttribute(get(), 0, PROC_THREAD_ATTRIBUTE_JOB_LIST, &m_job,
                                                           sizeof(m_job), nullptr, nullptr) != FALSE;
    }

    ~CStartAttributes()
    {
        if (m_isReady)
        {
            DeleteProcThreadAttributeList(get());
        }
    }

    CStartAttributes(const CStartAttributes&) = delete;
    CStartAttributes& operator=(const CStartAttributes&) = delete;

    bool IsReady() const { return m_isReady; }
    LPPROC_THREAD_ATTRIBUTE_LIST get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data()); }

private:
    HANDLE m_job; // The attribute list refers to this member.
    std::vector<char> m_memory;
    bool m_isReady = false;
};

/// Opens an existing file with a handle that a child inherits; null on failure.
Windows::Handle openInheritable(const std::wstring& path, DWORD access)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    constexpr DWORD c_ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path.c_str(), access, c_ShareAll, &inheritable, OPEN_EXISTING, 0, nullptr);
    return Windows::Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

/// In characters, including the terminating zero. Windows refuses a longer command line; Wine passes only a part of it
/// to the program.
constexpr std::size_t c_LongestCommandLine = 32'767;

const wchar_t* orNull(const std::wstring& text)
{
    return text.empty() ? nullptr : text.c_str();
}

/// Starts a process that is in its job from its first instruction on. Null on failure.
Windows::Handle start(const SChildOptions& options, HANDLE job, std::wstring* failure)
{
    if (options.commandLine.size() >= c_LongestCommandLine)
    {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        Windows::DescribeFailure(failure);
        return Windows::Handle();
    }
    CStartAttributes attributes(job);
    Windows::Handle nothing;
    Windows::Handle errors;
    if (options.isSilent)
    {
        nothing = openInheritable(L"NUL", GENERIC_READ | GENERIC_WRITE);
    }
    if (options.isSilent && options.errors != nullptr)
    {
        errors = openInheritable(Windows::ToSystemPath(options.errors->GetPath()), FILE_APPEND_DATA | SYNCHRONIZE);
    }
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof(startup);
    startup.lpAttributeList = attributes.get();
    if (nothing.get() != nullptr)
    {
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = startup.StartupInfo.hStdOutput = nothing.get();
        startup.StartupInfo.hStdError = errors.get() != nullptr ? errors.get() : nothing.get();
    }
    std::wstring commandLine = options.commandLine; // The system writes into it.
    PROCESS_INFORMATION process = {};
    const DWORD flags = EXTENDED_STARTUPINFO_PRESENT | (options.isSilent ? CREATE_NO_WINDOW : 0U);
    if (!attributes.IsReady() ||
        CreateProcessW(orNull(options.program), commandLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                       orNull(options.workingDirectory), &startup.StartupInfo, &process) == FALSE)
    {
        Windows::DescribeFailure(failure);
        return Windows::Handle();
    }
    CloseHandle(process.hThread);
    return Windows::Handle(process.hProcess);
}

} // namespace

void EndDescendants() noexcept {}

void CChildProcess::PrepareStarts() {}

CChildProcess::CChildProcess(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

std::unique_ptr<CChildProcess> CChildProcess::Start(const SChildOptions& options, std::wstring* failure)
{
    auto state = std::make_unique<SState>();
    state->endsWithOwner = options.endsWithOwner;
    state->job = makeJob(options.endsWithOwner);
    if (!state->job)
    {
        Windows::DescribeFailure(failure);
        return nullptr;
    }
    state->process = start(options, state->job.get(), failure);
    return state->process ? std::unique_ptr<CChildProcess>(new CChildProcess(std::move(state))) : nullptr;
}

CChildProcess::~CChildProcess()
{
    if (m_state->endsWithOwner)
    {
        Terminate();
    }
}

bool CChildProcess::Wait(std::uint32_t milliseconds) const
{
    return WaitForSingleObject(m_state->process.get(), milliseconds) == WAIT_OBJECT_0;
}

void CChildProcess::Terminate()
{
    TerminateJobObject(m_state->job.get(), 0);
    // A process inside a driver call ends only when the call returns, which may never happen.
    Wait(sc_uiLongestEnd);
}

std::optional<std::int64_t> CChildProcess::GetExitStatus()
{
    DWORD status = 0;
    const bool isKnown = !IsRunning() && GetExitCodeProcess(m_state->process.get(), &status) != FALSE;
    return isKnown ? std::optional<std::int64_t>(status) : std::nullopt;
}

void CChildProcess::Detach()
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION none = {};
    SetInformationJobObject(m_state->job.get(), JobObjectExtendedLimitInformation, &none, sizeof(none));
    m_state->endsWithOwner = false;
}

std::uint64_t CChildProcess::GetId() const noexcept
{
    return GetProcessId(m_state->process.get());
}

std::intptr_t CChildProcess::GetWaitHandle() const noexcept
{
    return reinterpret_cast<std::intptr_t>(m_state->process.get());
}

} // namespace LbOs
