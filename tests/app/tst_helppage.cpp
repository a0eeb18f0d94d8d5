#include "app/windows/MainWindow.h"
#include "attestation/page/PageFonts.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/PelmoraError.h"
#include "platform/Bundle.h"

#include <QAction>
#include <QFile>
#include <QKeySequence>
#include <QMainWindow>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

Bundle stagedBundle()
{
    return Bundle(QStringLiteral(PELMORA_STAGE_SHARE));
}

QString helpPage()
{
    QFile file(stagedBundle().pathForResource(u"Help"_s, u"html"_s).value_or(QString()));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// What the page says, with a blank in the place of each tag and line break.
QString textOf(QString page)
{
    static const QRegularExpression tag(u"<[^>]*>"_s);
    page.remove(QRegularExpression(u"<style>.*</style>"_s, QRegularExpression::DotMatchesEverythingOption));
    return page.replace(tag, u" "_s).replace(u"&nbsp;"_s, u" "_s).simplified();
}

QStringList matchesOf(const QString& pattern, const QString& text)
{
    QStringList found;
    QRegularExpressionMatchIterator matches = QRegularExpression(pattern).globalMatch(text);
    while (matches.hasNext())
        found.append(matches.next().captured(1));
    return found;
}

QSet<QKeySequence> shortcutsOf(const QWidget& window)
{
    QSet<QKeySequence> shortcuts;
    for (const QAction* action : window.findChildren<QAction*>()) {
        for (const QKeySequence& shortcut : action->shortcuts())
            shortcuts.insert(shortcut);
    }
    return shortcuts;
}

QKeySequence fromFrench(QString keys)
{
    return QKeySequence(keys.replace(u"Maj"_s, u"Shift"_s).replace(u"Échap"_s, u"Esc"_s));
}

} // namespace

class tst_HelpPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_page = helpPage();
        QVERIFY(!m_page.isEmpty());
    }

    void everyMessageIsExplainedToTheLetter_data()
    {
        QTest::addColumn<Error>("error");
        QTest::newRow("general") << PelmoraError::generalError();
        QTest::newRow("internal") << PelmoraError::internalError();
        QTest::newRow("write") << PelmoraError::writeError();
        QTest::newRow("no reader") << PelmoraError::noReader();
        QTest::newRow("bad reader") << PelmoraError::badReader();
        QTest::newRow("reader error") << PelmoraError::readerError();
        QTest::newRow("no card") << PelmoraError::vitaleNotPresent();
        QTest::newRow("card unreadable") << PelmoraError::vitaleReadError();
        QTest::newRow("nobody") << PelmoraError::vitaleNoBen();
    }

    void everyMessageIsExplainedToTheLetter()
    {
        QFETCH(const Error, error);
        QVERIFY(textOf(m_page).contains(error.localizedDescription().simplified()));
    }

    void theShortcutsAreTheWindows()
    {
        const std::expected<PageFonts, Error> fonts = PageFonts::load(stagedBundle());
        QVERIFY(fonts.has_value());
        SchemeLogos logos(stagedBundle());
        const MainWindow window(stagedBundle());
        PrintDesk printDesk(logos, *fonts);
        const MVAttestationWindowController viewer(logos, *fonts, printDesk);
        const QSet<QKeySequence> real = shortcutsOf(window) + shortcutsOf(*viewer.window());

        QSet<QKeySequence> told;
        for (const QString& keys : matchesOf(u"<tr><td><kbd>([^<]+)</kbd>"_s, m_page))
            told.insert(fromFrench(keys));
        QVERIFY(!told.isEmpty());
        QCOMPARE(told - real, QSet<QKeySequence>());
        QCOMPARE(real - told, QSet<QKeySequence>());
    }

    void everyLinkLeadsSomewhereOnThePage()
    {
        const QStringList targets = matchesOf(u"href=\"([^\"]+)\""_s, m_page);
        QVERIFY(!targets.isEmpty());
        for (const QString& target : targets) {
            QVERIFY2(target.startsWith(u'#'), qPrintable(target));
            QVERIFY2(m_page.contains("id=\"%1\""_L1.arg(target.sliced(1))), qPrintable(target));
        }
    }

    void everyPictureIsThere()
    {
        const QStringList pictures = matchesOf(u"src(?:set)?=\"([^\"]+)\""_s, m_page);
        QCOMPARE(pictures.size(), 6);
        for (const QString& picture : pictures)
            QVERIFY2(QFile::exists(QStringLiteral(PELMORA_STAGE_SHARE "/") + picture), qPrintable(picture));
    }

    void noLineBreaksBetweenAWordAndItsMark()
    {
        QString text = m_page;
        text.remove(QRegularExpression(u"<style>.*</style>|<[^>]*>"_s, QRegularExpression::DotMatchesEverythingOption));
        QCOMPARE(matchesOf(u"([^\\n]{0,20}\\s[;:?!»])"_s, text), QStringList());
        QCOMPARE(matchesOf(u"(«\\s[^\\n]{0,20})"_s, text), QStringList());
        // Narrow ones inside quotation marks and before these; a colon takes a wide one.
        QCOMPARE(matchesOf(u"([^\\n]{0,20}&nbsp;[;?!»])"_s, text), QStringList());
        QCOMPARE(matchesOf(u"(«&nbsp;[^\\n]{0,20})"_s, text), QStringList());
    }

    void nothingIsFetchedFromElsewhere()
    {
        for (const QLatin1StringView& sign : {"http:"_L1, "https:"_L1, "url("_L1, "@import"_L1, "<script"_L1})
            QVERIFY2(!m_page.contains(sign), sign.data());
    }

private:
    QString m_page;
};

QTEST_MAIN(tst_HelpPage)
#include "tst_helppage.moc"
