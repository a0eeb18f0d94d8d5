#include "platform/UserDefaults.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

class tst_UserDefaults : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    int m_count = 0;

    QString newFile() { return m_folder.filePath(u"settings-%1.conf"_s.arg(m_count++)); }

    // The value that a later run of the program reads.
    static QVariant storedAndReadAgain(const QString& file, const QVariant& value)
    {
        UserDefaults(file).setObject(u"Key"_s, value);
        return UserDefaults(file).object(u"Key"_s);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void anArrayOfAnyLengthIsReadBackAsAnArray_data()
    {
        QTest::addColumn<QVariantList>("array");
        QTest::newRow("empty") << QVariantList();
        QTest::newRow("one") << QVariantList{u"/tmp/a, b.pdf"_s};
        QTest::newRow("empty text") << QVariantList{u""_s};
        QTest::newRow("three") << QVariantList{u"é"_s, u"a;b"_s, u"%2F=[x]"_s};
    }

    void anArrayOfAnyLengthIsReadBackAsAnArray()
    {
        QFETCH(const QVariantList, array);
        const QVariant read = storedAndReadAgain(newFile(), array);
        QCOMPARE(read.typeId(), int{QMetaType::QVariantList});
        QCOMPARE(read.toList(), array);
    }

    void aShorterArrayReplacesALongerOneCompletely()
    {
        const QString file = newFile();
        UserDefaults defaults(file);
        defaults.setObject(u"Key"_s, QVariantList{1, 2, 3});
        defaults.setObject(u"Key"_s, QVariantList{4});
        defaults.synchronize();
        QCOMPARE(defaults.object(u"Key"_s).toList().size(), 1);
        defaults.setObject(u"Key"_s, u"text"_s);
        QCOMPARE(defaults.object(u"Key"_s), QVariant(u"text"_s));
        defaults.remove(u"Key"_s);
        QVERIFY(!defaults.object(u"Key"_s).isValid());
    }

    void textsAreReadBackUnchanged_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("path with blanks and accents") << u"/home/a b/Médecins, 2ᵉ étage; \"x\" = \\y"_s;
        QTest::newRow("empty") << u""_s;
        QTest::newRow("only blanks") << u"  "_s;
        QTest::newRow("at sign") << u"@Variant(x)"_s;
    }

    void textsAreReadBackUnchanged()
    {
        QFETCH(const QString, text);
        QCOMPARE(storedAndReadAgain(newFile(), text).toString(), text);
    }

    void aDateIsReadBackAsADate()
    {
        const QDateTime date(QDate(2026, 2, 28), QTime(12, 30), Qt::UTC);
        QCOMPARE(storedAndReadAgain(newFile(), date).toDateTime(), date);
    }

    void aStoredValueOverridesTheRegisteredOneUntilItIsRemoved()
    {
        UserDefaults defaults(newFile());
        defaults.registerDefaults({{u"Key"_s, u"registered"_s}});
        QCOMPARE(defaults.object(u"Key"_s).toString(), u"registered"_s);
        defaults.setObject(u"Key"_s, u"stored"_s);
        QCOMPARE(defaults.object(u"Key"_s).toString(), u"stored"_s);
        defaults.remove(u"Key"_s);
        QCOMPARE(defaults.object(u"Key"_s).toString(), u"registered"_s);
    }

    void registeredValuesAreNeverWritten()
    {
        const QString file = newFile();
        UserDefaults defaults(file);
        defaults.registerDefaults({{u"Key"_s, u"registered"_s}});
        defaults.setObject(u"Other"_s, 1);
        defaults.synchronize();
        QVERIFY(!UserDefaults(file).object(u"Key"_s).isValid());
    }

    void aFileOfGarbageReadsAsEmpty()
    {
        const QString path = newFile();
        QVERIFY(writeFile(path, QByteArray(1000, '\xFF') + QByteArray(10, '\0') + "[[[==\nKey"));
        QVERIFY(!UserDefaults(path).object(u"Absent"_s).isValid());
    }

    void anArrayHasItsStoredElementsWhateverItsSizeKeySays_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QVariantList>("array");
        QTest::newRow("two thousand million")
            << QByteArray("1\\value=a\n2\\value=b\nsize=2000000000\n") << QVariantList{u"a"_s, u"b"_s};
        QTest::newRow("none") << QByteArray("1\\value=a\nsize=0\n") << QVariantList();
        QTest::newRow("no number") << QByteArray("1\\value=a\nsize=many\n") << QVariantList();
        QTest::newRow("with a hole") << QByteArray("1\\value=a\n3\\value=c\nsize=3\n") << QVariantList{u"a"_s, u"c"_s};
        QTest::newRow("more than ten") << QByteArray("1\\value=a\n2\\value=b\n10\\value=j\nsize=11\n")
                                       << QVariantList{u"a"_s, u"b"_s, u"j"_s};
        QTest::newRow("strangers") << QByteArray("0\\value=z\n-1\\value=y\nx\\value=x\n1\\value=a\nsize=1\n")
                                   << QVariantList{u"a"_s};
    }

    void anArrayHasItsStoredElementsWhateverItsSizeKeySays()
    {
        QFETCH(const QByteArray, lines);
        const QString path = newFile();
        QVERIFY(writeFile(path, "[Key]\n" + lines));
        const QVariant read = UserDefaults(path).object(u"Key"_s);
        QCOMPARE(read.typeId(), int{QMetaType::QVariantList});
        QTEST(read.toList(), "array");
    }

    void aNewFileAndItsFolderAreAccessibleToTheirOwnerOnly_data()
    {
        QTest::addColumn<int>("mask");
        QTest::newRow("no umask") << 0;
        QTest::newRow("usual umask") << 0022;
        QTest::newRow("umask against the owner") << 0277;
    }

    void aNewFileAndItsFolderAreAccessibleToTheirOwnerOnly()
    {
        QFETCH(const int, mask);
        const QString above = m_folder.filePath(u"above-%1"_s.arg(m_count++));
        QVERIFY(QDir().mkpath(above));
        const QString file = above + "/folder/settings.conf"_L1;
        const mode_t before = umask(mode_t(mask));
        {
            UserDefaults defaults(file);
            defaults.setObject(u"Key"_s, 1);
            defaults.synchronize();
            QCOMPARE(modeOf(file), 0600U);
            // Another program removes the files meanwhile.
            QVERIFY(QFile::remove(file));
            defaults.setObject(u"Key"_s, 2);
        }
        umask(before);
        QCOMPARE(modeOf(file), 0600U);
        QCOMPARE(modeOf(above + "/folder"_L1), 0700U);
        QCOMPARE(UserDefaults(file).object(u"Key"_s).toInt(), 2);
    }

    void aFileWrittenByTheEventLoopIsAccessibleToItsOwnerOnly()
    {
        const mode_t before = umask(0);
        const QString file = newFile();
        UserDefaults defaults(file);
        for (int value = 0; value < 3; ++value) {
            defaults.setObject(u"Key"_s, value);
            QVERIFY(!contentOf(file).contains(QByteArray::number(value)));
            QTRY_VERIFY(contentOf(file).contains(QByteArray::number(value)));
            QCOMPARE(modeOf(file), 0600U);
        }
        umask(before);
    }

    void parentFoldersGetTheDefaultPermissions()
    {
        const QString above = m_folder.filePath(u"above-%1"_s.arg(m_count++));
        const mode_t before = umask(0022);
        {
            UserDefaults defaults(above + "/folder/settings.conf"_L1);
            defaults.setObject(u"Key"_s, 1);
        }
        umask(before);
        QCOMPARE(modeOf(above), 0755U);
    }

    void aReadableFileIsRestrictedToItsOwnerWhenOpened()
    {
        const QString file = newFile();
        UserDefaults(file).setObject(u"Key"_s, 1);
        QCOMPARE(chmod(QFile::encodeName(file).constData(), 0664), 0);
        UserDefaults defaults(file);
        QCOMPARE(modeOf(file), 0600U);
        defaults.setObject(u"Key"_s, 2);
        defaults.synchronize();
        QCOMPARE(modeOf(file), 0600U);
        QCOMPARE(UserDefaults(file).object(u"Key"_s).toInt(), 2);
    }

    void onlyTheUsersOwnFolderIsRestricted()
    {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.path()));
        for (const QString& name : {u"MORVEL"_s, u"another"_s}) {
            const QString folder = m_folder.filePath(name);
            QVERIFY(QDir().mkpath(folder));
            QCOMPARE(chmod(QFile::encodeName(folder).constData(), 0755), 0);
            UserDefaults(folder + "/Pelmora.conf"_L1).setObject(u"Key"_s, 1);
            QCOMPARE(modeOf(folder), name == u"MORVEL" ? 0700U : 0755U);
            QCOMPARE(modeOf(folder + "/Pelmora.conf"_L1), 0600U);
        }
    }

    void readingMakesNoFile()
    {
        const QString file = m_folder.filePath(u"absent/settings.conf"_s);
        QVERIFY(!UserDefaults(file).object(u"Key"_s).isValid());
        UserDefaults(file).synchronize();
        QVERIFY(!QFile::exists(m_folder.filePath(u"absent"_s)));
    }

    // Opening a pipe without a writer would block forever.
    void settingsStayInMemoryWhenTheFileIsNotRegular_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("pipe") << u"pipe"_s;
        QTest::newRow("link to a pipe") << u"link"_s;
        QTest::newRow("folder") << u"folder"_s;
    }

    void settingsStayInMemoryWhenTheFileIsNotRegular()
    {
        QFETCH(const QString, kind);
        const QString path = newFile();
        const QString pipe = kind == u"link" ? path + "-pipe"_L1 : path;
        if (kind == u"folder")
            QVERIFY(QDir().mkpath(path));
        else
            QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0644), 0);
        if (kind == u"link")
            QVERIFY(QFile::link(pipe, path));
        QTest::ignoreMessage(QtWarningMsg,
                             "The settings file is not a plain file: it is not read, and nothing is written to it");
        UserDefaults defaults(path);
        QVERIFY(!defaults.object(u"Key"_s).isValid());
        defaults.setObject(u"Key"_s, 1);
        defaults.setObject(u"Array"_s, QVariantList{1, 2});
        defaults.synchronize();
        QCOMPARE(defaults.object(u"Key"_s).toInt(), 1);
        QCOMPARE(defaults.object(u"Array"_s).toList().size(), 2);
        defaults.remove(u"Key"_s);
        QVERIFY(!defaults.object(u"Key"_s).isValid());
        QVERIFY(!QFileInfo(path).isFile());
        QVERIFY(kind != u"folder" || QDir(path).isEmpty());
    }

    void theStandardFileIsInTheConfigurationFolder()
    {
        qputenv("XDG_CONFIG_HOME", m_folder.path().toUtf8());
        QCOMPARE(UserDefaults::standardFilePath(), m_folder.filePath(u"MORVEL/Pelmora.conf"_s));
    }
};

template class RunnableTests<tst_UserDefaults, QCoreApplication>;
#include "tst_userdefaults.moc"
