#include "RunWarnings.h"

namespace kelp::oct {

void RunWarnings::set(const OCTScanSegPtr& segmentation, const QStringList& sentences)
{
    m_segmentation = segmentation.data();
    m_sentences = sentences;
}

void RunWarnings::clear()
{
    set(nullptr, {});
}

void RunWarnings::keepFor(const OCTScanSegPtr& shown)
{
    if (!shown || shown.data() != m_segmentation) {
        clear();
    }
}

QString RunWarnings::title() const
{
    return m_sentences.size() == 1
               ? QStringLiteral("The segmentation has a warning")
               : QStringLiteral("The segmentation has %1 warnings").arg(m_sentences.size());
}

QString RunWarnings::asStatusText() const
{
    return isEmpty() ? QString()
                     : title() + QStringLiteral(":\n") + m_sentences.join(QStringLiteral(";\n"));
}

Notice RunWarnings::asNotice() const
{
    return {title(),
            QStringLiteral("Look at these B-scans before you use the numbers; you can correct them "
                           "in the tab OCT Manual Segmentation."),
            m_sentences};
}

} // namespace kelp::oct
