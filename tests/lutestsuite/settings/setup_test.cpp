#include "testing/lutestsuite/lutestsuitesetup.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/settings/setupdefaults.h"
#include "tests/support/fields.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using testing::ElementsAre;
using testing::ElementsAreArray;

/// A setup in which no field has its default value.
LuTestSuiteSetup MakeFilledSetup()
{
    LuTestSuiteSetup setup;
    setup.dataDir = L"daten";
    setup.includes = {L"i1", L"i2"};
    setup.excludes = {L"e1"};
    setup.unitTests.resize(2);
    setup.unitTests[0].className = L"CErste";
    setup.unitTests[1].className = L"CZweite";
    setup.params = {true, true, false, true, true, false, true, true, true, true, true, 4, 5, 6, 7, 8, 9, true};
    setup.includeConfig = L"auswahl.xml";
    setup.xmlReport = L"bericht.xml";
    setup.htmlReport = L"bericht.html";
    setup.autoXml = setup.autoHtml = setup.openReports = setup.smallReport = true;
    setup.diffInputs = {L"alt.xml", L"neu.xml"};
    setup.diffOutput = L"vergleich.html";
    setup.writeCss = setup.writeJs = setup.tolerateWarnings = false;
    setup.messageReportMax = 10;
    setup.queryMode = setup.listDisabled = setup.noRegex = true;
    setup.archiveRun = L"archiv";
    setup.duplicateMode = eDM_Delete;
    setup.dlls = {L"Modul"};
    setup.memoryId = L"speicher";
    setup.requestEventId = L"anfrage";
    setup.responseEventId = L"antwort";
    return setup;
}

TEST(LuTestSuiteSetup, ShowsWhetherACallbackWasReplaced)
{
    const LuTestSuiteSetup setup;
    LuTestSuiteSetup checked = setup;
    LuTestSuiteSetup notified = setup;
    checked.checkCallback = [] { return false; };
    notified.resultCallback = [](ECaseRunResult) {};

    EXPECT_TRUE(LuTestSuite::HasDefaultCallbacks(setup));
    EXPECT_TRUE(LuTestSuite::HasDefaultCallbacks(LuTestSuiteSetup(setup)));
    EXPECT_FALSE(LuTestSuite::HasDefaultCallbacks(checked));
    EXPECT_FALSE(LuTestSuite::HasDefaultCallbacks(notified));
}

TEST(LuTestSuiteSetup, HasTheDefaultsOfARun)
{
    EXPECT_THAT(GetFields(LuTestSuiteSetup()),
                ElementsAre("dataDir=", "trackHeap=false", "dumpHeap=false", "reportMemLeak=true", "external=false",
                            "isolated=false", "assertDialog=true", "verbose=false", "deVerboseOutput=false",
                            "deDebuggingSerialization=false", "dePredefinedBreakPoints=false", "parallel=false",
                            "workerThreads=0", "repetitions=1", "timeOutSec=-1", "testCaseMax=-1",
                            "breakAllocId=18446744073709551615", "breakAllocSize=18446744073709551615",
                            "repetitionsGiven=false", "includeConfig=", "xmlReport=", "htmlReport=", "autoXml=false",
                            "autoHtml=false", "openReports=false", "smallReport=false", "diffOutput=", "writeCss=true",
                            "writeJs=true", "messageReportMax=3", "tolerateWarnings=true", "queryMode=false",
                            "archiveRun=", "duplicateMode=0", "listDisabled=false",
                            "memoryId=", "requestEventId=", "responseEventId=", "noRegex=false"));
}

TEST(LuTestSuiteSetup, NeverStopsARunByDefault)
{
    EXPECT_FALSE(LuTestSuiteSetup().checkCallback());
}

TEST(LuTestSuiteSetup, IgnoresResultsByDefault)
{
    LuTestSuiteSetup setup;
    const Fields before = GetFields(setup);

    EXPECT_NO_THROW(setup.resultCallback(ECaseRunResult::Error));

    EXPECT_EQ(GetFields(setup), before);
}

TEST(LuTestSuiteSetup, DiffersInEveryFieldFromTheFilledRecord)
{
    // The tests below rely on this: no field of the filled record equals its default.
    const Fields defaults = GetFields(LuTestSuiteSetup());
    const Fields filled = GetFields(MakeFilledSetup());

    EXPECT_THAT(GetOtherFields(filled, defaults), ElementsAreArray(filled));
}

TEST(LuTestSuiteSetup, CopiesEveryField)
{
    const LuTestSuiteSetup source = MakeFilledSetup();

    const LuTestSuiteSetup copy(source);

    EXPECT_EQ(GetFields(copy), GetFields(MakeFilledSetup()));
    EXPECT_EQ(GetFields(source), GetFields(MakeFilledSetup()));
}

TEST(LuTestSuiteSetup, AssignsEveryField)
{
    const LuTestSuiteSetup source = MakeFilledSetup();
    LuTestSuiteSetup target;
    target.includes = {L"alt"};

    target = source;

    EXPECT_EQ(GetFields(target), GetFields(MakeFilledSetup()));
    EXPECT_EQ(GetFields(source), GetFields(MakeFilledSetup()));
}

TEST(LuTestSuiteSetup, CopiesAreIndependent)
{
    const LuTestSuiteSetup source = MakeFilledSetup();
    LuTestSuiteSetup copy(source);

    copy.includes[0] = L"anders";
    copy.unitTests[1].className = L"CAndere";

    EXPECT_EQ(GetFields(source), GetFields(MakeFilledSetup()));
}

