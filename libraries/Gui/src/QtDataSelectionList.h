#pragma once

#include "DataPointer.h"
#include "Study.h"

#include <QMap>
#include <QStringList>
#include <QWidget>

class QListWidget;
namespace kelp {
class HintOverlay;
}

/// The data items of the current study, kept up to date with the study and with what is selected in
/// the patient manager. What was selected stays so as long as it is listed.
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
    virtual bool filterPass(Data* item) const;
    void includeProcessData(bool include);
    void setSelectionMode(SelectionMode mode);
    /// Null or an item that is not listed selects nothing. Emits nothing.
    void setSelected(Data* item);
    /// In the order listed.
    QList<Data*> getSelection() const;

    /// Callbacks of CaSubject; listener is the list. updateList is for whatever tells of a change
    /// of the study.
    static void updateList(CaSubject* subject, void* argument, char const* name, void* listener);
    static void updateCurrentStudy(CaSubject* subject, void* argument, char const* name,
                                   void* listener);

signals:
    /// The item that the user chose last, or null when none is selected any more.
    void selectionChanged(Data* item);
    /// Also on Enter.
    void selectionDoubleClicked(Data* item);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void itemSelectionChanged();
    void itemDoubleClicked();

private:
    void setStudy(const DataPointer<Study>& study);
    void refill();
    QStringList getSelectedGUIDs() const;
    /// Silently.
    void selectGUIDs(const QStringList& guids);
    void showHint();
    Data* chosenItem() const;

    DataPointer<Study> m_study;
    QList<DataPointer<Data>> m_items; ///< parallel to the rows
    QMap<QString, FilterType> m_filters;
    bool m_includeProcessData = false;
    QListWidget* m_list = nullptr;
    kelp::HintOverlay* m_hint = nullptr;
};
