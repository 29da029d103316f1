#include "CaError.h"
#include "CaFactory.h"
#include "CaProgressMonitor.h"
#include "CaSubject.h"
#include "Decoder.h"
#include "kelpDynamicVector.h"
#include "kelpLog.h"
#include "kelpSettings.h"
#include "kelpURI.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(CaError, NullErrorIsSuccessAndEverythingElseIsNot)
{
    EXPECT_EQ(CaError(), CaError::nullError);
    EXPECT_NE(CaError("ID0", "text", ""), CaError::nullError);
    EXPECT_NE(CaError("", "", "", 1), CaError::nullError);
    const int origin = 0;
    EXPECT_EQ(CaError("a", "b", "c", 1, &origin), CaError("a", "b", "c", 1));
    EXPECT_NE(CaError("a", "b", "c", 1), CaError("a", "b", "c", 2));
}

TEST(CaError, TellsItsTextThenItsDetail)
{
    EXPECT_EQ(CaError("ID0", "Data attribute must not be empty", "").toString(),
              QString("Data attribute must not be empty"));
    EXPECT_EQ(CaError("ID0", "text", "detail").toString(), QString("text\ndetail"));
    EXPECT_EQ(CaError("ID0", "", "").toString(), QString("ID0"));
    EXPECT_EQ(CaError::nullError.toString(), QString());
}

class IntFactory : public CaFactory<int>::Factory
{
public:
    explicit IntFactory(int value) : m_value(value) {}
    int* createInstance() const override { return new int(m_value); }

private:
    int m_value;
};

