#include "service/installed/SystemFile.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// A folder with usr/lib/library.so.
class System
{
public:
    System()
    {
        [[maybe_unused]] const bool isWritten = writeFile(path(u"usr/lib/library.so"_s), {});
        setMode(u"usr"_s, 0755);
        setMode(u"usr/lib"_s, 0755);
        setMode(u"usr/lib/library.so"_s, 0644);
    }

    bool setMode(const QString& name, mode_t mode) const { return ::chmod(encoded(name).constData(), mode) == 0; }
    bool giveAway(const QString& name) const { return ::chown(encoded(name).constData(), 65534, 65534) == 0; }
    bool replaceByLink(const QString& name) const
    {
        return QDir(m_root.path()).rename(name, u"moved"_s) &&
               QFile::link(m_root.filePath(u"moved"_s), m_root.filePath(name));
    }
    [[nodiscard]] QString path(const QString& name) const { return m_root.filePath(name); }
    [[nodiscard]] SystemPlace place(uid_t owner = ::geteuid()) const
    {
        return {.root = QFile::encodeName(m_root.path()), .relative = "usr/lib/library.so", .owner = owner};
    }

private:
    [[nodiscard]] QByteArray encoded(const QString& name) const { return QFile::encodeName(m_root.filePath(name)); }

    QTemporaryDir m_root;
};

/// "good", "absent" or the reason.
QString verdict(const SystemPlace& place)
{
    const auto checked = checkSystemFile(place);
    if (checked)
        return u"good"_s;
    return checked.error().isAbsent ? u"absent"_s : checked.error().reason;
}

const QStringList levels{u"usr"_s, u"usr/lib"_s, u"usr/lib/library.so"_s};

} // namespace

class tst_SystemFile : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aFileThatOnlyItsOwnerCanChangeIsAccepted()
    {
        const System system;
        QCOMPARE(verdict(system.place()), u"good"_s);
        QCOMPARE(system.place().path(), QFile::encodeName(system.path(u"usr/lib/library.so"_s)));
    }

    void theRootOfTheSystemIsAccepted()
    {
        QCOMPARE((SystemPlace{.root = "/", .relative = "usr/lib/a.so", .owner = 0}.path()), "/usr/lib/a.so");
        QCOMPARE(verdict({.root = "/", .relative = "usr/lib/no-such-folder/a.so", .owner = 0}), u"absent"_s);
    }

    void aMissingFileIsAbsentWithoutAnError()
    {
        const System system;
        QVERIFY(QFile::remove(system.path(levels[2])));
        QCOMPARE(verdict(system.place()), u"absent"_s);
        QVERIFY(QDir(system.path(levels[0])).rmdir(u"lib"_s));
        QCOMPARE(verdict(system.place()), u"absent"_s);
    }

    void aFileOrFolderThatOthersCanWriteIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode");
        for (const QString& name : levels) {
            QTest::addRow("%s, group", qPrintable(name)) << name << 0775;
            QTest::addRow("%s, others", qPrintable(name)) << name << 0757;
            QTest::addRow("%s, others, sticky", qPrintable(name)) << name << 01777;
        }
        QTest::newRow("root, others") << u"."_s << 0777;
    }

    void aFileOrFolderThatOthersCanWriteIsRefused()
    {
        QFETCH(QString, name);
        QFETCH(int, mode);
        const System system;
        QVERIFY(system.setMode(name, static_cast<mode_t>(mode)));
        const QString place = name == u"." ? QDir(system.path(name)).canonicalPath() : system.path(name);
        QCOMPARE(verdict(system.place()), place + u" peut être modifié par d’autres que root"_s);
    }

    void aFileOrFolderOfAnotherOwnerIsRefused()
    {
        for (const QString& name : levels) {
            const System system;
            if (::geteuid() != 0) {
                QVERIFY(verdict(system.place(0)).endsWith(u" n’appartient pas à root"_s));
                continue;
            }
            QVERIFY(system.giveAway(name));
            QCOMPARE(verdict(system.place()), system.path(name) + u" n’appartient pas à root"_s);
        }
    }

    void symbolicLinksAreRefused()
    {
        for (const QString& name : levels) {
            const System system;
            QVERIFY(system.replaceByLink(name));
            const QString reason = name == levels[2] ? u" n’est pas un fichier ordinaire"_s
                                                     : u" est un lien symbolique, ou n’est pas un dossier"_s;
            QCOMPARE(verdict(system.place()), system.path(name) + reason);
        }
    }

    void aPathThatIsNotARegularFileIsRefused()
    {
        const System system;
        QVERIFY(QFile::remove(system.path(levels[2])));
        QCOMPARE(::mkfifo(system.place().path().constData(), 0644), 0);
        QCOMPARE(verdict(system.place()), system.path(levels[2]) + u" n’est pas un fichier ordinaire"_s);
    }
};

template class RunnableTests<tst_SystemFile, void>;
#include "tst_systemfile.moc"
