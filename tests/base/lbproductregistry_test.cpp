#include "base/lbproductregistry.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace
{

TEST(LbProductRegistry, FindsARegisteredProduct)
{
    LbProductRegistry::Register(L"Finder", L"1.2.3");
    const auto product = LbProductRegistry::Find(L"Finder");
    ASSERT_TRUE(product.has_value());
    EXPECT_EQ(product->name, L"Finder");
    EXPECT_EQ(product->version, L"1.2.3");
}

TEST(LbProductRegistry, DoesNotFindAnUnknownProduct)
{
    LbProductRegistry::Register(L"Known", L"1");
    EXPECT_FALSE(LbProductRegistry::Find(L"known").has_value());
    EXPECT_FALSE(LbProductRegistry::Find(L"").has_value());
}

TEST(LbProductRegistry, ReplacesAProductOfTheSameName)
{
    LbProductRegistry::Register(L"Replaced", L"1");
    LbProductRegistry::Register(L"Replaced", L"2");
    EXPECT_EQ(LbProductRegistry::Find(L"Replaced")->version, L"2");
}

TEST(LbProductRegistryConcurrency, AcceptsProductsFromManyThreads)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back([thread] {
            for (int index = 0; index < 50; ++index)
            {
                const std::wstring number = std::to_wstring(index);
                LbProductRegistry::Register(L"Many " + number, std::to_wstring(thread));
                EXPECT_TRUE(LbProductRegistry::Find(L"Many " + number).has_value());
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (int index = 0; index < 50; ++index)
    {
        EXPECT_TRUE(LbProductRegistry::Find(L"Many " + std::to_wstring(index)).has_value());
    }
}

} // namespace
