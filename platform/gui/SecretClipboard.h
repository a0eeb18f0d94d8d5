#pragma once

#include <QMimeData>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>

/// Puts a patient's data on the clipboard. Clipboard managers are told not to keep it. It is removed after some time,
/// or when the object is destroyed, unless it has been replaced by then. Main thread only.
class SecretClipboard final : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds usualLifetime{std::chrono::minutes(1)};

    explicit SecretClipboard(std::chrono::milliseconds lifetime = usualLifetime);
    Q_DISABLE_COPY(SecretClipboard)
    ~SecretClipboard() override;

    void copy(const QString& text);
    /// Removes the text now, if it is still there.
    void clear() const;

private:
    QTimer m_lifetime;
    QPointer<QMimeData> m_copied; // belongs to the clipboard, which deletes it when it gets something else
};
