#include "base/ioccontainer.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbrtti.h"
#include "tests/support/scopedfolder.h"

namespace
{

using IOC::CContainer;

class IGreeting
{
public:
    virtual ~IGreeting() = default;
    virtual std::wstring Greet() const = 0;
};

/// Counts living objects, and records the order in which objects of all classes are destroyed.
std::atomic<int> s_aliveCount = 0;
std::vector<std::string> s_ended;

class CGreeter : public IObject, public IGreeting
{
    LB_RTTI(CGreeter)

public:
    CGreeter() { ++s_aliveCount; }
    ~CGreeter() override
    {
        --s_aliveCount;
        s_ended.emplace_back("greeter");
    }
    std::wstring Greet() const override { return L"Grüß Gott"; }
};

class CPlain : public IObject
{
    LB_RTTI(CPlain)

public:
    ~CPlain() override { s_ended.emplace_back("plain"); }
};

class CAbstract : public IObject
{
    LB_RTTI(CAbstract)
};

class CFailing : public IObject
{
    LB_RTTI(CFailing)

public:
    CFailing()
    {
        if (s_fails)
        {
            throw std::runtime_error("constructor");
        }
    }
    static inline bool s_fails = true;
};

/// Requests other services from the container in its constructor.
class CDependent : public IObject
{
    LB_RTTI(CDependent)

public:
    CDependent()
    {
        m_greeter = s_container->Resolve<IGreeting>(L"Greeter");
        m_itself = s_container->Resolve(L"Dependent");
    }
    ~CDependent() override { s_ended.emplace_back("dependent"); }

    static inline CContainer* s_container = nullptr;
    std::shared_ptr<IGreeting> m_greeter;
    std::shared_ptr<IObject> m_itself;
};

std::unique_ptr<CContainer> make(const std::string& services)
{
    return CContainer::CreateFromText("<Container>" + services + "</Container>");
}

} // namespace

LB_RTTI_CLASS(CGreeter, IObject)
LB_RTTI_CLASS(CPlain, IObject)
LB_RTTI_ABSTRACT(CAbstract, IObject)
LB_RTTI_CLASS(CFailing, IObject)
LB_RTTI_CLASS(CDependent, IObject)

TEST(CContainer, IsCreatedFromText)
{
    const auto container = make("<Service name='Greeter' class='CGreeter'/>");
    ASSERT_NE(container, nullptr);
    EXPECT_TRUE(container->HasService(L"Greeter"));
}

TEST(CContainer, IsCreatedFromAFile)
{
    const ScopedFolder folder;
    const auto container = CContainer::CreateFromFile(
        folder.WriteFile(L"container.xml", "<Container><Service name='P' class='CPlain'/></Container>"));
    ASSERT_NE(container, nullptr);
    EXPECT_TRUE(container->HasService(L"P"));
}

TEST(CContainer, IsNotCreatedFromAMissingFile)
{
    const ScopedFolder folder;
    EXPECT_EQ(CContainer::CreateFromFile(folder.GetPathOf(L"missing.xml")), nullptr);
}

TEST(CContainer, IsCreatedWithoutServices)
{
    const auto container = make("");
    ASSERT_NE(container, nullptr);
    EXPECT_FALSE(container->HasService(L""));
}

TEST(CContainer, IsNotCreatedFromInvalidText)
{
    EXPECT_EQ(CContainer::CreateFromText(""), nullptr);
    EXPECT_EQ(CContainer::CreateFromText("<Container>"), nullptr);
    EXPECT_EQ(CContainer::CreateFromText("<Other/>"), nullptr);
}

TEST(CContainer, IsNotCreatedWithAnIncompleteService)
{
    EXPECT_EQ(make("<Service class='CPlain'/>"), nullptr);
    EXPECT_EQ(make("<Service name='' class='CPlain'/>"), nullptr);
    EXPECT_EQ(make("<Service name='P'/>"), nullptr);
    EXPECT_EQ(make("<Service name='P' class=''/>"), nullptr);
}

TEST(CContainer, IsNotCreatedWithDuplicateNames)
{
    EXPECT_EQ(make("<Service name='P' class='CPlain'/><Service name='P' class='CGreeter'/>"), nullptr);
}

TEST(CContainer, IsNotCreatedWithAnUnknownLifetime)
{
    EXPECT_EQ(make("<Service name='P' class='CPlain' lifetime='eternal'/>"), nullptr);
    EXPECT_EQ(make("<Service name='P' class='CPlain' lifetime=''/>"), nullptr);
    EXPECT_NE(make("<Service name='P' class='CPlain' lifetime='singleton'/>"), nullptr);
}

