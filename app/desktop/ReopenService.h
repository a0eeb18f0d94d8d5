#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

/// The application on the session bus: the name "com.morvel.Pelmora" with the interface that desktops start and re-open
/// applications by (org.freedesktop.Application). Without a bus it does nothing; it never waits for one. Main thread.
class ReopenService final : public QObject
{
    Q_OBJECT

public:
    explicit ReopenService(QObject* parent = nullptr);
    ReopenService(const ReopenService&) = delete;
    ReopenService& operator=(const ReopenService&) = delete;
    /// Leaves the bus.
    ~ReopenService() override;

    /// Appears on the bus. While another instance has the name, this one waits in line for it. Best called once the
    /// window is shown.
    void start();

Q_SIGNALS:
    /// The desktop wants the application back.
    void reopenRequested();
    /// The desktop wants a card file shown (its absolute path).
    void openRequested(const QString& path);

private:
    bool m_isStarted = false;
};

/// What the bus sees of it; the names of operations and parameters are the interface's.
class ReopenInterface final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ReopenInterface(ReopenService* service);

    /// The one of the files that is opened, as there is room for one card: the first on this machine; empty without.
    [[nodiscard]] static QString firstLocalFile(const QStringList& uris);

    Q_SCRIPTABLE Q_INVOKABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE Q_INVOKABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE Q_INVOKABLE void ActivateAction(const QString& name, const QVariantList& parameter,
                                                 const QVariantMap& platformData);

private:
    ReopenService* m_service;
};
