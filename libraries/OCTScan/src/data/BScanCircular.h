#pragma once

#include "BScan.h"

namespace kelp::oct {

/// A B-scan along a circle, as around the optic disc.
class BScanCircular : public BScan
{
    Q_OBJECT

public:
    /// Empty; for clone only.
    BScanCircular() = default;
    BScanCircular(const QList<Vector2d>& aScanPositions, double axialResolution,
                  const QSharedPointer<kelp::Image>& image);

    QSharedPointer<BScan> clone() const override;
    bool isValid() const override { return true; }
};

} // namespace kelp::oct
