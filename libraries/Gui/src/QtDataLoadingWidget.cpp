#include "QtDataLoadingWidget.h"

#include "QtDataPathModel.h"
#include "SavedState.h"
#include "kelpCheck.h"

#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr char sourcePath[] = "libraries/Gui/src/QtDataLoadingWidget";
constexpr int singleFile = 0;

const QString folderKey = QStringLiteral("dataLoading/folder");

} // namespace

QtDataLoadingWidget::QtDataLoadingWidget(Data* item, const QString& name, QWidget* parent,
                                         Qt::WindowFlags flags, bool withNameField)
    : QtDataConfigurationWidget(item, name, parent, flags), m_nameEdit(new QLineEdit(name)),
      m_view(new QListView), m_message(new QLabel)
{
    m_nameEdit->setObjectName(QStringLiteral("nameEdit"));
    m_view->setObjectName(QStringLiteral("fileList"));
    m_message->setObjectName(QStringLiteral("loadingMessage"));
    m_message->setWordWrap(true);
    m_message->hide();
    m_view->setTextElideMode(Qt::ElideMiddle);
    m_view->setToolTip(QStringLiteral("The Delete key takes a file off the list"));

    auto* const addButton = new QToolButton;
    addButton->setObjectName(QStringLiteral("addFileButton"));
    addButton->setText(QStringLiteral("+"));
    addButton->setToolTip(QStringLiteral("Choose a file"));
    addButton->setFocusPolicy(Qt::StrongFocus);

    auto* const fileRow = new QHBoxLayout;
    fileRow->addWidget(m_view, 1);
    fileRow->addWidget(addButton, 0, Qt::AlignTop);
    auto* const form = new QFormLayout(this);
    form->addRow(QStringLiteral("&Name:"), m_nameEdit);
    auto* const filesLabel = new QLabel(QStringLiteral("&Files:"));
    filesLabel->setBuddy(m_view);
    form->addRow(filesLabel, fileRow);
    form->addRow(m_message);
    if (!withNameField) {
        form->labelForField(m_nameEdit)->hide();
        m_nameEdit->hide();
    }

    auto* const deleteKey =
        new QShortcut(QKeySequence(Qt::Key_Delete), m_view, nullptr, nullptr, Qt::WidgetShortcut);
    KELP_CONNECT(sourcePath, connect(addButton, SIGNAL(clicked()), this, SLOT(addFiles())));
    KELP_CONNECT(sourcePath,
                 connect(deleteKey, SIGNAL(activated()), this, SLOT(removeSelectedFiles())));
    setSelectionMode(singleFile);
}

void QtDataLoadingWidget::setSelectionMode(int mode)
{
    m_selectionMode = mode;
    m_view->setSelectionMode(mode == singleFile ? QAbstractItemView::SingleSelection
                                                : QAbstractItemView::ExtendedSelection);
}

QString QtDataLoadingWidget::getItemName() const
{
    const QString typed = m_nameEdit->text().trimmed();
    return typed.isEmpty() ? QtDataConfigurationWidget::getItemName() : typed;
}

QString QtDataLoadingWidget::getFileFilter() const
{
    return QStringLiteral("All files (*)");
}

QAbstractItemModel* QtDataLoadingWidget::createModel()
{
    return new QtDataPathModel(this);
}

QString QtDataLoadingWidget::getOpenFileName()
{
    return QFileDialog::getOpenFileName(this, QStringLiteral("Choose a File"),
                                        kelp::lastFolder(folderKey), getFileFilter());
}

QStringList QtDataLoadingWidget::getOpenFileNames()
{
    return QFileDialog::getOpenFileNames(this, QStringLiteral("Choose Files"),
                                         kelp::lastFolder(folderKey), getFileFilter());
}

QListView* QtDataLoadingWidget::getView()
{
    // Not in the constructor, which would not reach a subclass's createModel.
    if (!m_view->model()) {
        QAbstractItemModel* const model = createModel();
        m_view->setModel(model);
        for (const char* const change :
             {SIGNAL(rowsInserted(QModelIndex, int, int)),
              SIGNAL(rowsRemoved(QModelIndex, int, int)), SIGNAL(modelReset())}) {
            KELP_CONNECT(sourcePath, connect(model, change, this, SLOT(clearMessage())));
        }
    }
    return m_view;
}

void QtDataLoadingWidget::showMessage(const QString& message)
{
    m_message->setText(message);
    m_message->show();
}

void QtDataLoadingWidget::clearMessage()
{
    m_message->hide();
}

void QtDataLoadingWidget::showEvent(QShowEvent* event)
{
    getView();
    QtDataConfigurationWidget::showEvent(event);
}

QtDataPathModel* QtDataLoadingWidget::getPathModel()
{
    return qobject_cast<QtDataPathModel*>(getView()->model());
}

void QtDataLoadingWidget::addFiles()
{
    if (m_selectionMode == singleFile) {
        addPaths({getOpenFileName()});
    } else {
        addPaths(getOpenFileNames());
    }
}

void QtDataLoadingWidget::addPaths(const QStringList& paths)
{
    QtDataPathModel* const model = getPathModel();
    for (const QString& path : paths) {
        if (!model || path.isEmpty()) {
            continue;
        }
        kelp::setLastFolder(folderKey, path);
        if (m_selectionMode == singleFile) {
            model->setStringList({path});
        } else {
            model->addPath(path);
        }
        m_view->setCurrentIndex(model->index(model->rowCount() - 1));
    }
}

void QtDataLoadingWidget::removeSelectedFiles()
{
    QModelIndexList selected = m_view->selectionModel()->selectedIndexes();
    // From below, so that the rows still to be removed keep their numbers.
    std::sort(selected.begin(), selected.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return b < a; });
    for (const QModelIndex& index : selected) {
        m_view->model()->removeRow(index.row());
    }
}

#include "moc_QtDataLoadingWidget.cpp"
