#include "OCTScanLoadingUtils.h"

#include "CaProgressMonitor.h"
#include "ExpectFailure.h"
#include "ExportDocument.h"
#include "TestExport.h"
#include "TraceCapture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using kelp::oct::exportDocument::parse;
using kelp::oct::test::failureText;
using kelp::oct::test::TraceCapture;
using Utils = OCTScanLoadingUtils;

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
}

/// Name and birth date in the text of an export, or the failure.
class PatientInfo : public testing::Test
{
protected:
    void read(const QByteArray& xml)
    {
        Utils::GetPatientInfoFromXML(writeFile(m_dir, "p.xml", xml), m_name, m_birthDate);
    }
    QString parsingFailure(const QByteArray& xml)
    {
        return failureText<kelp::ParsingError>([&] { read(xml); });
    }

    const QByteArray m_birth =
        "<Birthdate><Date><Year>1950</Year><Month>06</Month><Day>15</Day></Date></Birthdate>";
    QTemporaryDir m_dir;
    QString m_name = "former";
    QDate m_birthDate;
};

TEST_F(PatientInfo, IsFirstNamesBlankLastName)
{
    read("<a>" + m_birth + "<LastName>Muster</LastName><FirstNames>Eva M.</FirstNames></a>");
    EXPECT_EQ(m_name, "Eva M. Muster");
    EXPECT_EQ(m_birthDate, QDate(1950, 6, 15));
}

TEST_F(PatientInfo, WithOnlyALastNameHasALeadingBlank)
{
    read("<a>" + m_birth + "<LastName>Muster</LastName></a>");
    EXPECT_EQ(m_name, " Muster");
    read("<a>" + m_birth + "<FirstNames>Eva</FirstNames></a>");
    EXPECT_EQ(m_name, "Eva");
    read("<a>" + m_birth + "</a>");
    EXPECT_EQ(m_name, "");
}

TEST_F(PatientInfo, IsReadAsLatin1)
{
    read("<a>" + m_birth + "<LastName>M\xfcller</LastName></a>");
    EXPECT_EQ(m_name, QString::fromUtf8(" Müller"));
}

TEST_F(PatientInfo, TakesTheFirstOfEachInTheWholeDocument)
{
    read("<a><x>" + m_birth + "</x>" + m_birth +
         "<y><LastName>One</LastName></y><LastName>Two</LastName></a>");
    EXPECT_EQ(m_name, " One");
}

TEST_F(PatientInfo, MissingNamesAndDatesAreNamed)
{
    const QString tail = " from XML, the XML might not be an HRA export.";
    EXPECT_EQ(parsingFailure("<a/>"), "Got no birthdate" + tail);
    EXPECT_EQ(parsingFailure("<a><Birthdate><x><Date/></x></Birthdate></a>"),
              "Got empty birthdate" + tail);
    EXPECT_EQ(parsingFailure("<a>" + m_birth + "<FirstNames/><LastName/></a>"),
              "Got no first name" + tail);
    EXPECT_EQ(parsingFailure("<a>" + m_birth + "<LastName></LastName></a>"),
              "Got no last name" + tail);
}

TEST_F(PatientInfo, UnreadableFilesAreNamed)
{
    const QString missing = m_dir.filePath("missing.xml");
    EXPECT_EQ(failureText<kelp::IOFailure>(
                  [&] { Utils::GetPatientInfoFromXML(missing, m_name, m_birthDate); }),
              QString("Error opening path to XML: %1.").arg(missing));
    EXPECT_EQ(parsingFailure("no xml"), "Could not set XML as content type.");
    EXPECT_EQ(parsingFailure(""), "Could not set XML as content type.");
}

QString timeOf(const QString& seriesContent)
{
    return Utils::GetTimeStringFromSeries(
        parse("<Series>" + seriesContent + "</Series>").documentElement());
}

TEST(TimeStringFromSeries, TakesTwoCharactersOfEachPart)
{
    const QString start = "<Image><AcquisitionTime><Time>";
    const QString end = "</Time></AcquisitionTime></Image>";
    EXPECT_EQ(timeOf(start + "<Hour>10</Hour><Minute>5</Minute><Second>12.5</Second>" + end),
              "10:5:12");
    EXPECT_EQ(timeOf(start + "<Second>7</Second>" + end), "HH:MM:7");
    EXPECT_EQ(timeOf(start + "<Hour>123</Hour><Minute></Minute>" + end), "12::SS");
    EXPECT_EQ(timeOf(start + end), "HH:MM:SS");
}

