#include "prefs/settings/Settings.h"
#include "prefs/settings/SiteSettings.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString document = QStringLiteral(PELMORA_SOURCE "/docs/settings.md");
constexpr qsizetype comparedColumns = 3;

QString typeName(const Setting<bool>& /*setting*/)
{
    return u"boolean"_s;
}
QString typeName(const Setting<qint64>& /*setting*/)
{
    return u"integer"_s;
}
QString typeName(const Setting<QString>& /*setting*/)
{
    return u"text"_s;
}
QString typeName(const Setting<QVariantList>& /*setting*/)
{
    return u"list"_s;
}

QString defaultText(const SettingDefault& value)
{
    if (const auto* text = std::get_if<QStringView>(&value))
        return u"`%1`"_s.arg(*text);
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? u"`true`"_s : u"`false`"_s;
    return u"none"_s;
}

/// A row for each setting: key, type, default.
QList<QStringList> renderedRows()
{
    QList<QStringList> rows;
    const auto add = [&rows](const auto& setting) {
        rows.append({u"`%1`"_s.arg(setting.key), typeName(setting), defaultText(setting.defaultValue)});
    };
    std::apply([&](const auto&... setting) { (add(setting), ...); }, Settings::all);
    return rows;
}

/// All cells of the document's rows about keys.
QList<QStringList> documentedRows()
{
    QList<QStringList> rows;
    for (const QString& line : textOfFile(document).split(u'\n')) {
        if (!line.startsWith("| `"_L1))
            continue;
        QStringList cells;
        // The first and the last bar are at the row's ends and separate no cells.
        for (const QString& cell : line.sliced(1).chopped(1).split(u'|'))
            cells.append(cell.trimmed());
        rows.append(cells);
    }
    return rows;
}

} // namespace

class tst_SettingsDoc : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theDocumentedSettingsAreThoseOfTheTable()
    {
        QList<QStringList> documented;
        for (const QStringList& row : documentedRows())
            documented.append(row.first(comparedColumns));
        QStringList expected;
        for (const QStringList& row : renderedRows())
            expected.append(u"| "_s + row.join(u" | "_s) + u" |"_s);
        QVERIFY2(documented == renderedRows(), qPrintable(u"docs/settings.md should have:\n"_s + expected.join(u'\n')));
    }

    void everyRowNamesItsPaneAndSaysWhatItMeans()
    {
        const QStringList panes{u"Configuration"_s, u"Attestations"_s, u"Lecture Vitale"_s, u"none"_s};
        for (const QStringList& row : documentedRows()) {
            QCOMPARE(row.size(), 5);
            QVERIFY2(panes.contains(row.at(3)), qPrintable(row.join(u'|')));
            QVERIFY2(!row.at(4).isEmpty(), qPrintable(row.join(u'|')));
        }
    }

    void theExampleOfASiteIsReadWithoutAProblem()
    {
        const QTemporaryDir folder;
        const QString text = textOfFile(document);
        const qsizetype start = text.indexOf(u"```ini\n"_s) + 7;
        const QString path = folder.filePath(u"Pelmora.conf"_s);
        QVERIFY(writeFile(path, text.sliced(start, text.indexOf(u"```"_s, start) - start).toUtf8()));
        const SiteSettings site = SiteSettings::read(path);
        QCOMPARE(site.problems, QStringList());
        QCOMPARE(site.values.defaults.keys(), QStringList{u"MVAttestationsFolder"_s});
        QCOMPARE(site.values.locked.keys(), (QStringList{u"MVDebugMode"_s, u"MVForgetAfterMinutes"_s}));
    }

    void theExampleFileOfASiteIsReadWithoutAProblem()
    {
        const SiteSettings site = SiteSettings::read(QStringLiteral(PELMORA_SOURCE "/examples/site/Pelmora.conf"));
        QCOMPARE(site.problems, QStringList());
        QVERIFY(!site.values.defaults.isEmpty() && !site.values.locked.isEmpty());
    }
};

template class RunnableTests<tst_SettingsDoc, QCoreApplication>;
#include "tst_settingsdoc.moc"
