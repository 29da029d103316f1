#pragma once

#include "LayerDistribution.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace kelp::oct {

/// The text of a model as numbers, unchecked and in the units of the text (micrometres).
struct LayerDistributionDocument
{
    struct Entry
    {
        QString upperLayerName;
        QString lowerLayerName;
        double spacingX = 0.0;
        double spacingY = 0.0;
        int columns = 0;
        int rows = 0;
        LayerDistribution::Matrix means;
        LayerDistribution::Matrix variances;
    };

    /// Empty where the text has no root element.
    QString rootName;
    int foveaX = 0;
    int foveaY = 0;
    std::vector<Entry> entries;

    /// False when the text is not well-formed XML to its end.
    bool read(const QByteArray& content);
};

} // namespace kelp::oct
