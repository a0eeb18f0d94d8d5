#pragma once

#include "app/models/DesktopAction.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// The application's name on the session bus, "com.morvel.Pelmora", with the interface org.freedesktop.Application, by
/// which desktops start and reopen applications. Does nothing without a bus and never waits for one. Main thread.
class ReopenService final : public QObject
{
    Q_OBJECT

public:
    explicit ReopenService(QObject* parent = nullptr);
    Q_DISABLE_COPY(ReopenService)
    /// Releases the name.
    ~ReopenService() override;

    /// Requests the name; waits in the bus's queue while another instance has it. Called after the window is shown.
    void start();

Q_SIGNALS:
    /// The desktop requests the application.
    void reopenRequested();
    /// The desktop requests a card file (absolute path).
    void openRequested(const QString& path);
    void actionRequested(DesktopAction action);

private:
    bool m_isStarted = false;
};

/// The object on the bus; operations and parameters have the interface's names.
class ReopenInterface final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ReopenInterface(ReopenService* service);

    /// The first local file, because only one card is shown; empty without one.
    [[nodiscard]] static QString firstLocalFile(const QStringList& uris);

    Q_SCRIPTABLE Q_INVOKABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE Q_INVOKABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE Q_INVOKABLE void ActivateAction(const QString& name, const QVariantList& parameter,
                                                 const QVariantMap& platformData);

private:
    ReopenService* m_service;
};
