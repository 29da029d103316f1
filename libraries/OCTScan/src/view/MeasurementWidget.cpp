#include "MeasurementWidget.h"

#include "EnfaceMap.h"
#include "FailureBox.h"
#include "OCTMeasurementViewer.h"
#include "QTableWidgetSelectedToClipboard.h"
#include "ThicknessMapSettings.h"
#include "kelpCheck.h"
#include "kelpSettings.h"
#include "kelpTransferFunctionWidget.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/MeasurementWidget";
constexpr double percent = 100.0;

LayerNamePtr layerAt(const QComboBox& box, int index)
{
    return box.itemData(index).value<LayerNamePtr>();
}

/// Short names of the table's surfaces that the segmentation does not have.
QStringList missingLayers(const OCTScanSegmentation& segmentation)
{
    QStringList missing;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (const LayerNamePtr& name : {EtdrsTable::topLayer(row), EtdrsTable::bottomLayer(row)}) {
            if (!hasLayer(segmentation, name) && !missing.contains(name->getShortName())) {
                missing.append(name->getShortName());
            }
        }
    }
    return missing;
}

/// What the mean of a sector stands on, and why it is less than all of it.
QString coverageText(const SectorCoverage& sector)
{
    if (sector.expected == 0) {
        return QStringLiteral("The scan does not pass this sector.");
    }
    const QLocale grouped(QLocale::English, QLocale::UnitedStates);
    QString text = QStringLiteral("%1 of %2 A-scans")
                       .arg(grouped.toString(sector.counted), grouped.toString(sector.expected));
    if (sector.counted < sector.inside) {
        text += QStringLiteral("\n%1 masked").arg(grouped.toString(sector.inside - sector.counted));
    }
    if (sector.inside < sector.expected) {
        text += QStringLiteral("\n%1 beyond the border of the scan")
                    .arg(grouped.toString(sector.expected - sector.inside));
    }
    return text;
}

void showLimit(QLineEdit& edit, int value)
{
    const QString text = QString::number(value);
    if (edit.text() != text) {
        const QSignalBlocker blocker(edit);
        edit.setText(text);
    }
}

bool isInRange(const QSlider& slider, int value)
{
    return value >= slider.minimum() && value <= slider.maximum();
}

} // namespace

MeasurementWidget::~MeasurementWidget() = default;

void MeasurementWidget::setOCT(OCTScanPtr oct)
{
    check(!oct.isNull(), {sourcePath, "kelp::oct::MeasurementWidget::setOCT"}, "OCT scan is null.");
    m_viewer->setOCT(oct);
    if (m_viewer->getSegmentation().isNull()) {
        clearLayerBoxes();
    }
    updateNote();
    measureIfPossible();
}

void MeasurementWidget::clearOCT()
{
    m_viewer->clearOCT();
    clearLayerBoxes();
    updateNote();
    updateMeasurementsTable();
}

void MeasurementWidget::clearLayerBoxes()
{
    for (QComboBox* const box : {m_topLayerBox, m_bottomLayerBox}) {
        const QSignalBlocker blocker(box);
        box->clear();
    }
}

void MeasurementWidget::updateView()
{
    m_viewer->updateMap();
    updateNote();
    updateMeasurementsTable();
}

void MeasurementWidget::setSegmentation(OCTScanSegPtr octSeg)
{
    check(!octSeg.isNull(), {sourcePath, "kelp::oct::MeasurementWidget::setSegmentation"},
          "OCT scan segmentation is null.");
    // A step below may fail; figures of the former segmentation must not stay.
    m_means = {};
    showMeans();
    m_viewer->setSegmentation(octSeg);
    updateNote();
    updateLayerSelection(octSeg);
    updateMeasurementsTable();
}

void MeasurementWidget::updateLayerSelection(OCTScanSegPtr octSeg)
{
    check(!octSeg.isNull(), {sourcePath, "kelp::oct::MeasurementWidget::updateLayerSelection"},
          "OCT scan segmentation is null.");
    QList<LayerNamePtr> names = octSeg->getAllLayerNames();
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const LayerNamePtr& name) { return !name->isFinal(); }),
                names.end());
    std::stable_sort(names.begin(), names.end(),
                     [](const LayerNamePtr& a, const LayerNamePtr& b) { return *a < *b; });
    fillLayerBox(*m_topLayerBox, names, thicknessMapKey::topLayer, 0);
    fillLayerBox(*m_bottomLayerBox, names, thicknessMapKey::bottomLayer, names.size() - 1);
    if (!names.isEmpty()) {
        m_viewer->setTopLayerName(layerAt(*m_topLayerBox, m_topLayerBox->currentIndex()));
        m_viewer->setBottomLayerName(layerAt(*m_bottomLayerBox, m_bottomLayerBox->currentIndex()));
    }
}

