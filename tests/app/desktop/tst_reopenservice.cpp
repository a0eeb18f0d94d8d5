#include "app/desktop/ActivationToken.h"
#include "app/desktop/ReopenService.h"
#include "platform/NativePath.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ReopenService : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/absent/bus"); }
    void withoutABusItDoesNothing()
    {
        ReopenService service;
        service.start();
        service.start();
        QVERIFY(service.children().isEmpty());
    }

    void activatingBringsTheWindowBack()
    {
        ReopenService service;
        ReopenInterface interface(&service);
        const QSignalSpy reopened(&service, &ReopenService::reopenRequested);
        interface.Activate({});
        interface.ActivateAction(u"unknown"_s, {}, {});
        QCOMPARE(reopened.size(), 2);
    }

    void theTokenOfARequestIsForTheNextActivation_data()
    {
        QTest::addColumn<QString>("sent");
        QTest::addColumn<QString>("used");
        QTest::newRow("token") << u"kwin-42"_s << u"kwin-42"_s;
        QTest::newRow("none") << QString() << u"earlier"_s;
        QTest::newRow("no token") << u"a\nb"_s << u"earlier"_s;
        QTest::newRow("too long") << QString(2000, u'a') << u"earlier"_s;
    }
    void theTokenOfARequestIsForTheNextActivation()
    {
        QFETCH(const QString, sent);
        QFETCH(const QString, used);
        ReopenService service;
        ReopenInterface interface(&service);
        ActivationToken::use(u"earlier"_s);
        interface.Activate({{u"activation-token"_s, sent}});
        QCOMPARE(ActivationToken::ofThisStart(), used);
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void anActionOfTheLauncherIsPassedOn()
    {
        ReopenService service;
        ReopenInterface interface(&service);
        const QSignalSpy reopened(&service, &ReopenService::reopenRequested);
        QList<DesktopAction> asked;
        connect(&service, &ReopenService::actionRequested, this, [&](DesktopAction action) { asked.append(action); });
        for (const QString& name : {u"lire"_s, u"imprimer"_s, u"dossier"_s})
            interface.ActivateAction(name, {}, {});
        QCOMPARE(asked, (QList{DesktopAction::Read, DesktopAction::Print, DesktopAction::OpenFolder}));
        QCOMPARE(reopened.size(), 0);
    }

    void openingShowsTheFirstFileOfThisMachine_data()
    {
        QTest::addColumn<QStringList>("uris");
        QTest::addColumn<QString>("path");
        QTest::newRow("one") << QStringList{u"file:///a/carte.xml"_s} << u"/a/carte.xml"_s;
        QTest::newRow("not UTF-8") << QStringList{u"file:///Zo%E9.xml"_s} << pathFromBytes("/Zo\xE9.xml");
        QTest::newRow("encoded") << QStringList{u"file:///%C3%A9t%C3%A9/carte%201.xml"_s} << u"/été/carte 1.xml"_s;
        QTest::newRow("several") << QStringList{u"http://a/b.xml"_s, u"file:///1.xml"_s, u"file:///2.xml"_s}
                                 << u"/1.xml"_s;
        QTest::newRow("none") << QStringList() << QString();
        QTest::newRow("far away") << QStringList{u"http://a/b.xml"_s, u"file://serveur/b.xml"_s} << QString();
        QTest::newRow("no address") << QStringList{u"/a/carte.xml"_s, QString(), u"file:"_s} << QString();
    }
    void openingShowsTheFirstFileOfThisMachine()
    {
        QFETCH(const QStringList, uris);
        QFETCH(const QString, path);
        ReopenService service;
        ReopenInterface interface(&service);
        const QSignalSpy reopened(&service, &ReopenService::reopenRequested);
        const QSignalSpy opened(&service, &ReopenService::openRequested);
        interface.Open(uris, {});
        QCOMPARE(reopened.size(), path.isEmpty() ? 1 : 0);
        QCOMPARE(opened.size(), path.isEmpty() ? 0 : 1);
        QCOMPARE(opened.value(0).value(0).toString(), path);
    }
};

template class RunnableTests<tst_ReopenService, QCoreApplication>;
#include "tst_reopenservice.moc"
