#include "OCTDecoderHeidelbergXML.h"

#include "AScanPositions.h"
#include "AnatomicalTarget.h"
#include "ExportDocument.h"
#include "ExportMetaInfo.h"
#include "OCTScanPattern.h"
#include "kelpException.h"
#include "kelpImageTools.h"
#include "kelpTrace.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace kelp::oct;
using namespace kelp::oct::exportDocument;

namespace {

class OCTDecoderHeidelbergXMLFactory : public CaFactory<OCTDecoder>::Factory
{
public:
    OCTDecoder* createInstance() const override { return new OCTDecoderHeidelbergXML; }
};

bool hasKeys(const MetaInfo& metaInfo, const std::array<const char*, 4>& keys)
{
    return std::all_of(keys.begin(), keys.end(),
                       [&](const char* key) { return metaInfo.contains(key); });
}

Vector2d vectorOf(const MetaInfo& metaInfo, const char* keyX, const char* keyY)
{
    return {metaInfo.value(keyX).toDouble(), metaInfo.value(keyY).toDouble()};
}

/// The stored pair if both are above 0, else 1 and 1. Nothing without both keys.
std::optional<Vector2d> spacingOf(const MetaInfo& metaInfo, const char* keyX, const char* keyY)
{
    if (!metaInfo.contains(keyX) || !metaInfo.contains(keyY)) {
        return std::nullopt;
    }
    const Vector2d spacing = vectorOf(metaInfo, keyX, keyY);
    return spacing.x > 0.0 && spacing.y > 0.0 ? spacing : Vector2d{1.0, 1.0};
}

QString sizeText(const kelp::Image& image)
{
    return QString("%1 x %2").arg(image.getColumns()).arg(image.getRows());
}

/// Empty for a type without a line of its own.
QString detectedLine(const QString& pattern)
{
    if (pattern == OCTScanPatternVolume().toString()) {
        return "detected VOLUME scan pattern";
    }
    if (pattern == OCTScanPatternSingleBScan().toString()) {
        return "detected single Bscan pattern";
    }
    if (pattern == OCTScanPatternCircularBScan().toString()) {
        return "detected Circular Bscan pattern";
    }
    if (pattern == OCTScanPatternStar().toString()) {
        return "detected Star pattern";
    }
    return QString();
}

QString targetText(const QString& laterality)
{
    if (laterality == "R") {
        return RightEye().toString();
    }
    if (laterality == "L") {
        return LeftEye().toString();
    }
    return UnknownEye().toString();
}

} // namespace

bool OCTDecoderHeidelbergXML::fail(const QString& sentence)
{
    addProblem(sentence);
    return false;
}

bool OCTDecoderHeidelbergXML::decode()
{
    if (getUris().isEmpty()) {
        return fail("The scan names no file.");
    }
    const QString xmlPath = getUris().first().path();
    QDomDocument document;
    try {
        document = read(xmlPath);
    } catch (const kelp::Exception& exception) {
        return fail(exception.getMessage());
    }
    const QDomElement patient = findPatient(document);
    if (patient.isNull()) {
        kelp::Trace() << "No patient found";
        return fail(QString("The file %1 is no export: it holds no patient.").arg(xmlPath));
    }
    retrievePatientMetaInfo(patient);
    const QDomElement study = firstDescendant(patient, QString("Study"));
    if (study.isNull()) {
        return fail(QString("The file %1 holds no study of the patient.").arg(xmlPath));
    }
    const QList<QDomElement> allSeries = childElements(study, "Series");
    for (int i = 0; i < allSeries.size(); ++i) {
        kelp::Trace() << "found child";
    }
    kelp::Trace() << "Found " << allSeries.size() << " children";
    if (allSeries.isEmpty()) {
        return fail(QString("The file %1 holds no series.").arg(xmlPath));
    }
    const QString id = getUris().first().queryItem("seriesId");
    const QDomElement series = findSeries(allSeries, id);
    if (series.isNull()) {
        kelp::Trace() << "No series with id " << id << " found";
        return fail(QString("The file %1 holds no series \"%2\" in the patient's first study.")
                        .arg(xmlPath, id));
    }
    retrieveSeriesMetaInfo(series);
    const QList<QDomElement> images = childElements(series, "Image");
    if (images.isEmpty()) {
        return fail(QString("The file %1 names no images of series \"%2\".").arg(xmlPath, id));
    }
    m_bScanImages.clear();
    m_bScanPositions.clear();
    m_bScanAxialResolutions.clear();
    m_bScanMetaInfos.clear();
    m_imageUrls.clear();
    for (int i = 0; i < images.size(); ++i) {
        parseImage(images.at(i), i);
    }
    return true;
}

