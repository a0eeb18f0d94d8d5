#include "app/models/DebugCopy.h"

#include "app/models/RecordEntries.h"
#include "card/CardKeys.h"
#include "card/wire/TextDecoding.h"
#include "platform/ObjectText.h"
#include "platform/PropertyList.h"
#include "platform/files/FileName.h"
#include "platform/files/PrivateFile.h"
#include "prefs/settings/MVSettings.h"
#include "support/MXLog.h"
#include "support/MXUtils.h"

#include <expected>

using namespace Qt::StringLiterals;

namespace {

using Written = std::expected<void, WriteFailure>;

Written writeIfEncoded(const QString& path, const std::optional<QByteArray>& content)
{
    if (!content)
        return std::unexpected(WriteFailure{WriteObstacle::Other, u"le texte ne peut pas être codé"_s});
    return writePrivateFile(path, *content);
}

Written writeXml(const QString& path, const QString& xml)
{
    const Written written = writeIfEncoded(path, encodeUtf8(xml));
    return written ? written : writeIfEncoded(path, encodeWindows1252(xml));
}

void logFailure(std::string_view what, const Written& written)
{
    if (!written)
        MXLog::logError("The debug copy's {} was not written: {}", what, written.error().reason);
}

} // namespace

bool isDebugCopyWanted(const UserDefaults& settings, const std::optional<CardRecord>& record)
{
    return MVSettings::booleanPreferencesForKey(settings, Settings::debugMode) && record &&
           record->text(CardKey::xmlString).has_value();
}

void writeDebugCopy(const CardRecord& record, const QString& folder)
{
    const std::optional<QString> xml = record.text(CardKey::xmlString);
    if (!xml || !MXUtils::checkFolderAtPath(folder, true))
        return;

    const QString name =
        objectText(record.text(CardKey::lastName)) + u'_' + objectText(record.text(CardKey::firstName));
    logFailure("XML", writeXml(folder + u'/' + fileNameFromText(name, u"xml"_s), *xml));
    logFailure("property list", writeIfEncoded(folder + u'/' + fileNameFromText(name, u"plist"_s),
                                               writePropertyList(entriesOfRecord(record))));
}
