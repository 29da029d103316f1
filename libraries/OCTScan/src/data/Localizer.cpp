#include "Localizer.h"

#include "kelpCheck.h"

namespace kelp::oct {

void Localizer::setImage(const QSharedPointer<kelp::Image>& image)
{
    constexpr Place place{"libraries/OCTScan/src/data/Localizer", "kelp::oct::Localizer::setImage"};
    check(!image.isNull(), place, "Localizer image is null.");
    m_image = image;
}

} // namespace kelp::oct
