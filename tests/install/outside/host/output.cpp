#include <cstdlib>
#include <utility>
#include <vector>

#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteheaptracker.h"
#include "testing/lutestsuite/lutestsuitemarkupwriter.h"
#include "testing/lutestsuite/lutestsuiteout.h"

namespace
{

/// Outputs cannot be removed, so the program has a single recorder.
class CRecorder : public LuTestSuiteOut::LuCustomOut
{
public:
    static CRecorder& GetInstance()
    {
        static CRecorder* const s_recorder = make();
        return *s_recorder;
    }

    void Output(const LuTestSuiteOut& line) override
    {
        text += line.GetText();
        hasAttributes = line.IsBold() && line.IsUnderlined() && line.HasColor() && line.GetColor() == LuColor::c_RED;
    }

    std::wstring text;
    bool hasAttributes = false; ///< of the last line

private:
    static CRecorder* make()
    {
        auto* const recorder = new CRecorder;
        LuTestSuiteOut::AddCustomOut(recorder);
        return recorder;
    }
};

using LuMarkupWriter = LuTestSuiteUtils::LuMarkupWriter;

void writeElements(LuMarkupWriter& writer)
{
    writer.WriteElement(L"text", L"a");
    writer.WriteElement(L"int", std::int32_t{-1});
    writer.WriteElement(L"unsigned", std::uint32_t{2});
    writer.WriteElement(L"float", 0.5F);
    writer.WriteElement(L"double", 0.25);
    writer.WriteElement(L"long", std::int64_t{-3});
    writer.WriteElement(L"unsignedlong", std::uint64_t{4});
    writer.WriteElement(L"text", L"a=\"1\"", L"b");
    writer.WriteElement(L"int", L"a=\"1\"", std::int32_t{-5});
    writer.WriteElement(L"unsigned", L"a=\"1\"", std::uint32_t{6});
    writer.WriteElement(L"double", L"a=\"1\"", 0.75);
}

constexpr const char* c_Markup = "<a>\n"
                                 "\t<b>\n"
                                 "\t\t<text>a</text>\n"
                                 "\t\t<int>-1</int>\n"
                                 "\t\t<unsigned>2</unsigned>\n"
                                 "\t\t<float>0.500000</float>\n"
                                 "\t\t<double>0.250000</double>\n"
                                 "\t\t<long>-3</long>\n"
                                 "\t\t<unsignedlong>4</unsignedlong>\n"
                                 "\t\t<text a=\"1\">b</text>\n"
                                 "\t\t<int a=\"1\">-5</int>\n"
                                 "\t\t<unsigned a=\"1\">6</unsigned>\n"
                                 "\t\t<double a=\"1\">0.750000</double>\n"
                                 "\t\t<c/>\n"
                                 "\t\td\n"
                                 "\t</b></a>\n";

} // namespace

CRecordedText::CRecordedText()
{
    LuTestSuiteOut::SetConsoleOut(false);
    CRecorder::GetInstance().text.clear();
}

CRecordedText::~CRecordedText()
{
    LuTestSuiteOut::SetConsoleOut(true);
}

std::wstring CRecordedText::Take()
{
    return std::exchange(CRecorder::GetInstance().text, {});
}

void CallOutput()
{
    CRecordedText output;
    LuTestSuiteOut::Write(L"%s %d\n", L"eins", 2).Bold().Underlined().Color(LuColor::c_RED);
    Expect(output.Take() == L"eins 2\n", "LuTestSuiteOut::Write");
    Expect(CRecorder::GetInstance().hasAttributes, "attributes of LuTestSuiteOut");
    {
        LuTestSuiteOut line = LuTestSuiteOut::Write(L"drei");
        const LuTestSuiteOut copy = line;
        line = LuTestSuiteOut::Write(L"vier");
    }
    // The destructor of each copy prints that copy, so the last copy is printed first.
    Expect(output.Take() == L"vierdreivier", "copies of LuTestSuiteOut");
}

void CallHeapTracker()
{
    LuTestSuiteHeapTracker tracker(false, false);
    tracker.Initialize();
    tracker.ObserveID(~std::uint64_t{0});
    tracker.ObserveSize(~std::uint64_t{0});
    tracker.Activate();
    Expect(tracker.IsActive(), "LuTestSuiteHeapTracker::Activate");
    // The pointer is volatile, so that the compiler keeps the unused block.
    void* volatile block = std::malloc(24);
    block = std::realloc(block, 40);
    tracker.Deactivate();
    Expect(tracker.GetMallocCount() == 1 && tracker.GetReallocCount() == 1, "counts of LuTestSuiteHeapTracker");
    Expect(tracker.GetCurrentAlloc() == 40 && tracker.GetCurrentMax() >= 40, "bytes of LuTestSuiteHeapTracker");
    LuStreamWriteTextMemory dump;
    tracker.dump(dump);
    Expect(!dump.GetText().empty(), "LuTestSuiteHeapTracker::dump");
    tracker.Activate();
    std::free(block);
    tracker.Deactivate();
    Expect(tracker.GetFreeCount() == 1, "LuTestSuiteHeapTracker::GetFreeCount");
    tracker.Reset();
    Expect(tracker.GetFreeCount() == 0, "LuTestSuiteHeapTracker::Reset");
    LuTestSuiteHeapTracker::UnhookAll();
}

void CallMarkupWriter(const SPlaces& places)
{
    const std::wstring path = places.work + L"markup.xml";
    LuStreamWriteASCIIFile file(path);
    LuMarkupWriter writer(file);
    writer.WriteLineOpen(L"<a>");
    writer.WriteOpen(L"<b>");
    writer.Write(L"\n");
    writeElements(writer);
    writer.WriteLine(L"<c/>");
    writer.Indent();
    writer.Write(L"d\n");
    writer.WriteClose(L"</b>");
    writer.WriteLineClose(L"</a>");
    file.Close();
    Expect(LbFileSystem::ReadFile8Bit(path) == c_Markup, "LuMarkupWriter");
    Expect(LuMarkupWriter::Escape(L"<&>") == L"&lt;&amp;&gt;", "LuMarkupWriter::Escape");
    Expect(LuMarkupWriter::Unescape(L"&lt;&amp;&gt;") == L"<&>", "LuMarkupWriter::Unescape");
}
