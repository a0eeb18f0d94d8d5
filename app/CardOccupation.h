#pragma once

#include <QFlags>
#include <QString>

class PrintDesk;
class ReadWorkflow;

/// What makes a request about the current card wait: one card at a time is read, printed or written. Main thread only.
class CardOccupation
{
public:
    enum class By
    {
        Nothing = 0,
        Reading = 1,     ///< its card will replace the current one
        PrintDialog = 2, ///< the printed card must stay the shown one
        Writing = 4,
    };
    Q_DECLARE_FLAGS(Any, By)

    static const Any anything;

    /// Both must outlive it.
    CardOccupation(const ReadWorkflow& reading, const PrintDesk& printDesk)
        : m_reading(reading)
        , m_printDesk(printDesk)
    {
    }

    /// The first of these that applies now.
    [[nodiscard]] By firstOf(Any kinds) const;
    /// The reason for users.
    [[nodiscard]] static QString reason(By kind);

private:
    [[nodiscard]] bool is(By kind) const;

    const ReadWorkflow& m_reading;
    const PrintDesk& m_printDesk;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(CardOccupation::Any)
