#pragma once

#include "Waiting.h"
#include "kelpGIObject.h"
#include "kelpImage.h"

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace viewertest {

/// One grey all over.
inline kelp::ImagePtr makeImage(int width, int height, double spacingX = 1.0, double spacingY = 1.0,
                                int depth = 1)
{
    constexpr unsigned char grey = 90;
    const kelp::ImagePtr image =
        kelp::Image::create(kelp::MonoUInt8, {width, height, depth}, {spacingX, spacingY, 1.0});
    std::fill_n(image->pixels<unsigned char>(), image->getNumberOfPixels(), grey);
    return image;
}

/// Keeps what it is told, and tells in *deleted when it goes.
class RecordingObject : public kelp::GIObject
{
public:
    explicit RecordingObject(int* deleted = nullptr) : m_deleted(deleted) {}
    ~RecordingObject() override
    {
        if (m_deleted) {
            ++*m_deleted;
        }
    }

    QRectF boundingRect() const override { return {0.0, 0.0, 4.0, 2.0}; }
    void paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*) override {}
    void mouseDown(const QPointF& point) override { downs.append(point); }
    void mouseUp(const QPointF& point) override { ups.append(point); }
    void mouseMove(const QPointF& point) override { moves.append(point); }

    QList<QPointF> downs;
    QList<QPointF> ups;
    QList<QPointF> moves;

private:
    int* m_deleted;
};

using RecordingObjectPtr = QSharedPointer<RecordingObject>;

inline void show(QWidget& widget, const QSize& size = {400, 300})
{
    widget.resize(size);
    widget.show();
    ASSERT_TRUE(waiting::untilExposed(widget));
}

inline bool isInScene(const QGraphicsView& view, const kelp::GIObjectPtr& object)
{
    return object->scene() == view.scene();
}

} // namespace viewertest
