#include "base/lbexception.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"

namespace lbexceptiontest
{

std::wstring functionOf(const LbException& exception)
{
    return exception.GetFunction();
}

std::wstring freeFunction(int /*value*/)
{
    return functionOf(LbException());
}

const std::wstring& referenceResult()
{
    static const std::wstring s_name = functionOf(LbException());
    return s_name;
}

template<typename T>
std::vector<T> templateFunction(T /*value*/, const std::function<void(int)>& /*callback*/, std::wstring& name)
{
    name = functionOf(LbException());
    return {};
}

template<typename T>
requires std::is_integral_v<T> std::wstring constrainedLambda(T value)
{
    return [](int) { return functionOf(LbException()); }(value);
}

auto(*functionPointerResult(std::wstring& name))(int) -> int
{
    name = functionOf(LbException());
    return nullptr;
}

struct Sample
{
    Sample() : name(functionOf(LbException())) {}
    virtual ~Sample() = default;

    virtual std::wstring Method(int /*value*/) const { return functionOf(LbException()); }
    std::wstring Lambda() const
    {
        return [this](auto) { return [] { return functionOf(LbException()); }(); }(name);
    }
    std::wstring operator()(int /*value*/) const { return functionOf(LbException()); }
    std::wstring operator<<(int /*value*/) const { return functionOf(LbException()); }
    std::wstring operator[](int /*value*/) const { return functionOf(LbException()); }
    operator std::function<std::wstring()>() const // NOLINT(google-explicit-constructor)
    {
        return [result = functionOf(LbException())] { return result; };
    }

    std::wstring name;
};

template<typename T>
struct TemplateSample
{
    std::wstring Method() { return functionOf(LbException()); }
};

} // namespace lbexceptiontest

namespace
{

using namespace lbexceptiontest;

TEST(LbException, NamesFreeFunctions)
{
    EXPECT_EQ(freeFunction(1), L"lbexceptiontest::freeFunction");
}

TEST(LbException, OmitsResultTypes)
{
    std::wstring name;
    EXPECT_EQ(referenceResult(), L"lbexceptiontest::referenceResult");
    functionPointerResult(name);
    EXPECT_EQ(name, L"lbexceptiontest::functionPointerResult");
}

TEST(LbException, NamesMembersWithTheirClass)
{
    const Sample sample;
    EXPECT_EQ(sample.name, L"lbexceptiontest::Sample::Sample");
    EXPECT_EQ(sample.Method(1), L"lbexceptiontest::Sample::Method");
}

TEST(LbException, NamesOperators)
{
    const Sample sample;
    EXPECT_EQ(sample(1), L"lbexceptiontest::Sample::operator()");
    EXPECT_EQ(sample << 1, L"lbexceptiontest::Sample::operator<<");
    EXPECT_EQ(sample[1], L"lbexceptiontest::Sample::operator[]");
}

TEST(LbException, NamesConversionOperators)
{
    const std::function<std::wstring()> converted = Sample();
    const std::wstring name = converted();
    EXPECT_TRUE(name.starts_with(L"lbexceptiontest::Sample::operator std::function<")) << name.size();
    EXPECT_TRUE(name.ends_with(L">"));
}

TEST(LbException, NamesTemplatesWithoutTheirArguments)
{
    std::wstring name;
    templateFunction(std::string(), {}, name);
    EXPECT_EQ(name, L"lbexceptiontest::templateFunction");
    EXPECT_EQ(TemplateSample<int>().Method(), L"lbexceptiontest::TemplateSample<T>::Method");
}

TEST(LbException, NamesLambdasByTheirLocation)
{
    EXPECT_EQ(Sample().Lambda(), L"lbexceptiontest::Sample::Lambda::<lambda>::<lambda>");
    EXPECT_EQ(constrainedLambda(1), L"lbexceptiontest::constrainedLambda<int>::<lambda>");
}

TEST(LbException, AcceptsAFunctionNameFromTheCaller)
{
    const LbException exception(L"LuTestSuiteTree::Build", L"");
    EXPECT_EQ(exception.GetFunction(), L"LuTestSuiteTree::Build");
    EXPECT_EQ(exception.GetSourceFile(), L"lbexception_test");
}

TEST(LbException, ReturnsItsFileAndLine)
{
    const auto here = LbSourceLocation::Current();
    const LbException exception;
    EXPECT_EQ(exception.GetSourceFile(), L"lbexception_test");
    EXPECT_EQ(exception.GetLine(), here.GetLine() + 1);
}

TEST(LbException, ReturnsItsMessage)
{
    EXPECT_EQ(LbException(L"größer").GetMessageText(), L"größer");
    EXPECT_EQ(LbException().GetMessageText(), L"");
}

TEST(LbException, DescribesItselfInOneUtf8Line)
{
    const LbException exception(L"Class::Function", L"Zu groß");
    const std::string line = std::to_string(exception.GetLine());
    EXPECT_EQ(std::string(exception.what()), "Zu gro\xC3\x9F (lbexception_test(" + line + "): Class::Function)");
}

TEST(LbException, DescribesItselfWithoutMessage)
{
    const LbException exception(L"Class::Function", L"");
    const std::string line = std::to_string(exception.GetLine());
    EXPECT_EQ(std::string(exception.what()), "(lbexception_test(" + line + "): Class::Function)");
}

TEST(LbException, IsCaughtAsStandardExceptionWithItsText)
{
    try
    {
        throw LbException(L"F", L"text");
    }
    catch (const std::exception& exception)
    {
        EXPECT_TRUE(std::string(exception.what()).starts_with("text (lbexception_test("));
    }
}

/// The description of an exception with this value.
template<typename T>
std::wstring describe(const T& thrown)
{
    try
    {
        throw thrown;
    }
    catch (...)
    {
        return LbDescribeCurrentException();
    }
}

TEST(LbDescribeCurrentException, ReturnsMessageAndLocationOfAnLbException)
{
    const std::wstring text = describe(LbException(L"F", L"größer"));

    EXPECT_TRUE(text.starts_with(L"größer (lbexception_test(")) << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(L"): F)")) << LbEncoding::ToUtf8(text);
}

TEST(LbDescribeCurrentException, ReturnsTheTextOfStandardExceptions)
{
    EXPECT_EQ(describe(std::runtime_error("gr\xC3\xB6\xC3\x9F"
                                          "er")),
              L"größer");
}

TEST(LbDescribeCurrentException, ReturnsWideTexts)
{
    EXPECT_EQ(describe(std::wstring(L"größer")), L"größer");
    EXPECT_EQ(describe<const wchar_t*>(L"größer"), L"größer");
}

TEST(LbDescribeCurrentException, ReturnsNarrowTexts)
{
    EXPECT_EQ(describe(std::string("gr\xC3\xB6\xC3\x9F"
                                   "er")),
              L"größer");
    EXPECT_EQ(describe<const char*>("kleiner"), L"kleiner");
}

TEST(LbDescribeCurrentException, ReturnsEmptyTextForNullPointers)
{
    EXPECT_EQ(describe<const wchar_t*>(nullptr), L"");
    EXPECT_EQ(describe<const char*>(nullptr), L"");
}

TEST(LbDescribeCurrentException, ReportsOtherTypesAsUnknown)
{
    EXPECT_EQ(describe(42), L"Unbekannte Exception");
}

} // namespace
