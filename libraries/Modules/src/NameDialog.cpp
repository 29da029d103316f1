#include "NameDialog.h"

#include "kelpCheck.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/NameDialog";
constexpr int widthInCharacters = 44;

} // namespace

NameDialog::NameDialog(const QString& title, const QString& name, const IsTaken& isTaken,
                       QWidget* parent)
    : QDialog(parent), m_isTaken(isTaken), m_name(new QLineEdit(name)),
      m_institution(new QLineEdit), m_note(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowTitle(title);
    m_name->setObjectName(QStringLiteral("itemName"));
    m_name->selectAll();
    m_institution->setObjectName(QStringLiteral("institution"));
    m_institution->setPlaceholderText(QStringLiteral("optional"));
    m_note->setObjectName(QStringLiteral("note"));
    m_note->setWordWrap(true);
    m_note->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_note->setMinimumSize(widthInCharacters * fontMetrics().averageCharWidth(),
                           2 * fontMetrics().lineSpacing());
    auto* const form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(QStringLiteral("&Name:"), m_name);
    form->addRow(QStringLiteral("&Institution:"), m_institution);
    form->labelForField(m_institution)->hide();
    m_institution->hide();
    form->addRow(m_note);
    form->addRow(m_buttons);
    KELP_CONNECT(sourcePath, connect(m_name, SIGNAL(textChanged(QString)), this, SLOT(check())));
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(accepted()), this, SLOT(accept())));
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(rejected()), this, SLOT(reject())));
    check();
}

void NameDialog::askInstitution(const QString& institution)
{
    m_institution->setText(institution);
    m_institution->show();
    static_cast<QFormLayout*>(layout())->labelForField(m_institution)->show();
}

QString NameDialog::id() const
{
    return idOf(m_name->text());
}

QString NameDialog::institution() const
{
    return m_institution->text().simplified();
}

void NameDialog::check()
{
    const bool isFree = !id().isEmpty() && !m_isTaken(id());
    QString note;
    if (id().isEmpty()) {
        note = QStringLiteral("Enter a name.");
    } else if (!isFree) {
        note = QStringLiteral("The name \"%1\" is taken.").arg(id());
    } else if (id() != m_name->text()) {
        note = QStringLiteral("Stored as \"%1\".").arg(id());
    }
    m_note->setText(note);
    m_note->setMinimumHeight(
        qMax(2 * fontMetrics().lineSpacing(),
             m_note->heightForWidth(qMax(m_note->width(), m_note->minimumWidth()))));
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(isFree);
}

} // namespace kelp::patients

#include "moc_NameDialog.cpp"
