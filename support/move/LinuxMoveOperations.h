#pragma once

#include "platform/UserDefaults.h"
#include "support/move/Administrator.h"
#include "support/move/MountedImages.h"
#include "support/move/MoveOperations.h"

#include <memory>

/// What moving asks of the platform, on a Linux desktop. Needs a QApplication.
class LinuxMoveOperations final : public MoveOperations
{
public:
    /// The settings are the user's own; they must outlive the object.
    explicit LinuxMoveOperations(UserDefaults& defaults);
    LinuxMoveOperations(const LinuxMoveOperations&) = delete;
    LinuxMoveOperations& operator=(const LinuxMoveOperations&) = delete;
    ~LinuxMoveOperations() override;

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
    // Taken once, so that what is found mounted and what is listed agree.
    MountedImages m_images;
    bool m_comesToTheFront = false;
    std::unique_ptr<Administrator> m_administrator;
    int m_heldBundle = -1; // a descriptor of the folder
};
