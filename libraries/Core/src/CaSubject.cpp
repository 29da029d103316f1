#include "CaSubject.h"

#include <algorithm>

void CaSubject::attach(Callback callback, void* listener)
{
    const Listener wanted{callback, listener};
    if (std::find(m_listeners.begin(), m_listeners.end(), wanted) == m_listeners.end()) {
        m_listeners.push_back(wanted);
    }
}

void CaSubject::detach(Callback callback, void* listener)
{
    std::erase(m_listeners, Listener{callback, listener});
}

void CaSubject::notify(void* argument, char const* name)
{
    // A callback may attach and detach: the round goes to those who were there at its start and
    // still are at their turn.
    const std::vector<Listener> round = m_listeners;
    for (const Listener& listener : round) {
        if (std::find(m_listeners.begin(), m_listeners.end(), listener) != m_listeners.end()) {
            listener.callback(this, argument, name, listener.pointer);
        }
    }
}
