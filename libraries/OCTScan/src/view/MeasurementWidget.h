#pragma once

#include "EtdrsGrid.h"
#include "OCTScanSegmentation.h"

#include <QWidget>

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QSlider;
class QTableWidgetSelectedToClipboard;

namespace kelp {
class TransferFunctionWidget;
} // namespace kelp

namespace kelp::oct {

class OCTMeasurementViewer;

/// The en-face thickness map, its rendering options, and the table of mean thicknesses per ETDRS
/// sector around the fovea that the viewer shows.
class MeasurementWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MeasurementWidget(QWidget* parent = nullptr);
    ~MeasurementWidget() override;

    OCTMeasurementViewer* getViewer() const { return m_viewer; }

public slots:
    /// Throw kelp::Assertion for null. setSegmentation, updateView and updateMeasurementsTable also
    /// for a segmentation without all surfaces of the table; everything else is shown then.
    void setOCT(OCTScanPtr oct);
    void clearOCT();
    /// After surfaces or mask of the shown segmentation have changed.
    void updateView();
    void setSegmentation(OCTScanSegPtr octSeg);
    void layerNameTopSelected(int index);
    void layerNameBottomSelected(int index);
    void transferFunctionSelected(int index);
    /// A limit that reaches the other one takes it along, one micrometre ahead.
    void transferLowerChanged(int value);
    void transferUpperChanged(int value);
    void transparencyChanged(int value);
    /// While a number is being typed it counts only if it leaves the other limit alone; see
    /// transferEditFinished.
    void transferLowerEditChanged(QString valueStr);
    void transferUpperEditChanged(QString valueStr);
    /// Throws kelp::Assertion for null.
    void updateLayerSelection(OCTScanSegPtr octSeg);
    void foveaMoved(CoordOnLocalizer newPos);
    void updateMeasurementsTable();

private slots:
    void transferEditFinished();
    void copyTable();

private:
    QWidget* createOptions();
    void addLayerBoxes(QGridLayout& grid);
    void addColorOptions(QGridLayout& grid);
    QSlider* createSlider(const QString& name, int minimum, int maximum, int value);
    QLineEdit* createLimitEdit(const QString& name, QSlider* slider);
    QWidget* createResults();
    void connectOptions();
    void showColors();
    /// Draws again with what the options say; a failure is shown in a box.
    template <typename Step>
    void renderGuarded(Step&& step);
    void fillLayerBox(QComboBox& box, const QList<LayerNamePtr>& names, const char* key,
                      int fallback);
    void clearLayerBoxes();
    /// Not where surfaces of the table are missing, which the note tells.
    void measureIfPossible();
    void showMeans();
    /// On how many A-scans the means stand, and the sectors that the scan's border cuts.
    void showCoverage();
    void updateNote();

    OCTMeasurementViewer* m_viewer = nullptr;
    QComboBox* m_topLayerBox = nullptr;
    QComboBox* m_bottomLayerBox = nullptr;
    QComboBox* m_colorBox = nullptr;
    QSlider* m_lowerSlider = nullptr;
    QSlider* m_upperSlider = nullptr;
    QSlider* m_transparencySlider = nullptr;
    QLineEdit* m_lowerEdit = nullptr;
    QLineEdit* m_upperEdit = nullptr;
    TransferFunctionWidget* m_legend = nullptr;
    QTableWidgetSelectedToClipboard* m_table = nullptr;
    QLabel* m_coverageNote = nullptr;
    QLabel* m_note = nullptr;
    EtdrsTable m_means;
};

} // namespace kelp::oct
