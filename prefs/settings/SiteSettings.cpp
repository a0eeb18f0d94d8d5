#include "prefs/settings/SiteSettings.h"

#include "platform/NativePath.h"
#include "platform/TildePath.h"
#include "prefs/settings/Settings.h"
#include "support/MXLog.h"

#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumFileSize = qint64{256} * 1024;
constexpr qsizetype maximumProblems = 20;
constexpr qsizetype longestName = 80;

/// A value of the file as one of the setting's type; invalid when it is none.
QVariant checkedValue(const Setting<bool>& /*setting*/, const QVariant& value)
{
    const QString word = value.toString().toLower();
    if (word == "true"_L1 || word == "yes"_L1 || word == "1"_L1)
        return true;
    return word == "false"_L1 || word == "no"_L1 || word == "0"_L1 ? QVariant(false) : QVariant();
}

QVariant checkedValue(const Setting<qint64>& setting, const QVariant& value)
{
    const auto* automatic = std::get_if<QStringView>(&setting.defaultValue);
    if (automatic && value.toString() == *automatic)
        return automatic->toString();
    bool isInteger = false;
    const qint64 number = value.toString().toLongLong(&isInteger);
    return isInteger && number >= 0 && number <= setting.maximum ? QVariant(number) : QVariant();
}

QVariant checkedValue(const Setting<QString>& setting, const QVariant& value)
{
    // A text that is not UTF-8 has the replacement character.
    if (value.typeId() != QMetaType::QString || value.toString().contains(QChar::ReplacementCharacter))
        return {};
    const auto* path = std::get_if<QStringView>(&setting.defaultValue);
    const QString text = path ? expandingTildeInPath(value.toString()) : value.toString();
    return !path || text.startsWith(u'/') ? QVariant(text) : QVariant();
}

QVariant checkedValue(const Setting<QVariantList>& /*setting*/, const QVariant& /*value*/)
{
    // A list is each user's own.
    return {};
}

/// Whatever an editor made of the accent: a lock must not be lost by that.
bool isLockedSection(const QString& section)
{
    // QSettings takes percent-encoded bytes for ISO Latin 1, and all others for UTF-8.
    const QString fromBytes = QString::fromUtf8(section.toLatin1());
    return std::ranges::any_of(std::array{section, fromBytes}, [](const QString& name) {
        QString letters = name.normalized(QString::NormalizationForm_D).toLower();
        letters.removeIf([](QChar character) { return character.isMark(); });
        return letters.replace(QChar::ReplacementCharacter, u'e') == "verrouille"_L1;
    });
}

QString printable(QString name)
{
    for (QChar& character : name) {
        if (!character.isPrint())
            character = u'?';
    }
    return name.left(longestName);
}

/// Takes the value of a setting; false when no setting has that name.
bool take(QVariantMap& values, const QString& name, const QVariant& value)
{
    const auto takeIf = [&](const auto& setting) {
        if (name != setting.key)
            return false;
        values.insert(name, checkedValue(setting, value));
        return true;
    };
    return std::apply([&](const auto&... setting) { return (takeIf(setting) || ...); }, Settings::all);
}

} // namespace

SiteSettings SiteSettings::read(const QString& path)
{
    SiteSettings site;
    QFile file;
    if (const std::error_code error = openPlainFile(file, path)) {
        site.problems.append(u"it cannot be read: "_s + QString::fromStdString(error.message()));
        return site;
    }
    if (file.size() > maximumFileSize) {
        site.problems.append(u"it is not read, because it is too large"_s);
        return site;
    }
    const QSettings settings(path, QSettings::IniFormat);
    if (settings.status() != QSettings::NoError)
        site.problems.append(u"some of its lines are not understood"_s);
    for (const QString& key : settings.allKeys()) {
        const qsizetype sectionEnd = key.indexOf(u'/');
        const QString name = key.sliced(sectionEnd + 1);
        const bool isLocked = sectionEnd >= 0 && isLockedSection(key.first(sectionEnd));
        QVariantMap& values = isLocked ? site.values.locked : site.values.defaults;
        if ((sectionEnd >= 0 && !isLocked) || !take(values, name, settings.value(key)))
            site.problems.append(u"there is no setting "_s + printable(key));
        else if (!values.value(name).isValid()) {
            values.remove(name);
            site.problems.append(u"the value of %1 is not one that a site can set"_s.arg(printable(key)));
        }
    }
    return site;
}

void useSiteSettings(UserDefaults& store)
{
    for (const QString& path :
         QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, u"MORVEL/Pelmora.conf"_s)) {
        if (path == UserDefaults::standardFilePath())
            continue;
        SiteSettings site = SiteSettings::read(path);
        for (const QString& problem : site.problems.first(std::min(site.problems.size(), maximumProblems)))
            MXLog::logWarning("Settings of the site in {}: {}", path, problem);
        if (site.problems.size() > maximumProblems)
            MXLog::logWarning("Settings of the site in {}: {} further problems", path,
                              site.problems.size() - maximumProblems);
        store.setSiteValues(std::move(site.values));
        return;
    }
}