TEST(TimeStringFromSeries, ComesFromTheFirstImageAlone)
{
    const QString time = "<AcquisitionTime><Hour>10</Hour></AcquisitionTime>";
    EXPECT_EQ(timeOf("<x><Image>" + time + "</Image></x>"), "10:MM:SS");
    EXPECT_EQ(timeOf("<Image/><Image>" + time + "</Image>"), "");
    EXPECT_EQ(timeOf(time), "");
    EXPECT_EQ(timeOf(""), "");
}

TEST(TimeStringFromSeries, RefusesAnotherElement)
{
    EXPECT_EQ(failureText<kelp::ParsingError>(
                  [] { Utils::GetTimeStringFromSeries(parse("<Study/>").documentElement()); }),
              "Dom element is not Series");
}

TEST(ImageFileNames, AreThoseOfAllImagesInOrder)
{
    const QString xml =
        "<Series><Image><ImageData><ExamURL>file:///C:\\e\\loc.tif</ExamURL></ImageData></Image>"
        "<x><Image><ImageData><ExamURL>b.tif</ExamURL></ImageData></Image></x>"
        "<Image><x><ImageData><ExamURL>skipped</ExamURL></ImageData></x></Image>"
        "<Image><ImageData><x><ExamURL>skipped</ExamURL></x></ImageData></Image>"
        "<Image/></Series>";
    EXPECT_EQ(Utils::GetImageFileNames(parse(xml).documentElement()),
              (QStringList{"loc.tif", "b.tif"}));
}

TEST(FindXMLFile, TakesTheFirstInAnyCase)
{
    EXPECT_EQ(Utils::FindXMLFile({"a.tif", "b.XmL", "c.xml"}), "b.XmL");
    EXPECT_EQ(Utils::FindXMLFile({"a.tif", "xml"}), "");
    EXPECT_EQ(Utils::FindXMLFile({}), "");
}

/// Remembers what interactive copying shows.
class Recorder : public Utils::Interaction, public CaProgressMonitor::Display
{
public:
    Recorder()
    {
        Utils::setInteraction(this);
        CaProgressMonitor::getInstance().setDisplay(this);
    }
    ~Recorder() override
    {
        Utils::setInteraction(nullptr);
        CaProgressMonitor::getInstance().setDisplay(nullptr);
    }

    void showProblem(const QString& title, const QString& text) override
    {
        events.append(title + "|" + text);
    }
    void setBusy(bool busy) override { events.append(busy ? "busy" : "idle"); }
    void open(const QString& text, int steps) override
    {
        events.append(QString("open %1 %2").arg(text).arg(steps));
    }
    void step() override { events.append("step"); }
    void close() override { events.append("close"); }

    QStringList events;
};

class AutoCopyFiles : public testing::Test
{
protected:
    QStringList copy(const QStringList& files, bool interactive = false)
    {
        return Utils::AutoCopyFiles(files, folder(), interactive, "HRA_XML_");
    }
    QString folder() const { return m_target.filePath("store/binary"); }
    QString source(const QString& name, const QByteArray& bytes = "x") const
    {
        return writeFile(m_source, name, bytes);
    }

    QTemporaryDir m_source;
    QTemporaryDir m_target;
};

TEST_F(AutoCopyFiles, CopiesIntoATimeStampedFolder)
{
    const QDateTime before = QDateTime::currentDateTime();
    const QStringList copied = copy({source("a.xml", "one"), source("b.tif", "two")});
    ASSERT_EQ(copied.size(), 2);
    const QString name = QFileInfo(copied.first()).dir().dirName();
    ASSERT_TRUE(name.startsWith("HRA_XML_"));
    const QDateTime stamp = QDateTime::fromString(name.mid(8, 19), "yyyy_MM_dd_hh_mm_ss");
    EXPECT_LE(before.toSecsSinceEpoch(), stamp.toSecsSinceEpoch());
    EXPECT_EQ(name.mid(27), "_1");
    EXPECT_EQ(copied.at(1), folder() + "/" + name + "/b.tif");
    QFile file(copied.at(1));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "two");
}

