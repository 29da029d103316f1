#include "ApplicationDriver.h"

#include "Appearance.h"
#include "MouseEvents.h"
#include "Phantom.h"
#include "PictureBook.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QGraphicsView>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>

// Makes the pictures of the documentation. As a test it takes them of a small scan into a folder of
// its own, so that the script that makes the real ones cannot rot.

namespace {

using kelp::phantom::Pattern;

class Screenshots : public testing::Test
{
protected:
    Screenshots() : m_book(m_folder.filePath(QStringLiteral("pictures")))
    {
        qputenv("TESSERA_STORE", m_folder.filePath(QStringLiteral("store")).toUtf8());
        const bool dark = qEnvironmentVariable("TESSERA_PALETTE") == QStringLiteral("dark");
        kelp::chooseAppearance(dark ? kelp::Appearance::Dark : kelp::Appearance::Light);
    }

    QString writeExport(const QString& name, Pattern pattern, std::uint64_t seed = 1) const
    {
        kelp::phantom::Options options;
        options.pattern = pattern;
        options.seed = seed;
        if (!qEnvironmentVariableIsSet("TESSERA_PICTURES")) {
            options.aScans = 128;
            options.rows = 240;
            options.bScans = 7;
            options.localizerSize = 256;
        }
        return kelp::phantom::writeExport(m_folder.filePath(name), options).xmlPath;
    }

    void takeForm(ApplicationDriver& user, const QString& name) const
    {
        m_book.take(user.form(), name);
    }

    QTemporaryDir m_folder;
    PictureBook m_book;
};

void resizeForm(ApplicationDriver& user)
{
    const QSize size(1280, 800);
    user.form().showNormal();
    user.form().move(0, 0);
    user.form().resize(size);
    ApplicationDriver::waitFor([&] { return user.form().size() == size; });
}

/// The place in the viewport of a point given as fractions of the viewport.
QPoint placeIn(const QGraphicsView& view, double x, double y)
{
    const QSize size = view.viewport()->size();
    return {static_cast<int>(x * size.width()), static_cast<int>(y * size.height())};
}

TEST_F(Screenshots, ShowEveryTabDialogAndPage)
{
    const QString volume = writeExport(QStringLiteral("volume"), Pattern::Volume);
    const QString circle = writeExport(QStringLiteral("circle"), Pattern::Circle);
    ApplicationDriver::run([&](ApplicationDriver& user) {
        resizeForm(user);
        user.selectTab(QStringLiteral("OCT Auto-Segmentation"));
        takeForm(user, QStringLiteral("hint-no-study"));
        user.selectTab(QStringLiteral("Patient Manager"));
        takeForm(user, QStringLiteral("hint-no-patient"));
        user.newPatient(QStringLiteral("Okafor"), QStringLiteral("Chidi"),
                        QStringLiteral("1948-02-11"));
        user.newPatient(QStringLiteral("Lindqvist"), QStringLiteral("Ada"),
                        QStringLiteral("1960-12-31"));
        user.newStudy(QStringLiteral("Baseline"));
        user.addScan(volume);
        user.addScan(circle);
        takeForm(user, QStringLiteral("tab-patients"));
    });
}

} // namespace
