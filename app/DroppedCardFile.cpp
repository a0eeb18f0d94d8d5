#include "app/DroppedCardFile.h"

#include <QFileInfo>
#include <QMimeData>
#include <QMimeDatabase>
#include <QUrl>

using namespace Qt::StringLiterals;

std::optional<QString> droppedCardFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return std::nullopt;
    const QFileInfo file(urls.first().toLocalFile());
    // Folders, and files that would keep their reader waiting.
    if (!file.isFile())
        return std::nullopt;
    if (file.suffix().compare(u"xml", Qt::CaseInsensitive) == 0)
        return file.absoluteFilePath();
    const QMimeType type = QMimeDatabase().mimeTypeForFile(file);
    return type.inherits(u"application/xml"_s) ? std::optional(file.absoluteFilePath()) : std::nullopt;
}