void MeasurementWidget::fillLayerBox(QComboBox& box, const QList<LayerNamePtr>& names,
                                     const char* key, int fallback)
{
    // What is chosen here for lack of the stored surface is no choice of the user's to be stored.
    const QSignalBlocker blocker(box);
    const QString stored = Settings::get(QString::fromLatin1(key), QString());
    box.clear();
    int selected = fallback;
    for (const LayerNamePtr& name : names) {
        if (name->getIdentifier() == stored) {
            selected = box.count();
        }
        box.addItem(name->getShortName(), QVariant::fromValue(name));
        box.setItemData(box.count() - 1, name->getLongName(), Qt::ToolTipRole);
    }
    box.setCurrentIndex(selected);
}

template <typename Step>
void MeasurementWidget::renderGuarded(Step&& step)
{
    guarded(this, QStringLiteral("Drawing the thickness map failed:\n"),
            QStringLiteral("Error Drawing the Thickness Map"), std::forward<Step>(step));
}

void MeasurementWidget::layerNameTopSelected(int index)
{
    if (const LayerNamePtr name = layerAt(*m_topLayerBox, index)) {
        renderGuarded([&] { m_viewer->setTopLayerName(name); });
        Settings::set(thicknessMapKey::topLayer, name->getIdentifier());
    }
}

void MeasurementWidget::layerNameBottomSelected(int index)
{
    if (const LayerNamePtr name = layerAt(*m_bottomLayerBox, index)) {
        renderGuarded([&] { m_viewer->setBottomLayerName(name); });
        Settings::set(thicknessMapKey::bottomLayer, name->getIdentifier());
    }
}

void MeasurementWidget::transferFunctionSelected(int index)
{
    if (index < 0 || index >= m_colorBox->count()) {
        return;
    }
    Settings::set(thicknessMapKey::colorMap, index);
    renderGuarded([&] { m_viewer->setTransferFunction(static_cast<ColorMaps>(index)); });
    showColors();
}

void MeasurementWidget::transferLowerChanged(int value)
{
    if (m_lowerSlider->value() != value) {
        // Comes back here.
        m_lowerSlider->setValue(value);
        return;
    }
    Settings::set(thicknessMapKey::lower, static_cast<double>(value));
    showLimit(*m_lowerEdit, value);
    if (m_upperSlider->value() <= value) {
        m_upperSlider->setValue(value + 1);
        return;
    }
    renderGuarded([&] { m_viewer->setTransferRange(value, m_upperSlider->value()); });
    showColors();
}

void MeasurementWidget::transferUpperChanged(int value)
{
    if (m_upperSlider->value() != value) {
        // Comes back here.
        m_upperSlider->setValue(value);
        return;
    }
    Settings::set(thicknessMapKey::upper, static_cast<double>(value));
    showLimit(*m_upperEdit, value);
    if (m_lowerSlider->value() >= value) {
        m_lowerSlider->setValue(value - 1);
        return;
    }
    renderGuarded([&] { m_viewer->setTransferRange(m_lowerSlider->value(), value); });
    showColors();
}

void MeasurementWidget::transparencyChanged(int value)
{
    const double alpha = value / percent;
    Settings::set(thicknessMapKey::alpha, alpha);
    renderGuarded([&] { m_viewer->setTransferAlpha(alpha); });
}

void MeasurementWidget::transferLowerEditChanged(QString valueStr)
{
    bool isNumber = false;
    const int value = valueStr.toInt(&isNumber);
    if (isNumber && isInRange(*m_lowerSlider, value) && value < m_upperSlider->value()) {
        m_lowerSlider->setValue(value);
    }
}

