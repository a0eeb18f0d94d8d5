#include "app/WritingDesk.h"
#include "app/models/RecentAttestations.h"
#include "app/windows/MainWindow.h"
#include "app/windows/ProgressSheet.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/text/PageFonts.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/client/ServiceConnection.h"
#include "card/wire/ReaderModel.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "platform/files/FileWorker.h"
#include "platform/gui/SecretClipboard.h"
#include "prefs/MVPreferencesController.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QHash>
#include <QKeySequence>
#include <QMainWindow>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>

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

// The page's text, with a blank in place of each tag and line break.
QString textOf(QString page)
{
    static const QRegularExpression tag(u"<[^>]*>"_s);
    page.remove(QRegularExpression(u"<style>.*</style>"_s, QRegularExpression::DotMatchesEverythingOption));
    return page.replace(tag, u" "_s).replace(u"&nbsp;"_s, u" "_s).simplified();
}

// A number as the page writes it: some numbers are words.
QString inWords(qint64 number)
{
    static const QHash<qint64, QString> words{{5, u"cinq"_s}, {10, u"dix"_s}};
    return words.value(number, QString::number(number));
}

QString inWords(std::chrono::milliseconds time)
{
    if (time == std::chrono::minutes(1))
        return u"une minute"_s;
    return inWords(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + u" secondes"_s;
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

class tst_HelpPage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_page = helpPage();
        QVERIFY(!m_page.isEmpty());
    }

    void everyMessageIsQuotedExactly_data()
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

    void everyMessageIsQuotedExactly()
    {
        QFETCH(const Error, error);
        const QString element = u"id=\"%1\">"_s.arg(PelmoraError::helpTopic(error));
        const qsizetype start = m_page.indexOf(element);
        QVERIFY(start > 0);
        const QString rest = m_page.sliced(start + element.size());
        QCOMPARE(textOf(rest.first(rest.indexOf(u"</p>"_s))), error.localizedDescription().simplified());
    }

    void theNumbersAreThoseOfTheProgram_data()
    {
        QTest::addColumn<QString>("sentence");
        QTest::newRow("recents") << u"La liste garde %1 fichiers."_s.arg(inWords(RecentAttestations::maximumCount));
        QTest::newRow("beneficiaries") << u"plus de %1 bénéficiaires"_s.arg(inWords(maximumBeneficiaries));
        QTest::newRow("read") << u"Une lecture qui dure plus de %1 peut être arrêtée"_s.arg(
            inWords(ProgressSheet::usualPatience));
        QTest::newRow("service") << u"Au bout d’%1 sans réponse"_s.arg(inWords(ChannelLimits().requestTimeout));
        QTest::newRow("end") << u"laisse d’abord finir le fichier, %1 au plus."_s.arg(
            inWords(WritingDesk::patienceAtTheEnd + FileWorker::usualPatience));
        QTest::newRow("clipboard") << u"disparaît du presse-papiers au bout d’%1"_s.arg(
            inWords(SecretClipboard::usualLifetime));
        QTest::newRow("reader") << u"Branchez le lecteur fourni avec Pelmora, un %1."_s.arg(acceptedReader);
    }

    void theNumbersAreThoseOfTheProgram()
    {
        QFETCH(const QString, sentence);
        QVERIFY2(textOf(m_page).contains(sentence), qPrintable(sentence));
    }

    void theShortcutsAreThoseOfTheWindow()
    {
        const std::expected<PageFonts, Error> fonts = PageFonts::load(stagedBundle());
        QVERIFY(fonts.has_value());
        SchemeLogos logos(stagedBundle());
        const MainWindow window(stagedBundle());
        const QTemporaryDir folder;
        UserDefaults settings(folder.filePath(u"Pelmora.conf"_s));
        PrintDesk printDesk(settings, logos, *fonts, {});
        const MVAttestationWindowController viewer(settings, logos, *fonts, printDesk);
        MVPreferencesController preferences;
        preferences.checkWindowLoaded();
        const QSet<QKeySequence> real =
            shortcutsOf(window) + shortcutsOf(*viewer.window()) + shortcutsOf(*preferences.window());

        QSet<QKeySequence> told;
        for (const QString& keys : matchesOf(u"<tr><td><kbd>([^<]+)</kbd>"_s, m_page))
            told.insert(fromFrench(keys));
        QVERIFY(!told.isEmpty());
        QCOMPARE(told - real, QSet<QKeySequence>());
        QCOMPARE(real - told, QSet<QKeySequence>());
    }

    void everyLinkHasATargetOnThePage()
    {
        const QStringList targets = matchesOf(u"href=\"([^\"]+)\""_s, m_page);
        QVERIFY(!targets.isEmpty());
        for (const QString& target : targets) {
            QVERIFY2(target.startsWith(u'#'), qPrintable(target));
            QVERIFY2(m_page.contains("id=\"%1\""_L1.arg(target.sliced(1))), qPrintable(target));
        }
    }

    void everyPictureExists()
    {
        const QStringList pictures = matchesOf(u"src(?:set)?=\"([^\"]+)\""_s, m_page);
        QCOMPARE(pictures.size(), 6);
        for (const QString& picture : pictures)
            QVERIFY2(QFile::exists(QStringLiteral(PELMORA_STAGE_SHARE "/") + picture), qPrintable(picture));
    }

    void punctuationMarksAreNotSeparatedFromTheirWord()
    {
        QString text = m_page;
        text.remove(QRegularExpression(u"<style>.*</style>|<[^>]*>"_s, QRegularExpression::DotMatchesEverythingOption));
        QCOMPARE(matchesOf(u"([^\\n]{0,20}\\s[;:?!»])"_s, text), QStringList());
        QCOMPARE(matchesOf(u"(«\\s[^\\n]{0,20})"_s, text), QStringList());
        // Blanks inside quotation marks and before ";", "?" and "!" are narrow. The blank before a colon is not.
        QCOMPARE(matchesOf(u"([^\\n]{0,20}&nbsp;[;?!»])"_s, text), QStringList());
        QCOMPARE(matchesOf(u"(«&nbsp;[^\\n]{0,20})"_s, text), QStringList());
    }

    void thePageLoadsNothingFromOtherServers()
    {
        for (const QLatin1StringView& sign : {"http:"_L1, "https:"_L1, "url("_L1, "@import"_L1, "<script"_L1})
            QVERIFY2(!m_page.contains(sign), sign.data());
    }

private:
    QString m_page;
};

template class RunnableTests<tst_HelpPage, QApplication>;
#include "tst_helppage.moc"
