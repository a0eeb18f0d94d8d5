#pragma once

#include "app/CardOccupation.h"

class FrontWindow;
class PrintDesk;

/// Refuses requests of the user that cannot be met now, and says why in the window. Main thread only.
class RequestRefusal
{
public:
    /// All of them must outlive it.
    RequestRefusal(const CardOccupation& occupation, PrintDesk& printDesk, FrontWindow& front)
        : m_occupation(occupation)
        , m_printDesk(printDesk)
        , m_front(front)
    {
    }

    /// Refuses a request during one of these; true if refused.
    bool refuseWhile(CardOccupation::Any kinds);
    /// A file was dropped while another window blocks the main window.
    void refuseDrop();

private:
    const CardOccupation& m_occupation;
    PrintDesk& m_printDesk;
    FrontWindow& m_front;
};
