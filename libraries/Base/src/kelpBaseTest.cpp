#include "kelpCheck.h"
#include "kelpException.h"
#include "kelpTrace.h"

#include <gtest/gtest.h>

#include <sstream>

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
