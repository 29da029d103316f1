#pragma once

#include "QtDataConfigurationWidget.h"

#include <QStringList>

class QAbstractItemModel;
class QListView;

/// Base of the widgets that make a data item from files: a name field, a list of files, and a plus
/// button that asks for them.
class QtDataLoadingWidget : public QtDataConfigurationWidget
{
    Q_OBJECT

public:
    /// withNameField: whether the name field is shown.
    QtDataLoadingWidget(Data* data, const QString& name, QWidget* parent, Qt::WindowFlags flags,
                        bool withNameField);

    /// 0: a single file; 1: several.
    void setSelectionMode(int mode);
    QString getItemName() const override;

protected:
    /// As in QFileDialog.
    virtual QString getFileFilter() const;
    /// The model of the list: a QtDataPathModel.
    virtual QAbstractItemModel* createModel();
    virtual QString getOpenFileName();
    virtual QStringList getOpenFileNames();

    QListView* getView() const;
};
