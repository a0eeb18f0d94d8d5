// A request and its reply of 6 KB through the card service's channel, beside the lower bound for two processes and a
// thread between them: a length-prefixed message over a socket pair. And a whole start: spawn to the end of the bind.
#include "Timing.h"
#include "card/client/LVitAccess.h"
#include "card/wire/ServiceMessage.h"

#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <semaphore>
#include <thread>
#include <vector>

#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype replySize = 6000;
constexpr int blocks = 10; // of each kind, in turns
constexpr int tripsPerBlock = 500;
constexpr int starts = 41;

bool readAll(int descriptor, void* target, std::size_t size)
{
    auto* bytes = static_cast<char*>(target);
    while (size > 0) {
        const ssize_t count = read(descriptor, bytes, size);
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

void writeAll(int descriptor, const void* source, std::size_t size)
{
    const auto* bytes = static_cast<const char*>(source);
    while (size > 0) {
        const ssize_t count = write(descriptor, bytes, size);
        if (count <= 0)
            std::exit(1);
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
}

/// The service of the channel: answers every request with a text of the reply's size.
int runChannelPeer()
{
    const QCborMap body{{u"Status"_s, u"success"_s}, {u"Vitale"_s, QString(replySize, u'x')}};
    ServiceMessageReader reader;
    std::array<char, 65536> slice{};
    while (true) {
        const ssize_t count = read(STDIN_FILENO, slice.data(), slice.size());
        if (count <= 0)
            return 0;
        reader.append({slice.data(), count});
        for (auto request = reader.next(); request && *request; request = reader.next()) {
            const QByteArray reply = encodeServiceMessage({.number = (*request)->number, .body = body});
            writeAll(STDOUT_FILENO, reply.constData(), static_cast<std::size_t>(reply.size()));
        }
    }
}

/// The child process of the raw exchange: a length, then that many bytes, in both directions.
void runRawPeer(int descriptor)
{
    std::vector<char> request(4096);
    std::vector<char> reply(sizeof(std::uint32_t) + replySize, 'x');
    const auto size = static_cast<std::uint32_t>(replySize);
    std::memcpy(reply.data(), &size, sizeof size);
    std::uint32_t length = 0;
    while (readAll(descriptor, &length, sizeof length) && readAll(descriptor, request.data(), length))
        writeAll(descriptor, reply.data(), reply.size());
}

/// The lower bound: a thread that does the blocking exchange on the socket for the caller.
class RawExchange
{
public:
    RawExchange()
    {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
            fail("no socket pair");
        m_peer = fork();
        if (m_peer == 0) {
            close(ends[0]);
            runRawPeer(ends[1]);
            _exit(0);
        }
        close(ends[1]);
        m_socket = ends[0];
        m_thread = std::thread([this] { run(); });
    }
    RawExchange(const RawExchange&) = delete;
    RawExchange& operator=(const RawExchange&) = delete;
    ~RawExchange()
    {
        post({});
        m_thread.join();
        close(m_socket);
        waitpid(m_peer, nullptr, 0);
    }

    void trip()
    {
        std::binary_semaphore done{0};
        post([this, &done] {
            const std::array<char, 27> request{"a request of 26 characters"};
            const auto length = static_cast<std::uint32_t>(request.size());
            writeAll(m_socket, &length, sizeof length);
            writeAll(m_socket, request.data(), request.size());
            std::uint32_t size = 0;
            if (!readAll(m_socket, &size, sizeof size))
                fail("the peer has gone");
            std::vector<char> reply(size);
            if (!readAll(m_socket, reply.data(), size))
                fail("the peer has gone");
            done.release();
        });
        done.acquire();
    }

private:
    void post(std::function<void()> task)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_tasks.push_back(std::move(task));
        }
        m_hasTask.notify_one();
    }
    void run()
    {
        while (true) {
            std::unique_lock lock(m_mutex);
            m_hasTask.wait(lock, [this] { return !m_tasks.empty(); });
            const std::function<void()> task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            if (!task)
                return;
            task();
        }
    }

    int m_socket = -1;
    pid_t m_peer = -1;
    std::mutex m_mutex;
    std::condition_variable m_hasTask;
    std::deque<std::function<void()>> m_tasks;
    std::thread m_thread;
};

class ChannelExchange
{
public:
    explicit ChannelExchange(const char* self)
        : m_channel({QString::fromLocal8Bit(self), {u"--peer"_s}})
    {
        std::binary_semaphore done{0};
        bool isOpen = false;
        m_channel.post([this, &done, &isOpen] {
            isOpen = m_channel.open([](const ChannelEvent&) {}).has_value();
            done.release();
        });
        done.acquire();
        if (!isOpen)
            fail("no service");
    }

    void trip()
    {
        std::binary_semaphore done{0};
        m_channel.post([this, &done] {
            m_channel.send({{u"Command"_s, u"vitale_read"_s}}, [&done](const std::optional<QCborMap>& reply) {
                if (!reply || reply->value("Vitale"_L1).toString().size() != replySize)
                    fail("wrong reply");
                done.release();
            });
        });
        done.acquire();
    }

private:
    ServiceChannel m_channel;
};

void compareTrips(const char* self, const char* where)
{
    RawExchange raw;
    ChannelExchange channel(self);
    std::vector<double> rawTimes;
    std::vector<double> channelTimes;
    for (int block = 0; block < blocks; ++block) {
        for (int trip = 0; trip < tripsPerBlock; ++trip)
            rawTimes.push_back(timeOf([&raw] { raw.trip(); }));
        for (int trip = 0; trip < tripsPerBlock; ++trip)
            channelTimes.push_back(timeOf([&channel] { channel.trip(); }));
    }
    const double floor = median(rawTimes);
    const double ours = median(channelTimes);
    std::printf("%-44s %10.1f us\n", (std::string("6 KB reply, raw + thread hop, ") + where).c_str(), floor);
    std::printf("%-44s %10.1f us   x %.2f (target 3)\n", (std::string("6 KB reply, channel, ") + where).c_str(), ours,
                ours / floor);
}

void bindOnce(const std::shared_ptr<LVitAccess>& client)
{
    std::promise<bool> bound;
    client->bindWithCompletionHandler(
        [&bound](bool isBound, const std::optional<Error>&) { bound.set_value(isBound); });
    if (!bound.get_future().get())
        fail("bind failed");
}

void measureStarts(const char* what)
{
    const ServiceCommand service{QStringLiteral(PELMORA_SERVICE_PROGRAM),
                                 {u"--simulate"_s, QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml")}};
    const auto client = std::make_shared<LVitAccess>(service);
    std::vector<double> times;
    times.reserve(starts);
    for (int start = 0; start < starts; ++start)
        times.push_back(timeOf<std::milli>([&client] { bindOnce(client); }));
    std::printf("%-44s %10.2f ms   (target 8)\n", what, median(times));
}

/// With one processor the times include the work only; with more, also the wake-ups of idle processors.
void useOneProcessor(bool one)
{
    static cpu_set_t all = [] {
        cpu_set_t set;
        sched_getaffinity(0, sizeof set, &set);
        return set;
    }();
    cpu_set_t set = all;
    std::size_t seen = 0;
    for (std::size_t cpu = 0; one && cpu < CPU_SETSIZE; ++cpu) {
        if (CPU_ISSET(cpu, &all) && ++seen > 1)
            CPU_CLR(cpu, &set);
    }
    sched_setaffinity(0, sizeof set, &set);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc == 2 && std::strcmp(argv[1], "--peer") == 0)
        return runChannelPeer();
    useOneProcessor(true);
    compareTrips("/proc/self/exe", "1 processor");
    useOneProcessor(false);
    compareTrips("/proc/self/exe", "all processors");
    measureStarts("spawn to bind, small application");
    const std::vector<char> ballast(std::size_t{200} << 20U, 'x');
    measureStarts("spawn to bind, application of 200 MiB");
    return ballast.front() == 'x' ? 0 : 1;
}
