#include "tests/common/TestCase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QtMessageHandler& handlerOfQtTest()
{
    static QtMessageHandler handler = nullptr;
    return handler;
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    // What the platform without a display says of windows is no fault of ours.
    static const QRegularExpression unexpected(u"^(?!This plugin does not support )"_s);
    // QtTest fails tests on warnings alone, and forgets after each test that it shall.
    const bool isFault = type == QtWarningMsg || type == QtCriticalMsg;
    if (isFault)
        QTest::failOnWarning(unexpected);
    handlerOfQtTest()(isFault ? QtWarningMsg : type, context, message);
}

} // namespace

void TestCase::initTestCase_data()
{
    // QtTest has put its handler in place by now, and takes ours away with it at its end.
    if (const QtMessageHandler before = qInstallMessageHandler(handleMessage); before != handleMessage)
        handlerOfQtTest() = before;
}
