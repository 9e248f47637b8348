#include "base/lbproductregistry.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace
{

/// Created on first use, because constructors of static objects in other modules may register products.
struct SProducts
{
    std::mutex mutex;
    std::vector<LbProductRegistry::SProduct> products;

    auto Find(const std::wstring& name)
    {
        return std::find_if(products.begin(), products.end(),
                            [&name](const LbProductRegistry::SProduct& product) { return product.name == name; });
    }
};

SProducts& getProducts()
{
    static SProducts s_products;
    return s_products;
}

} // namespace

void LbProductRegistry::Register(const std::wstring& name, const std::wstring& version)
{
    SProducts& registry = getProducts();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.Find(name);
    if (found != registry.products.end())
    {
        found->version = version;
    }
    else
    {
        registry.products.push_back({name, version});
    }
}

std::optional<LbProductRegistry::SProduct> LbProductRegistry::Find(const std::wstring& name)
{
    SProducts& registry = getProducts();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.Find(name);
    return found != registry.products.end() ? std::optional(*found) : std::nullopt;
}