TEST_F(AutoCopyFiles, TwiceGivesTwoFolders)
{
    const QString file = source("a.xml");
    EXPECT_NE(copy({file}), copy({file}));
    EXPECT_EQ(QDir(folder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
}

TEST_F(AutoCopyFiles, LeavesAnExistingFileAndListsItAsCopied)
{
    const QTemporaryDir other;
    const QString first = source("a.tif", "first");
    const QString second = writeFile(other, "a.tif", "second");
    const TraceCapture trace;
    const QStringList copied = copy({first, second});
    ASSERT_EQ(copied.size(), 2);
    EXPECT_EQ(copied.at(0), copied.at(1));
    QFile file(copied.at(0));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "first");
    EXPECT_EQ(trace.lines(),
              (QStringList{"new file location: " + copied.at(0), "file exists: " + copied.at(0),
                           "new file location: " + copied.at(0)}));
}

TEST_F(AutoCopyFiles, NeedsAFolder)
{
    EXPECT_EQ(
        failureText<kelp::Assertion>([] { Utils::AutoCopyFiles({}, "", false, "HRA_XML_"); }),
        "OCTScan/src/data/OCTScanLoadingUtils::OCTScanLoadingUtils::AutoCopyFiles: Default folder "
        "is empty.");
}

TEST_F(AutoCopyFiles, FolderThatCannotBeMadeIsNamed)
{
    const QString blocked = writeFile(m_target, "blocked", "a file") + "/below";
    EXPECT_EQ(
        failureText<kelp::IOFailure>([&] { Utils::AutoCopyFiles({}, blocked, false, "HRA_XML_"); }),
        QString("Could not create directory %1").arg(blocked));
    Recorder recorder;
    const QStringList files{"a"};
    EXPECT_EQ(Utils::AutoCopyFiles(files, blocked, true, "HRA_XML_"), files);
    EXPECT_EQ(recorder.events,
              QStringList{QString("Creating Directory|Directory (%1) could not be created! Giving "
                                  "up...")
                              .arg(blocked)});
}

TEST_F(AutoCopyFiles, TargetThatCannotBeMadeIsNamed)
{
    // A prefix that leads through a file.
    ASSERT_TRUE(QDir().mkpath(folder()));
    QFile blocked(folder() + "/blocked");
    ASSERT_TRUE(blocked.open(QIODevice::WriteOnly));
    const QString text = failureText<kelp::IOFailure>(
        [&] { Utils::AutoCopyFiles({}, folder(), false, "blocked/HRA_XML_"); });
    EXPECT_TRUE(text.startsWith("Could not create directory " + folder() + "/blocked/HRA_XML_"));
    EXPECT_TRUE(text.endsWith(" in default folder " + folder()));
    Recorder recorder;
    EXPECT_EQ(Utils::AutoCopyFiles({"a"}, folder(), true, "blocked/HRA_XML_"), QStringList{"a"});
    ASSERT_EQ(recorder.events.size(), 1);
    EXPECT_TRUE(recorder.events.first().startsWith("Creating Directory|Directory (" + folder()));
    EXPECT_TRUE(recorder.events.first().endsWith(") could not be created!"));
}

TEST_F(AutoCopyFiles, FileThatCannotBeCopiedEndsTheCopying)
{
    const QStringList files{source("a.xml"), m_source.filePath("missing.tif"), source("c.tif")};
    const QString text = failureText<kelp::IOFailure>([&] { copy(files); });
    EXPECT_TRUE(text.startsWith("Could not copy file " + files.at(1) + " to new location " +
                                folder() + "/HRA_XML_"));
    EXPECT_TRUE(text.endsWith("/missing.tif"));
    const QStringList made = QDir(folder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(made.size(), 1);
    EXPECT_EQ(QDir(folder() + "/" + made.first()).entryList(QDir::Files), QStringList{"a.xml"});
}

TEST_F(AutoCopyFiles, InteractivelyShowsProgressAndProblems)
{
    const QStringList files{source("a.xml"), m_source.filePath("missing.tif")};
    Recorder recorder;
    EXPECT_EQ(copy(files, true), files);
    ASSERT_EQ(recorder.events.size(), 6);
    EXPECT_EQ(recorder.events.mid(0, 5),
              (QStringList{"busy", "open Copying data files... 2", "step", "close", "idle"}));
    EXPECT_TRUE(recorder.events.at(5).startsWith("Copying File Error|Could not copy file " +
                                                 files.at(1) + " to new location "));
    recorder.events.clear();
    EXPECT_EQ(copy({files.first()}, true).size(), 1);
    EXPECT_EQ(recorder.events,
              (QStringList{"busy", "open Copying data files... 1", "step", "close", "idle"}));
}

TEST_F(AutoCopyFiles, WithoutInteractionShowsNothing)
{
    Recorder recorder;
    EXPECT_EQ(copy({source("a.xml")}).size(), 1);
    EXPECT_TRUE(recorder.events.isEmpty());
}

} // namespace
