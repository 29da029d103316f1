#include "AddDataDialog.h"

#include "CopiedFiles.h"
#include "FailureBox.h"
#include "ItemNames.h"
#include "QtDataConfigurationWidget.h"
#include "kelpCheck.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QVBoxLayout>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/AddDataDialog";

} // namespace

AddDataDialog::AddDataDialog(QWidget* parent)
    : QDialog(parent), m_types(new QComboBox), m_place(new QVBoxLayout)
{
    constexpr int widthInCharacters = 70;
    setWindowTitle(QStringLiteral("Add Data"));
    m_types->setObjectName(QStringLiteral("dataType"));
    for (const DataFactory::Link& link : DataFactory::links()) {
        m_types->addItem(link.label);
    }
    m_place->setContentsMargins(0, 0, 0, 0);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* const form = new QFormLayout;
    form->addRow(QStringLiteral("&Type:"), m_types);
    auto* const box = new QVBoxLayout(this);
    box->addLayout(form);
    box->addLayout(m_place, 1);
    box->addWidget(buttons);
    setMinimumWidth(widthInCharacters * fontMetrics().averageCharWidth());
    KELP_CONNECT(sourcePath,
                 connect(m_types, SIGNAL(currentIndexChanged(int)), this, SLOT(showType(int))));
    KELP_CONNECT(sourcePath, connect(buttons, SIGNAL(accepted()), this, SLOT(accept())));
    KELP_CONNECT(sourcePath, connect(buttons, SIGNAL(rejected()), this, SLOT(reject())));
    showType(m_types->currentIndex());
}

void AddDataDialog::showType(int index)
{
    delete m_widget;
    m_widget = nullptr;
    m_item = nullptr;
    if (index < 0) {
        return;
    }
    const DataFactory::Link& link = DataFactory::links()[index];
    m_item = DataPointer<Data>(Data::getFactory().create(link.className));
    m_widget = m_item ? DataFactory::makeWidget(link, m_item.data(), QString(), this) : nullptr;
    if (m_widget) {
        m_place->addWidget(m_widget, 1);
    }
}

QString AddDataDialog::wantedId() const
{
    const QString typed = m_widget ? idOf(m_widget->getItemName()) : QString();
    return typed.isEmpty() && m_item ? defaultItemId(*m_item, m_types->currentText()) : typed;
}

void AddDataDialog::accept()
{
    if (!m_widget) {
        showFailure(this, windowTitle(),
                    QStringLiteral("There is nothing to make data of this type with."));
        return;
    }
    bool isApplied = false;
    guarded(this, QStringLiteral("The data could not be added:\n"), windowTitle(),
            [&] { isApplied = m_widget->apply(); });
    if (isApplied) {
        QDialog::accept();
    }
}

void AddDataDialog::reject()
{
    if (m_widget) {
        m_widget->cancel();
    }
    m_item = nullptr;
    QDialog::reject();
}

QString defaultItemId(const Data& item, const QString& typeLabel)
{
    QList<kelp::URI> uris;
    item.getUris(uris);
    for (const kelp::URI& uri : uris) {
        const QString series = idOf(uri.queryItem(QStringLiteral("seriesId")));
        if (!series.isEmpty()) {
            return series;
        }
    }
    const QStringList paths = pathsOf(item);
    const QString name = paths.isEmpty() ? QString() : idOf(QFileInfo(paths[0]).baseName());
    return name.isEmpty() ? idOf(typeLabel) : name;
}

} // namespace kelp::patients

#include "moc_AddDataDialog.cpp"
