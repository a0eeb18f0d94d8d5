#pragma once

#include <QEvent>
#include <QObject>

/// Counts the events of a type that an object receives.
class EventCount final : public QObject
{
public:
    EventCount(QObject& watched, QEvent::Type type)
        : m_type(type)
    {
        watched.installEventFilter(this);
    }

    [[nodiscard]] int value() const { return m_value; }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_value += event->type() == m_type ? 1 : 0;
        return false;
    }

private:
    QEvent::Type m_type;
    int m_value = 0;
};
