#include "app/desktop/InstanceMessage.h"
#include "platform/NativePath.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborMap>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class tst_InstanceMessage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aSentCardArrivesUnchanged_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << u"/home/cabinet/carte.xml"_s;
        QTest::newRow("blanks, accents and lines") << u"/tmp/été à la\nmer/carte n° 1.xml"_s;
        QTest::newRow("not UTF-8") << pathFromBytes("/tmp/Zo\xE9/\xFF\xC3.xml");
        QTest::newRow("as long as paths get") << u'/' + QString(4095, u'é');
    }
    void aSentCardArrivesUnchanged()
    {
        QFETCH(const QString, path);
        const auto message = InstanceMessage::decoded(InstanceMessage{path}.encoded());
        QVERIFY(message);
        QCOMPARE(message->cardPath, path);
    }

    void aStartWithoutACardArrivesWithoutACard()
    {
        const auto message = InstanceMessage::decoded(InstanceMessage().encoded());
        QVERIFY(message);
        QVERIFY(!message->cardPath);
    }

    void aSentActionArrivesUnchanged()
    {
        for (const DesktopActionName& each : desktopActions) {
            const auto message = InstanceMessage::decoded(InstanceMessage{{}, each.action}.encoded());
            QVERIFY(message && !message->cardPath);
            QVERIFY(message->action == each.action);
        }
    }

    void theTokenArrivesWithEachKindOfMessage()
    {
        for (InstanceMessage sent :
             {InstanceMessage(), InstanceMessage{u"/carte.xml"_s}, InstanceMessage{{}, DesktopAction::Read}}) {
            sent.activationToken = u"gnome-shell/1-0_TIME12"_s;
            const auto message = InstanceMessage::decoded(sent.encoded());
            QVERIFY(message && message->cardPath == sent.cardPath && message->action == sent.action);
            QCOMPARE(message->activationToken, sent.activationToken);
        }
    }

    void aRelativePathIsResolvedInTheCurrentFolder()
    {
        QCOMPARE(InstanceMessage::forCard(u"lien/../carte.xml"_s).cardPath,
                 QDir::currentPath() + u"/lien/../carte.xml"_s);
        QCOMPARE(InstanceMessage::forCard(u"/ici/carte.xml"_s).cardPath, u"/ici/carte.xml"_s);
        QVERIFY(!InstanceMessage::forCard(std::nullopt).cardPath);
    }

    void aRelativePathIsResolvedInAFolderWithAnyName()
    {
        const QTemporaryDir folder;
        const QByteArray name = QFile::encodeName(folder.path()) + "/Zo\xE9";
        QCOMPARE(mkdir(name.constData(), 0700), 0);
        const QString before = QDir::currentPath();
        QCOMPARE(chdir(name.constData()), 0);
        const InstanceMessage message = InstanceMessage::forCard(u"carte.xml"_s);
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(rmdir(name.constData()), 0);
        QCOMPARE(bytesOfPath(message.cardPath.value_or(QString())), name + "/carte.xml");
    }

    void aMessageThatIsTooLongIsNotSent()
    {
        const InstanceMessage message{u'/' + QString(InstanceMessage::maximumSize, u'a'), {}};
        QVERIFY(message.encoded().isEmpty());
    }

    void aMalformedMessageIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char* name, const QCborMap& map) {
            QTest::newRow(name) << map.toCborValue().toCbor();
        };
        const QByteArray sound = InstanceMessage{u"/carte.xml"_s, {}}.encoded();
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("text") << QByteArray("/carte.xml");
        QTest::newRow("no map") << QCborValue(u"Open"_s).toCbor();
        QTest::newRow("cut") << sound.chopped(1);
        QTest::newRow("followed by more") << sound + 'a';
        QTest::newRow("nested deep") << QByteArray(10'000, '\x81');
        QTest::newRow("too long") << InstanceMessage{u"/a"_s, {}}.encoded() +
                                         QByteArray(InstanceMessage::maximumSize, '\0');
        row("unknown request", {{u"Request"_s, u"Print"_s}});
        row("no request", {{u"Path"_s, u"/carte.xml"_s}});
        row("without its path", {{u"Request"_s, u"Open"_s}});
        row("with a path too many", {{u"Request"_s, u"Reopen"_s}, {u"Path"_s, u"/carte.xml"_s}});
        row("unknown action", {{u"Request"_s, u"Action"_s}, {u"Name"_s, u"quitter"_s}});
        row("no action", {{u"Request"_s, u"Action"_s}});
        row("relative path", {{u"Request"_s, u"Open"_s}, {u"Path"_s, u"carte.xml"_s}});
        row("empty path", {{u"Request"_s, u"Open"_s}, {u"Path"_s, QString()}});
        row("path with a NUL", {{u"Request"_s, u"Open"_s}, {u"Path"_s, u"/carte"_s + QChar::Null}});
        row("relative path in bytes", {{u"Request"_s, u"Open"_s}, {u"Path"_s, QByteArray("carte\xE9")}});
        row("NUL in bytes", {{u"Request"_s, u"Open"_s}, {u"Path"_s, QByteArray("/c\0\xE9", 4)}});
        row("path that is a number", {{u"Request"_s, u"Open"_s}, {u"Path"_s, 7}});
    }
    void aMalformedMessageIsRefused()
    {
        QFETCH(const QByteArray, bytes);
        QVERIFY(!InstanceMessage::decoded(bytes));
    }
};

template class RunnableTests<tst_InstanceMessage, QCoreApplication>;
#include "tst_instancemessage.moc"
