#pragma once

#include "NoticeBar.h"
#include "OCTScanSegmentation.h"

#include <QPointer>
#include <QString>
#include <QStringList>

namespace kelp::oct {

/// What the last run said against its own result. Holds for as long as that result is the
/// segmentation that is shown.
class RunWarnings
{
public:
    /// The sentences as qualityWarnings makes them.
    void set(const OCTScanSegPtr& segmentation, const QStringList& sentences);
    void clear();
    /// Forgets them unless this is the segmentation that they are about.
    void keepFor(const OCTScanSegPtr& shown);

    bool isEmpty() const { return m_sentences.isEmpty(); }
    /// For the status line: a line with their number, then one for each, the worst first. Empty
    /// without any.
    QString asStatusText() const;
    /// With what to do about them.
    Notice asNotice() const;

private:
    QString title() const;

    QPointer<OCTScanSegmentation> m_segmentation; ///< not kept alive by its warnings
    QStringList m_sentences;
};

} // namespace kelp::oct
