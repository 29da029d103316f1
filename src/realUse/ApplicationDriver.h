#pragma once

#include "DialogDriver.h"
#include "kelpGISliceSegmentationViewer.h"

#include <QPoint>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QAbstractButton;
class QAbstractItemView;

/// The hands of a user at the whole application: every operation is mouse and key events on the
/// widgets that are on the screen.
class ApplicationDriver
{
public:
    using Script = std::function<void(ApplicationDriver&)>;

    /// Starts the application, lets the script use it while its event loop runs, and quits with
    /// Ctrl+Q. Returns the exit code. The store and the settings are those of the environment, so
    /// that a second run finds what the first one left. What comes up before the main form is
    /// there is answered by what prepare expects.
    static int run(const Script& script, const Script& prepare = {});

    DialogDriver dialogs;

    QWidget& form() const;
    /// The visible widget of this name below the form, or below another parent; fails the test and
    /// throws when there is none.
    template <typename T>
    T& find(const char* name, QWidget* parent = nullptr) const
    {
        return *checked(visible(nameList<T>(name, parent)), name);
    }
    template <typename T>
    bool has(const char* name) const
    {
        return visible(nameList<T>(name, nullptr)) != nullptr;
    }

    void selectTab(const QString& name);
    QString currentTab() const;
    /// Clicks the visible and enabled button of this text in the open tab.
    void click(const QString& text);
    bool isEnabled(const QString& buttonText) const;
    /// Clicks the check box or radio button of this text on its indicator.
    void tick(const QString& text);
    /// A key for a widget that has the keyboard's focus by then.
    void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Clicks "Cancel" in the next progress dialog as soon as it has come to this value.
    void cancelProgressAt(int value);
    void choose(QAbstractItemView& view, int row);
    void doubleClick(QAbstractItemView& view, int row);
    /// The line of this text, also in a tree.
    void chooseText(QAbstractItemView& view, const QString& text);
    QStringList texts(const QAbstractItemView& view) const;

    // Patient manager; its tab is open.
    void newPatient(const QString& lastName, const QString& firstName, const QString& birthDate);
    /// What comes up after the dialog's "OK" is expected by the last argument.
    void newStudy(const QString& name, const std::function<void()>& expectMore = {});
    /// Answers the file dialog with the path, and picks the series of this row.
    void addScan(const QString& xmlPath, int seriesRow = 0);

    /// Of the study tree below the patient.
    void chooseLine(const QString& text);
    void choosePatient(const QString& name);

    // Tabs of one scan.
    void openScan(int row = 0);
    void newSegmentation();
    /// Presses the button and waits until the run is over and its dialog gone.
    void segment(const QString& buttonText);
    /// The B-scan viewer of the open tab.
    kelp::oct::GISliceSegmentationViewer& sliceViewer() const;
    /// What it shows; null for none.
    OCTScanSegPtr shownSegmentation() const;
    int activeSlice() const;
    int layerCount() const;

    /// Handles events until the condition holds; false and a failure after the time, which tells
    /// who waited and where the focus was.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs = 120000,
                        const char* file = __builtin_FILE(), int line = __builtin_LINE());

    /// What makes a script stop where it is, after the failure was reported.
    struct Stop
    {
    };

private:
    ApplicationDriver();
    void perform(const Script& script);
    QAbstractButton* findButton(const QString& text) const;

    template <typename T>
    QList<T*> nameList(const char* name, QWidget* parent) const
    {
        return (parent ? parent : &form())->findChildren<T*>(QString::fromLatin1(name));
    }
    template <typename T>
    static T* visible(const QList<T*>& widgets)
    {
        for (T* const widget : widgets) {
            if (widget->isVisible()) {
                return widget;
            }
        }
        return nullptr;
    }
    template <typename T>
    static T* checked(T* widget, const char* name)
    {
        if (!widget) {
            stop(name);
        }
        return widget;
    }
    [[noreturn]] static void stop(const char* missing);

    friend class ScriptStarter;
    std::unique_ptr<QObject> m_canceller;
};
