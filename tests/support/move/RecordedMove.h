#pragma once

#include "support/move/MoveOperations.h"

#include <QHash>

/// A platform that does nothing but note what it is asked for, in order, and answers as it is told to.
class RecordedMove : public MoveOperations
{
public:
    QStringList record;

    bool suppressed = false;
    QHash<QString, ItemFacts> facts;
    QHash<QString, QStringList> entries;
    QHash<QString, QString> links;
    std::optional<Volume> volume = Volume{true, QStringLiteral("/dev/disk1")};
    QByteArray images;
    CommandEnd commandEnd{0, {}};
    QStringList running;
    bool active = true;
    Answer answer{true, false};
    std::optional<QString> copyFailure;
    std::optional<QString> removeFailure;
    bool trashes = true;
    bool recycles = true;
    std::optional<QString> scriptFailure;
    bool authorizationIsCreated = true;
    Right right = Right::Granted;
    bool runsAuthorized = true;
    /// Of the commands run with authorisation, in order; 0 beyond.
    QList<std::optional<int>> authorizedEnds;
    MoveQuestion question;

    bool isQuestionSuppressed() override;
    void suppressQuestion() override;
    ItemFacts factsOf(const QString& path) override;
    QStringList entriesOf(const QString& folder) override;
    QString resolvingSymbolicLinks(const QString& path) override;
    std::optional<Volume> volumeOf(const QString& folder) override;
    std::expected<void, QString> copyItem(const QString& source, const QString& destination) override;
    std::expected<void, QString> removeItem(const QString& path) override;
    bool trashItem(const QString& path) override;
    bool recycleItem(const QString& name, const QString& parentFolder) override;
    std::expected<void, QString> runScript(const QStringList& lines) override;
    QByteArray mountedImages() override;
    QStringList runningBundles() override;
    CommandEnd run(const MoveCommand& command) override;
    void start(const MoveCommand& command) override;
    bool isApplicationActive() override;
    void activateApplication() override;
    Answer ask(const MoveQuestion& asked) override;
    void showAlert(const QString& title) override;
    bool createAuthorization() override;
    Right requestRight(const QString& name) override;
    std::optional<QString> holdForAuthorized(const QString& bundle) override { return bundle; }
    bool canRunAuthorized() override;
    std::optional<int> runAuthorized(const MoveCommand& command) override;
    void freeAuthorization() override;
    void log(LogLevel level, const QString& line) override;

protected:
    /// Called before each operation.
    virtual void note(const QString& operation, const QStringList& details = {});
};
