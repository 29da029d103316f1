#pragma once

#include "CoordOnLocalizer.h"
#include "OCTScanSegmentation.h"
#include "kelpColorTransferFunction.h"
#include "kelpGIImageViewer.h"

namespace kelp::oct {

/// The localizer with the thickness between two surfaces in colours and the ETDRS grid on top. The
/// mouse drags the fovea; where it was dragged to is not written into the segmentation. Scene
/// coordinates are millimetres on the localizer.
class OCTMeasurementViewer : public GIImageViewer
{
    Q_OBJECT

public:
    explicit OCTMeasurementViewer(QWidget* parent = nullptr);
    ~OCTMeasurementViewer() override;

    /// Both throw Assertion for null. The fovea goes to the scan's centre; then to where the
    /// segmentation has it, if it does. A surface that the segmentation does not have is no longer
    /// chosen afterwards. A scan that is not loaded shows as none. The
    /// segmentation of another scan goes with that scan.
    void setOCT(const OCTScanPtr& scan);
    void setSegmentation(const OCTScanSegPtr& segmentation);
    void clearOCT();
    void clear() override;

    /// Throw Assertion for null, and that of getVolumeLayer for a surface that is not everywhere.
    void setTopLayerName(const LayerNamePtr& name);
    void setBottomLayerName(const LayerNamePtr& name);
    /// The thicknesses of the colour table's ends, micrometres; low must be below high.
    void setTransferFunction(ColorMaps map);
    void setTransferRange(double low, double high);
    /// 0 hides the map, 1 makes it opaque.
    void setTransferAlpha(double alpha);

    /// The map anew, after surfaces or mask have changed.
    void updateMap();

    const CoordOnLocalizer& getFovea() const { return m_fovea; }
    const OCTScanPtr& getOCT() const { return m_scan; }
    const OCTScanSegPtr& getSegmentation() const { return m_segmentation; }
    /// The number of an EtdrsSector; that of Outside without a segmentation.
    int getSector(const CoordOnLocalizer& position) const;

signals:
    /// At the end of a drag.
    void foveaMoved(CoordOnLocalizer newPos);

public slots:
    void showRightClickMenu(const QPoint& position);

protected:
    // None of the mouse handlers calls that of the base: nothing else here is moved by the mouse.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void render();
    void renderMap();
    void removeMap();
    void drawGrid();
    void clearGrid();
    void addCircle(double radius);
    void addSpokes();
    void addLabels();
    void addLabel(const QString& text, const Vector2d& offset);
    void addToGrid(QGraphicsItem* item);
    void setFovea(const CoordOnLocalizer& position);
    void removeHoverEllipse();
    void showHoverEllipse();
    void showGrid(bool visible);
    void savePicture(bool withGrid);
    QImage renderPicture() const;

    OCTScanPtr m_scan;
    OCTScanSegPtr m_segmentation;
    QList<QGraphicsItem*> m_gridItems;
    CoordOnLocalizer m_fovea;
    CoordOnLocalizer m_foveaAtPress;
    QGraphicsPixmapItem* m_mapItem = nullptr;
    QGraphicsEllipseItem* m_hoverEllipse = nullptr;
    ColorMaps m_colorMap = ColorMaps::Rainbow;
    double m_transferLow = 200.0;
    double m_transferHigh = 400.0;
    double m_transferAlpha = 0.5;
    LayerNamePtr m_topLayerName;
    LayerNamePtr m_bottomLayerName;

    const double m_grabRadiusSquared = 0.25;
    const double m_handleDiameter = 1.2;
};

} // namespace kelp::oct
