#pragma once

#include "OCTScanSegmentation.h"
#include "TestExport.h"
#include "kelpException.h"
#include "kelpTrace.h"

#include <QDataStream>

#include <functional>
#include <sstream>
#include <typeinfo>

/// What the tests of segmentations share.
namespace kelp::oct::test {

/// The message of the failure, which must be of exactly this class.
template <typename Failure, typename Function>
QString messageOf(Function&& function)
{
    try {
        function();
    } catch (const Failure& failure) {
        return typeid(failure) == typeid(Failure) ? failure.getMessage()
                                                  : QString("a failure of a derived class");
    }
    return "no failure";
}

/// Everything on the trace as long as the object lives.
class TraceCapture
{
public:
    TraceCapture() { kelp::Trace::redirect(&m_lines); }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture() { kelp::Trace::redirect(nullptr); }

    std::string text() const { return m_lines.str(); }

private:
    std::ostringstream m_lines;
};

/// A surface with a value per B-scan and A-scan.
inline VolumeLayerPtr makeSurface(unsigned rows, unsigned columns,
                                  const std::function<int(unsigned, unsigned)>& position)
{
    auto surface = VolumeLayerPtr::create(rows, columns);
    for (unsigned row = 0; row < rows; ++row) {
        for (unsigned column = 0; column < columns; ++column) {
            (*surface)(row, column) = static_cast<unsigned short>(position(row, column));
        }
    }
    return surface;
}

inline VolumeLayerPtr makeFlatSurface(unsigned rows, unsigned columns, int position)
{
    return makeSurface(rows, columns, [position](unsigned, unsigned) { return position; });
}

/// The four corners, closed by the rule of polygons.
inline QPolygonF makeRectangle(double left, double top, double right, double bottom)
{
    return QPolygonF(QVector<QPointF>{QPointF(left, top), QPointF(right, top),
                                      QPointF(right, bottom), QPointF(left, bottom)});
}

} // namespace kelp::oct::test
