#include "platform/Handover.h"

#include <QCoreApplication>

namespace orbitledge {

void HandoverBase::wake()
{
    QEvent *done = nullptr;
    {
        const std::scoped_lock lock(m_mutex);
        done = m_doneEvent.release();
    }
    QCoreApplication::postEvent(this, done);
}

bool HandoverBase::event(QEvent *event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    {
        // Nobody else holds it by now; taking it makes what the other thread wrote visible here.
        const std::scoped_lock lock(m_mutex);
    }
    m_waiting.resume(); // may end the coroutine, and this object with it
    return true;
}

} // namespace orbitledge