TEST(CContainer, ReturnsNullForAnUnknownName)
{
    EXPECT_EQ(make("")->Resolve(L"Greeter"), nullptr);
}

TEST(CContainer, SharesOneSingletonObject)
{
    const auto container = make("<Service name='Greeter' class='CGreeter'/>");
    const auto first = container->Resolve(L"Greeter");
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(container->Resolve(L"Greeter"), first);
}

TEST(CContainer, CreatesATransientObjectPerCall)
{
    const auto container = make("<Service name='Greeter' class='CGreeter' lifetime='transient'/>");
    const auto first = container->Resolve(L"Greeter");
    const auto second = container->Resolve(L"Greeter");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
}

TEST(CContainer, CreatesObjectsOnFirstUse)
{
    const int before = s_aliveCount;
    const auto container = make("<Service name='Greeter' class='CGreeter'/>");
    EXPECT_EQ(s_aliveCount, before);
    container->Resolve(L"Greeter");
    EXPECT_EQ(s_aliveCount, before + 1);
}

TEST(CContainer, CastsObjectsToAnInterface)
{
    const auto container = make("<Service name='Greeter' class='CGreeter'/><Service name='P' class='CPlain'/>");
    const auto greeting = container->Resolve<IGreeting>(L"Greeter");
    ASSERT_NE(greeting, nullptr);
    EXPECT_EQ(greeting->Greet(), L"Grüß Gott");
    EXPECT_EQ(container->Resolve<IGreeting>(L"P"), nullptr);
}

TEST(CContainer, ReturnsNullIfTheClassCannotBeCreated)
{
    const auto container = make("<Service name='A' class='CAbstract'/><Service name='U' class='CUnheardOf'/>");
    EXPECT_EQ(container->Resolve(L"A"), nullptr);
    EXPECT_EQ(container->Resolve(L"U"), nullptr);
    EXPECT_TRUE(container->HasService(L"U"));
}

TEST(CContainer, FindsAClassRegisteredLater)
{
    const auto container = make("<Service name='Late' class='CLate'/>");
    EXPECT_EQ(container->Resolve(L"Late"), nullptr);
    const LbRTTI late(L"CLate", &IObject::RTTI, LbRTTI::getCreate(L"CPlain"));
    EXPECT_NE(container->Resolve(L"Late"), nullptr);
}

TEST(CContainer, PassesOnAConstructorsExceptionAndRetriesLater)
{
    const auto container = make("<Service name='F' class='CFailing'/>");
    CFailing::s_fails = true;
    EXPECT_THROW(container->Resolve(L"F"), std::runtime_error);
    CFailing::s_fails = false;
    EXPECT_NE(container->Resolve(L"F"), nullptr);
}

TEST(CContainer, LetsAConstructorResolveOtherServicesButNotItsOwn)
{
    const auto container =
        make("<Service name='Dependent' class='CDependent'/><Service name='Greeter' class='CGreeter'/>");
    CDependent::s_container = container.get();
    const auto dependent = container->Resolve<CDependent>(L"Dependent");
    ASSERT_NE(dependent, nullptr);
    EXPECT_NE(dependent->m_greeter, nullptr);
    EXPECT_EQ(dependent->m_itself, nullptr);
    EXPECT_EQ(container->Resolve(L"Dependent"), dependent);
}

TEST(CContainer, DestroysObjectsInReverseOrderOfCreation)
{
    auto container = make("<Service name='P' class='CPlain'/><Service name='Greeter' class='CGreeter'/>");
    container->Resolve(L"Greeter");
    container->Resolve(L"P");
    s_ended.clear();
    container.reset();
    EXPECT_EQ(s_ended, (std::vector<std::string>{"plain", "greeter"}));
}

TEST(CContainer, LeavesReferencedObjectsAliveOnDestruction)
{
    auto container = make("<Service name='Greeter' class='CGreeter'/>");
    const auto greeting = container->Resolve<IGreeting>(L"Greeter");
    container.reset();
    EXPECT_EQ(greeting->Greet(), L"Grüß Gott");
}

TEST(CContainerConcurrency, SharesOneObjectBetweenManyThreads)
{
    const int before = s_aliveCount;
    const auto container = make("<Service name='Greeter' class='CGreeter'/>");
    std::atomic<int> sameCount = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
        {
            threads.emplace_back([&container, &sameCount] {
                const auto object = container->Resolve(L"Greeter");
                sameCount += object != nullptr && object == container->Resolve(L"Greeter") ? 1 : 0;
            });
        }
    }
    EXPECT_EQ(sameCount, 4);
    EXPECT_EQ(s_aliveCount, before + 1);
}
