#pragma once

#include <QLabel>

namespace kelp {

/// One line of plain text that gives way when the window is narrow: its end becomes an ellipsis,
/// and the tool tip has the whole of it.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    /// Not wider than this many characters of average width, whatever the text.
    void setWidestCharacters(int count);
    void setFullText(const QString& text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_widestCharacters = 40;
};

} // namespace kelp
