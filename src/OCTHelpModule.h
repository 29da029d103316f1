#pragma once

#include "QtAppModule.h"

#include <QPointer>
#include <QWidget>

class QTextBrowser;

namespace kelp::oct {

/// The tab with the help pages that are compiled into the program.
class OCTHelpModule : public QtAppModule
{
    Q_OBJECT

public:
    explicit OCTHelpModule(const QString& name);
    ~OCTHelpModule() override;

    QWidget* getMainWidget() override { return m_mainWidget; }

private:
    QTextBrowser* m_browser = nullptr;
    QPointer<QWidget> m_mainWidget;
};

} // namespace kelp::oct
