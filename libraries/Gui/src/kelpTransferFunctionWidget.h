#pragma once

#include "kelpColorTransferFunction.h"

#include <QSharedPointer>
#include <QWidget>

namespace kelp {

/// The legend of a colour table: a strip over the input range with numbered ticks.
class TransferFunctionWidget : public QWidget
{
    Q_OBJECT

public:
    explicit TransferFunctionWidget(QWidget* parent = nullptr);
    /// Null shows nothing.
    void setTransferFunction(const QSharedPointer<ColorTransferFunction>& function);
};

} // namespace kelp
