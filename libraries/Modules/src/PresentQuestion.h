#pragma once

#include "PatientExchange.h"

class QWidget;

namespace kelp::patients {

/// Asks what to do with a patient that is here already; once for all if the user wants it so.
class PresentQuestion
{
public:
    explicit PresentQuestion(QWidget* parent) : m_parent(parent) {}

    kelp::exchange::Present ask(const Patient& present);

private:
    QWidget* m_parent;
    bool m_isForAll = false;
    kelp::exchange::Present m_answer = kelp::exchange::Present::Keep;
};

} // namespace kelp::patients
