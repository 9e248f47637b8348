#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/childoutput.h"
#include "base/os/childprocess.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/cluster/engine.h"
#include "testing/lutestsuiterunner/cluster/lasterror.h"
#include "testing/lutestsuiterunner/cluster/slurmtext.h"
#include "testing/lutestsuiterunner/console/closing.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/model/plan.h"
#include "testing/lutestsuiterunner/model/textlines.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

struct SAnswer
{
    bool isGood = false;
    std::string output; ///< standard output and standard error
};

/// Runs a command of Slurm to its end.
SAnswer ask(const std::vector<std::wstring>& words)
{
    constexpr std::uint32_t c_Limit = 60'000;
    std::wstring command = L"exec";
    for (const std::wstring& word : words)
    {
        command += L" " + QuoteForShell(word);
    }
    const auto output = LbOs::CChildOutput::Create(L"LuTestSuiteRunner-" + LbEncoding::FromUtf8(MakeRunId()));
    if (!output)
    {
        throw LbException(L"Im temporären Ordner konnte keine Datei angelegt werden");
    }
    LbOs::SChildOptions options;
    options.program = L"/bin/sh";
    options.commandLine = L"sh -c " + LbCommandLine::Quote(command + L" 1>&2");
    options.isSilent = true;
    options.errors = output.get();
    const auto process = LbOs::CChildProcess::Start(options);
    if (!process)
    {
        throw LbException(L"Die Befehle von Slurm können nicht gestartet werden");
    }
    const bool hasEnded = process->Wait(c_Limit);
    return {hasEnded && process->GetExitStatus() == 0, output->ReadEnd(0, output->GetSize())};
}

std::wstring getAnswerLine(const SAnswer& answer)
{
    const std::vector<std::wstring> lines = SplitLines(LbEncoding::FromUtf8(answer.output));
    return lines.empty() ? L"keine Antwort" : lines.back();
}

class CSlurmEngine : public IEngine
{
public:
    explicit CSlurmEngine(const SEngineSettings& settings) : m_settings(settings) {}

    void Submit(const SSubmission& submission) override
    {
        std::vector<std::wstring> words = {L"sbatch",
                                           L"--parsable",
                                           L"--job-name=" + GetJobName(m_settings.runId, submission.number),
                                           L"--array=" + FormatArray(submission.shards),
                                           L"--requeue",
                                           L"--open-mode=append",
                                           L"--output=" + getOutputPath(L"%a"),
                                           L"--chdir=/"};
        words.insert(words.end(), m_settings.options.begin(), m_settings.options.end());
        words.push_back(writeScript());
        const SAnswer answer = ask(words);
        if (!answer.isGood)
        {
            throw LbException(LbFormat(L"Slurm nimmt die Teile nicht an (sbatch): %s", getAnswerLine(answer)));
        }
    }

    std::optional<Tasks> Poll(const std::vector<SSubmission>& submissions) override
    {
        const SAnswer answer = ask({L"squeue", L"--array", L"--states=all", L"--noheader",
                                    L"--name=" + joinNames(submissions), L"--format=" + std::wstring(c_QueueFormat)});
        if (!answer.isGood)
        {
            return std::nullopt;
        }
        Tasks tasks = ReadQueue(answer.output);
        for (auto& [shard, task] : tasks)
        {
            if (const std::wstring error = task.state == ETaskState::Over ? findError(shard) : L""; !error.empty())
            {
                task.note += (task.note.empty() ? L"" : L": ") + error;
            }
        }
        return tasks;
    }

    void Cancel(const std::vector<SSubmission>& submissions) override
    {
        for (const SSubmission& submission : submissions)
        {
            ask({L"scancel", L"--name=" + GetJobName(m_settings.runId, submission.number)});
        }
    }

    std::chrono::milliseconds GetPollInterval() const override { return std::chrono::seconds(15); }

    std::chrono::milliseconds GetGrace() const override { return std::chrono::seconds(2); }

private:
    std::wstring joinNames(const std::vector<SSubmission>& submissions) const
    {
        std::wstring names;
        for (const SSubmission& submission : submissions)
        {
            names += (names.empty() ? L"" : L",") + GetJobName(m_settings.runId, submission.number);
        }
        return names;
    }

    std::wstring getTasksFolder() const { return LbPath::WithSeparator(m_settings.folder + c_TasksFolderName); }

    std::wstring getOutputPath(const std::wstring& shard) const
    {
        return getTasksFolder() + L"shard-" + shard + L".txt";
    }

    /// A node may have nothing but the script itself.
    std::wstring writeScript() const
    {
        const std::wstring program = QuoteForShell(LbOs::GetExecutablePath());
        const std::wstring text =
            LbFormat(L"#!/bin/sh\n"
                     L"if ! test -x %s; then\n"
                     L"    echo \"Fehler: Auf $(hostname) fehlt \"%s >&2\n"
                     L"    exit 2\n"
                     L"fi\n"
                     L"exec %s run --planned --shard \"$SLURM_ARRAY_TASK_ID/%u\""
                     L" --out %s\"$SLURM_ARRAY_TASK_ID\"\n",
                     program, program, program, m_settings.shardCount, QuoteForShell(m_settings.folder + L"shard-"));
        const std::wstring path = getTasksFolder() + L"task.sh";
        const std::string bytes = LbEncoding::ToUtf8(text);
        WriteWholeFile(path, [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
        return path;
    }

    std::wstring findError(std::uint32_t shard) const
    {
        const std::wstring path = getOutputPath(std::to_wstring(shard));
        return LbFileSystem::IsFile(path) ? FindLastError(LbFileSystem::ReadFile8Bit(path)) : std::wstring();
    }

    const SEngineSettings m_settings;
};

} // namespace

void RequireSlurm()
{
    if (LbPath::c_Separator == L'\\')
    {
        throw LbException(L"Slurm gibt es nur unter Linux");
    }
    if (!ask({L"sbatch", L"--version"}).isGood)
    {
        throw LbException(L"Slurm gibt es hier nicht: der Befehl sbatch kann nicht gestartet werden");
    }
}

std::unique_ptr<IEngine> MakeSlurmEngine(const SEngineSettings& settings)
{
    return std::make_unique<CSlurmEngine>(settings);
}

} // namespace Runner
