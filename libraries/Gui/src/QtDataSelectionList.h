#pragma once

#include "DataPointer.h"

#include <QWidget>

/// The data items of the current study, kept up to date with the study and with what is selected in
/// the patient manager.
class QtDataSelectionList : public QWidget, public CaSubject
{
    Q_OBJECT

public:
    enum FilterType
    {
        Include, ///< only items of these classes are listed
        Exclude
    };
    enum SelectionMode
    {
        Single,
        Multiple
    };

    explicit QtDataSelectionList(QWidget* parent = nullptr);
    ~QtDataSelectionList() override;

    void addFilter(const QString& className, FilterType type);
    void removeFilter(const QString& className);
    virtual bool filterPass(Data* data) const;
    void includeProcessData(bool include);
    void setSelectionMode(SelectionMode mode);
    /// Null or an item that is not listed selects nothing. Emits nothing.
    void setSelected(Data* data);
    QList<Data*> getSelection() const;

    /// Callbacks of CaSubject; listener is the list.
    static void updateList(CaSubject* subject, void* argument, char const* name, void* listener);
    static void updateCurrentStudy(CaSubject* subject, void* argument, char const* name,
                                   void* listener);

signals:
    void selectionChanged(Data* data);
    /// Also on Enter.
    void selectionDoubleClicked(Data* data);
};
