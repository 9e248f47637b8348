#include "base/lbrtti.h"

#include <algorithm>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbdiagnostics.h"
#include "base/lbformat.h"

namespace
{

class CAnimal : public IObject
{
    LB_RTTI(CAnimal)
};

class CDog : public CAnimal
{
    LB_RTTI(CDog)

public:
    int m_legs = 4;
};

class CNamed : public CAnimal
{
    LB_RTTI(CNamed)
};

std::unique_ptr<IObject> createDog()
{
    return std::make_unique<CDog>();
}

std::unique_ptr<IObject> createNamed()
{
    return std::make_unique<CNamed>();
}

/// Collects the traces of a scope.
class CTraces : public INonCopyable
{
public:
    CTraces() : m_former(LbDiagnostics::SetListener([this](const std::wstring& text) { m_texts.push_back(text); })) {}
    ~CTraces() { LbDiagnostics::SetListener(m_former); }

    const std::vector<std::wstring>& GetTexts() const { return m_texts; }

private:
    std::vector<std::wstring> m_texts;
    std::function<void(const std::wstring&)> m_former;
};

TEST(LbRTTI, ListsDerivedClassesThatCanBeCreatedByName)
{
    const LbRTTI base(L"CBaseOfList", nullptr, nullptr);
    const LbRTTI second(L"CSecondOfList", &base, createDog);
    const LbRTTI first(L"CFirstOfList", &base, createDog);
    const LbRTTI abstract(L"CAbstractOfList", &base, nullptr);

    EXPECT_EQ(LbRTTI::GetDerived(base), (std::vector<const LbRTTI*>{&first, &second}));
}

int s_lateCalls = 0;
std::optional<LbRTTI> s_late;

TEST(LbLateClasses, AreRegisteredOnceWhenAClassIsLookedUp)
{
    s_lateCalls = 0;
    {
        const LbLateClasses late([] {
            ++s_lateCalls;
            s_late.emplace(L"CLateClass", nullptr, createDog);
        });
        EXPECT_EQ(s_lateCalls, 0);

        EXPECT_EQ(LbRTTI::Find(L"CLateClass"), &*s_late);
        EXPECT_EQ(LbRTTI::Find(L"CLateClass"), &*s_late);
    }
    EXPECT_EQ(s_lateCalls, 1);
    s_late.reset();
}

TEST(LbLateClasses, AreNotRegisteredOnceTheirObjectIsDestroyed)
{
    s_lateCalls = 0;
    {
        const LbLateClasses late([] { ++s_lateCalls; });
    }

    LbRTTI::Find(L"CLateClass");

    EXPECT_EQ(s_lateCalls, 0);
}

TEST(LbLateClasses, CanLookUpClassesDuringTheirRegistration)
{
    const LbLateClasses late([] { s_lateCalls = LbRTTI::Find(L"CNowhere") == nullptr ? 7 : 8; });

    LbRTTI::Find(L"CNowhere");

    EXPECT_EQ(s_lateCalls, 7);
}

} // namespace

LB_RTTI_ABSTRACT(CAnimal, IObject)
LB_RTTI_CLASS(CDog, CAnimal)
LB_RTTI_NAMED_CLASS(CNamed, CAnimal, "Zoo::CNamed")

TEST(LbRTTI, FindsClassByName)
{
    EXPECT_EQ(LbRTTI::Find(L"CDog"), &CDog::RTTI);
}

TEST(LbRTTI, FindsTheRootOfAllClasses)
{
    EXPECT_EQ(LbRTTI::Find(L"IObject"), &IObject::RTTI);
    EXPECT_EQ(IObject::RTTI.GetBase(), nullptr);
}

TEST(LbRTTI, DoesNotFindAnUnknownName)
{
    EXPECT_EQ(LbRTTI::Find(L"CUnicorn"), nullptr);
    EXPECT_EQ(LbRTTI::Find(L""), nullptr);
}

TEST(LbRTTI, ComparesNamesExactly)
{
    EXPECT_EQ(LbRTTI::Find(L"cdog"), nullptr);
    EXPECT_EQ(LbRTTI::Find(L"CDog "), nullptr);
}

TEST(LbRTTI, FindsAClassByAnExplicitName)
{
    EXPECT_EQ(LbRTTI::Find(L"Zoo::CNamed"), &CNamed::RTTI);
    EXPECT_EQ(LbRTTI::Find(L"CNamed"), nullptr);
    EXPECT_EQ(CNamed::RTTI.GetName(), L"Zoo::CNamed");
}

TEST(LbRTTI, ReturnsItsBase)
{
    EXPECT_EQ(CDog::RTTI.GetBase(), &CAnimal::RTTI);
}

TEST(LbRTTI, IsDerivedFromItselfAndEachBase)
{
    EXPECT_TRUE(CDog::RTTI.IsDerivedFrom(CDog::RTTI));
    EXPECT_TRUE(CDog::RTTI.IsDerivedFrom(CAnimal::RTTI));
    EXPECT_TRUE(CDog::RTTI.IsDerivedFrom(IObject::RTTI));
}

