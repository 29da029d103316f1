#pragma once

#include "DataPointer.h"

#include <QPair>

#include <functional>

/// What the user is told of a data item, by code that does not know its class.
struct DataDescription
{
    /// "OCT scan", "Segmentation"; the class id for a class that nobody describes.
    QString kind;
    /// Caption and value, in the order in which they are shown.
    QList<QPair<QString, QString>> facts;
    /// The item that this one was computed from and cannot be without; null for none.
    DataPointer<Data> madeFrom;
};

using DataDescriber = std::function<DataDescription(const Data&)>;

/// One describer a class; a later one replaces it.
void registerDataDescriber(const QString& classId, const DataDescriber& describer);
DataDescription describeData(const Data& data);
