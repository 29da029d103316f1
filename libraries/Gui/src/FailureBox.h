#pragma once

#include "kelpException.h"

#include <QString>

#include <utility>

class QWidget;

namespace kelp {

/// A critical message box with an OK button; modal.
void showFailure(QWidget* parent, const QString& title, const QString& text);

/// The first line of a failure's box followed by what the exception tells.
QString failureText(const QString& firstLine, const Exception& exception);

/// One step of a slot: runs it, and shows a kelp::Exception in a critical box with this title and
/// first line. Returns whether the step went through; the slot goes on with its next step.
template <typename Step>
bool guarded(QWidget* parent, const QString& firstLine, const QString& title, Step&& step)
{
    try {
        std::forward<Step>(step)();
        return true;
    } catch (const Exception& exception) {
        showFailure(parent, title, failureText(firstLine, exception));
        return false;
    }
}

} // namespace kelp
