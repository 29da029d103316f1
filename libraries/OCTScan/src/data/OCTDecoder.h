#pragma once

#include "CaFactory.h"
#include "Decoder.h"
#include "Vector2d.h"
#include "kelpImage.h"

#include <QMap>
#include <QSharedPointer>
#include <QStringList>
#include <QVariant>

#include <memory>

/// The record that a concrete decoder fills and OCTScan::doBinLoad reads out. All lists per B-scan
/// have the same length and order; an image that could not be loaded is null.
class OCTDecoder : public Decoder
{
public:
    static CaFactory<OCTDecoder>& getFactory();
    /// Null for an unknown scheme.
    static std::unique_ptr<OCTDecoder> getOCTDecoder(const QString& scheme);

    const QMap<QString, QVariant>& getMetaInfo() const { return m_metaInfo; }
    /// The text of an OCTScanPattern.
    const QString& getScanPattern() const { return m_scanPattern; }
    /// The text of an AnatomicalTarget, or empty.
    const QString& getAnatomicalTarget() const { return m_anatomicalTarget; }
    bool hasLocalizer() const { return !m_localizerImage.isNull(); }
    QSharedPointer<kelp::Image> getLocalizerImage() const { return m_localizerImage; }
    const QMap<QString, QVariant>& getLocalizerMetaInfo() const { return m_localizerMetaInfo; }
    /// Millimetres per pixel.
    Vector2d getLocalizerSpacing() const { return m_localizerSpacing; }
    unsigned getNumberOfBscans() const { return static_cast<unsigned>(m_bScanImages.size()); }
    QSharedPointer<kelp::Image> getBScanImage(unsigned index) const;
    const QList<Vector2d>& getBScanPositions(unsigned index) const;
    double getBScanAxialResolution(unsigned index) const;
    const QMap<QString, QVariant>& getBScanMetaInfo(unsigned index) const;
    /// The texts that name the images that were loaded, in file order.
    const QStringList& getImageUrls() const { return m_imageUrls; }

    /// Why decode failed, or what is wrong with the first image that could not be used although
    /// decode went on: a plain sentence that names the file. Empty when all is well.
    const QString& getFailureReason() const { return m_failureReason; }

protected:
    /// The first problem is kept in words, further ones are counted.
    void addProblem(const QString& sentence);

    QMap<QString, QVariant> m_metaInfo;
    QString m_scanPattern;
    QString m_anatomicalTarget;
    QSharedPointer<kelp::Image> m_localizerImage;
    QMap<QString, QVariant> m_localizerMetaInfo;
    Vector2d m_localizerSpacing;
    QList<QSharedPointer<kelp::Image>> m_bScanImages;
    QList<QList<Vector2d>> m_bScanPositions;
    QList<double> m_bScanAxialResolutions;
    QList<QMap<QString, QVariant>> m_bScanMetaInfos;
    QStringList m_imageUrls;

private:
    QString m_failureReason;
    QString m_firstProblem;
    int m_problemCount = 0;
};
