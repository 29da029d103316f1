#pragma once

#include <QFrame>
#include <QStringList>

class QLabel;

namespace kelp {

/// What a notice says: a title, what to do, and a point for each thing to know.
struct Notice
{
    QString title;
    QString advice;
    QStringList points;
};

/// A bar that tells something which is no reason to stop the user: it stands beside what it is
/// about until it is closed, by its button, by Escape or by its owner. As high as its text needs;
/// a long one scrolls, so that there is room left for what the bar is about.
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeBar(QWidget* parent = nullptr);

    /// Opens the bar, whatever was said before. The focus of the keyboard stays where it is.
    void showNotice(const Notice& notice);

protected:
    void changeEvent(QEvent* event) override;

private:
    void makeCloseButton();
    void showIcon();

    QLabel* m_icon = nullptr;
    QLabel* m_text = nullptr;
};

} // namespace kelp
