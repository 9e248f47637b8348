#include "tests/support/binaryfolder.h"

#include "base/lbpath.h"
#include "tests/support/places.h"

std::wstring GetBinaryFolder()
{
    return LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/");
}
