#include <hexmire/support/ModErrorMsg.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Site.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using Reports = ErrorRecorder::Reports;

constexpr RoutineName kRoutine{"SECSItem", "Let Format"};

/// A free routine that faults.
void Overflow() {
    RunFreeRoutine({"ModGeneral", "lLBitShift"}, [] { throw Fault(FaultNumber::Overflow); });
}
const Reports kOverflow{{6, "(ModGeneral-lLBitShift) Overflow", 0}};

TEST(Reporting, PrefixNamesClassAndRoutine) {
    EXPECT_EQ(ContextPrefix({"Hexmire", "Let DeviceID"}), "(Hexmire-Let DeviceID) ");
    EXPECT_EQ(ContextPrefix({"ModErrorMsg", "FormatErrorMsg"}), "(ModErrorMsg-FormatErrorMsg) ");
}

TEST(Reporting, ErrorIsPrefixTextAndDetailsWithLineZero) {
    ErrorRecorder site;
    ReportError(site.Ref(), kRoutine, 1079);
    ReportError(site.Ref(), kRoutine, 2012, " For [SystemBytes-17] S1F3");
    EXPECT_EQ(
        site.Errors,
        (Reports{
            {1079, "(SECSItem-Let Format) The Root item cannot be deleted.", 0},
            {2012, "(SECSItem-Let Format) T3 Timeout encountered. For [SystemBytes-17] S1F3", 0}}));
}

TEST(Reporting, CodeWithoutTextLeavesThePrefixAlone) {
    ErrorRecorder site;
    ReportError(site.Ref(), kRoutine, 1011);
    EXPECT_EQ(site.Errors, (Reports{{1011, "(SECSItem-Let Format) ", 0}}));
}

TEST(Reporting, FaultStopsTheBodyAndIsReportedInTheRoutinesName) {
    ErrorRecorder site;
    bool reachedEnd = false;
    RunRoutine(site.Ref(), {"SECSItem", "TearDown"}, [&] {
        if (!site.Errors.empty()) return;
        throw std::out_of_range("beyond");
        reachedEnd = true;
    });
    EXPECT_FALSE(reachedEnd);
    EXPECT_EQ(site.Errors, (Reports{{9, "(SECSItem-TearDown) Subscript out of range", 0}}));
}

TEST(Reporting, FaultIsClearedAfterTheReport) {
    ErrorRecorder site;
    RunRoutine(site.Ref(), kRoutine, [] { throw Fault(FaultNumber::TypeMismatch); });
    EXPECT_EQ(std::current_exception(), nullptr);
    RunRoutine(site.Ref(), kRoutine, [] {});
    EXPECT_EQ(site.Errors.size(), 1U);
}

TEST(Reporting, RoutineWithoutFaultReportsNothing) {
    ErrorRecorder site;
    int runs = 0;
    RunRoutine(site.Ref(), kRoutine, [&] { ++runs; });
    RunFreeRoutine(kRoutine, [&] { ++runs; });
    EXPECT_EQ(runs, 2);
    EXPECT_TRUE(site.Errors.empty());
}

TEST(Site, WithoutControlErrorsGoNowhere) {
    Overflow();
    ReportError(SiteRef(), kRoutine, 1079);
    EXPECT_EQ(LastPublishedSite().Sink(), nullptr);
    EXPECT_EQ(CurrentSite().Sink(), nullptr);
    EXPECT_EQ(ServingSite(SiteRef()).Sink(), nullptr);
}

TEST(Site, HandleWithoutMakerGoesToTheControlCreatedLast) {
    ErrorRecorder first;
    ErrorRecorder second;
    ReportError(SiteRef(), kRoutine, 1079);
    EXPECT_TRUE(first.Errors.empty());
    EXPECT_EQ(second.Errors.size(), 1U);
}

TEST(Site, HandleWithMakerGoesToItsMaker) {
    ErrorRecorder first;
    ErrorRecorder second;
    ReportError(first.Ref(), kRoutine, 1079);
    EXPECT_EQ(first.Errors.size(), 1U);
    EXPECT_TRUE(second.Errors.empty());
}

