#pragma once

#include "kelpGIImageViewer.h"
#include "kelpGIVector2DList.h"

#include <QVector>

namespace kelp {

/// Pages through the slices of a volume and keeps objects per slice.
class GISliceViewer : public GIImageViewer
{
    Q_OBJECT

public:
    explicit GISliceViewer(QWidget* parent = nullptr);
    ~GISliceViewer() override;

    using GIImageViewer::addGIObject;
    using GIImageViewer::removeGIObject;

    /// The middle slice becomes current (half the length, ties to even); it is shown by
    /// setActiveSlice.
    virtual void setSlices(QList<ImagePtr> slices);
    virtual void setVolume(ImagePtr volume);
    /// A slice that does not exist takes none.
    virtual void addGIObject(GIObjectPtr object, int sliceIndex);
    virtual void removeGIObject(GIObjectPtr object, int sliceIndex);
    virtual void clearSliceObjects();
    void clear() override;
    /// Whether a hint line that is shown stays so on the next slice.
    void setKeepXHintLine(bool keep) { m_keepXHintLine = keep; }
    void setKeepYHintLine(bool keep) { m_keepYHintLine = keep; }

    int getActiveSlice() const { return m_currentImgIndex; }
    int getSliceCount() const { return m_slices.size(); }
    /// Empty for an index outside.
    QList<GIObjectPtr> getSliceObjects(int sliceIndex) const;
    const GIVector2DList& getXHintLine() const { return *m_xHintLine; }
    const GIVector2DList& getYHintLine() const { return *m_yHintLine; }

public slots:
    /// An index outside shows nothing.
    virtual void setActiveSlice(int index);
    virtual void setXHintLine(int yImgRow);
    virtual void setXHintLine(double yPos);
    virtual void setYHintLine(int xImgColumn);
    virtual void setYHintLine(double xPos);
    void removeSlices();

signals:
    void activeSliceChanged(int index);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

    /// Whether there is an image of this index.
    bool isSliceValid(int index) const { return !m_slices.value(index).isNull(); }

    QList<ImagePtr> m_slices;
    int m_currentImgIndex = -1;
    QVector<QList<GIObjectPtr>> m_sliceObjects;

private:
    void tellSliceObjects(MouseHandler handler, const QMouseEvent* event);
    void putHintLines();
    void takeHintLines();

    GIVector2DListPtr m_xHintLine;
    GIVector2DListPtr m_yHintLine;
    bool m_keepXHintLine = false;
    bool m_keepYHintLine = false;
};

} // namespace kelp
