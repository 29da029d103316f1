#pragma once

#include <QString>

/// The process-wide display of a long operation. The window is supplied by the application; without
/// one the calls do nothing.
class CaProgressMonitor
{
public:
    class Display
    {
    public:
        virtual ~Display() = default;
        virtual void open(const QString& text, int steps) = 0;
        virtual void step() = 0;
        virtual void close() = 0;
    };

    static CaProgressMonitor& getInstance();

    /// Not owned; null removes it.
    void setDisplay(Display* display) { m_display = display; }
    void open(const QString& text, int steps);
    void step();
    void close();

private:
    Display* m_display = nullptr;
};
