#include "OCTDecoder.h"

CaFactory<OCTDecoder>& OCTDecoder::getFactory()
{
    static CaFactory<OCTDecoder> factory;
    return factory;
}

std::unique_ptr<OCTDecoder> OCTDecoder::getOCTDecoder(const QString& scheme)
{
    return std::unique_ptr<OCTDecoder>(getFactory().create(scheme));
}

QSharedPointer<kelp::Image> OCTDecoder::getBScanImage(unsigned index) const
{
    return m_bScanImages.at(static_cast<int>(index));
}

const QList<Vector2d>& OCTDecoder::getBScanPositions(unsigned index) const
{
    return m_bScanPositions.at(static_cast<int>(index));
}

double OCTDecoder::getBScanAxialResolution(unsigned index) const
{
    return m_bScanAxialResolutions.at(static_cast<int>(index));
}

const QMap<QString, QVariant>& OCTDecoder::getBScanMetaInfo(unsigned index) const
{
    return m_bScanMetaInfos.at(static_cast<int>(index));
}

void OCTDecoder::addProblem(const QString& sentence)
{
    ++m_problemCount;
    if (m_problemCount == 1) {
        m_firstProblem = sentence;
    }
    m_failureReason = m_problemCount == 1
                          ? m_firstProblem
                          : QString("%1 (and %2 more)").arg(m_firstProblem).arg(m_problemCount - 1);
}
