#include "MeasurementWidget.h"

#include "OCTMeasurementViewer.h"
#include "QTableWidgetSelectedToClipboard.h"
#include "ThicknessMapSettings.h"
#include "kelpCheck.h"
#include "kelpTransferFunctionWidget.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>

#include <cmath>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/MeasurementWidget";
constexpr int sliderWidth = 150;
constexpr int editWidth = 40;
constexpr int resultsHeight = 260;
constexpr int sectionSize = 70;
constexpr double percent = 100.0;

/// What cannot be a limit gives way to the limit that holds.
class LimitValidator : public QIntValidator
{
public:
    LimitValidator(const QSlider* slider, QObject* parent)
        : QIntValidator(slider->minimum(), slider->maximum(), parent), m_slider(slider)
    {
        QLocale plain = QLocale::c();
        plain.setNumberOptions(QLocale::RejectGroupSeparator);
        setLocale(plain);
    }
    void fixup(QString& input) const override { input = QString::number(m_slider->value()); }

private:
    const QSlider* m_slider;
};

void addRow(QGridLayout& grid, const QString& caption, QWidget* field, QWidget* edit = nullptr)
{
    const int row = grid.rowCount();
    auto* const label = new QLabel(caption);
    label->setBuddy(field);
    field->setAccessibleName(caption);
    grid.addWidget(label, row, 0);
    grid.addWidget(field, row, 1, 1, edit ? 1 : 2);
    if (edit) {
        edit->setAccessibleName(caption);
        grid.addWidget(edit, row, 2);
    }
}

} // namespace

MeasurementWidget::MeasurementWidget(QWidget* parent) : QWidget(parent)
{
    m_viewer = new OCTMeasurementViewer;
    m_viewer->setAccessibleName(QStringLiteral("Thickness map"));
    m_legend = new TransferFunctionWidget;
    m_legend->setObjectName(QStringLiteral("thicknessLegend"));
    auto* const top = new QHBoxLayout;
    top->addWidget(m_viewer, 1);
    top->addWidget(m_legend);
    top->addWidget(createOptions());

    m_note = new QLabel;
    m_note->setObjectName(QStringLiteral("measurementNote"));
    m_note->setWordWrap(true);
    auto* const box = new QVBoxLayout(this);
    box->addLayout(top, 1);
    box->addWidget(createResults());
    box->addWidget(m_note);

    connectOptions();
    KELP_CONNECT(sourcePath, connect(m_viewer, SIGNAL(foveaMoved(CoordOnLocalizer)), this,
                                     SLOT(foveaMoved(CoordOnLocalizer))));
    const ThicknessMapSettings settings = ThicknessMapSettings::read();
    m_viewer->setTransferFunction(settings.colorMap);
    m_viewer->setTransferRange(settings.lower, settings.upper);
    m_viewer->setTransferAlpha(settings.alpha);
    showColors();
    clearOCT();
}

QWidget* MeasurementWidget::createOptions()
{
    auto* const group = new QGroupBox(QStringLiteral("Rendering Options"));
    auto* const grid = new QGridLayout(group);
    addLayerBoxes(*grid);
    addColorOptions(*grid);
    grid->setRowStretch(grid->rowCount(), 1);
    return group;
}

void MeasurementWidget::addLayerBoxes(QGridLayout& grid)
{
    m_topLayerBox = new QComboBox;
    m_topLayerBox->setObjectName(QStringLiteral("topLayerBox"));
    m_topLayerBox->setToolTip(QStringLiteral("The upper surface of the thickness in the map."));
    addRow(grid, QStringLiteral("Top Layer:"), m_topLayerBox);
    m_bottomLayerBox = new QComboBox;
    m_bottomLayerBox->setObjectName(QStringLiteral("bottomLayerBox"));
    m_bottomLayerBox->setToolTip(QStringLiteral("The lower surface of the thickness in the map."));
    addRow(grid, QStringLiteral("Bottom Layer:"), m_bottomLayerBox);
}

void MeasurementWidget::addColorOptions(QGridLayout& grid)
{
    const ThicknessMapSettings settings = ThicknessMapSettings::read();
    m_colorBox = new QComboBox;
    m_colorBox->setObjectName(QStringLiteral("colorTableBox"));
    m_colorBox->addItems(PredefinedTransferfunctions::getNames());
    m_colorBox->setCurrentIndex(static_cast<int>(settings.colorMap));
    addRow(grid, QStringLiteral("Color Table:"), m_colorBox);

    m_lowerSlider =
        createSlider(QStringLiteral("lowerLimitSlider"), ThicknessMapSettings::smallestLower,
                     ThicknessMapSettings::largestLower, settings.lower);
    m_lowerEdit = createLimitEdit(QStringLiteral("lowerLimitEdit"), m_lowerSlider);
    m_upperSlider =
        createSlider(QStringLiteral("upperLimitSlider"), ThicknessMapSettings::smallestUpper,
                     ThicknessMapSettings::largestUpper, settings.upper);
    m_upperEdit = createLimitEdit(QStringLiteral("upperLimitEdit"), m_upperSlider);
    const auto tip = QStringLiteral("Thicknesses from here %1 have the color of the table's %2.\n"
                                    "The other limit moves along when this one reaches it.");
    for (QWidget* const widget :
         {static_cast<QWidget*>(m_lowerSlider), static_cast<QWidget*>(m_lowerEdit)}) {
        widget->setToolTip(tip.arg(QStringLiteral("down"), QStringLiteral("start")));
    }
    for (QWidget* const widget :
         {static_cast<QWidget*>(m_upperSlider), static_cast<QWidget*>(m_upperEdit)}) {
        widget->setToolTip(tip.arg(QStringLiteral("up"), QStringLiteral("end")));
    }
    addRow(grid, QStringLiteral("Lower Limit (\u00b5m):"), m_lowerSlider, m_lowerEdit);
    addRow(grid, QStringLiteral("Upper Limit (\u00b5m):"), m_upperSlider, m_upperEdit);

    m_transparencySlider = createSlider(QStringLiteral("transparencySlider"), 0, 100,
                                        static_cast<int>(std::lround(settings.alpha * percent)));
    m_transparencySlider->setToolTip(
        QStringLiteral("Left hides the map, right hides the image below it."));
    addRow(grid, QStringLiteral("Transparency:"), m_transparencySlider);
}

