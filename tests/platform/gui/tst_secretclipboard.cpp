#include "platform/gui/SecretClipboard.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_SecretClipboard : public TestCase
{
    Q_OBJECT

private:
    static QString content() { return QGuiApplication::clipboard()->text(); }

private Q_SLOTS:
    void init() { QGuiApplication::clipboard()->clear(); }

    void theTextIsCopiedAndMarkedAsSecret()
    {
        SecretClipboard secret;
        secret.copy(u"285057511612381"_s);
        QCOMPARE(content(), u"285057511612381"_s);
        QCOMPARE(QGuiApplication::clipboard()->mimeData()->data(u"x-kde-passwordManagerHint"_s), "secret"_ba);
    }

    void theTextIsRemovedAfterItsTime()
    {
        SecretClipboard secret(50ms);
        secret.copy(u"285057511612381"_s);
        QTRY_COMPARE(content(), QString());
    }

    void theTextIsRemovedAtTheEnd()
    {
        auto secret = std::make_unique<SecretClipboard>();
        secret->copy(u"285057511612381"_s);
        secret.reset();
        QCOMPARE(content(), QString());
    }

    void aTextThatReplacedItIsKept()
    {
        auto secret = std::make_unique<SecretClipboard>(1ms);
        secret->copy(u"285057511612381"_s);
        QGuiApplication::clipboard()->setText(u"courses"_s);
        secret.reset();
        QCOMPARE(content(), u"courses"_s);
    }
};

template class RunnableTests<tst_SecretClipboard, QApplication>;
#include "tst_secretclipboard.moc"
