#include "OCTHelpModule.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextBrowser>
#include <QVBoxLayout>

// A static library's resources are not registered by themselves, and the macro wants to stand
// outside of any namespace.
static void registerHelpPages()
{
    Q_INIT_RESOURCE(help);
}

namespace kelp::oct {

namespace {

/// Reads its page again when light and dark change: the colours of links are taken while reading.
class HelpBrowser : public QTextBrowser
{
protected:
    void changeEvent(QEvent* event) override
    {
        QTextBrowser::changeEvent(event);
        if (event->type() == QEvent::PaletteChange && !source().isEmpty()) {
            const int place = verticalScrollBar()->value();
            reload();
            verticalScrollBar()->setValue(place);
        }
    }
};

} // namespace

OCTHelpModule::OCTHelpModule(const QString& name)
    : QtAppModule(name, false), m_browser(new HelpBrowser), m_mainWidget(new QWidget)
{
    registerHelpPages();
    m_browser->setObjectName(QStringLiteral("helpBrowser"));
    m_browser->setReadOnly(true);
    m_browser->setAcceptRichText(true);
    m_browser->setOpenExternalLinks(true);
    auto* const box = new QVBoxLayout(m_mainWidget);
    box->addWidget(m_browser);
    m_browser->setSource(QUrl(QStringLiteral("qrc:/help/html/introduction.html")));
}

OCTHelpModule::~OCTHelpModule()
{
    delete m_mainWidget;
}

} // namespace kelp::oct

#include "moc_OCTHelpModule.cpp"
