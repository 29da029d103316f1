#include "kelpCheck.h"
#include "kelpException.h"
#include "kelpTrace.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>

namespace {

constexpr kelp::Place place{"libraries/OCTScan/src/data/BScan", "kelp::oct::BScan::getCenter"};

TEST(Check, AFailureNamesTheLastFourPartsOfThePathThenTheFunctionThenTheText)
{
    try {
        kelp::check(false, place, "Invalid BScan.");
        FAIL() << "no exception";
    } catch (const kelp::Assertion& assertion) {
        EXPECT_STREQ(assertion.what(),
                     "OCTScan/src/data/BScan::kelp::oct::BScan::getCenter: Invalid BScan.");
    }
}

TEST(Check, AHeldConditionPasses)
{
    EXPECT_NO_THROW(kelp::check(true, place, "Invalid BScan."));
}

TEST(Check, AFailedConnectQuotesItsExpression)
{
    std::ostringstream printed;
    kelp::Trace::redirect(&printed);
    QString text;
    try {
        KELP_CONNECT("libraries/Base/src/kelpBaseTest", QString("a").isEmpty());
    } catch (const kelp::WatchdogException& exception) {
        text = exception.getMessage();
    }
    kelp::Trace::redirect(nullptr);
    EXPECT_TRUE(text.startsWith("Assertion QString(\"a\").isEmpty() failed in "
                                "libraries/Base/src/kelpBaseTest at line "))
        << text;
    EXPECT_EQ(printed.str(), text.toStdString() + "\n");
}

TEST(Check, AShortPathStaysWhole)
{
    EXPECT_EQ(kelp::locatedText({"a/b", "f"}, "text"), QString("a/b::f: text"));
    EXPECT_EQ(kelp::locatedText({"a/b/c/d/e/f", "f"}, "text"), QString("c/d/e/f::f: text"));
}

TEST(Check, AHeldConnectPrintsAndThrowsNothing)
{
    std::ostringstream printed;
    kelp::Trace::redirect(&printed);
    EXPECT_NO_THROW(KELP_CONNECT("libraries/Base/src/kelpBaseTest", QString().isEmpty()));
    kelp::Trace::redirect(nullptr);
    EXPECT_EQ(printed.str(), "");
}

TEST(Trace, LinesOfDifferentThreadsNeverMix)
{
    constexpr int linesPerThread = 500;
    std::ostringstream printed;
    kelp::Trace::redirect(&printed);
    const auto work = [](char letter) {
        for (int i = 0; i < linesPerThread; ++i) {
            kelp::Trace() << letter << letter << std::string(20, letter) << letter;
        }
    };
    std::thread first(work, 'a');
    std::thread second(work, 'b');
    first.join();
    second.join();
    kelp::Trace::redirect(nullptr);
    std::istringstream lines(printed.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_EQ(line, std::string(23, line.front()));
    }
    EXPECT_EQ(count, 2 * linesPerThread);
}

TEST(Trace, GoesToStandardOutputUnlessRedirected)
{
    testing::internal::CaptureStdout();
    kelp::Trace() << "found " << 3 << ' ' << QString("B-scans") << ' ' << 0.5;
    kelp::Trace::flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "found 3 B-scans 0.5\n");
}

TEST(Exception, TheDetailFollowsTheMessageOnItsOwnLine)
{
    EXPECT_STREQ(kelp::Exception("message").what(), "message");
    EXPECT_STREQ(kelp::Exception("message", "detail").what(), "message\ndetail");
}

TEST(Exception, FileAndParseTroubleAreRuntimeExceptions)
{
    EXPECT_THROW(throw kelp::IOFailure("x"), kelp::RuntimeException);
    EXPECT_THROW(throw kelp::ParsingError("x"), kelp::RuntimeException);
    EXPECT_THROW(throw kelp::NotImplemented("x"), kelp::Exception);
}

TEST(StringMixer, TakesEveryKindOfTextAndComparesAsText)
{
    EXPECT_EQ(_kelp::StringMixer(QString("abc")), _kelp::StringMixer("abc"));
    EXPECT_EQ(_kelp::StringMixer(std::string("abc")), _kelp::StringMixer("abc"));
    EXPECT_NE(_kelp::StringMixer("abc"), _kelp::StringMixer("abd"));
    EXPECT_EQ(static_cast<std::string>(_kelp::StringMixer("abc")), "abc");
    std::ostringstream stream;
    stream << _kelp::StringMixer("abc") << QString::fromUtf8("\xc2\xb5m");
    EXPECT_EQ(stream.str(), "abc\xc2\xb5m");
}

} // namespace
