/// The command "review": test output that differs from its references.

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/console.h"
#include "testing/lutestsuitehost/hostmain.h"
#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/console/changetext.h"
#include "testing/lutestsuiterunner/console/terminal.h"
#include "testing/lutestsuiterunner/review/changes.h"
#include "testing/lutestsuiterunner/review/decision.h"

namespace Runner
{

namespace
{

void print(const std::wstring& text)
{
    CTerminal::Get().WriteOutput(text);
}

using Files = std::vector<SReceivedFile>;

void requireAcceptable(const SChange& change, const Files& files, bool mayBecomeEmpty)
{
    const auto unrepeated = std::ranges::find(files, false, &SReceivedFile::isRepeated);
    if (unrepeated != files.end())
    {
        throw LbFormat(L"Änderung %s ist noch nicht in %u Läufen gleich, etwa %s: zuerst den Lauf wiederholen",
                       change.id, LbReceivedFile::c_EnoughRuns, unrepeated->reference);
    }
    if (change.kind == EChange::Empty && !mayBecomeEmpty)
    {
        throw LbFormat(L"Mit Änderung %s würden Referenzen leer, etwa %s: das verlangt '--accept-empty'", change.id,
                       files.front().reference);
    }
}

std::wstring describeDecision(EDecision decision, const SChange& change, std::size_t count)
{
    return decision == EDecision::Accept ? LbFormat(L"Übernommen: %s (%u)\n", change.id, count)
                                         : LbFormat(L"Verworfen: %s (%u)\n", change.id, count);
}

/// The review of one folder.
class CReview
{
public:
    explicit CReview(const SReviewOptions& options)
        : m_options(options), m_directory(LbPath::WithSeparator(LbOs::GetFullPath(options.directory)))
    {
        const bool isTerminal = LbOs::EnableTerminalSequences();
        m_style.isColoured = isTerminal && LbOs::GetEnvironmentText(L"NO_COLOR").empty();
        m_style.isSideBySide = options.sideBySide;
        if (const std::uint32_t width = LbOs::GetErrorTerminalWidth(); width > 0)
        {
            m_style.width = width - 1;
        }
        m_mayAsk = isTerminal && LbOs::IsInputTerminal();
    }

    int Run()
    {
        if (!LbFileSystem::IsDirectory(m_directory))
        {
            throw LbFormat(L"Verzeichnis %s gibt es nicht", m_directory);
        }
        const bool decides = !m_options.accept.empty() || !m_options.reject.empty();
        if (m_options.ci && decides)
        {
            throw std::wstring(L"Mit '--ci' wird nichts übernommen oder verworfen");
        }
        finishEarlier();
        m_changes = GroupChanges(FindReceived(m_directory));
        if (decides)
        {
            // Refuses before the first change.
            const auto accepted = collect(m_options.accept);
            const auto rejected = collect(m_options.reject);
            for (const auto& [change, files] : accepted)
            {
                requireAcceptable(*change, files, m_options.acceptEmpty);
            }
            decide(EDecision::Accept, accepted);
            decide(EDecision::Reject, rejected);
            return LuTestSuiteHost::c_Succeeded;
        }
        if (m_mayAsk && !m_options.ci && !m_options.diff)
        {
            ask();
            return LuTestSuiteHost::c_Succeeded;
        }
        list();
        return m_options.ci && !m_changes.empty() ? LuTestSuiteHost::c_Failed : LuTestSuiteHost::c_Succeeded;
    }

private:
    using Decided = std::vector<std::pair<const SChange*, Files>>;

    void finishEarlier() const
    {
        if (m_options.ci && LbFileSystem::IsFile(m_directory + c_DecisionFile))
        {
            throw LbFormat(L"In %s ist eine Entscheidung unvollendet: 'review' ohne '--ci' vollendet sie", m_directory);
        }
        if (const std::size_t count = FinishDecision(m_directory); count > 0)
        {
            print(LbFormat(L"Unterbrochene Entscheidung vollendet: %u Dateien\n", count));
        }
    }

