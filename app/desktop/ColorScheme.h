#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QPalette>

#include <optional>

/// Follows the desktop's preference for dark windows, as its portal tells it, also when it changes. A desktop whose own
/// colours are dark anyway is left alone. Main thread only.
class ColorScheme final : public QObject
{
    Q_OBJECT

public:
    explicit ColorScheme(QObject* parent = nullptr);

    /// Asks the portal, without waiting for its answer, and listens to it from then on.
    void start();

private:
    Q_SLOT void noteChange(const QDBusMessage& change);
    void follow(const QVariant& value);

    bool m_hasChanged = false;       // since the start
    std::optional<QPalette> m_usual; // the desktop's own colours, while dark ones are in their place
};