void OCTDecoderHeidelbergXML::retrievePatientMetaInfo(const QDomElement& patient)
{
    kelp::Trace() << "retrievingPatientMetaInfo";
    addPatientMetaInfo(patient, m_metaInfo);
    kelp::Trace() << "OCTDecoderHeidelbergXML meta info size: " << m_metaInfo.size();
}

QDomElement OCTDecoderHeidelbergXML::findSeries(const QList<QDomElement>& series,
                                                const QString& id) const
{
    for (const QDomElement& candidate : series) {
        for (const QDomElement& candidateId : childElements(candidate, "ID")) {
            kelp::Trace() << "comparing series id " << candidateId.text() << " to id " << id;
            if (candidateId.text() == id) {
                kelp::Trace() << "found correct series";
                return candidate;
            }
        }
    }
    return QDomElement();
}

void OCTDecoderHeidelbergXML::retrieveSeriesMetaInfo(const QDomElement& series)
{
    addSeriesMetaInfo(series, m_metaInfo);
    if (!m_metaInfo.contains(metaKey::scanPattern)) {
        return;
    }
    const QString type = m_metaInfo.value(metaKey::scanPattern).toString();
    m_scanPattern = patternText(type);
    const QString line = detectedLine(m_scanPattern);
    if (!line.isEmpty()) {
        kelp::Trace() << line;
    }
    kelp::Trace() << "got scan type " << type;
    kelp::Trace() << "set to pattern type " << m_scanPattern;
}

void OCTDecoderHeidelbergXML::parseImage(const QDomElement& image, int number)
{
    const auto type = descendantText(image, {"ImageType", "Type"});
    if (!type) {
        kelp::Trace() << "no image type information found for image " << number;
    } else if (*type == "LOCALIZER") {
        parseLocalizer(image);
    } else if (*type == "OCT") {
        parseBScan(image);
    }
}

void OCTDecoderHeidelbergXML::parseBScan(const QDomElement& image)
{
    const MetaInfo metaInfo = bScanMetaInfo(image);
    m_bScanMetaInfos.append(metaInfo);
    const double axialResolution = metaInfo.value(metaKey::bScanSpacingY).toDouble();
    m_bScanAxialResolutions.append(axialResolution > 0.0 ? axialResolution : 1.0);

    const QDomElement examUrl = firstDescendant(image, QStringList{"ImageData", "ExamURL"});
    const QSharedPointer<kelp::Image> bScan = loadImage(examUrl);
    if (bScan.isNull()) {
        kelp::Trace() << "bscan image not loaded!";
    } else {
        kelp::Trace() << "bscan image loaded with size " << sizeText(*bScan);
        if (const auto spacing =
                spacingOf(metaInfo, metaKey::bScanSpacingX, metaKey::bScanSpacingY)) {
            bScan->setSpacing({spacing->x, spacing->y, 1.0});
        }
    }
    m_bScanImages.append(bScan);
    // Without an image there are no columns to place.
    m_bScanPositions.append(bScanPositions(metaInfo, bScan.isNull() ? 0 : bScan->getColumns()));
}

