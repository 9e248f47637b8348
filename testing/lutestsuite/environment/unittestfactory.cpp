#include "testing/lutestsuite/environment/unittestfactory.h"

#include "base/lbrtti.h"

std::unique_ptr<LuUnitTest> LuTestSuite::CreateUnitTest(const std::wstring& className)
{
    const LbRTTI::CreateFunction create = LbRTTI::getCreate(className);
    std::unique_ptr<IObject> object = create == nullptr ? nullptr : create();
    auto* const unitTest = dynamic_cast<LuUnitTest*>(object.get());
    if (unitTest != nullptr)
    {
        // `unitTest`, which points to the same object, takes ownership.
        static_cast<void>(object.release());
    }
    return std::unique_ptr<LuUnitTest>(unitTest);
}

std::unique_ptr<LuUnitTest> LuTestSuite::CreateUnitTestOrNull(const std::wstring& className) noexcept
{
    try
    {
        return CreateUnitTest(className);
    }
    catch (...)
    {
        return nullptr;
    }
}
