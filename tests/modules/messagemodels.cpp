/// Unit tests that report few or many messages.

#include <string>

#include "base/luunittest.h"

class CMessageModel : public LuUnitTest
{
    LB_RTTI(CMessageModel)

    void InitSubtests() override
    {
        AddSubtest(L"Fehler", [this] { Check(3 == 4, L"%d statt %d", 3, 4); });
        AddSubtest(L"Information", [this] { Info(L"Größe %d µm", 12); });
        AddSubtest(L"mehrere", [this] {
            Info(L"erste");
            Error(L"zweite");
            Error(L"dritte");
        });
        AddSubtest(L"Fehler, doch bestanden", [this] {
            Error(L"übergangen");
            return eR_Passed;
        });
        AddSubtest(L"außerhalb der Tabelle", [this] { Info(L"\U0001F600 €"); });
    }
};
LB_RTTI_CLASS(CMessageModel, LuUnitTest)

/// Fills the messages of a case up to their limit and beyond it. The limit counts UTF-16 code units.
class CLongMessageModel : public LuUnitTest
{
    LB_RTTI(CLongMessageModel)

    void SetMessageStream(LuStreamWriteText* stream) override { m_stream = stream; }

    void InitSubtests() override
    {
        constexpr std::size_t c_Limit = 1'048'575;
        AddSubtest(L"genau die Grenze", [this] { write(c_Limit, L""); });
        AddSubtest(L"über der Grenze", [this] { write(c_Limit - 1, L"bcd"); });
        AddSubtest(L"Zeichenpaar auf der Grenze", [this] { write(c_Limit - 1, L"\U0001F600"); });
        AddSubtest(L"kurz", [this] { write(0, L"kurz"); });
    }

private:
    void write(std::size_t count, const std::wstring& rest) { m_stream->Write(std::wstring(count, L'a') + rest); }

    LuStreamWriteText* m_stream = nullptr;
};
LB_RTTI_CLASS(CLongMessageModel, LuUnitTest)
