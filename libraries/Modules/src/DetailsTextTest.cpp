#include "DetailsText.h"

#include "DataTreeNode.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace kelp::patients;

/// Of a class that nobody describes.
class Scan : public Data
{
public:
    _kelp::StringMixer getClassId() const override { return "PlainScan"; }
};

QString valueOf(const DetailsSection& section, const QString& caption)
{
    for (const auto& fact : section.facts) {
        if (fact.first == caption) {
            return fact.second;
        }
    }
    return QStringLiteral("no such line");
}

DataPointer<Study> makeStudy()
{
    const DataPointer<Study> study(new Study);
    study->setId("Visit");
    return study;
}

TEST(DetailsText, TellsWhoThePatientIs)
{
    const DataPointer<Patient> patient(new Patient);
    patient->setName(" Ada Lovelace");
    patient->setBirthDate(QDate(1950, 2, 3));
    patient->setSex("Female");
    patient->addStudy(makeStudy().data(), false);
    const DetailsSection section = patientDetails(*patient);
    EXPECT_EQ(section.title, QString("Patient"));
    EXPECT_EQ(valueOf(section, "Name"), QString("Ada Lovelace"));
    EXPECT_TRUE(valueOf(section, "Birth date").contains("1950"));
    EXPECT_EQ(valueOf(section, "Sex"), QString("Female"));
    EXPECT_EQ(valueOf(section, "Remark"), QString(QChar(0x2013))) << "nothing was entered";
    EXPECT_EQ(valueOf(section, "Patient ID"), patient->getGUID().left(8).toUpper());
    EXPECT_EQ(valueOf(section, "Patient ID"),
              patient->metaInformation().value("Patient ID").toString());
    EXPECT_EQ(valueOf(section, "Studies"), QString("1"));
}

TEST(DetailsText, CountsWhatAStudyHolds)
{
    const DataPointer<Study> study = makeStudy();
    study->setInstitution("Eye Clinic");
    study->addData(new Scan, "scan1", false);
    study->addData(new Scan, "scan2", false);
    study->addProcessData(new ProcessData, "result", false);
    const DetailsSection section = studyDetails(*study);
    EXPECT_EQ(valueOf(section, "Name"), QString("Visit"));
    EXPECT_EQ(valueOf(section, "Institution"), QString("Eye Clinic"));
    EXPECT_EQ(valueOf(section, "Scans"), QString("2"));
    EXPECT_EQ(valueOf(section, "Segmentations"), QString("1"));
}

TEST(DetailsText, AStudyThatCannotBeReadTellsWhy)
{
    const DataPointer<Study> study = makeStudy();
    study->setBodyLoader([](Study&) { return CaError("Gone", "The file is gone.", QString()); });
    const DetailsSection section = studyDetails(*study);
    EXPECT_TRUE(valueOf(section, "Cannot be read").contains("The file is gone."));
    EXPECT_EQ(valueOf(section, "Scans"), QString("no such line")) << "nobody knows how many";
}

TEST(DetailsText, AnItemTellsItsFilesTheirSizeAndWhichAreMissing)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const DataPointer<Data> item(new Scan);
    item->setId("scan1");
    for (int i = 0; i < 6; ++i) {
        const QString path = QString("%1/b%2.png").arg(folder.path()).arg(i);
        QString written = path;
        item->setUri(QString("SliceImage%1").arg(i),
                     kelp::URI("file++dummy:" + written.replace('/', '\\')));
        if (i < 2) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(1024, 'x'));
        }
    }
    const DetailsSection section = itemDetails(*item);
    EXPECT_EQ(section.title, QString("PlainScan"));
    EXPECT_EQ(valueOf(section, "Name"), QString("scan1"));
    EXPECT_EQ(valueOf(section, "Files"), QString("6"));
    EXPECT_EQ(valueOf(section, "Size on disk"), displaySize(2048));
    EXPECT_EQ(valueOf(section, "Folder"), QDir::toNativeSeparators(folder.path()));
    EXPECT_EQ(valueOf(section, "Missing files"), QString("b2.png, b3.png, b4.png and 1 more"));
}

TEST(DetailsText, AnItemWithoutFilesTellsNothingOfFiles)
{
    const DataPointer<Data> item(new Scan);
    const DetailsSection section = itemDetails(*item);
    ASSERT_EQ(section.facts.size(), 1);
    EXPECT_EQ(section.facts[0].first, QString("Name"));
}

TEST(DetailsText, SizesAreReadable)
{
    EXPECT_EQ(displaySize(2048), QLocale().toString(2.0, 'f', 1) + " kB");
    EXPECT_EQ(displaySize(3 * 1024 * 1024 / 2), QLocale().toString(1.5, 'f', 1) + " MB");
}

TEST(DetailsText, WhatTheUserTypedIsTextAndNoMarkup)
{
    const QString html = toHtml({{"Patient", {{"Remark", "<b>a & b</b>\nnext"}}}});
    EXPECT_TRUE(html.contains("&lt;b&gt;a &amp; b&lt;/b&gt;<br>next")) << html.toStdString();
}

} // namespace