TEST(LuTestSuiteSetup, CopiesBothCallables)
{
    ECaseRunResult received = ECaseRunResult::Unknown;
    LuTestSuiteSetup source;
    source.checkCallback = [] { return true; };
    source.resultCallback = [&received](ECaseRunResult result) { received = result; };

    const LuTestSuiteSetup copy(source);
    copy.resultCallback(ECaseRunResult::TimeOut);

    EXPECT_TRUE(copy.checkCallback());
    EXPECT_TRUE(source.checkCallback());
    EXPECT_EQ(received, ECaseRunResult::TimeOut);
}

TEST(LuTestSuiteSetup, MovesEveryField)
{
    LuTestSuiteSetup source = MakeFilledSetup();

    const LuTestSuiteSetup target(std::move(source));

    EXPECT_EQ(GetFields(target), GetFields(MakeFilledSetup()));
}

TEST(LuTestSuiteSetup, MoveAssignsEveryField)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    LuTestSuiteSetup target;
    target.dlls = {L"alt"};

    target = std::move(source);

    EXPECT_EQ(GetFields(target), GetFields(MakeFilledSetup()));
}

TEST(LuTestSuiteSetup, MovesArraysWithoutCopying)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    const std::wstring* const includes = source.includes.data();
    const LuTestSuite::SUnitTest* const unitTests = source.unitTests.data();

    const LuTestSuiteSetup target(std::move(source));

    EXPECT_EQ(target.includes.data(), includes);
    EXPECT_EQ(target.unitTests.data(), unitTests);
}

/// Expects that the arrays of a moved-from record are empty, have no storage, and are usable.
void expectEmptyUsableArrays(LuTestSuiteSetup& source)
{
    for (std::vector<std::wstring>* const list : {&source.includes, &source.excludes, &source.diffInputs, &source.dlls})
    {
        EXPECT_EQ(list->size(), 0U);
        EXPECT_EQ(list->capacity(), 0U);
        list->push_back(L"neu");
        EXPECT_THAT(*list, ElementsAre(L"neu"));
    }
    EXPECT_EQ(source.unitTests.size(), 0U);
    EXPECT_EQ(source.unitTests.capacity(), 0U);
    source.unitTests.resize(1);
    EXPECT_EQ(source.unitTests.size(), 1U);
}

TEST(LuTestSuiteSetup, IsEmptyAndUsableAfterAMove)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    const LuTestSuiteSetup target(std::move(source));

    expectEmptyUsableArrays(source);
}

TEST(LuTestSuiteSetup, IsEmptyAndUsableAfterAMoveAssignment)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    LuTestSuiteSetup target;
    target = std::move(source);

    expectEmptyUsableArrays(source);
}

TEST(LuTestSuiteSetup, HasNoCallablesAfterAMove)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    const LuTestSuiteSetup target(std::move(source));

    EXPECT_FALSE(source.checkCallback);
    EXPECT_FALSE(source.resultCallback);
}

TEST(LuTestSuiteSetup, HasNoCallablesAfterAMoveAssignment)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    LuTestSuiteSetup target;
    target = std::move(source);

    EXPECT_FALSE(source.checkCallback);
    EXPECT_FALSE(source.resultCallback);
}

TEST(LuTestSuiteSetup, MayBeFilledAfterAMove)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    const LuTestSuiteSetup target(std::move(source));

    source.dataDir = L"neu";
    source.checkCallback = [] { return true; };

    EXPECT_EQ(source.dataDir, L"neu");
    EXPECT_TRUE(source.checkCallback());
}

TEST(LuTestSuiteSetup, MayBeAssignedAfterAMove)
{
    LuTestSuiteSetup source = MakeFilledSetup();
    const LuTestSuiteSetup target(std::move(source));

    source = LuTestSuiteSetup();

    EXPECT_EQ(GetFields(source), GetFields(LuTestSuiteSetup()));
    EXPECT_FALSE(source.checkCallback());
}

TEST(LuTestSuiteSetup, MovesBothCallables)
{
    ECaseRunResult received = ECaseRunResult::Unknown;
    LuTestSuiteSetup source;
    source.checkCallback = [] { return true; };
    source.resultCallback = [&received](ECaseRunResult result) { received = result; };

    const LuTestSuiteSetup target(std::move(source));
    target.resultCallback(ECaseRunResult::Canceled);

    EXPECT_TRUE(target.checkCallback());
    EXPECT_EQ(received, ECaseRunResult::Canceled);
}

TEST(LuTestSuiteSetup, ReleasesItsCallables)
{
    const auto owned = std::make_shared<int>(0);
    {
        LuTestSuiteSetup setup;
        setup.checkCallback = [owned] { return *owned != 0; };
        EXPECT_EQ(owned.use_count(), 2);
    }
    EXPECT_EQ(owned.use_count(), 1);
}

TEST(LuTestSuiteSetup, IsNotPolymorphic)
{
    EXPECT_FALSE(std::is_polymorphic_v<LuTestSuiteSetup>);
}

TEST(EDuplicateMode, HasFixedValuesOf32Bits)
{
    EXPECT_EQ(static_cast<std::uint32_t>(eDM_None), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(eDM_List), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(eDM_Delete), 2U);
    EXPECT_EQ(sizeof(EDuplicateMode), 4U);
}

} // namespace