void MeasurementWidget::transferUpperEditChanged(QString valueStr)
{
    bool isNumber = false;
    const int value = valueStr.toInt(&isNumber);
    // On the way to 350 lie 3 and 35, which would drag the lower limit down with them.
    if (isNumber && isInRange(*m_upperSlider, value) && value > m_lowerSlider->value()) {
        m_upperSlider->setValue(value);
    }
}

void MeasurementWidget::transferEditFinished()
{
    const bool isLower = sender() == m_lowerEdit;
    QLineEdit& edit = isLower ? *m_lowerEdit : *m_upperEdit;
    QSlider& slider = isLower ? *m_lowerSlider : *m_upperSlider;
    slider.setValue(edit.text().toInt());
    showLimit(edit, slider.value());
}

void MeasurementWidget::showColors()
{
    auto colors = QSharedPointer<PredefinedTransferfunctions>::create(
        static_cast<ColorMaps>(m_colorBox->currentIndex()));
    colors->setInputRange(m_lowerSlider->value(), m_upperSlider->value());
    m_legend->setTransferFunction(colors);
}

void MeasurementWidget::foveaMoved(CoordOnLocalizer)
{
    guarded(this, QStringLiteral("Measuring the thicknesses failed:\n"),
            QStringLiteral("Error Measuring the Thicknesses"), [this] { measureIfPossible(); });
}

void MeasurementWidget::measureIfPossible()
{
    const OCTScanSegPtr segmentation = m_viewer->getSegmentation();
    if (segmentation.isNull() || missingLayers(*segmentation).isEmpty()) {
        updateMeasurementsTable();
    }
}

void MeasurementWidget::updateMeasurementsTable()
{
    m_means = {};
    showMeans();
    const OCTScanSegPtr segmentation = m_viewer->getSegmentation();
    if (m_viewer->getOCT().isNull() || segmentation.isNull()) {
        return;
    }
    m_means = measureEtdrs(segmentation, m_viewer->getFovea());
    showMeans();
}

void MeasurementWidget::showMeans()
{
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const auto& means = m_means.means[static_cast<std::size_t>(row)];
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            m_table->item(row, column)
                ->setText(EtdrsTable::cellText(means[static_cast<std::size_t>(column)]));
        }
    }
    showCoverage();
    m_table->viewport()->update();
}

void MeasurementWidget::showCoverage()
{
    const auto isReached = [](const SectorCoverage& sector) { return sector.expected > 0; };
    const bool isMeasured =
        std::any_of(m_means.coverage.begin(), m_means.coverage.end(), isReached);
    const QIcon cutMark = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        const SectorCoverage& sector = m_means.coverage[static_cast<std::size_t>(column)];
        const QString tip = isMeasured ? coverageText(sector) : QString();
        m_table->horizontalHeaderItem(column)->setIcon(sector.isCut() ? cutMark : QIcon());
        m_table->horizontalHeaderItem(column)->setToolTip(tip);
        for (int row = 0; row < EtdrsTable::nrRows; ++row) {
            m_table->item(row, column)->setToolTip(tip);
        }
    }
    const QString warning = m_means.coverageWarning();
    m_coverageNote->setText(warning.isEmpty() ? QString() : warning + QLatin1Char('.'));
    m_coverageNote->setVisible(!warning.isEmpty());
}

void MeasurementWidget::updateNote()
{
    const OCTScanPtr scan = m_viewer->getOCT();
    const OCTScanSegPtr segmentation = m_viewer->getSegmentation();
    QStringList sentences;
    if (!scan.isNull() && segmentation.isNull()) {
        sentences.append(QStringLiteral("Select a segmentation on the left to measure it."));
    } else if (!scan.isNull()) {
        const QStringList missing = missingLayers(*segmentation);
        if (!missing.isEmpty()) {
            sentences.append(
                QStringLiteral("There are no results because the segmentation does not have: %1. "
                               "\"Segment Normal\" of the automatic segmentation makes them.")
                    .arg(missing.join(QStringLiteral(", "))));
        }
        if (!isVolumeScan(*scan)) {
            sentences.append(QStringLiteral("Thickness maps are drawn for volume scans only."));
        }
    }
    m_note->setText(sentences.join(QLatin1Char(' ')));
    m_note->setVisible(!sentences.isEmpty());
}

void MeasurementWidget::copyTable()
{
    QApplication::clipboard()->setText(m_means.toTabSeparated());
}

} // namespace kelp::oct

#include "moc_MeasurementWidget.cpp"
