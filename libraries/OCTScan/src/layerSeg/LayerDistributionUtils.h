#pragma once

#include "LayerDistribution.h"

#include <QByteArray>
#include <QList>

namespace kelp::oct {

/// Reads the trained model: the distributions of all pairs of surfaces.
class LayerDistributionUtils
{
public:
    /// Reads the compiled-in model. Throws kelp::Exception or kelp::Assertion as it fails.
    static void loadFromXML(QList<LayerDistributionPtr>& distributions);
    /// The same for the model at another path of the resources.
    static void loadFromXMLResource(const QString& path,
                                    QList<LayerDistributionPtr>& distributions);
    /// The same for the text of a model; the path only serves messages.
    static void loadFromXMLContent(const QByteArray& content, const QString& path,
                                   QList<LayerDistributionPtr>& distributions);
    /// The text of the compiled-in model.
    static QByteArray modelXML();
    /// ":/layerDistribution/distributionsXML.xml"
    static QString modelPath();
};

} // namespace kelp::oct
