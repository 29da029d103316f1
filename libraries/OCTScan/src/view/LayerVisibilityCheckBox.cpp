#include "LayerVisibilityCheckBox.h"

#include "kelpCheck.h"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QProxyStyle>
#include <QStyleOption>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/view/LayerVisibilityCheckBox";
constexpr kelp::Place constructorPlace{
    sourcePath, "kelp::oct::LayerVisibilityCheckBox::LayerVisibilityCheckBox"};

/// The layer's colour, which fades out behind the text however long that is.
QString fadingBackground(const QColor& color, int textLength)
{
    constexpr double fadeLength = 3.5;
    constexpr double boxLength = 2.5;
    return QStringLiteral("background-color: qlineargradient(x1: 0, y1: 0, x2: 1, y2: 0, "
                          "stop: 0 %1, stop: %2 transparent);"
                          "border-radius: 5px;")
        .arg(color.name())
        .arg(fadeLength / (textLength + boxLength));
}

/// A style sheet's background reaches the box of the tick as well and turns it black. Here it is
/// drawn as in any other check box.
class PlainIndicatorStyle : public QProxyStyle
{
public:
    explicit PlainIndicatorStyle(QObject* owner) : QProxyStyle(QApplication::style()->objectName())
    {
        setParent(owner);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
        if (element != PE_IndicatorCheckBox || !button) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        QStyleOptionButton plain(*button);
        plain.palette = QApplication::palette();
        QProxyStyle::drawPrimitive(element, &plain, painter, widget);
    }
};

} // namespace

LayerVisibilityCheckBox::LayerVisibilityCheckBox(const LayerNamePtr& layerName, QWidget* parent)
    : QWidget(parent), m_layerName(layerName)
{
    kelp::check(!m_layerName.isNull(), constructorPlace, "Layer name is null.");
    const QString text = m_layerName->getShortName();
    m_checkBox = new QCheckBox(text, this);
    m_checkBox->setObjectName(m_layerName->getIdentifier());
    // Not on the check box, whose style sheet would reach the tool tip as well.
    setToolTip(m_layerName->getLongName());
    m_checkBox->setChecked(m_layerName->isVisibleByDefault());
    m_checkBox->setStyle(new PlainIndicatorStyle(m_checkBox));
    m_checkBox->setStyleSheet(fadingBackground(m_layerName->getColor(), text.length()));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_checkBox);
    KELP_CONNECT(sourcePath,
                 connect(m_checkBox, SIGNAL(stateChanged(int)), this, SLOT(stateChanged(int))));
}

void LayerVisibilityCheckBox::stateChanged(int state)
{
    emit visibilityChanged(m_layerName, state == Qt::Checked);
}

} // namespace kelp::oct

#include "moc_LayerVisibilityCheckBox.cpp"
