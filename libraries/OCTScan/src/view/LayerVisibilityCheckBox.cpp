#include "LayerVisibilityCheckBox.h"

#include "kelpCheck.h"

#include <QCheckBox>
#include <QHBoxLayout>

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

} // namespace

LayerVisibilityCheckBox::LayerVisibilityCheckBox(const LayerNamePtr& layerName, QWidget* parent)
    : QWidget(parent), m_layerName(layerName)
{
    kelp::check(!m_layerName.isNull(), constructorPlace, "Layer name is null.");
    const QString text = m_layerName->getShortName();
    m_checkBox = new QCheckBox(text, this);
    m_checkBox->setObjectName(m_layerName->getIdentifier());
    m_checkBox->setToolTip(m_layerName->getLongName());
    m_checkBox->setChecked(m_layerName->isVisibleByDefault());
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
