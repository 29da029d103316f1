#include "EditMaskDialog.h"

#include "LocalizerGraphicsViewer.h"
#include "kelpCheck.h"
#include "kelpSettings.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/view/EditMaskDialog";
const QString sizeKey = QStringLiteral("Gui/editMaskDialog/size");
constexpr QSize firstSize(640, 720);
constexpr QSize smallestViewer(320, 320);

} // namespace

EditMaskDialog::EditMaskDialog(QWidget* parent)
    : QDialog(parent), m_viewer(new LocalizerGraphicsViewer)
{
    setWindowTitle(QStringLiteral("Edit Mask"));
    setModal(true);
    m_viewer->setObjectName(QStringLiteral("editMaskViewer"));
    m_viewer->setMinimumSize(smallestViewer);
    m_viewer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_viewer->setWheelZoomEnabled(true);
    m_viewer->setPickingEnabled(false);

    auto* const hint = new QLabel(
        QStringLiteral("Click or draw with the left button; the right button closes the polygon. "
                       "The wheel zooms."));
    hint->setWordWrap(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto* const clearButton = new QPushButton(QStringLiteral("Delete All Masks"));
    clearButton->setAutoDefault(false);
    buttons->addButton(clearButton, QDialogButtonBox::ResetRole);
    KELP_CONNECT(sourcePath,
                 connect(clearButton, SIGNAL(clicked()), this, SIGNAL(btnClearClicked())));
    KELP_CONNECT(sourcePath, connect(buttons, SIGNAL(rejected()), this, SLOT(reject())));

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(hint);
    layout->addWidget(m_viewer, 1);
    layout->addWidget(buttons);
    resize(Settings::get(sizeKey, QVariant(firstSize)).toSize());
}

void EditMaskDialog::done(int result)
{
    Settings::set(sizeKey, QVariant(size()));
    QDialog::done(result);
}

} // namespace kelp::oct

#include "moc_EditMaskDialog.cpp"