TEST(CaFactory, MakesANewInstanceByNameAndKeepsTheFirstRegistration)
{
    CaFactory<int> factory;
    EXPECT_TRUE(factory.registerFactory("one", std::make_shared<IntFactory>(1)));
    EXPECT_FALSE(factory.registerFactory("one", std::make_shared<IntFactory>(2)));
    const std::unique_ptr<int> first(factory.create("one"));
    const std::unique_ptr<int> second(factory.create("one"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(*first, 1);
    EXPECT_NE(first, second);
    EXPECT_TRUE(factory.contains("one"));
    EXPECT_FALSE(factory.contains("two"));
    EXPECT_EQ(factory.create("two"), nullptr);
}

class RecordingDisplay : public CaProgressMonitor::Display
{
public:
    void open(const QString& text, int steps) override
    {
        calls += QString("%1 %2").arg(text).arg(steps);
    }
    void step() override { calls += "step"; }
    void close() override { calls += "close"; }

    QStringList calls;
};

TEST(CaProgressMonitor, PassesItsCallsToTheDisplayAndDoesNothingWithoutOne)
{
    CaProgressMonitor& monitor = CaProgressMonitor::getInstance();
    EXPECT_EQ(&monitor, &CaProgressMonitor::getInstance());
    monitor.open("a", 1);
    monitor.step();
    monitor.close();
    RecordingDisplay display;
    monitor.setDisplay(&display);
    monitor.open("Copying data files...", 2);
    monitor.step();
    monitor.close();
    monitor.setDisplay(nullptr);
    monitor.step();
    EXPECT_EQ(display.calls, (QStringList{"Copying data files... 2", "step", "close"}));
}

struct Listener
{
    QStringList names;
    Listener* victim = nullptr;

    static void hear(CaSubject* subject, void* argument, char const* name, void* self)
    {
        auto* const listener = static_cast<Listener*>(self);
        listener->names.append(QString(name) + (argument ? "+" : "-"));
        if (listener->victim) {
            subject->detach(hear, listener->victim);
        }
    }
};

TEST(CaSubject, TellsEachListenerOnceUntilItLeaves)
{
    CaSubject subject;
    Listener first;
    Listener second;
    subject.attach(Listener::hear, &first);
    subject.attach(Listener::hear, &first);
    subject.attach(Listener::hear, &second);
    subject.notify(&subject, "one");
    subject.detach(Listener::hear, &second);
    subject.detach(Listener::hear, &second);
    subject.notify(nullptr, "two");
    EXPECT_EQ(first.names, (QStringList{"one+", "two-"}));
    EXPECT_EQ(second.names, QStringList{"one+"});
}

TEST(CaSubject, ACallbackMayDetachItselfAndOthers)
{
    CaSubject subject;
    Listener first;
    Listener second;
    first.victim = &second;
    subject.attach(Listener::hear, &first);
    subject.attach(Listener::hear, &second);
    subject.notify(nullptr, "one");
    EXPECT_EQ(first.names.size(), 1);
    EXPECT_TRUE(second.names.isEmpty());
    first.victim = &first;
    subject.notify(nullptr, "two");
    subject.notify(nullptr, "three");
    EXPECT_EQ(first.names.size(), 2);
}

class RecordingDecoder : public Decoder
{
public:
    void urisChanged() override { seen = getUris().size(); }
    bool decode() override { return false; }

    int seen = -1;
};

TEST(Decoder, IsToldWhenItsUrisChange)
{
    RecordingDecoder decoder;
    decoder.setUris({kelp::URI("a"), kelp::URI("b")});
    EXPECT_EQ(decoder.seen, 2);
}

TEST(URI, GivesTheCodecBehindTheFilePrefix)
{
    EXPECT_EQ(kelp::URI("file++hra:/a.xml?seriesId=5").codecScheme(), QString("hra"));
    EXPECT_EQ(kelp::URI("file++dummy:C:\\a.tif").codecScheme(), QString("dummy"));
    EXPECT_EQ(kelp::URI("file:/a.xml").codecScheme(), QString());
    EXPECT_EQ(kelp::URI("file++hra").codecScheme(), QString());
    EXPECT_EQ(kelp::URI("/a/file++hra:b").codecScheme(), QString());
    EXPECT_EQ(kelp::URI().codecScheme(), QString());
}

TEST(URI, GivesPathAndQueryDecoded)
{
    const kelp::URI uri("file++hra:/a%20b/c.xml?other=1&seriesId=5%267&seriesId=8");
    EXPECT_EQ(uri.path(), QString("/a b/c.xml"));
    EXPECT_TRUE(uri.hasQueryItem("seriesId"));
    EXPECT_EQ(uri.queryItem("seriesId"), QString("5&7"));
    EXPECT_FALSE(uri.hasQueryItem("SeriesId"));
    EXPECT_EQ(uri.queryItem("missing"), QString());
    EXPECT_FALSE(kelp::URI("file++hra:/a.xml").hasQueryItem("seriesId"));
    EXPECT_TRUE(kelp::URI("file++hra:/a.xml?seriesId").hasQueryItem("seriesId"));
}

TEST(URI, APlainPathWithPercentSignsIsReadAsItStands)
{
    EXPECT_EQ(kelp::URI("file++hra:/100% sure/50%.xml").path(), QString("/100% sure/50%.xml"));
    EXPECT_EQ(kelp::URI("file++hra:/a%").path(), QString("/a%"));
    EXPECT_EQ(kelp::URI("file++hra:/a%-1%+1% 1%1 ").path(), QString("/a%-1%+1% 1%1 "));
    EXPECT_EQ(kelp::URI("/no/scheme").path(), QString("/no/scheme"));
}

TEST(URI, WhatIsComposedIsGivenBackExactly)
{
    for (const QString& text :
         {QString("/data/e.xml"), QString("/100%25 a?b&c=d#e+f.xml"), QString("C:\\x:y\\z.tif"),
          QString::fromUtf8("/M\xc3\xbcller/\xf0\x9f\x91\x81"), QString("a=b&c=%41"), QString()}) {
        const kelp::URI uri = kelp::URI::compose("hra", text, "seriesId", text);
        EXPECT_EQ(uri.codecScheme(), QString("hra"));
        EXPECT_EQ(uri.path(), text);
        EXPECT_EQ(uri.queryItem("seriesId"), text);
        EXPECT_EQ(kelp::URI::compose(QString(), text).path(), text);
    }
}

TEST(URI, AnOrdinaryOneIsComposedAsPlainText)
{
    EXPECT_EQ(kelp::URI::compose("hra", "/my data/e.xml", "seriesId", "5").toString(),
              QString("file++hra:/my data/e.xml?seriesId=5"));
    EXPECT_EQ(kelp::URI::compose("dummy", "/a/b.tif").toString(), QString("file++dummy:/a/b.tif"));
}

TEST(Settings, AnswerWithTheDefaultUntilSetAndKeepEveryType)
{
    EXPECT_EQ(kelp::Settings::get("Test/never", 7), 7);
    EXPECT_EQ(kelp::Settings::get("Test/never", 0.25), 0.25);
    EXPECT_EQ(kelp::Settings::get("Test/never", QString("x")), QString("x"));
    EXPECT_EQ(kelp::Settings::get("Test/never", QVariant(true)), QVariant(true));
    kelp::Settings::set("Test/int", -3);
    kelp::Settings::set("Test/double", 1.0 / 3.0);
    kelp::Settings::set("Test/text", QString::fromUtf8("a, \"b\"; \xc3\xbc\n"));
    kelp::Settings::set("Test/list", QVariant(QStringList{"a", "b"}));
    EXPECT_EQ(kelp::Settings::get("Test/int", 0), -3);
    EXPECT_EQ(kelp::Settings::get("Test/double", 0.0), 1.0 / 3.0);
    EXPECT_EQ(kelp::Settings::get("Test/text", QString()),
              QString::fromUtf8("a, \"b\"; \xc3\xbc\n"));
    EXPECT_EQ(kelp::Settings::get("Test/list", QVariant()).toStringList(), (QStringList{"a", "b"}));
    EXPECT_EQ(kelp::Settings::get("Test/text", 5), 5);
}

TEST(Settings, LieInTheUsersConfigurationFolder)
{
    kelp::Settings::set("Test/where", QString("marked"));
    QFile file(qEnvironmentVariable("XDG_CONFIG_HOME") + "/Tessera/Tessera.ini");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    EXPECT_TRUE(file.readAll().contains("where=marked"));
}

TEST(Log, WritesOnePrefixedLinePerMessageToStandardError)
{
    testing::internal::CaptureStderr();
    kelp::Log::getInstance("file", "function", 12) << "cdata is " << 5 << QString(" defined.");
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.find("ERROR "), 0u);
    EXPECT_NE(text.find(" file::function:12: cdata is 5 defined.\n"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}

TEST(DynamicVector, CopiesDeeplyAndGrowsWithZeros)
{
    kelp::DynamicVector<unsigned short> vector(2);
    vector[0] = 7;
    kelp::DynamicVector<unsigned short> copy(vector);
    copy[0] = 8;
    EXPECT_EQ(vector[0], 7);
    EXPECT_EQ(*vector.at(1), 0);
    vector.resize(3);
    EXPECT_EQ(vector[2], 0);
    EXPECT_EQ(vector.elementAddress(2), vector.data() + 2);
    EXPECT_EQ(vector.size(), 3u);
    EXPECT_FALSE(vector == copy);
}

} // namespace
