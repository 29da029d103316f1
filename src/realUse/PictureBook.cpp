#include "PictureBook.h"

#include <QDir>
#include <QPixmap>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr int settlingMs = 60;

} // namespace

PictureBook::PictureBook(const QString& otherwise)
    : m_folder(qEnvironmentVariable("TESSERA_PICTURES", otherwise))
{
    EXPECT_TRUE(QDir().mkpath(m_folder)) << m_folder.toStdString();
}

void PictureBook::take(QWidget& widget, const QString& name) const
{
    QTest::qWait(settlingMs);
    const QPixmap picture = widget.grab();
    const QString path = QStringLiteral("%1/%2.png").arg(m_folder, name);
    EXPECT_TRUE(picture.save(path)) << path.toStdString();
}
