#pragma once

#include "kelpException.h"
#include "kelpImage.h"

#include <QImage>

namespace kelp {

class ImageConverters
{
public:
    /// The first z slice. 8-bit mono becomes Format_Grayscale8, 16-bit mono Format_Grayscale16,
    /// colour Format_RGBA8888. Other types throw NotImplemented. A null image gives a null QImage.
    static QImage makeQImage(const ConstImagePtr& image);
};

} // namespace kelp
