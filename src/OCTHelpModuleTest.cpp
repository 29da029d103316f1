#include "OCTHelpModule.h"

#include "Appearance.h"
#include "Waiting.h"

#include <QDesktopServices>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

#include <gtest/gtest.h>

namespace {

const QStringList pages{QStringLiteral("introduction"), QStringLiteral("pm"),
                        QStringLiteral("export"),       QStringLiteral("automatic"),
                        QStringLiteral("manual"),       QStringLiteral("etdrs"),
                        QStringLiteral("batch")};

QString textOf(const QString& resource)
{
    QFile file(resource);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << resource.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// Catches what would be opened in the system's browser.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void take(const QUrl& url) { urls.append(url); }
};

struct HelpTab : testing::Test
{
    kelp::oct::OCTHelpModule module{QStringLiteral("OCT Help")};
    QTextBrowser* browser = module.getMainWidget()->findChild<QTextBrowser*>();

    void show()
    {
        module.getMainWidget()->resize(1000, 700);
        module.getMainWidget()->show();
        ASSERT_TRUE(waiting::untilExposed(*module.getMainWidget()));
    }
    /// Clicks the link with this text; false if it is not on the page.
    bool clickLink(const QString& text)
    {
        QTextCursor cursor = browser->document()->find(text);
        while (!cursor.isNull() && !cursor.charFormat().isAnchor()) {
            cursor = browser->document()->find(text, cursor);
        }
        if (cursor.isNull()) {
            return false;
        }
        cursor.setPosition(cursor.selectionStart() + 1);
        browser->setTextCursor(cursor);
        browser->ensureCursorVisible();
        QTest::mouseClick(browser->viewport(), Qt::LeftButton, {},
                          browser->cursorRect(cursor).center());
        return true;
    }
};

TEST_F(HelpTab, OpensReadOnlyAtTheIntroduction)
{
    ASSERT_TRUE(browser);
    EXPECT_TRUE(browser->isReadOnly());
    EXPECT_TRUE(browser->acceptRichText());
    EXPECT_TRUE(browser->openExternalLinks());
    EXPECT_EQ(browser->source().toString().toStdString(), "qrc:/help/html/introduction.html");
    EXPECT_TRUE(browser->toPlainText().contains(QStringLiteral("The way of a scan")));
}

TEST_F(HelpTab, EachPageLinksToAllOthersAndEveryTargetExists)
{
    const QRegularExpression reference(QStringLiteral("(?:href|src)=\"([^\"]+)\""));
    for (const QString& page : pages) {
        const QString text = textOf(QStringLiteral(":/help/html/%1.html").arg(page));
        for (const QString& other : pages) {
            EXPECT_EQ(text.contains(QStringLiteral("class=\"nav\"><a href=\"%1.html\"").arg(other)),
                      other != page)
                << page.toStdString() << " to " << other.toStdString();
        }
        auto matches = reference.globalMatch(text);
        while (matches.hasNext()) {
            const QString target = matches.next().captured(1);
            EXPECT_TRUE(QFile::exists(QStringLiteral(":/help/html/") + target))
                << page.toStdString() << " names " << target.toStdString();
        }
    }
}

TEST_F(HelpTab, LinksLeadFromPageToPage)
{
    show();
    ASSERT_TRUE(clickLink(QStringLiteral("Measurement")));
    EXPECT_EQ(browser->source().fileName().toStdString(), "etdrs.html");
    ASSERT_TRUE(clickLink(QStringLiteral("Batch")));
    EXPECT_EQ(browser->source().fileName().toStdString(), "batch.html");
}

TEST_F(HelpTab, ALinkToAnExternalSiteOpensInTheSystemsBrowser)
{
    UrlCatcher caught;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &caught, "take");
    show();
    browser->setHtml(QStringLiteral("<a href=\"https://example.org/\">Elsewhere</a>"));
    ASSERT_TRUE(clickLink(QStringLiteral("Elsewhere")));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    EXPECT_EQ(caught.urls, QList<QUrl>{QUrl(QStringLiteral("https://example.org/"))});
}

TEST_F(HelpTab, LinksTakeTheColourOfTheNewAppearance)
{
    show();
    const auto linkColour = [this] {
        const QTextCursor cursor = browser->document()->find(QStringLiteral("Measurement"));
        return cursor.charFormat().foreground().color();
    };
    kelp::applyAppearance(kelp::Appearance::Light);
    QCoreApplication::processEvents();
    const QColor light = linkColour();
    kelp::applyAppearance(kelp::Appearance::Dark);
    QCoreApplication::processEvents();
    EXPECT_NE(linkColour(), light);
    EXPECT_EQ(linkColour(), QApplication::palette().color(QPalette::Link));
    kelp::applyAppearance(kelp::Appearance::Light);
}

} // namespace

#include "OCTHelpModuleTest.moc"
