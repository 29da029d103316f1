#pragma once

#include "ApplicationDriver.h"
#include "CoordOnLocalizer.h"

#include <QList>
#include <QPointF>
#include <QPolygonF>
#include <QStringList>

/// What a user does in the tabs of one scan, with mouse and keys alone.
namespace scantabs {

inline const QString automaticTab = QStringLiteral("OCT Auto-Segmentation");
inline const QString manualTab = QStringLiteral("OCT Manual Segmentation");
inline const QString measurementTab = QStringLiteral("OCT Measurement");

/// Identifiers of the layers that are drawn over the B-scan that is shown, sorted.
QStringList drawnLayers(const ApplicationDriver& user);

/// The row of a layer in the data of the B-scan that is shown; -1 where there is no such layer.
int rowOf(const ApplicationDriver& user, const QString& layer, int aScan);
/// Holds Shift, moves the mouse to the layer and lets Shift go.
void pickLayer(ApplicationDriver& user, const QString& layer, int aScan);
/// With the left button over these places: A-scan and row, with fractions.
void drawStroke(ApplicationDriver& user, const QList<QPointF>& places);

/// Opens the mask editor, clicks the corners (mm on the localizer), closes the polygon with the
/// right button, and leaves.
void drawMask(ApplicationDriver& user, const QPolygonF& corners);
void deleteAllMasks(ApplicationDriver& user);

/// The cells of the table of thicknesses, row by row.
QStringList shownThicknesses(const ApplicationDriver& user);
/// What the table has to show for a segmentation that is read anew from this stored text.
QStringList expectedThicknesses(const OCTScanPtr& scan, const QString& storedText,
                                const CoordOnLocalizer& fovea);
CoordOnLocalizer shownFovea(const ApplicationDriver& user);
/// With the left button, from its place by so many millimetres.
void dragFovea(ApplicationDriver& user, double dx, double dy);
/// By the menu of the right button, which has this entry.
void savePicture(ApplicationDriver& user, const QString& entry, const QString& path);

/// Checks the four formats and exports them into the folder.
void exportAllFormats(ApplicationDriver& user, const QString& folder);

} // namespace scantabs
