#include "card/client/LVitAccess.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;

namespace {

/// A PC/SC service that accepts every connection and never answers.
class MuteReaderService
{
public:
    MuteReaderService()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray name = path().toLocal8Bit();
        if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path))
            return;
        std::ranges::copy(name, std::begin(address.sun_path));
        m_isListening = ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                        ::listen(m_socket, 8) == 0;
    }
    Q_DISABLE_COPY_MOVE(MuteReaderService)
    ~MuteReaderService() { ::close(m_socket); }

    [[nodiscard]] bool isListening() const { return m_isListening; }
    [[nodiscard]] QString path() const { return m_folder.filePath(u"pcscd.comm"_s); }

private:
    QTemporaryDir m_folder;
    int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool m_isListening = false;
};

} // namespace

/// The client with the shipped card service, while the system's readers hang.
class tst_CardServiceDeadline : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aReaderThatHangsIsAnsweredAndTheServiceReplaced()
    {
        const auto client = std::make_shared<LVitAccess>(ServiceCommand{QStringLiteral(PELMORA_SERVICE_PROGRAM), {}});
        client->setAccessMode(2);
        const MuteReaderService readers;
        QVERIFY(readers.isListening());
        qputenv("PCSCLITE_CSOCK_NAME", readers.path().toLocal8Bit());

        // The reply is sent before the service ends. So the error is that there is no reader, not that the service has
        // ended.
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -20"_s);
        QVERIFY2(timer.elapsed() >= 10'000 && timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
        // Requests during the service's end are answered by its end or by the next service.
        qputenv("PCSCLITE_CSOCK_NAME", readers.path().toLocal8Bit() + "-absent");
        const QString late = summary(awaitReaders(client));
        QVERIFY2(late == u"Pelmora -10" || late == u"success", qPrintable(late));

        // The next bind starts another service, which does not wait for the hanging call.
        timer.restart();
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -20"_s);
        QVERIFY2(timer.elapsed() < 5'000, qPrintable(QString::number(timer.elapsed())));
    }
};

template class RunnableTests<tst_CardServiceDeadline, QCoreApplication>;

#include "tst_cardservicedeadline.moc"
