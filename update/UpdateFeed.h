#pragma once

#include "update/UpdateFailure.h"
#include "update/UpdateSignature.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <expected>
#include <optional>
#include <vector>

/// A version that a feed announces.
struct UpdateItem
{
    /// The version that is compared, and the one that people know.
    QString version;
    QString shortVersion;
    /// The oldest system that it runs on; empty when any will do.
    QString minimumSystemVersion;
    /// What is new, as the maker wrote it; may be empty, and may be HTML.
    QString notes;
    bool notesMayBeHtml = true;
    QUrl package;
    QString packageName;
    qint64 length = 0; // bytes
    UpdateSignature signature = {};
};

/// What a feed says about the versions of a program: RSS 2.0 with enclosures, in the form that update frameworks use.
/// The items that it holds are for this system and for everybody; whatever else it says is passed over.
class UpdateFeed
{
public:
    /// An item that announces a version, with the reason why it cannot be offered, if any.
    struct Announcement
    {
        UpdateItem item;
        std::optional<UpdateFailure> fault;
    };

    /// Reads a feed of bounded size that came from the given address.
    [[nodiscard]] static std::expected<UpdateFeed, UpdateFailure> parse(const QByteArray& xml, const QUrl& address,
                                                                        qint64 maximumLength);

    [[nodiscard]] const std::vector<Announcement>& announcements() const { return m_announcements; }

private:
    std::vector<Announcement> m_announcements;
};

/// What there is for someone who uses a version.
struct UpdateChoice
{
    enum class Kind
    {
        UpToDate,
        Available,
        NeedsNewerSystem
    };

    Kind kind = Kind::UpToDate;
    /// The version that is available, or that needs a newer system.
    UpdateItem item;
};

/// The newest version that runs on the system, never one that is not newer than the current one. A failure when newer
/// ones are announced, but so badly that none of them can be offered.
[[nodiscard]] std::expected<UpdateChoice, UpdateFailure>
chooseUpdate(const UpdateFeed& feed, const QString& currentVersion, const QString& systemVersion);
