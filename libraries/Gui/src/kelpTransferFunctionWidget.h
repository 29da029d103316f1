#pragma once

#include "kelpColorTransferFunction.h"

#include <QList>
#include <QSharedPointer>
#include <QWidget>

class QGridLayout;

namespace kelp {

class ImageWidget;

/// The legend of a colour table: a strip over the input range, its upper end on top, with numbered
/// ticks at the ends and in between.
class TransferFunctionWidget : public QWidget
{
    Q_OBJECT

public:
    explicit TransferFunctionWidget(QWidget* parent = nullptr);
    /// Null shows nothing. A function that was changed has to be set again.
    void setTransferFunction(const QSharedPointer<ColorTransferFunction>& function);

private:
    void resetStrip();
    void resetLabelTicks();
    void addLabelTick(QGridLayout& grid, int index, double value);

    QSharedPointer<ColorTransferFunction> m_function;
    ImageWidget* m_strip = nullptr;
    QList<QWidget*> m_labelTicks;
};

} // namespace kelp
