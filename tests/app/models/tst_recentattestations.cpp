#include "app/models/RecentAttestations.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList numbered(int count)
{
    QStringList paths;
    for (int number = count; number > 0; --number)
        paths.append(u"/folder/%1.pdf"_s.arg(number));
    return paths;
}

// The entries of a menu as texts, one a line.
QStringList described(const std::vector<MenuEntry>& menu)
{
    QStringList lines;
    for (const MenuEntry& entry : menu) {
        if (entry.isSeparator)
            lines.append(u"--"_s);
        else
            lines.append(
                u"%1|%2|%3"_s.arg(entry.title, QString::number(entry.tag), entry.enabled ? u"on"_s : u"off"_s));
    }
    return lines;
}

} // namespace

class tst_RecentAttestations : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_settings;

    QString file() const { return m_folder->filePath(u"Pelmora.conf"_s); }

    RecentAttestations recents() { return RecentAttestations(*m_settings); }

    // Replaces the settings file, as another program could do.
    void plant(const QByteArray& content)
    {
        m_settings.reset();
        QVERIFY(writeFile(file(), content));
        m_settings = std::make_unique<UserDefaults>(file());
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        m_settings = std::make_unique<UserDefaults>(file());
    }

    void cleanup() { m_settings.reset(); }

    void theMenuOfAnEmptyListHasOnlyADisabledClearEntry()
    {
        QVERIFY(recents().paths().isEmpty());
        QCOMPARE(described(recents().menu()), QStringList{u"Effacer le menu|1000|off"_s});
    }

    void theNewestIsFirst()
    {
        QVERIFY(recents().add(u"/folder/SPECIMEN Zoé.pdf"_s));
        QVERIFY(recents().add(u"/a b/SPECIMEN Paul & fils.pdf"_s));
        QCOMPARE(recents().paths(), (QStringList{u"/a b/SPECIMEN Paul & fils.pdf"_s, u"/folder/SPECIMEN Zoé.pdf"_s}));
        QCOMPARE(described(recents().menu()),
                 (QStringList{u"SPECIMEN Paul & fils.pdf|0|on"_s, u"SPECIMEN Zoé.pdf|1|on"_s, u"--"_s,
                              u"Effacer le menu|1000|on"_s}));
    }

    void aPathInTheListIsNotMovedWhenAddedAgain()
    {
        QVERIFY(recents().add(u"/a.pdf"_s));
        QVERIFY(recents().add(u"/b.pdf"_s));
        QVERIFY(!recents().add(u"/a.pdf"_s));
        QCOMPARE(recents().paths(), (QStringList{u"/b.pdf"_s, u"/a.pdf"_s}));
    }

    void anEmptyPathIsNotAdded()
    {
        QVERIFY(!recents().add(QString()));
        QVERIFY(!recents().add(u""_s));
        QVERIFY(recents().paths().isEmpty());
    }

    void aFullListIsNotChanged()
    {
        for (int number = 1; number <= 10; ++number)
            QVERIFY(recents().add(u"/folder/%1.pdf"_s.arg(number)));
        QVERIFY(!recents().add(u"/folder/11.pdf"_s));
        QCOMPARE(recents().paths(), numbered(10));
        QCOMPARE(recents().menu().size(), std::size_t{12});
    }

    void clearingEmptiesTheListAndLeavesTheFiles()
    {
        const QString path = m_folder->filePath(u"a.pdf"_s);
        QVERIFY(writeFile(path, {}));
        QVERIFY(recents().add(path));
        recents().clear();
        QVERIFY(recents().paths().isEmpty());
        QCOMPARE(described(recents().menu()), QStringList{u"Effacer le menu|1000|off"_s});
        QVERIFY(QFile::exists(path));
    }

    void theListIsKeptAcrossARestart()
    {
        QVERIFY(recents().add(u"/a, b; \"c\" %20.pdf"_s));
        m_settings.reset();
        m_settings = std::make_unique<UserDefaults>(file());
        QCOMPARE(recents().paths(), QStringList{u"/a, b; \"c\" %20.pdf"_s});
    }

    void onlyATagInRangeHasAPath_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("path");
        QTest::newRow("first") << 0 << u"/folder/2.pdf"_s;
        QTest::newRow("last") << 1 << u"/folder/1.pdf"_s;
        QTest::newRow("beyond") << 2 << QString();
        QTest::newRow("before") << -1 << QString();
        QTest::newRow("the clearing") << 1000 << QString();
    }

    void onlyATagInRangeHasAPath()
    {
        QFETCH(const int, tag);
        QVERIFY(recents().add(u"/folder/1.pdf"_s));
        QVERIFY(recents().add(u"/folder/2.pdf"_s));
        QTEST(recents().pathAt(tag).value_or(QString()), "path");
    }

    void storedValuesThatAreNotTextsAreIgnored_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("paths");
        QTest::newRow("a text") << QByteArray("[General]\nMVRecentsAttestation=garbage\n") << QStringList();
        QTest::newRow("a list by hand") << QByteArray("[General]\nMVRecentsAttestation=/a.pdf, /b.pdf\n")
                                        << QStringList{u"/a.pdf"_s, u"/b.pdf"_s};
        QTest::newRow("bytes") << QByteArray("[General]\nMVRecentsAttestation=@ByteArray(x)\n") << QStringList();
        QTest::newRow("nothing") << QByteArray("[General]\nMVRecentsAttestation=@Invalid()\n") << QStringList();
        QTest::newRow("strange items")
            << QByteArray(
                   "[MVRecentsAttestation]\n1\\value=@Size(1 2)\n2\\value=/b.pdf\n3\\value=\n4\\value=@Invalid()\n"
                   "5\\value=@ByteArray(/c.pdf)\nsize=5\n")
            << QStringList{u"/b.pdf"_s};
        QTest::newRow("a wild size") << QByteArray("[MVRecentsAttestation]\n1\\value=/a.pdf\nsize=2147483647\n")
                                     << QStringList{u"/a.pdf"_s};
        QTest::newRow("broken file") << QByteArray("\xff\xfe[MVRecentsAttestation\n=\n") + QByteArray(2, '\0') + "size"
                                     << QStringList();
    }

    void storedValuesThatAreNotTextsAreIgnored()
    {
        QFETCH(const QByteArray, content);
        plant(content);
        QTEST(recents().paths(), "paths");
        const qsizetype count = recents().paths().size();
        QVERIFY(recents().add(u"/new.pdf"_s));
        QCOMPARE(recents().paths().size(), count + 1);
        recents().clear();
        QVERIFY(recents().paths().isEmpty());
    }

    void aListOfTenThousandIsShownUpToTheMaximumQuickly()
    {
        QByteArray content = "[MVRecentsAttestation]\n";
        for (int number = 1; number <= 10'000; ++number)
            content += QByteArray::number(number) + "\\value=/folder/" + QByteArray::number(number) + ".pdf\n";
        plant(content + "size=10000\n");

        QElapsedTimer timer;
        timer.start();
        const std::vector<MenuEntry> menu = recents().menu();
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(menu.size(), std::size_t{12});
        QCOMPARE(menu.front().title, u"1.pdf"_s);
        QCOMPARE(menu.back().title, u"Effacer le menu"_s);
        QVERIFY(!recents().add(u"/new.pdf"_s));
        QCOMPARE(recents().paths().size(), 10'000);
        recents().clear();
        QVERIFY(recents().paths().isEmpty());
    }

    void nothingIsAddedWhenTheSettingForbidsIt()
    {
        MVSettings::setPreferencesWithBooleanValue(*m_settings, Settings::forgetRecents, true);
        QVERIFY(!recents().add(u"/folder/1.pdf"_s));
        QCOMPARE(recents().paths(), QStringList());
    }
};

template class RunnableTests<tst_RecentAttestations, QCoreApplication>;
#include "tst_recentattestations.moc"
