#pragma once

#include "QtDataConfigurationWidget.h"

#include <QStringList>

class QAbstractItemModel;
class QLabel;
class QLineEdit;
class QListView;
class QtDataPathModel;

/// Base of the widgets that make a data item from files: a name field, a list of files, and a plus
/// button that asks for them. The Delete key takes the selected files off the list.
class QtDataLoadingWidget : public QtDataConfigurationWidget
{
    Q_OBJECT

public:
    /// withNameField: whether the name field is shown.
    QtDataLoadingWidget(Data* item, const QString& name, QWidget* parent, Qt::WindowFlags flags,
                        bool withNameField);

    /// 0: a single file, which the next one replaces; 1: several.
    void setSelectionMode(int mode);
    /// What stands in the name field without blanks around it, or the name given at the start.
    QString getItemName() const override;

protected:
    /// As in QFileDialog.
    virtual QString getFileFilter() const;
    /// The model of the list: a QtDataPathModel. Called once, when the model is first needed.
    virtual QAbstractItemModel* createModel();
    /// Empty when the user cancels.
    virtual QString getOpenFileName();
    virtual QStringList getOpenFileNames();

    QListView* getView();
    /// What keeps the files from being taken, told below the list until the list changes.
    void showMessage(const QString& message);
    void showEvent(QShowEvent* event) override;

private slots:
    void addFiles();
    void removeSelectedFiles();
    void clearMessage();

private:
    void addPaths(const QStringList& paths);
    QtDataPathModel* getPathModel();

    int m_selectionMode = 0;
    QLineEdit* m_nameEdit = nullptr;
    QListView* m_view = nullptr;
    QLabel* m_message = nullptr;
};
