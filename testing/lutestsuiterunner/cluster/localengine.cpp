#include <map>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/childoutput.h"
#include "base/os/childprocess.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/lasterror.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

namespace
{

class CLocalEngine : public IEngine
{
public:
    explicit CLocalEngine(const SEngineSettings& settings) : m_settings(settings) {}

    void Submit(const SSubmission& submission) override
    {
        for (const std::uint32_t shard : submission.shards)
        {
            m_tasks[shard] = start(shard, submission.number);
        }
    }

    std::optional<Tasks> Poll(const std::vector<SSubmission>& /*submissions*/) override
    {
        Tasks tasks;
        for (const auto& [shard, task] : m_tasks)
        {
            tasks[shard] = task.process->IsRunning() ? STask{ETaskState::Running, LbFormat(L"Prozess %u", task.id)}
                                                     : STask{ETaskState::Over, describeEnd(task)};
        }
        return tasks;
    }

    void Cancel(const std::vector<SSubmission>& /*submissions*/) override
    {
        for (const auto& [shard, task] : m_tasks)
        {
            task.process->Terminate();
        }
    }

    std::chrono::milliseconds GetPollInterval() const override { return std::chrono::milliseconds(100); }

    std::chrono::milliseconds GetGrace() const override { return std::chrono::milliseconds(0); }

    std::chrono::milliseconds GetLongestGrace() const override { return std::chrono::milliseconds(0); }

private:
    struct SLocalTask
    {
        std::unique_ptr<LbOs::CChildOutput> errors; ///< null if the file could not be created
        std::unique_ptr<LbOs::CChildProcess> process;
        std::uint64_t id = 0;
    };

    SLocalTask start(std::uint32_t shard, std::uint32_t submission) const
    {
        SLocalTask task;
        task.errors = LbOs::CChildOutput::Create(
            LbFormat(L"LuTestSuiteRunner-%s-%u-%u", LbEncoding::FromUtf8(m_settings.runId), shard, submission));
        LbOs::SChildOptions options;
        options.program = LbOs::GetExecutablePath();
        options.commandLine =
            LbFormat(L"%s run --planned --shard %u/%u --out %s", LbCommandLine::Quote(options.program), shard,
                     m_settings.shardCount, LbCommandLine::Quote(m_settings.folder + GetShardFolderName(shard)));
        options.isSilent = true;
        options.errors = task.errors.get();
        task.process = LbOs::CChildProcess::Start(options);
        if (!task.process)
        {
            throw LbException(LbFormat(L"Für Teil %u konnte kein Prozess gestartet werden", shard));
        }
        task.id = task.process->GetId();
        return task;
    }

    static std::wstring describeEnd(const SLocalTask& task)
    {
        const std::wstring error = task.errors ? FindLastError(task.errors->ReadEnd(0, c_ErrorTail)) : std::wstring();
        const std::optional<std::int64_t> status = task.process->GetExitStatus();
        return error.empty() ? LbFormat(L"Prozess %u endete mit Status %d", task.id, status.value_or(-1)) : error;
    }

    const SEngineSettings m_settings;
    std::map<std::uint32_t, SLocalTask> m_tasks; ///< by shard
};

/// Runs all shards at once, each in a process of this machine.
constexpr SEngineKind c_LocalEngine = {{c_DefaultEngine, L"Prozesse dieses Rechners, Vorgabe"},
                                       L"local",
                                       /*isOfThisMachine*/ true,
                                       [](const std::vector<std::wstring>&) {},
                                       [](const SEngineSettings& settings) -> std::unique_ptr<IEngine> {
                                           return std::make_unique<CLocalEngine>(settings);
                                       }};

const CEngineRegistration s_localRegistration(c_LocalEngine);

} // namespace

} // namespace Runner
