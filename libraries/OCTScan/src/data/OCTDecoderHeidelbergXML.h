#pragma once

#include "OCTDecoder.h"

#include <QDomElement>
#include <QList>

/// Reads one series of a Heidelberg Eye Explorer XML export, named by the URI
/// "file++hra:<xml path>?seriesId=<id>", with the images beside the XML file.
///
/// Missing optional elements leave keys out, missing structure makes decode false, and an image
/// that cannot be read stays in the lists as a null image.
class OCTDecoderHeidelbergXML : public OCTDecoder
{
public:
    bool decode() override;

private:
    /// Adds the sentence to the failure reason and returns false.
    bool fail(const QString& sentence);
    void retrievePatientMetaInfo(const QDomElement& patient);
    QDomElement findSeries(const QList<QDomElement>& series, const QString& id) const;
    void retrieveSeriesMetaInfo(const QDomElement& series);
    void parseImage(const QDomElement& image, int number);
    void parseBScan(const QDomElement& image);
    QList<Vector2d> bScanPositions(const QMap<QString, QVariant>& metaInfo, int columns);
    void parseLocalizer(const QDomElement& image);
    QSharedPointer<kelp::Image> loadImage(const QDomElement& examUrl);
};

/// Registers the decoder under "hra" once. Returns 1.
int createOCTDecoderHeidelbergXMLFactory();
