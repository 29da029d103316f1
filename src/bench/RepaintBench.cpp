#include "GuiBench.h"

#include "ActiveDataItems.h"
#include "OCTAutoSegmentationModule.h"
#include "kelpCheck.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>

namespace kelp::bench {

namespace {

constexpr Place place{"src/bench/RepaintBench", "kelp::bench::measureRepaints"};

/// Wants to be painted all the time and keeps how long it had to wait.
class RepaintWatch : public QWidget
{
public:
    explicit RepaintWatch(QWidget* parent) : QWidget(parent)
    {
        constexpr int intervalMs = 10;
        setFixedSize(8, 8);
        startTimer(intervalMs);
    }
    void start()
    {
        m_gaps.clear();
        m_sinceLast.start();
    }
    const QList<double>& gaps() const { return m_gaps; }

protected:
    void timerEvent(QTimerEvent*) override { update(); }
    void paintEvent(QPaintEvent*) override
    {
        if (m_sinceLast.isValid()) {
            m_gaps.append(static_cast<double>(m_sinceLast.nsecsElapsed()) / 1e6);
            m_sinceLast.restart();
        }
    }

private:
    QElapsedTimer m_sinceLast;
    QList<double> m_gaps;
};

QPushButton* findButton(QWidget& parent, const QString& text)
{
    for (auto* const button : parent.findChildren<QPushButton*>()) {
        if (button->text().remove(QLatin1Char('&')) == text) {
            return button;
        }
    }
    return nullptr;
}

} // namespace

Figure measureRepaints(const OCTScanPtr& scan)
{
    Figure figure{QStringLiteral("between two repaints during \"Segment Normal\""), 100.0};
    oct::ActiveDataItems items;
    oct::OCTAutoSegmentationModule module(&items, QStringLiteral("OCT Auto-Segmentation"));
    QWidget& widget = *module.getMainWidget();
    RepaintWatch watch(&widget);
    watch.raise();
    widget.resize(1280, 720);
    widget.show();
    check(QTest::qWaitForWindowExposed(&widget, longestWaitMs), place,
          "The window does not come up.");
    const OCTScanSegPtr segmentation(new oct::OCTScanSegmentation(scan));
    module.setOCTScanSegmentationPrivate(segmentation);
    auto* const button = findButton(widget, QStringLiteral("Segment Normal"));
    check(button && button->isEnabled(), place, "\"Segment Normal\" cannot be pressed.");

    watch.start();
    QTest::mouseClick(button, Qt::LeftButton);
    // The tab knows; the layers themselves belong to the thread of the run until then.
    const auto* const result = findButton(widget, QStringLiteral("Export"));
    check(result && !result->isEnabled(), place, "There is a result already.");
    const auto isOver = [result] { return result->isEnabled(); };
    constexpr int longestRunMs = 600000;
    check(QTest::qWaitFor(isOver, longestRunMs), place, "The segmentation does not end.");
    QCoreApplication::processEvents();
    figure.milliseconds = watch.gaps();
    return figure;
}

} // namespace kelp::bench
