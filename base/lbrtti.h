/// The run-time class registry.
///
/// Each class has one record, a static object in the class's own module. The record is registered while the module is
/// loaded. Two macros declare and define the record:
///
///     class CMyTest : public LuUnitTest
///     {
///         LB_RTTI(CMyTest)
///         ...
///     };
///     LB_RTTI_CLASS(CMyTest, LuUnitTest)
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "base/inoncopyable.h"
#include "base/iobject.h"
#include "base/lbexport.h"

class LuUnitTest;

/// Facts about a class, determined at compile time: which operations it inherits from LuUnitTest without an override in
/// the class itself or in a class between it and LuUnitTest. An operation whose name is ambiguous or inaccessible
/// counts as overridden.
struct LbClassFacts
{
    const std::type_info* type = nullptr; ///< the class; null: nothing is known, all counts as overridden
    bool hasPlainList = false;            ///< GetSubtestCount and GetSubtestName are LuUnitTest's
    bool hasPlainRun = false;             ///< RunUnitTest is LuUnitTest's

    template<typename Class>
    static LbClassFacts Of() noexcept
    {
        constexpr bool c_HasPlainList = requires
        {
            requires c_IsPlain<decltype(getDeclaring(&Class::GetSubtestCount))>;
            requires c_IsPlain<decltype(getDeclaring(&Class::GetSubtestName))>;
        };
        constexpr bool c_HasPlainRun = requires
        {
            requires c_IsPlain<decltype(getDeclaring(&Class::RunUnitTest))>;
        };
        return {&typeid(Class), c_HasPlainList, c_HasPlainRun};
    }

private:
    /// A pointer to a member has the type of the most derived class that declares the member.
    template<typename Result, typename Class, typename... Arguments>
    static Class* getDeclaring(Result (Class::*)(Arguments...));
    template<typename Result, typename Class, typename... Arguments>
    static Class* getDeclaring(Result (Class::*)(Arguments...) const);

    template<typename Declaring>
    static constexpr bool c_IsPlain = std::is_same_v<Declaring, LuUnitTest*>;
};

/// The record of one class. Records are compared by identity. All operations may be called from any thread. A record
/// stays valid while its module is loaded.
class LB_API LbRTTI : public INonCopyable
{
public:
    /// Creates an object, owned by the caller; callable from any thread. Exceptions of the constructor pass through.
    using CreateFunction = std::function<std::unique_ptr<IObject>()>;

    /// Registers a class. `base` is null only for a root class; `create` is null for a class that cannot be created by
    /// name. If the name is taken, Find returns the record that was registered first, until its module is unloaded. If
    /// `facts` are given, an object that the runner creates for one case can skip all other sub-tests.
    LbRTTI(const wchar_t* name, const LbRTTI* base, CreateFunction create, const LbClassFacts& facts = {});
    ~LbRTTI();

    const std::wstring& GetName() const noexcept { return m_name; }
    const LbRTTI* GetBase() const noexcept { return m_base; }
    const CreateFunction& GetCreate() const noexcept { return m_create; }
    const LbClassFacts& GetFacts() const noexcept { return m_facts; }

    /// True if this class is `type` or derived from it.
    bool IsDerivedFrom(const LbRTTI& type) const noexcept;
    bool IsExactly(const LbRTTI& type) const noexcept { return this == &type; }

    /// The record registered under `name` (compared exactly); null if there is none.
    static const LbRTTI* Find(const std::wstring& name);

    /// The records of creatable classes derived from `base`, ordered by name; only records that Find returns.
    static std::vector<const LbRTTI*> GetDerived(const LbRTTI& base);

    /// The factory registered under `name`; null if the name is unknown or the class cannot be created.
    static CreateFunction getCreate(const std::wstring& name);

private:
    std::wstring m_name;
    const LbRTTI* m_base;
    CreateFunction m_create;
    LbClassFacts m_facts;
};

/// Classes that a module can register only after all of its static objects have been created, such as classes for tests
/// of another framework. An LbLateClasses object must be a static object of the module.
class LB_API LbLateClasses : public INonCopyable
{
public:
    /// Find, GetDerived and getCreate of LbRTTI call `registerClasses` once, on the thread that calls one of them
    /// first; other threads wait. `registerClasses` creates records that must not outlive the module. Its exceptions
    /// pass through to that first caller.
    explicit LbLateClasses(void (*registerClasses)());
    ~LbLateClasses();

private:
    void (*m_registerClasses)();
};

/// Declares the record inside the class. Members declared after the macro are private.
#define LB_RTTI(Class)                                                                                                 \
public:                                                                                                                \
    static const LbRTTI RTTI;                                                                                          \
    const LbRTTI& GetRTTI() const override                                                                             \
    {                                                                                                                  \
        return RTTI;                                                                                                   \
    }                                                                                                                  \
                                                                                                                       \
private:

/// Defines the record of a class that can be created by name. Use it at namespace scope in one source file. The class
/// needs a constructor without arguments.
#define LB_RTTI_CLASS(Class, Base) LB_RTTI_NAMED_CLASS(Class, Base, #Class)

/// The same with an explicit name, for example one that contains a namespace.
#define LB_RTTI_NAMED_CLASS(Class, Base, Name)                                                                         \
    const LbRTTI Class::RTTI(                                                                                          \
        L"" Name, &Base::RTTI, []() -> std::unique_ptr<IObject> { return std::make_unique<Class>(); },                 \
        LbClassFacts::Of<Class>());

/// Defines the record of a class that cannot be created by name.
#define LB_RTTI_ABSTRACT(Class, Base) const LbRTTI Class::RTTI(L"" #Class, &Base::RTTI, nullptr);
