#pragma once

#include "support/move/MoveOperations.h"

#include <QHash>

/// A platform that only records its calls in order, and gives prepared answers.
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
    QStringList running;
    bool active = true;
    Answer answer{true, false};
    std::optional<QString> copyFailure;
    std::optional<QString> removeFailure;
    bool trashes = true;
    bool recycles = true;
    Right right = Right::Granted;
    /// The statuses of the commands run with authorisation, in order; 0 for further ones.
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
    QByteArray mountedImages() override;
    QStringList runningBundles() override;
    std::optional<int> run(const MoveCommand& command) override;
    void start(const MoveCommand& command) override;
    bool isApplicationActive() override;
    void activateApplication() override;
    Answer ask(const MoveQuestion& asked) override;
    void showAlert(const QString& title) override;
    Right requestRight() override;
    std::optional<QString> holdForAuthorized(const QString& bundle) override { return bundle; }
    std::optional<int> runAuthorized(const MoveCommand& command) override;
    void freeAuthorization() override;
    void log(LogLevel level, const QString& line) override;

protected:
    /// Called before each operation.
    virtual void note(const QString& operation, const QStringList& details = {});
};
