#include "ApplicationAssembly.h"
#include "GuiBench.h"
#include "kelpException.h"
#include "kelpTrace.h"

#include <QApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <iostream>
#include <sstream>

namespace {

QList<kelp::bench::Figure> measureAll(const QString& folder)
{
    using namespace kelp::bench;
    const Sizes sizes;
    QList<Figure> figures;
    const OCTScanSegPtr segmentation = makeSegmentedScan(folder + "/phantom", sizes);
    figures.append(measurePaging(segmentation));
    figures.append(measureEditing(segmentation));
    figures.append(measureFoveaDrop(segmentation));
    figures.append(measureRepaints(segmentation->getOCT()));
    figures.append(measureStore(folder + "/store", sizes));
    figures.append(measureBatchTab(folder + "/store", sizes));
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    kelp::oct::registerFactories();
    // The figures alone on standard output.
    std::ostringstream trace;
    kelp::Trace::redirect(&trace);
    try {
        const QTemporaryDir folder;
        const auto figures = measureAll(folder.path());
        std::cout << kelp::bench::toTable(figures).toStdString();
        return std::any_of(figures.begin(), figures.end(),
                           [](const kelp::bench::Figure& figure) { return figure.isMissed(); })
                   ? 1
                   : 0;
    } catch (const kelp::Exception& exception) {
        std::cerr << exception.what() << std::endl;
        return 2;
    }
}