QSlider* MeasurementWidget::createSlider(const QString& name, int minimum, int maximum, int value)
{
    auto* const slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(name);
    slider->setRange(minimum, maximum);
    slider->setValue(value);
    slider->setMaximumWidth(sliderWidth);
    return slider;
}

QLineEdit* MeasurementWidget::createLimitEdit(const QString& name, QSlider* slider)
{
    auto* const edit = new QLineEdit(QString::number(slider->value()));
    edit->setObjectName(name);
    edit->setValidator(new LimitValidator(slider, edit));
    edit->setMaximumWidth(editWidth);
    edit->setAlignment(Qt::AlignRight);
    return edit;
}

void MeasurementWidget::connectOptions()
{
    KELP_CONNECT(sourcePath, connect(m_topLayerBox, SIGNAL(currentIndexChanged(int)), this,
                                     SLOT(layerNameTopSelected(int))));
    KELP_CONNECT(sourcePath, connect(m_bottomLayerBox, SIGNAL(currentIndexChanged(int)), this,
                                     SLOT(layerNameBottomSelected(int))));
    KELP_CONNECT(sourcePath, connect(m_colorBox, SIGNAL(currentIndexChanged(int)), this,
                                     SLOT(transferFunctionSelected(int))));
    KELP_CONNECT(sourcePath, connect(m_lowerSlider, SIGNAL(valueChanged(int)), this,
                                     SLOT(transferLowerChanged(int))));
    KELP_CONNECT(sourcePath, connect(m_upperSlider, SIGNAL(valueChanged(int)), this,
                                     SLOT(transferUpperChanged(int))));
    KELP_CONNECT(sourcePath, connect(m_transparencySlider, SIGNAL(valueChanged(int)), this,
                                     SLOT(transparencyChanged(int))));
    KELP_CONNECT(sourcePath, connect(m_lowerEdit, SIGNAL(textChanged(QString)), this,
                                     SLOT(transferLowerEditChanged(QString))));
    KELP_CONNECT(sourcePath, connect(m_upperEdit, SIGNAL(textChanged(QString)), this,
                                     SLOT(transferUpperEditChanged(QString))));
    for (QLineEdit* const edit : {m_lowerEdit, m_upperEdit}) {
        KELP_CONNECT(sourcePath,
                     connect(edit, SIGNAL(editingFinished()), this, SLOT(transferEditFinished())));
    }
}

QWidget* MeasurementWidget::createResults()
{
    auto* const group = new QGroupBox(QStringLiteral("Results (Thickness in \u00b5m)"));
    group->setObjectName(QStringLiteral("measurementResults"));
    group->setFixedHeight(resultsHeight);
    m_table = new QTableWidgetSelectedToClipboard;
    m_table->setObjectName(QStringLiteral("thicknessTable"));
    m_table->setAccessibleName(QStringLiteral("Mean thickness per sector"));
    m_table->setRowCount(EtdrsTable::nrRows);
    m_table->setColumnCount(EtdrsTable::nrColumns);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setDefaultSectionSize(sectionSize);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        m_table->setHorizontalHeaderItem(column,
                                         new QTableWidgetItem(EtdrsTable::columnLabel(column)));
    }
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        m_table->setVerticalHeaderItem(row, new QTableWidgetItem(EtdrsTable::rowLabel(row)));
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            auto* const item = new QTableWidgetItem(QStringLiteral("-"));
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(row, column, item);
        }
    }
    auto* const copy = new QAction(QStringLiteral("Copy Table"), m_table);
    copy->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    copy->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    KELP_CONNECT(sourcePath, connect(copy, SIGNAL(triggered()), this, SLOT(copyTable())));
    m_table->addAction(copy);
    m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_coverageNote = new QLabel;
    m_coverageNote->setObjectName(QStringLiteral("coverageNote"));
    m_coverageNote->setToolTip(
        QStringLiteral("Their means are those of the part inside the scan.\n"
                       "Point at a column to see on how many A-scans it stands."));
    // The map above keeps its size when the line comes and goes with the fovea.
    QSizePolicy policy = m_coverageNote->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    policy.setVerticalPolicy(QSizePolicy::Fixed);
    m_coverageNote->setSizePolicy(policy);
    auto* const layout = new QVBoxLayout(group);
    layout->addWidget(m_table);
    layout->addWidget(m_coverageNote);
    return group;
}

} // namespace kelp::oct