    void list() const
    {
        std::size_t count = 0;
        for (const SChange& change : m_changes)
        {
            count += change.files.size();
            CTerminal::Get().WriteColoured(m_options.diff || m_options.sideBySide
                                               ? DescribeChange(change, m_directory, SDiffStyle()) +
                                                     ShowDifference(change, m_directory, m_style)
                                               : DescribeChange(change, m_directory, m_style));
        }
        print(LbFormat(L"Änderungen: %u, Dateien: %u\n", m_changes.size(), count));
    }

    /// The files that the values of an option name.
    Decided collect(const std::vector<std::wstring>& values) const
    {
        Decided decided;
        for (const std::wstring& value : values)
        {
            const std::size_t before = decided.size();
            for (const SChange& change : m_changes)
            {
                if (value == L"all" || value == change.id)
                {
                    decided.emplace_back(&change, change.files);
                }
                else if (const std::optional<SReceivedFile> file = findFile(change, value))
                {
                    decided.emplace_back(&change, Files{*file});
                }
            }
            if (decided.size() == before)
            {
                throw LbFormat(L"'%s' ist weder 'all' noch eine Änderung noch eine Datei mit einer Änderung", value);
            }
        }
        return decided;
    }

    static std::optional<SReceivedFile> findFile(const SChange& change, const std::wstring& path)
    {
        const std::wstring full = LbOs::GetFullPath(path);
        const auto file = std::ranges::find_if(change.files, [&full](const SReceivedFile& one) {
            return full == one.reference || full == one.reference + LbReceivedFile::c_Suffix;
        });
        return file == change.files.end() ? std::nullopt : std::optional(*file);
    }

    void decide(EDecision decision, const Decided& decided) const
    {
        for (const auto& [change, files] : decided)
        {
            Decide(m_directory, decision, files);
            print(describeDecision(decision, *change, files.size()));
        }
    }

    void ask() const
    {
        for (std::size_t index = 0; index < m_changes.size(); ++index)
        {
            CTerminal::Get().WriteColoured(LbFormat(L"\n[%u/%u] ", index + 1, m_changes.size()) +
                                           DescribeChange(m_changes[index], m_directory, SDiffStyle()) +
                                           ShowDifference(m_changes[index], m_directory, m_style));
            if (!askFor(m_changes[index]))
            {
                return;
            }
        }
        print(L"Keine weiteren Änderungen\n");
    }

    /// False if the user ends the review.
    bool askFor(const SChange& change) const
    {
        while (true)
        {
            const std::wstring answer =
                readAnswer(L"Übernehmen (j), verwerfen (v), nebeneinander (n), weiter (w), Ende (e)? ");
            if (answer == L"j" && accept(change))
            {
                return true;
            }
            if (answer == L"v")
            {
                decide(EDecision::Reject, {{&change, change.files}});
                return true;
            }
            if (answer == L"n")
            {
                SDiffStyle style = m_style;
                style.isSideBySide = true;
                CTerminal::Get().WriteColoured(ShowDifference(change, m_directory, style));
            }
            if (answer == L"w" || answer == L"e")
            {
                return answer == L"w";
            }
        }
    }

    /// False if the change must not be accepted, or if the user withdraws the answer.
    bool accept(const SChange& change) const
    try
    {
        const bool mayBecomeEmpty =
            change.kind == EChange::Empty &&
            (m_options.acceptEmpty || readAnswer(L"Diese Referenzen würden leer. Wirklich (ja/nein)? ") == L"ja");
        requireAcceptable(change, change.files, mayBecomeEmpty);
        decide(EDecision::Accept, {{&change, change.files}});
        return true;
    }
    catch (const std::wstring& reason)
    {
        CTerminal::Get().WriteError(L"Fehler: " + reason + L"\n");
        return false;
    }

    /// The end of the input ends the review.
    static std::wstring readAnswer(const wchar_t* question)
    {
        print(question);
        std::string line;
        return std::getline(std::cin, line) ? LbEncoding::FromUtf8(line) : L"e";
    }

    const SReviewOptions& m_options;
    std::wstring m_directory;
    SDiffStyle m_style;
    bool m_mayAsk = false;
    std::vector<SChange> m_changes;
};

} // namespace

int Execute(const SReviewOptions& options)
{
    if (options.directory.empty())
    {
        throw std::wstring(L"Der Befehl 'review' braucht einen Ordner");
    }
    return CReview(options).Run();
}

} // namespace Runner
