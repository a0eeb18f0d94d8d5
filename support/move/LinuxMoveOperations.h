#pragma once

#include "platform/UserDefaults.h"
#include "support/move/Administrator.h"
#include "support/move/MountedImages.h"
#include "support/move/MoveOperations.h"

#include <memory>

/// The operations on Linux. Needs a QApplication.
class LinuxMoveOperations final : public MoveOperations
{
public:
    /// The settings must outlive the object.
    explicit LinuxMoveOperations(UserDefaults& defaults);

    [[nodiscard]] bool isQuestionSuppressed() override;
    void suppressQuestion() override;
    [[nodiscard]] ItemFacts factsOf(const QString& path) override;
    [[nodiscard]] QStringList entriesOf(const QString& folder) override;
    [[nodiscard]] QString resolvingSymbolicLinks(const QString& path) override;
    [[nodiscard]] std::optional<Volume> volumeOf(const QString& folder) override;
    [[nodiscard]] std::expected<void, QString> copyItem(const QString& source, const QString& destination) override;
    [[nodiscard]] std::expected<void, QString> removeItem(const QString& path) override;
    [[nodiscard]] bool trashItem(const QString& path) override;
    [[nodiscard]] bool recycleItem(const QString& name, const QString& parentFolder) override;
    [[nodiscard]] QByteArray mountedImages() override;
    [[nodiscard]] QStringList runningBundles() override;
    [[nodiscard]] std::optional<int> run(const MoveCommand& command) override;
    void start(const MoveCommand& command) override;
    [[nodiscard]] bool isApplicationActive() override;
    void activateApplication() override;
    [[nodiscard]] Answer ask(const MoveQuestion& question) override;
    void showAlert(const QString& title) override;
    [[nodiscard]] std::optional<QString> holdForAuthorized(const QString& bundle) override;
    [[nodiscard]] Right requestRight() override;
    [[nodiscard]] std::optional<int> runAuthorized(const MoveCommand& command) override;
    void freeAuthorization() override;
    void log(LogLevel level, const QString& line) override;

private:
    UserDefaults& m_defaults;
    // Read once, so that volumeOf() and mountedImages() agree.
    MountedImages m_images;
    bool m_comesToTheFront = false;
    FileDescriptor m_heldBundle; // the folder
    std::unique_ptr<Administrator> m_administrator;
};
