#pragma once

#include <vector>

/// Observer base of data items, of the application and of selection lists. User-interface thread
/// only.
class CaSubject
{
public:
    /// subject, the argument of notify, its name, the listener's own pointer.
    using Callback = void (*)(CaSubject*, void*, char const*, void*);

    CaSubject() = default;
    CaSubject(const CaSubject&) = delete;
    CaSubject& operator=(const CaSubject&) = delete;
    virtual ~CaSubject() = default;

    void attach(Callback callback, void* listener);
    void detach(Callback callback, void* listener);
    void notify(void* argument, char const* name);

private:
    struct Listener
    {
        Callback callback;
        void* pointer;
        friend bool operator==(const Listener&, const Listener&) = default;
    };
    std::vector<Listener> m_listeners;
};
