#pragma once

#include "SegmentationChains.h"

#include <QWidget>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace kelp::oct {

/// The column of controls in the middle of the batch tab: what to import into, what to segment and
/// how, and the two buttons.
class BatchOptions : public QWidget
{
    Q_OBJECT

public:
    explicit BatchOptions(QWidget* parent = nullptr);

    QString studyName() const;
    /// Writes the default name into the field.
    void resetStudyName();
    SegmentationChain chain() const;
    bool maskETDRSSectors() const;
    bool maskCenter() const;

signals:
    void importRequested();
    void segmentationRequested();

private:
    QWidget* makeImportGroup();
    QWidget* makeSegmentGroup();
    QWidget* makeTypeGroup();

    QCheckBox* m_etdrsMask = nullptr;
    QCheckBox* m_centerMask = nullptr;
    QLineEdit* m_studyName = nullptr;
    QRadioButton* m_healthy = nullptr;
    QRadioButton* m_drusen = nullptr;
    QRadioButton* m_mouse = nullptr;
};

} // namespace kelp::oct