TEST(Site, AfterTheLastControlsEndTheOneBeforeServesAgain) {
    ErrorRecorder first;
    ErrorRecorder second;
    second.End();
    Overflow();
    EXPECT_EQ(first.Errors, kOverflow);
    EXPECT_TRUE(second.Errors.empty());
}

TEST(Site, EndOfAnEarlierControlChangesNothingForTheLastOne) {
    ErrorRecorder first;
    ErrorRecorder second;
    first.End();
    Overflow();
    EXPECT_EQ(second.Errors, kOverflow);
}

TEST(Site, ErrorsForAnEndedMakerAreDroppedThoughAnotherControlLives) {
    ErrorRecorder first;
    const SiteRef handle = first.Ref();
    ErrorRecorder second;
    first.End();
    ReportError(handle, kRoutine, 1079);
    EXPECT_TRUE(handle.HasMaker());
    EXPECT_EQ(handle.Sink(), nullptr);
    EXPECT_TRUE(first.Errors.empty());
    EXPECT_TRUE(second.Errors.empty());
}

TEST(Site, FaultsForAnEndedMakerAreDroppedToo) {
    ErrorRecorder other;
    ErrorRecorder maker;
    const SiteRef handle = maker.Ref();
    maker.End();
    RunRoutine(handle, kRoutine, [] { throw Fault(FaultNumber::Overflow); });
    EXPECT_TRUE(maker.Errors.empty());
    EXPECT_TRUE(other.Errors.empty());
}

TEST(Site, PublishedAgainServesAgain) {
    ErrorRecorder first;
    ErrorRecorder second;
    first.Publish();
    Overflow();
    EXPECT_EQ(first.Errors, kOverflow);
    first.End();
    Overflow();
    EXPECT_EQ(second.Errors, kOverflow);
}

TEST(Site, InAScopeFreeRoutinesReportToItsControl) {
    ErrorRecorder first;
    ErrorRecorder second;
    {
        const SiteScope scope(first.Ref());
        Overflow();
    }
    EXPECT_EQ(first.Errors, kOverflow);
    Overflow();
    EXPECT_EQ(second.Errors, kOverflow);
}

TEST(Site, ScopesNestAndReturn) {
    ErrorRecorder first;
    ErrorRecorder second;
    ErrorRecorder last;
    const SiteScope outer(first.Ref());
    {
        const SiteScope inner(second.Ref());
        Overflow();
    }
    Overflow();
    EXPECT_EQ(second.Errors, kOverflow);
    EXPECT_EQ(first.Errors, kOverflow);
    EXPECT_TRUE(last.Errors.empty());
}

TEST(Site, ControlThatEndsInsideItsScopeHearsNothingMore) {
    ErrorRecorder other;
    ErrorRecorder ending;
    const SiteScope scope(ending.Ref());
    ending.End();
    Overflow();
    EXPECT_TRUE(ending.Errors.empty());
    EXPECT_TRUE(other.Errors.empty());
}

TEST(Site, CreatedInsideAScopeDoesNotTakeItOver) {
    ErrorRecorder first;
    const SiteScope scope(first.Ref());
    ErrorRecorder second;
    Overflow();
    EXPECT_EQ(first.Errors, kOverflow);
    EXPECT_TRUE(second.Errors.empty());
}

TEST(Site, HandlesMayOutliveEverything) {
    SiteRef copy;
    {
        ErrorRecorder site;
        copy = site.Ref();
        SiteRef moved = copy;
        copy = std::move(moved);
        EXPECT_NE(copy.Sink(), nullptr);
    }
    EXPECT_TRUE(copy.HasMaker());
    EXPECT_EQ(copy.Sink(), nullptr);
    copy = SiteRef();
    EXPECT_FALSE(copy.HasMaker());
}

TEST(Site, SelfAssignmentKeepsTheHandle) {
    ErrorRecorder site;
    SiteRef handle = site.Ref();
    const SiteRef& alias = handle;
    handle = alias;
    EXPECT_EQ(handle.Sink(), &site);
}

}  // namespace
}  // namespace hexmire
