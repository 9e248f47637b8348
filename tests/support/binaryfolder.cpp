#include "tests/support/binaryfolder.h"

#include "base/lbpath.h"

std::wstring GetBinaryFolder()
{
    return LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/");
}
