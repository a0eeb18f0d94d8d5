#pragma once

#include "update/UpdateFailure.h"
#include "update/UpdateSignature.h"

#include <QString>
#include <QUrl>

#include <expected>
#include <optional>
#include <vector>

struct UpdateItem
{
    /// The version for comparison, and the one for users.
    QString version;
    QString shortVersion;
    /// Empty for any system.
    QString minimumSystemVersion;
    /// The maker's text on what is new; may be empty or HTML.
    QString notes;
    bool notesMayBeHtml = true;
    QUrl package;
    QString packageName;
    qint64 length = 0; // bytes
    UpdateSignature signature = {};
};

/// The versions in a feed: RSS 2.0 with enclosures and the elements of the Sparkle update framework. Only items for
/// this system and for everybody are kept.
class UpdateFeed
{
public:
    /// An item, and the reason why it cannot be offered, if any.
    struct Announcement
    {
        UpdateItem item;
        std::optional<UpdateFailure> fault;
    };

    /// Parses a feed from the given address.
    [[nodiscard]] static std::expected<UpdateFeed, UpdateFailure> parse(const QByteArray& xml, const QUrl& address,
                                                                        qint64 maximumLength);

    [[nodiscard]] const std::vector<Announcement>& announcements() const { return m_announcements; }

private:
    std::vector<Announcement> m_announcements;
};

/// The result for the current version.
struct UpdateChoice
{
    enum class Kind
    {
        UpToDate,
        Available,
        NeedsNewerSystem
    };

    Kind kind = Kind::UpToDate;
    /// The available version, or the one that needs a newer system.
    UpdateItem item;
};

/// The newest version that runs on the system and is newer than the current one. A failure when newer versions are
/// announced but none can be offered.
[[nodiscard]] std::expected<UpdateChoice, UpdateFailure>
chooseUpdate(const UpdateFeed& feed, const QString& currentVersion, const QString& systemVersion);
