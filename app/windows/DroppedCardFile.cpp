#include "app/windows/DroppedCardFile.h"

#include "platform/NativePath.h"

#include <QFile>
#include <QMimeData>
#include <QMimeDatabase>
#include <QUrl>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

std::optional<QString> droppedCardFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1)
        return std::nullopt;
    std::optional<QString> path = pathOfUrl(urls.first());
    std::error_code error;
    // No folders, and no pipes, which could block.
    if (!path || !std::filesystem::is_regular_file(bytesOfPath(*path).toStdString(), error))
        return std::nullopt;
    if (path->endsWith(".xml"_L1, Qt::CaseInsensitive))
        return path;
    QFile file;
    if (openPlainFile(file, *path))
        return std::nullopt;
    const QMimeType type = QMimeDatabase().mimeTypeForFileNameAndData(*path, &file);
    return type.inherits(u"application/xml"_s) ? path : std::nullopt;
}
