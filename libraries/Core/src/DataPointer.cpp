#include "DataPointer.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

DataPointerTracker::~DataPointerTracker()
{
    QObject::disconnect(m_connection);
}

void DataPointerTracker::track(Data* data)
{
    if (m_connection) {
        QObject::disconnect(m_connection);
        m_connection = QMetaObject::Connection();
    }
    m_data.store(data, std::memory_order_release);
    if (data) {
        // Direct, since pointers travel through queued calls and may be held by a thread that runs
        // no event loop: the notice must arrive before the item's memory is gone.
        KELP_CONNECT("libraries/Core/src/DataPointer",
                     m_connection = connect(data, SIGNAL(destroyed()), this, SLOT(itemDestroyed()),
                                            Qt::DirectConnection));
    }
}

void DataPointerTracker::itemDestroyed()
{
    const void* const address = m_data.exchange(nullptr);
    if (address) {
        kelp::Trace() << "The object at address " << address
                      << " was just deleted. This must not happen if "
                      << "the referece counting mechanism is used correctly. "
                      << "Try to find double-unref's or even better use "
                      << "DataPointer<> for all your data item handling.";
    }
}