QList<Vector2d> OCTDecoderHeidelbergXML::bScanPositions(const MetaInfo& metaInfo, int columns)
{
    const QString name =
        QString("B-scan %1 of %2").arg(m_bScanImages.size()).arg(getUris().first().path());
    if (m_scanPattern == OCTScanPatternVolume().toString() ||
        m_scanPattern == OCTScanPatternSingleBScan().toString() ||
        m_scanPattern == OCTScanPatternStar().toString()) {
        if (!hasKeys(metaInfo, {metaKey::startX, metaKey::startY, metaKey::endX, metaKey::endY})) {
            kelp::Trace() << "parse bscan: could not find start/end coords";
            addProblem(QString("%1 has no start and end coordinates.").arg(name));
            return {};
        }
        return positionsOnLine(vectorOf(metaInfo, metaKey::startX, metaKey::startY),
                               vectorOf(metaInfo, metaKey::endX, metaKey::endY), columns);
    }
    if (m_scanPattern == OCTScanPatternCircularBScan().toString()) {
        kelp::Trace() << "reading circular bscan";
        if (!hasKeys(metaInfo,
                     {metaKey::startX, metaKey::startY, metaKey::centerX, metaKey::centerY})) {
            kelp::Trace() << "parse bscan: could not find start/center coords";
            addProblem(QString("%1 has no start and centre coordinates.").arg(name));
            return {};
        }
        return positionsOnCircle(vectorOf(metaInfo, metaKey::startX, metaKey::startY),
                                 vectorOf(metaInfo, metaKey::centerX, metaKey::centerY), columns,
                                 metaInfo.value(metaKey::direction).toString() == "CCW");
    }
    return {};
}

void OCTDecoderHeidelbergXML::parseLocalizer(const QDomElement& image)
{
    m_localizerMetaInfo = localizerMetaInfo(image);
    m_anatomicalTarget = targetText(m_localizerMetaInfo.value(metaKey::laterality).toString());

    const QDomElement examUrl = firstDescendant(image, QStringList{"ImageData", "ExamURL"});
    m_localizerImage = loadImage(examUrl);
    if (m_localizerImage.isNull()) {
        kelp::Trace() << "localizer image not loaded";
    } else {
        kelp::Trace() << "localizer image loaded with size " << sizeText(*m_localizerImage);
    }
    if (const auto spacing = spacingOf(m_localizerMetaInfo, metaKey::localizerSpacingX,
                                       metaKey::localizerSpacingY)) {
        m_localizerSpacing = *spacing;
        if (m_localizerImage) {
            m_localizerImage->setSpacing({spacing->x, spacing->y, 1.0});
        }
    }
}

QSharedPointer<kelp::Image> OCTDecoderHeidelbergXML::loadImage(const QDomElement& examUrl)
{
    const QString xmlPath = getUris().first().path();
    if (examUrl.isNull()) {
        addProblem(QString("The file %1 names no file for one of its images.").arg(xmlPath));
        return {};
    }
    const QString fileName = bareFileName(examUrl.text());
    kelp::Trace() << "got file name: " << fileName;
    const QString folder = xmlPath.left(xmlPath.lastIndexOf('/') + 1);
    kelp::Trace() << "got folder path: " << folder;
    const QString path = folder + fileName;
    kelp::Trace() << "full image path: " << path;
    const QSharedPointer<kelp::Image> image = kelp::ImageTools::loadImage(path);
    if (image.isNull()) {
        addProblem(unreadableImageText(path));
        return {};
    }
    if (!examUrl.text().isEmpty()) {
        m_imageUrls.append(examUrl.text());
    }
    return image->convertTo(kelp::MonoUInt8);
}

int createOCTDecoderHeidelbergXMLFactory()
{
    static const bool registered = OCTDecoder::getFactory().registerFactory(
        "hra", std::make_shared<const OCTDecoderHeidelbergXMLFactory>());
    static_cast<void>(registered);
    return 1;
}
