#include "BScanCircular.h"

#include "kelpTrace.h"

namespace kelp::oct {

BScanCircular::BScanCircular(const QList<Vector2d>& aScanPositions, double axialResolution,
                             const QSharedPointer<kelp::Image>& image)
    : BScan(aScanPositions, axialResolution, image)
{
    Trace() << "BScanCircular ctor";
}

QSharedPointer<BScan> BScanCircular::clone() const
{
    const auto result = QSharedPointer<BScanCircular>::create();
    copyMembersTo(*result);
    return result;
}

} // namespace kelp::oct

// Here rather than in one file with all others, so that a program links only what it uses.
#include "moc_BScanCircular.cpp"
