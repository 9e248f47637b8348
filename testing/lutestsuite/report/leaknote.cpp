#include "testing/lutestsuite/report/leaknote.h"

#include "base/lbformat.h"

std::wstring LuTestSuite::GetLeakNote(std::int64_t bytes)
{
    return bytes == 0 ? std::wstring() : LbFormat(L"Speicherleck von %d Bytes detektiert.", bytes);
}
