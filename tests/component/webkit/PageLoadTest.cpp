#include "linux/webkit/navigation/PageLoad.h"
#include "fakes/FakeMainLoop.h"

#include <gtest/gtest.h>

namespace kelo::test {

using std::chrono::seconds;
using webkit::PageLoad;

/// Loads that are reported to the object under test without an engine, and a clock that the test
/// turns.
class PageLoadTest : public testing::Test {
protected:
    static platform::UrlRequest request(seconds timeout = seconds(60)) {
        platform::UrlRequest result{*Url::parse("https://localhost/page")};
        result.timeout = timeout;
        return result;
    }
    void showPage() {
        load.requestPage(request());
        load.started();
        load.committed();
        load.documentCompleted();
        load.finished();
    }

    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    int timeouts = 0;
    PageLoad load{[this] { ++timeouts; }};
};

TEST_F(PageLoadTest, PageThatArrivesIsFinished) {
    load.requestPage(request());
    load.started();
    load.committed();
    EXPECT_TRUE(load.finished());
    EXPECT_TRUE(load.isPage());
}

TEST_F(PageLoadTest, FailedPageIsNotFinished) {
    load.requestPage(request());
    load.started();
    load.failed();
    EXPECT_FALSE(load.finished());
}

TEST_F(PageLoadTest, ErrorPageIsNotFinished) {
    load.requestErrorPage("https://localhost/page");
    load.started();
    load.committed();
    EXPECT_FALSE(load.finished());
    EXPECT_FALSE(load.isPage());
}

TEST_F(PageLoadTest, PageIsNotFinishedOnceItsErrorPageWasRequested) {
    load.requestPage(request());
    load.started();
    load.requestErrorPage("https://localhost/page");
    EXPECT_FALSE(load.finished());
}

TEST_F(PageLoadTest, FailureBelongsToThePageUntilTheErrorPageStarts) {
    load.requestErrorPage("https://localhost/page");
    EXPECT_TRUE(load.awaitsErrorPage());
    load.started();
    EXPECT_FALSE(load.awaitsErrorPage());
}

TEST_F(PageLoadTest, PageThatIsRequestedInsteadOfTheErrorPageIsAPage) {
    load.requestErrorPage("https://localhost/page");
    load.requestPage(request());
    load.started();
    EXPECT_TRUE(load.finished());
}

TEST_F(PageLoadTest, OnlyAnErrorPageHasAnAddressToTryAgain) {
    load.requestErrorPage("https://localhost/page");
    EXPECT_EQ(load.addressToTryAgain(), "");
    load.started();
    EXPECT_EQ(load.addressToTryAgain(), "https://localhost/page");
    load.started();
    EXPECT_EQ(load.addressToTryAgain(), "");
}

TEST_F(PageLoadTest, SilenceTimesOutOnceAfterTheRequestsTimeout) {
    load.requestPage(request(seconds(7)));
    loop.advance(seconds(3));
    load.started();
    loop.advance(seconds(6));
    EXPECT_EQ(timeouts, 0);
    loop.advance(seconds(1));
    EXPECT_EQ(timeouts, 1);
    EXPECT_FALSE(load.finished());
    loop.advance(seconds(100));
    EXPECT_EQ(timeouts, 1);
}

TEST_F(PageLoadTest, RequestThatNeverStartsTimesOut) {
    load.requestPage(request(seconds(7)));
    loop.advance(seconds(7));
    EXPECT_EQ(timeouts, 1);
}

TEST_F(PageLoadTest, ProgressStartsTheTimeoutAgain) {
    load.requestPage(request());
    load.started();
    for (int part = 0; part < 10; ++part) {
        loop.advance(seconds(59));
        load.progressed();
    }
    loop.advance(seconds(59));
    load.committed();
    loop.advance(seconds(59));
    EXPECT_EQ(timeouts, 0);
    loop.advance(seconds(1));
    EXPECT_EQ(timeouts, 1);
}

TEST_F(PageLoadTest, CompleteDocumentDoesNotTimeOut) {
    load.requestPage(request());
    load.started();
    load.documentCompleted();
    load.committed();
    load.progressed();
    loop.advance(seconds(1000));
    EXPECT_EQ(timeouts, 0);
    EXPECT_TRUE(load.finished());
}

TEST_F(PageLoadTest, WhatHasEndedDoesNotTimeOut) {
    load.requestPage(request());
    load.started();
    load.finished();
    loop.advance(seconds(100));
    load.started();
    load.failed();
    loop.advance(seconds(100));
    load.started();
    load.processEnded();
    loop.advance(seconds(100));
    load.started();
    load.requestErrorPage("https://localhost/page");
    load.started();
    load.progressed();
    loop.advance(seconds(100));
    EXPECT_EQ(timeouts, 0);
}

TEST_F(PageLoadTest, TimeoutHoldsForLaterLoadsUntilTheNextRequest) {
    load.requestPage(request(seconds(7)));
    load.started();
    load.finished();
    load.started();
    loop.advance(seconds(7));
    EXPECT_EQ(timeouts, 1);
    load.requestPage(request(seconds(9)));
    loop.advance(seconds(8));
    EXPECT_EQ(timeouts, 1);
    loop.advance(seconds(1));
    EXPECT_EQ(timeouts, 2);
}

TEST_F(PageLoadTest, DestroyedLoadDoesNotTimeOut) {
    {
        PageLoad brief([this] { ++timeouts; });
        brief.requestPage(request());
    }
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(PageLoadTest, RequestIsUnansweredOnceTheProcessHasShownADocument) {
    load.requestPage(request());
    EXPECT_FALSE(load.isUnanswered()) << "the process may only be slow to start";
    showPage();
    load.requestPage(request());
    EXPECT_TRUE(load.isUnanswered());
    EXPECT_EQ(load.takeUnanswered()->url.path(), "/page");
    EXPECT_FALSE(load.isUnanswered());
    load.processEnded();
    load.requestPage(request());
    EXPECT_FALSE(load.isUnanswered());
}

TEST_F(PageLoadTest, RequestIsUnansweredUntilItsPageIsShown) {
    showPage();
    load.requestPage(request());
    load.started();
    EXPECT_TRUE(load.isUnanswered()) << "the process may hang before the page is here";
    load.committed();
    EXPECT_FALSE(load.isUnanswered());
    EXPECT_FALSE(load.takeUnanswered());
}

TEST_F(PageLoadTest, NothingMoreIsExpectedOfARequestForAPlaceInTheShownPage) {
    showPage();
    load.requestPage(request());
    load.documentCompleted();
    EXPECT_FALSE(load.isUnanswered());
    load.started(); // the user follows a link
    EXPECT_FALSE(load.isUnanswered());
    EXPECT_FALSE(load.takeUnanswered());
}

TEST_F(PageLoadTest, NothingMoreIsExpectedOfARequestThatFailed) {
    showPage();
    load.requestPage(request());
    load.failed();
    EXPECT_FALSE(load.isUnanswered());
    load.requestErrorPage("https://example.org/page");
    EXPECT_FALSE(load.takeUnanswered());
}

TEST_F(PageLoadTest, RequestOutlivesTheProcessThatDiedBeforeItsPageWasShown) {
    showPage();
    load.requestPage(request());
    load.started();
    load.processEnded();
    EXPECT_FALSE(load.isUnanswered());
    EXPECT_TRUE(load.takeUnanswered());
}

TEST_F(PageLoadTest, TimeThatTheUserTakesDoesNotCount) {
    load.requestPage(request());
    load.started();
    load.pause();
    loop.advance(seconds(3600));
    EXPECT_EQ(timeouts, 0);
    load.goOn();
    loop.advance(load.timeout() - seconds(1));
    EXPECT_EQ(timeouts, 0);
    loop.advance(seconds(1));
    EXPECT_EQ(timeouts, 1);
}

TEST_F(PageLoadTest, DialogOfAPageThatIsHereStartsNoTimeout) {
    showPage();
    load.pause();
    load.goOn();
    EXPECT_EQ(loop.pendingTimers(), 0u);
    load.requestPage(request());
    load.pause();
    load.documentCompleted();
    load.goOn();
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(PageLoadTest, LostPageIsRepeatedThreeTimes) {
    for (int round = 0; round < 2; ++round) {
        for (int repetition = 0; repetition < 3; ++repetition)
            EXPECT_TRUE(load.repeatLost());
        EXPECT_FALSE(load.repeatLost());
        load.started();
        load.committed();
    }
}

TEST_F(PageLoadTest, OnlyWhatIsNotAskedForWithGetIsTheAnswerToAForm) {
    EXPECT_FALSE(load.isAnswerToForm());
    load.requested("POST");
    EXPECT_TRUE(load.isAnswerToForm());
    load.requested("GET");
    EXPECT_FALSE(load.isAnswerToForm());
    load.requested("POST");
    load.requested(nullptr);
    EXPECT_FALSE(load.isAnswerToForm());
}

TEST_F(PageLoadTest, CertificateIsAllowedThreeTimesUntilADocumentIsShownOrTheLoadIsRepeated) {
    const auto allowAll = [this] {
        for (int time = 1; time <= 3; ++time)
            EXPECT_TRUE(load.allowCertificate()) << time;
        EXPECT_FALSE(load.allowCertificate());
    };
    allowAll();
    load.repeatLost();
    allowAll();
    load.committed();
    EXPECT_TRUE(load.allowCertificate());
}

} // namespace kelo::test
