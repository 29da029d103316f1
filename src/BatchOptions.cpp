#include "BatchOptions.h"

#include "SavedState.h"
#include "kelpCheck.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "src/BatchOptions";
constexpr int studyNameWidth = 100;

const QString defaultStudyName = QStringLiteral("DefaultStudy");

} // namespace

BatchOptions::BatchOptions(QWidget* parent) : QWidget(parent)
{
    auto* const column = new QVBoxLayout(this);
    column->addWidget(makeImportGroup());
    column->addWidget(makeSegmentGroup());
    column->addStretch(1);

    kelp::rememberChecked(m_healthy, QStringLiteral("batch/healthy"));
    kelp::rememberChecked(m_drusen, QStringLiteral("batch/drusen"));
    kelp::rememberChecked(m_mouse, QStringLiteral("batch/mouse"));
    kelp::rememberChecked(m_etdrsMask, QStringLiteral("batch/etdrsMask"));
    kelp::rememberChecked(m_centerMask, QStringLiteral("batch/centerMask"));
}

QWidget* BatchOptions::makeImportGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Import"));
    auto* const label = new QLabel(QStringLiteral("Study Name:"));
    m_studyName = new QLineEdit(defaultStudyName);
    m_studyName->setObjectName(QStringLiteral("studyName"));
    m_studyName->setFixedWidth(studyNameWidth);
    m_studyName->setToolTip(QStringLiteral("The study of each patient that the scans go into"));
    label->setBuddy(m_studyName);
    auto* const button = new QPushButton(QStringLiteral("Import OCTs"));
    button->setObjectName(QStringLiteral("importButton"));
    button->setToolTip(QStringLiteral("Imports all exports in a folder and below it"));
    KELP_CONNECT(sourcePath, connect(button, SIGNAL(clicked()), this, SIGNAL(importRequested())));
    auto* const grid = new QGridLayout(group);
    grid->addWidget(label, 0, 0);
    grid->addWidget(m_studyName, 0, 1);
    grid->addWidget(button, 1, 0, 1, 2);
    return group;
}

QWidget* BatchOptions::makeSegmentGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Segment"));
    m_etdrsMask = new QCheckBox(QStringLiteral("Use ETDRS Mask"));
    m_etdrsMask->setObjectName(QStringLiteral("etdrsMask"));
    m_etdrsMask->setChecked(true);
    m_etdrsMask->setToolTip(QStringLiteral("Leaves out what lies outside of the ETDRS sectors"));
    m_centerMask = new QCheckBox(QStringLiteral("Use Center Mask (ONH)"));
    m_centerMask->setObjectName(QStringLiteral("centerMask"));
    m_centerMask->setToolTip(
        QStringLiteral("Leaves out the middle of the scan, for scans of the optic nerve head"));
    auto* const button = new QPushButton(QStringLiteral("Start Segmentation"));
    button->setObjectName(QStringLiteral("segmentButton"));
    button->setToolTip(QStringLiteral("Segments the checked scans one after the other"));
    KELP_CONNECT(sourcePath,
                 connect(button, SIGNAL(clicked()), this, SIGNAL(segmentationRequested())));
    auto* const column = new QVBoxLayout(group);
    column->addWidget(makeTypeGroup());
    column->addWidget(m_etdrsMask);
    column->addWidget(m_centerMask);
    column->addWidget(button);
    return group;
}

QWidget* BatchOptions::makeTypeGroup()
{
    auto* const group = new QGroupBox(QStringLiteral("Segmentation Type"));
    m_healthy = new QRadioButton(QStringLiteral("Healthy"));
    m_healthy->setObjectName(QStringLiteral("healthy"));
    m_healthy->setChecked(true);
    m_drusen = new QRadioButton(QStringLiteral("Drusen"));
    m_drusen->setObjectName(QStringLiteral("drusen"));
    m_mouse = new QRadioButton(QStringLiteral("Mouse"));
    m_mouse->setObjectName(QStringLiteral("mouse"));
    auto* const column = new QVBoxLayout(group);
    column->addWidget(m_healthy);
    column->addWidget(m_drusen);
    column->addWidget(m_mouse);
    return group;
}

QString BatchOptions::studyName() const
{
    return m_studyName->text();
}

void BatchOptions::resetStudyName()
{
    m_studyName->setText(defaultStudyName);
}

SegmentationChain BatchOptions::chain() const
{
    if (m_drusen->isChecked()) {
        return SegmentationChain::Drusen;
    }
    return m_mouse->isChecked() ? SegmentationChain::Mouse : SegmentationChain::Normal;
}

bool BatchOptions::maskETDRSSectors() const
{
    return m_etdrsMask->isChecked();
}

bool BatchOptions::maskCenter() const
{
    return m_centerMask->isChecked();
}

} // namespace kelp::oct

#include "moc_BatchOptions.cpp"
