#include "OCTMeasurementViewer.h"

#include "FailureBox.h"
#include "kelpFileWriter.h"
#include "kelpLog.h"
#include "kelpSettings.h"
#include "kelpTrace.h"

#include <QBuffer>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsScene>
#include <QMenu>

#include <algorithm>
#include <cmath>

namespace kelp::oct {

namespace {

constexpr char pathKey[] = "lastScreenshotExportPath";
/// Small localizers are enlarged to this, so that the grid's labels can be read.
constexpr double shortestPictureSide = 768.0;

/// Throws IOFailure. Written whole or not at all.
void writePicture(const QImage& picture, const QString& path)
{
    const QString suffix = QFileInfo(path).suffix();
    const QByteArray format = suffix.isEmpty() ? QByteArray("png") : suffix.toLatin1();
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, format.constData())) {
        throw IOFailure(QStringLiteral("\"%1\" is no picture format that can be written.")
                            .arg(QString::fromLatin1(format)));
    }
    writeFileAtomically(path, content);
}

} // namespace

void OCTMeasurementViewer::showRightClickMenu(const QPoint& position)
{
    if (m_scan.isNull()) {
        return;
    }
    QMenu menu(this);
    const QAction* const without = menu.addAction(QStringLiteral("Save image without ETDRS"));
    const QAction* const with = menu.addAction(QStringLiteral("Save image with ETDRS"));
    const QAction* const chosen = menu.exec(viewport()->mapToGlobal(position));
    if (chosen == without) {
        Trace() << "without ETDRS";
        savePicture(false);
    } else if (chosen == with) {
        Trace() << "with ETDRS";
        savePicture(true);
    }
}

void OCTMeasurementViewer::savePicture(bool withGrid)
{
    const QString path = QFileDialog::getSaveFileName(
        this, QStringLiteral("Save Image"), Settings::get(pathKey, QString()),
        QStringLiteral("Images (*.png *.tif *.jpg *.jpeg)"));
    if (path.isEmpty()) {
        return;
    }
    Settings::set(pathKey, path);
    // The handle belongs to the mouse, not to the picture.
    removeHoverEllipse();
    try {
        showGrid(withGrid);
        const QImage picture = renderPicture();
        showGrid(true);
        writePicture(picture, path);
    } catch (const Exception& exception) {
        Log::getInstance("libraries/OCTScan/src/view/OCTMeasurementViewer",
                         "kelp::oct::OCTMeasurementViewer::savePicture", __LINE__)
            << exception.what();
        showFailure(this, QStringLiteral("Error saving the screenshot"),
                    QStringLiteral("The screenshot could not be saved!"));
    }
}

void OCTMeasurementViewer::showGrid(bool visible)
{
    for (QGraphicsItem* const item : m_gridItems) {
        item->setVisible(visible);
    }
}

QImage OCTMeasurementViewer::renderPicture() const
{
    const QRectF area = scene()->sceneRect();
    const auto [spacingX, spacingY] = getImageScale();
    const double scale = std::max(1.0 / std::min(spacingX, spacingY),
                                  shortestPictureSide / std::max(area.width(), area.height()));
    const auto pixels = [scale](double millimetres) {
        return std::max(1, static_cast<int>(std::lround(millimetres * scale)));
    };
    QImage picture(pixels(area.width()), pixels(area.height()),
                   QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    scene()->render(&painter, QRectF(picture.rect()), area, Qt::KeepAspectRatio);
    return picture;
}

} // namespace kelp::oct
