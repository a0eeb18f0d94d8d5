#include "tests/common/TestCase.h"

#include <QRegularExpression>
#include <QTest>

#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;

/// The messages of the running test, before QtTest receives them.
class TestMessages
{
public:
    static TestMessages& instance()
    {
        static TestMessages messages;
        return messages;
    }

    void install()
    {
        const auto handler = [](QtMsgType type, const QMessageLogContext& context, const QString& message) {
            instance().handle(type, context, message);
        };
        m_next = qInstallMessageHandler(handler);
    }

    void announce(AnnouncedMessages* announced)
    {
        const std::scoped_lock lock(m_mutex);
        m_announced = announced;
    }

private:
    void handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        // Qt's platform without a display writes this about every window.
        if (message.startsWith("This plugin does not support "_L1) || isAnnounced(message))
            return;
        // QtTest fails tests on warnings only, and resets this after each test.
        const bool isFault = type == QtWarningMsg || type == QtCriticalMsg;
        if (isFault)
            QTest::failOnWarning(m_anything);
        m_next(isFault ? QtWarningMsg : type, context, message);
    }

    bool isAnnounced(const QString& message)
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_announced || !message.startsWith(m_announced->m_beginning))
            return false;
        ++m_announced->m_count;
        return true;
    }

    const QRegularExpression m_anything{u"."_s};
    QtMessageHandler m_next = nullptr;
    std::mutex m_mutex;
    AnnouncedMessages* m_announced = nullptr;
};

void TestCase::initTestCase_data()
{
    // QtTest has installed its handler already, and removes this one together with it.
    TestMessages::instance().install();
}

AnnouncedMessages::AnnouncedMessages(QString beginning)
    : m_beginning(std::move(beginning))
{
    TestMessages::instance().announce(this);
}

AnnouncedMessages::~AnnouncedMessages()
{
    TestMessages::instance().announce(nullptr);
}
