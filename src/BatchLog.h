#pragma once

#include "BatchReport.h"

#include <QTextEdit>

namespace kelp::oct {

/// The read-only log of a batch: lines in the colour of their kind, on white paper whatever the
/// palette, since black is one of the colours.
class BatchLog : public QTextEdit
{
    Q_OBJECT

public:
    explicit BatchLog(QWidget* parent = nullptr);

    /// Behind everything else, as plain text.
    void appendLine(const QString& text, BatchLine kind = BatchLine::Plain);
    /// A black dot at the cursor.
    void insertDot();
};

} // namespace kelp::oct
