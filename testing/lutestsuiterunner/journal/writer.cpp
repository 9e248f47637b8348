#include "testing/lutestsuiterunner/journal/writer.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbtimer.h"
#include "base/os/durablefiles.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/checksum.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/numbertext.h"
#include "testing/lutestsuiterunner/journal/recordtext.h"

namespace Runner
{

class CJournalWriter::CFiles
{
public:
    CFiles(const std::wstring& folder, std::uint32_t number)
        : m_folder(folder), m_number(number), m_journal(folder + GetJournalName(number)),
          m_thread([this] { synchroniseFromTimeToTime(); })
    {
    }

    ~CFiles() { stop(); }

    std::uint64_t Write(const Record& record)
    {
        const std::lock_guard lock(m_mutex);
        requireSound();
        m_isSound = false;
        m_json.clear();
        EncodeRecord(
            record, m_timer.GetElapsed(), [this](const std::string& text) { return store(text); }, m_json);
        MakeLine(++m_sequence, m_json, m_line);
        m_journal.Append(m_line);
        m_isSound = true;
        m_isToSynchronise = true;
        return m_sequence;
    }

    void Close()
    {
        stop();
        const std::lock_guard lock(m_mutex);
        requireSound();
        m_isSound = false;
        if (m_output)
        {
            m_output->Close();
        }
        m_journal.Close();
    }

private:
    void requireSound() const
    {
        if (!m_isSound)
        {
            throw LbException(
                LbFormat(L"Das Journal %s konnte nicht mehr geschrieben werden", m_folder + GetJournalName(m_number)));
        }
    }

    STextPlace store(const std::string& text)
    {
        const std::string name = GetOutputName(m_number);
        if (!m_output)
        {
            const std::wstring outputFolder = m_folder + c_OutputFolderName;
            LbOs::MakeDirectory(outputFolder);
            m_output = std::make_unique<CAppendFile>(m_folder + LbPath::ToNative(LbEncoding::FromUtf8(name)));
            LbOs::SynchroniseDirectory(outputFolder);
        }
        STextPlace place = {name, m_output->GetSize(), text.size(), {}};
        AppendHexadecimal(GetChecksum(text), place.checksum);
        m_output->Append(text);
        return place;
    }

    /// Runs on its own thread, because a flush may take long, and the next record may come late.
    void synchroniseFromTimeToTime()
    {
        constexpr std::chrono::milliseconds c_Interval(500);
        std::unique_lock lock(m_mutex);
        while (!m_wakeUp.wait_for(lock, c_Interval, [this] { return m_isStopping; }))
        {
            if (std::exchange(m_isToSynchronise, false))
            {
                CAppendFile* const output = m_output.get();
                lock.unlock();
                // Texts first, so that few records on the disk refer to missing texts. Readers must accept such records
                // anyway, because the system may write a record to the disk before this thread flushes its text.
                const bool isOnDisk = (output == nullptr || output->Synchronise()) && m_journal.Synchronise();
                lock.lock();
                m_isSound = m_isSound && isOnDisk;
            }
        }
    }

    void stop()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isStopping = true;
        }
        m_wakeUp.notify_one();
        if (m_thread.joinable())
        {
            m_thread.join();
        }
    }

    const std::wstring m_folder;
    const std::uint32_t m_number;
    const LbTimer m_timer{LbTimer::eR_NanoSecond};
    std::mutex m_mutex; ///< protects the members below
    CAppendFile m_journal;
    std::unique_ptr<CAppendFile> m_output; ///< null until there is a large text
    std::uint64_t m_sequence = 0;
    std::string m_json; ///< a member, so that its memory is reused
    std::string m_line;
    bool m_isSound = true; ///< nothing has failed
    bool m_isToSynchronise = false;
    bool m_isStopping = false;
    std::condition_variable m_wakeUp;
    std::thread m_thread; ///< the last member, because it uses all others
};

CJournalWriter::CJournalWriter(const std::wstring& folder, const SJournalBegun& begun)
    : m_number(begun.journal), m_files(std::make_unique<CFiles>(folder, begun.journal))
{
    Write(begun);
}

CJournalWriter::~CJournalWriter() = default;

std::uint64_t CJournalWriter::Write(const Record& record)
{
    return m_files->Write(record);
}

void CJournalWriter::Close()
{
    m_files->Close();
}

} // namespace Runner
