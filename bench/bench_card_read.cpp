// A whole read of the card in a reader, beside a bare PC/SC client that sends the card the same commands; and the same
// read requested by the application through the channel, which bench_channel measures. Needs a PC/SC service with a
// specimen card in its first reader: see bench-card-read.py.
#include "Timing.h"
#include "card/client/ServiceChannel.h"
#include "card/wire/ServiceVocabulary.h"
#include "service/embedded/EmbeddedLibrary.h"
#include "service/embedded/SiteMaps.h"
#include "service/pcsc/PcscReaders.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <future>
#include <vector>

#include <winscard.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int blocks = 10; // of each kind, in turns
constexpr int readsPerBlock = 40;
const QString model = u"Feitian SCR301"_s;

/// Records the commands that are sent to a card.
class RecordingCard final : public CardTransport
{
public:
    RecordingCard(std::unique_ptr<CardTransport> card, QList<QByteArray>& commands)
        : m_card(std::move(card))
        , m_commands(&commands)
    {
    }
    std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override
    {
        m_commands->append(command.toByteArray());
        return m_card->transmit(command);
    }

private:
    std::unique_ptr<CardTransport> m_card;
    QList<QByteArray>* m_commands;
};

class RecordingReaders final : public CardReaders
{
public:
    explicit RecordingReaders(QList<QByteArray>& commands)
        : m_commands(&commands)
    {
    }
    std::expected<QList<QByteArray>, CardFault> names() override { return m_readers.names(); }
    std::expected<std::unique_ptr<CardTransport>, CardFault> connect(const QByteArray& reader) override
    {
        // Only the commands of the successful attempt are kept.
        m_commands->clear();
        auto card = m_readers.connect(reader);
        if (!card)
            return card;
        return std::make_unique<RecordingCard>(*std::move(card), *m_commands);
    }
    void waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest) override
    {
        m_readers.waitForCard(reader, present, longest);
    }
    std::unique_ptr<ReaderWatch> watch(const ReaderReport& report) override { return m_readers.watch(report); }
    void pause(std::chrono::milliseconds time) override { m_readers.pause(time); }

private:
    PcscReaders m_readers;
    QList<QByteArray>* m_commands;
};

EmbeddedLibrary libraryWith(std::unique_ptr<CardReaders> readers)
{
    return EmbeddedLibrary(std::move(readers), loadCardMaps(QStringLiteral(PELMORA_STAGE_SHARE)).maps);
}

QList<QByteArray> commandsOfARead()
{
    QList<QByteArray> commands;
    EmbeddedLibrary library = libraryWith(std::make_unique<RecordingReaders>(commands));
    if (!library.chooseReaders(model, model) || !library.readCard())
        fail("no card to read");
    return commands;
}

/// A client that sends known commands and ignores the answers.
class BareClient
{
public:
    explicit BareClient(QList<QByteArray> commands)
        : m_commands(std::move(commands))
    {
        if (::SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context) != SCARD_S_SUCCESS)
            fail("no PC/SC service");
    }
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;
    ~BareClient() { ::SCardReleaseContext(m_context); }

    void read() const
    {
        SCARDHANDLE card = 0;
        DWORD protocol = 0;
        bool isWell = ::SCardConnect(m_context, "Feitian SCR301 00 00", SCARD_SHARE_SHARED,
                                     SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &card, &protocol) == SCARD_S_SUCCESS &&
                      ::SCardBeginTransaction(card) == SCARD_S_SUCCESS;
        for (const QByteArray& command : m_commands) {
            std::array<unsigned char, MAX_BUFFER_SIZE> answer{};
            DWORD size = answer.size();
            isWell = isWell && ::SCardTransmit(card, protocol == SCARD_PROTOCOL_T1 ? SCARD_PCI_T1 : SCARD_PCI_T0,
                                               reinterpret_cast<const unsigned char*>(command.constData()),
                                               static_cast<DWORD>(command.size()), nullptr, answer.data(),
                                               &size) == SCARD_S_SUCCESS;
        }
        isWell = isWell && ::SCardEndTransaction(card, SCARD_LEAVE_CARD) == SCARD_S_SUCCESS &&
                 ::SCardDisconnect(card, SCARD_LEAVE_CARD) == SCARD_S_SUCCESS;
        if (!isWell)
            fail("the bare client's read failed");
    }

private:
    QList<QByteArray> m_commands;
    SCARDCONTEXT m_context = 0;
};

/// The card service as the application uses it.
class ServiceClient
{
public:
    ServiceClient()
        : m_channel({QStringLiteral(PELMORA_SERVICE_PROGRAM), {}})
    {
        std::promise<bool> opened;
        m_channel.post([this, &opened] { opened.set_value(m_channel.open([](const ChannelEvent&) {}).has_value()); });
        if (!opened.get_future().get())
            fail("no card service");
        ask({{ServiceWord::command, ServiceWord::init}, {ServiceWord::mode, u"2"_s}});
        ask({{ServiceWord::command, ServiceWord::setReaders},
             {ServiceWord::vitaleReaderName, model},
             {ServiceWord::cpsReaderName, model}});
    }

    void read() { ask({{ServiceWord::command, ServiceWord::vitaleRead}}); }

private:
    void ask(const QCborMap& request)
    {
        std::promise<bool> succeeded;
        m_channel.post([this, &request, &succeeded] {
            m_channel.send(request, [&succeeded](const std::optional<QCborMap>& reply) {
                succeeded.set_value(reply && reply->value(ServiceWord::status) == QCborValue(ServiceWord::success));
            });
        });
        if (!succeeded.get_future().get())
            fail("the card service refused");
    }

    ServiceChannel m_channel;
};

} // namespace

int main()
{
    const BareClient bare(commandsOfARead());
    EmbeddedLibrary library = libraryWith(std::make_unique<PcscReaders>());
    if (!library.chooseReaders(model, model))
        fail("no reader");
    ServiceClient client;
    const auto readWithLibrary = [&library] {
        if (!library.readCard())
            fail("a read failed");
    };

    std::vector<double> bareTimes;
    std::vector<double> libraryTimes;
    std::vector<double> clientTimes;
    for (int block = 0; block < blocks; ++block) {
        for (int read = 0; read < readsPerBlock; ++read)
            bareTimes.push_back(timeOf<std::milli>([&bare] { bare.read(); }));
        for (int read = 0; read < readsPerBlock; ++read)
            libraryTimes.push_back(timeOf<std::milli>(readWithLibrary));
        for (int read = 0; read < readsPerBlock; ++read)
            clientTimes.push_back(timeOf<std::milli>([&client] { client.read(); }));
    }
    const double floor = median(bareTimes);
    std::printf("%-44s %10.2f ms\n", "the same commands, bare PC/SC client", floor);
    const double whole = median(libraryTimes);
    const double withChannel = median(clientTimes);
    std::printf("%-44s %10.2f ms   x %.2f (target 1.5)\n", "whole read", whole, whole / floor);
    std::printf("%-44s %10.2f ms   x %.2f\n", "the same, asked for by the application", withChannel,
                withChannel / floor);
}
