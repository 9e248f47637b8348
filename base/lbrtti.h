/// The run-time class registry.
///
/// Each class has one record, a static object in the class's own module, which enters the registry when its module is
/// loaded and leaves it when the module is unloaded. A class takes part with two macros:
///
///     class CMyTest : public LuUnitTest
///     {
///         LB_RTTI(CMyTest)
///         ...
///     };
///     LB_RTTI_CLASS(CMyTest, LuUnitTest)
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/iobject.h"
#include "base/lbexport.h"

/// The record of one class. Records are compared by identity. All operations may be called by any thread; a record
/// found stays valid as long as its module is loaded.
class LB_API LbRTTI : public INonCopyable
{
public:
    /// Makes a new object, owned by the caller. May throw what the class's constructor throws.
    using CreateFunction = std::unique_ptr<IObject> (*)();

    /// Registers a class. `base` is null for a root only; `create` is null for classes that cannot be created by name.
    /// When the name is taken already, the first record stays the one that is found, until it leaves.
    LbRTTI(const wchar_t* name, const LbRTTI* base, CreateFunction create);
    ~LbRTTI();

    const std::wstring& GetName() const noexcept { return m_name; }
    const LbRTTI* GetBase() const noexcept { return m_base; }
    CreateFunction GetCreate() const noexcept { return m_create; }

    /// True when this class is `type` or derived from it.
    bool IsDerivedFrom(const LbRTTI& type) const noexcept;
    bool IsExactly(const LbRTTI& type) const noexcept { return this == &type; }

    /// The record registered under `name` (exact comparison), null when there is none.
    static const LbRTTI* Find(const std::wstring& name);

    /// The factory registered under `name`; null when the name is unknown or the class cannot be created.
    static CreateFunction getCreate(const std::wstring& name);

    /// All records that are found by name and are derived from `type`, ordered by name.
    static std::vector<const LbRTTI*> FindDerived(const LbRTTI& type);

private:
    std::wstring m_name;
    const LbRTTI* m_base;
    CreateFunction m_create;
};

/// Inside a class: declares its record. Leaves the access at private.
#define LB_RTTI(Class)                                                                                                 \
public:                                                                                                                \
    static const LbRTTI RTTI;                                                                                          \
    const LbRTTI& GetRTTI() const override                                                                             \
    {                                                                                                                  \
        return RTTI;                                                                                                   \
    }                                                                                                                  \
                                                                                                                       \
private:

/// At namespace scope of one source file: the record of a class that can be created by name. The class needs a
/// constructor without arguments.
#define LB_RTTI_CLASS(Class, Base) LB_RTTI_NAMED_CLASS(Class, Base, #Class)

/// The same under a name of its own choice (a namespace in front, say).
#define LB_RTTI_NAMED_CLASS(Class, Base, Name)                                                                         \
    const LbRTTI Class::RTTI(L"" Name, &Base::RTTI,                                                                    \
                             []() -> std::unique_ptr<IObject> { return std::make_unique<Class>(); });

/// The record of a class that cannot be created by name.
#define LB_RTTI_ABSTRACT(Class, Base) const LbRTTI Class::RTTI(L"" #Class, &Base::RTTI, nullptr);
