#pragma once

#include <QFlags>
#include <QString>

class PrintDesk;
class ReadWorkflow;

/// What keeps a request that concerns the current card waiting: one card at a time is read, printed or written. Main
/// thread only.
class CardOccupation
{
public:
    enum class By
    {
        Nothing = 0,
        Reading = 1, ///< at its end its card would take the place of the one that was shown
        PrintDialog =
            2, ///< what is printed is the card that the windows show: it stays until the dialog has its answer
        Writing = 4,
    };
    Q_DECLARE_FLAGS(Any, By)

    static const Any anything; ///< all of them

    /// Both must outlive it.
    CardOccupation(const ReadWorkflow& reading, const PrintDesk& printDesk)
        : m_reading(reading)
        , m_printDesk(printDesk)
    {
    }

    /// The first of these that is there now.
    [[nodiscard]] By firstOf(Any kinds) const;
    /// Why a request is refused meanwhile, as the user is told.
    [[nodiscard]] static QString reason(By kind);

private:
    [[nodiscard]] bool is(By kind) const;

    const ReadWorkflow& m_reading;
    const PrintDesk& m_printDesk;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(CardOccupation::Any)
