#include "base/os/resources.h"

#include <gtest/gtest.h>

#include "base/lbpath.h"

namespace
{

TEST(FindEmbeddedResource, FindsNothingInALibraryWithoutResources)
{
    const auto* const address = reinterpret_cast<const void*>(&LbPath::GetParent);

    EXPECT_TRUE(LbOs::FindEmbeddedResource(address, L"IDR_HTML_REPORT_CSS", L"CSSFILE").empty());
}

TEST(FindEmbeddedResource, FindsNothingAtAnAddressOutsideModules)
{
    int local = 0;

    EXPECT_TRUE(LbOs::FindEmbeddedResource(&local, L"IDR_HTML_REPORT_CSS", L"CSSFILE").empty());
    EXPECT_TRUE(LbOs::FindEmbeddedResource(nullptr, L"IDR_HTML_REPORT_CSS", L"CSSFILE").empty());
}

} // namespace