TEST(LbRTTI, IsNotDerivedFromSiblingOrDerivedClass)
{
    EXPECT_FALSE(CDog::RTTI.IsDerivedFrom(CNamed::RTTI));
    EXPECT_FALSE(CAnimal::RTTI.IsDerivedFrom(CDog::RTTI));
}

TEST(LbRTTI, IsExactlyItsOwnClassAndNoBase)
{
    EXPECT_TRUE(CDog::RTTI.IsExactly(CDog::RTTI));
    EXPECT_FALSE(CDog::RTTI.IsExactly(CAnimal::RTTI));
}

TEST(LbRTTI, CreatesObjectByName)
{
    const std::unique_ptr<IObject> object = LbRTTI::getCreate(L"CDog")();
    const auto* const dog = dynamic_cast<const CDog*>(object.get());
    ASSERT_NE(dog, nullptr);
    EXPECT_EQ(dog->m_legs, 4);
}

TEST(LbRTTI, CreatesANewObjectEachTime)
{
    const LbRTTI::CreateFunction create = LbRTTI::getCreate(L"CDog");
    EXPECT_NE(create(), create());
}

TEST(LbRTTI, ReturnsNoFactoryForAnUnknownNameOrAnAbstractClass)
{
    EXPECT_EQ(LbRTTI::getCreate(L"CUnicorn"), nullptr);
    EXPECT_EQ(LbRTTI::getCreate(L"CAnimal"), nullptr);
    EXPECT_NE(LbRTTI::Find(L"CAnimal"), nullptr);
}

TEST(LbRTTI, IsUnregisteredByItsDestructor)
{
    std::optional<LbRTTI> record(std::in_place, L"CPassing", &CAnimal::RTTI, &createDog);
    ASSERT_EQ(LbRTTI::Find(L"CPassing"), &*record);
    record.reset();
    EXPECT_EQ(LbRTTI::Find(L"CPassing"), nullptr);
    EXPECT_EQ(LbRTTI::getCreate(L"CPassing"), nullptr);
}

TEST(LbRTTI, FindsTheFirstRecordOfAName)
{
    const LbRTTI first(L"CTwice", &CAnimal::RTTI, &createDog);
    const LbRTTI second(L"CTwice", &CAnimal::RTTI, &createNamed);
    EXPECT_EQ(LbRTTI::Find(L"CTwice"), &first);
    EXPECT_NE(dynamic_cast<CDog*>(LbRTTI::getCreate(L"CTwice")().get()), nullptr);
}

TEST(LbRTTI, FindsTheNextRecordOfANameAfterTheFirstIsUnregistered)
{
    std::optional<LbRTTI> first(std::in_place, L"CTwice", &CAnimal::RTTI, &createDog);
    const LbRTTI second(L"CTwice", &CAnimal::RTTI, &createNamed);
    first.reset();
    EXPECT_EQ(LbRTTI::Find(L"CTwice"), &second);
}

TEST(LbRTTI, StillFindsTheFirstRecordAfterTheSecondIsUnregistered)
{
    const LbRTTI first(L"CTwice", &CAnimal::RTTI, &createDog);
    std::optional<LbRTTI> second(std::in_place, L"CTwice", &CAnimal::RTTI, &createNamed);
    second.reset();
    EXPECT_EQ(LbRTTI::Find(L"CTwice"), &first);
}

TEST(LbRTTI, TracesASecondRecordOfAName)
{
    const CTraces traces;
    const LbRTTI first(L"CTwice", &CAnimal::RTTI, &createDog);
    EXPECT_TRUE(traces.GetTexts().empty());
    const LbRTTI second(L"CTwice", &CAnimal::RTTI, &createNamed);
    ASSERT_EQ(traces.GetTexts().size(), 1U);
    EXPECT_NE(traces.GetTexts()[0].find(L"'CTwice'"), std::wstring::npos);
}

TEST(LbRTTI, DistinguishesThousandsOfClasses)
{
    std::vector<std::unique_ptr<LbRTTI>> records;
    for (int i = 0; i < 5000; ++i)
    {
        records.push_back(std::make_unique<LbRTTI>(LbFormat(L"CMany%d", i).c_str(), &CAnimal::RTTI, nullptr));
    }
    EXPECT_TRUE(std::ranges::all_of(
        records, [](const auto& record) { return LbRTTI::Find(record->GetName()) == record.get(); }));
}

TEST(LbRTTIConcurrency, FindsClassesWhileAnotherThreadRegistersAndUnregisters)
{
    std::jthread modules([](const std::stop_token& stop) {
        for (int i = 0; !stop.stop_requested(); ++i)
        {
            const LbRTTI record(LbFormat(L"CComing%d", i % 50).c_str(), &CAnimal::RTTI, &createDog);
        }
    });
    bool isAlwaysFound = true;
    for (int i = 0; i < 2000; ++i)
    {
        isAlwaysFound =
            isAlwaysFound && LbRTTI::Find(L"CDog") == &CDog::RTTI && LbRTTI::getCreate(L"Zoo::CNamed") != nullptr;
    }
    EXPECT_TRUE(isAlwaysFound);
}
