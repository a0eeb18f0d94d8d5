#include "platform/print/PrintServer.h"

#include "platform/print/CupsLibrary.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

const QString PrintServer::errorDomain = u"Impression"_s;

namespace {

constexpr int silentServer = -1;
constexpr int connectionPatience = 2000; // milliseconds
constexpr std::chrono::milliseconds pulse{100};

// Where there is no library there is no server either: the public operations say so before they come to this.
const CupsLibrary& cups()
{
    return *CupsLibrary::instance();
}

struct Refusal
{
    int status = 0;
    QStringView sentence;
};

// %1 is the queue.
constexpr std::array refusals{
    Refusal{silentServer, u"Le serveur d’impression ne répond pas."},
    Refusal{IPP_STATUS_ERROR_SERVICE_UNAVAILABLE, u"Le serveur d’impression n’est pas joignable."},
    Refusal{IPP_STATUS_ERROR_NOT_FOUND, u"L’imprimante « %1 » n’existe plus."},
    Refusal{IPP_STATUS_ERROR_GONE, u"L’imprimante « %1 » n’existe plus."},
    Refusal{IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS, u"L’imprimante « %1 » n’accepte plus de documents pour l’instant."},
    Refusal{IPP_STATUS_ERROR_FORBIDDEN, u"L’imprimante « %1 » ne vous est pas ouverte."},
    Refusal{IPP_STATUS_ERROR_NOT_AUTHENTICATED, u"L’imprimante « %1 » ne vous est pas ouverte."},
    Refusal{IPP_STATUS_ERROR_NOT_AUTHORIZED, u"L’imprimante « %1 » ne vous est pas ouverte."},
    Refusal{IPP_STATUS_ERROR_CUPS_AUTHENTICATION_CANCELED, u"L’imprimante « %1 » demande un mot de passe."},
};

Error refusal(int status, const QString& queue)
{
    const auto* const known = std::ranges::find(refusals, status, &Refusal::status);
    QString sentence =
        known != refusals.end() ? known->sentence.toString() : u"L’imprimante « %1 » a refusé le document (%2)."_s;
    sentence.replace("%1"_L1, queue);
    if (CupsLibrary::instance() != nullptr)
        sentence.replace("%2"_L1, QString::fromUtf8(cups().ippErrorString(static_cast<ipp_status_t>(status))));
    return {PrintServer::errorDomain, status, sentence};
}

// Nobody can be asked here; without this, libcups would ask at the terminal.
const char* noPassword(const char*, http_t*, const char*, const char*, void*)
{
    return nullptr;
}

/// A connection of its own to the server, with an end to its patience.
class Connection
{
public:
    explicit Connection(std::stop_token stop)
        : m_stop(std::move(stop))
    {
        cups().cupsSetPasswordCB2(noPassword, nullptr);
        m_http.reset(cups().httpConnect2(cups().cupsServer(), cups().ippPort(), nullptr, AF_UNSPEC,
                                         cups().cupsEncryption(), 1, connectionPatience, nullptr));
        if (m_http)
            cups().httpSetTimeout(m_http.get(), std::chrono::duration<double>(pulse).count(), &Connection::hasPatience,
                                  this);
    }

    [[nodiscard]] http_t* http() const { return m_http.get(); }

    [[nodiscard]] Error failure(const QString& queue) const
    {
        return refusal(m_gaveUp ? silentServer : cups().cupsLastError(), queue);
    }

    [[nodiscard]] bool gaveUp() const { return m_gaveUp; }

private:
    // Called at each pulse in which nothing came.
    static int hasPatience(http_t* /*http*/, void* self)
    {
        auto& connection = *static_cast<Connection*>(self);
        connection.m_silence += pulse;
        connection.m_gaveUp = connection.m_silence >= PrintServer::patience || connection.m_stop.stop_requested();
        return connection.m_gaveUp ? 0 : 1;
    }

    struct Closer
    {
        void operator()(http_t* http) const { cups().httpClose(http); }
    };

    std::stop_token m_stop;
    std::unique_ptr<http_t, Closer> m_http;
    std::chrono::milliseconds m_silence{0};
    bool m_gaveUp = false;
};

class Destinations
{
public:
    explicit Destinations(http_t* http) { m_count = cups().cupsGetDests2(http, &m_first); }
    ~Destinations() { cups().cupsFreeDests(m_count, m_first); }
    Destinations(const Destinations&) = delete;
    Destinations& operator=(const Destinations&) = delete;

    [[nodiscard]] std::span<const cups_dest_t> all() const
    {
        return {m_first, static_cast<std::size_t>(std::max(m_count, 0))};
    }

    /// Null when there is none of that name. An instance is the user's own set of settings for a queue.
    [[nodiscard]] cups_dest_t* named(const QString& queue) const
    {
        const QByteArray name = queue.section(u'/', 0, 0).toUtf8();
        const QByteArray instance = queue.section(u'/', 1).toUtf8();
        return cups().cupsGetDest(name.constData(), instance.isEmpty() ? nullptr : instance.constData(), m_count,
                                  m_first);
    }

private:
    cups_dest_t* m_first = nullptr;
    int m_count = 0;
};

class Options
{
public:
    explicit Options(const QList<PrintOption>& options)
    {
        for (const PrintOption& option : options)
            m_count = cups().cupsAddOption(option.name.constData(), option.value.constData(), m_count, &m_first);
    }
    ~Options() { cups().cupsFreeOptions(m_count, m_first); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] cups_option_t* first() const { return m_first; }

private:
    cups_option_t* m_first = nullptr;
    int m_count = 0;
};

/// One job on its way to a queue.
class Submission
{
public:
    Submission(http_t* http, cups_dest_t* queue)
        : m_http(http)
        , m_queue(queue)
        , m_information(cups().cupsCopyDestInfo(http, queue))
    {
    }
    ~Submission() { cups().cupsFreeDestInfo(m_information); }
    Submission(const Submission&) = delete;
    Submission& operator=(const Submission&) = delete;

    [[nodiscard]] bool start(const PrintJob& job)
    {
        const QByteArray title = job.title.toUtf8();
        const Options options(job.options);
        return m_information != nullptr &&
               cups().cupsCreateDestJob(m_http, m_queue, m_information, &m_number, title.constData(), options.count(),
                                        options.first()) == IPP_STATUS_OK &&
               cups().cupsStartDestDocument(m_http, m_queue, m_information, m_number, title.constData(),
                                            CUPS_FORMAT_PDF, 0, nullptr, 1) == HTTP_STATUS_CONTINUE;
    }

    [[nodiscard]] bool send(const QByteArray& document)
    {
        const http_status_t written =
            cups().cupsWriteRequestData(m_http, document.constData(), static_cast<std::size_t>(document.size()));
        return cups().cupsFinishDestDocument(m_http, m_queue, m_information) == IPP_STATUS_OK &&
               written == HTTP_STATUS_CONTINUE;
    }

    /// A job without its document would wait in the queue for ever.
    void cancel()
    {
        if (m_number != 0)
            cups().cupsCancelDestJob(m_http, m_queue, m_number);
    }

private:
    http_t* m_http;
    cups_dest_t* m_queue;
    cups_dinfo_t* m_information;
    int m_number = 0;
};

// Settings that place the page on its sheet: that is the caller's to say, whatever the queue's habits are.
constexpr std::array<std::string_view, 18> placing{
    "media",       "PageSize", "PageRegion", "orientation-requested", "landscape", "print-scaling",
    "fit-to-page", "fitplot",  "fill",       "crop-to-fit",           "scaling",   "natural-scaling",
    "number-up",   "position", "page-top",   "page-bottom",           "page-left", "page-right"};

// A media setting may name a tray or a kind of paper too, after commas.
QSizeF paperNamed(const QByteArray& media)
{
    for (const QByteArray& name : media.split(',')) {
        const pwg_media_t* paper = nullptr;
        for (const auto lookUp : {cups().pwgMediaForPPD, cups().pwgMediaForPWG, cups().pwgMediaForLegacy}) {
            if (paper == nullptr)
                paper = lookUp(name.trimmed().constData());
        }
        constexpr double unitsPerPoint = 2540.0 / 72; // of a hundredth of a millimetre
        if (paper != nullptr && paper->width > 0 && paper->length > 0)
            return QSizeF(paper->width, paper->length) / unitsPerPoint;
    }
    return {};
}

// The paper of each queue, by the queue's name. The list of destinations leaves it out more often than not.
std::map<QByteArray, QByteArray> defaultMedia(http_t* http)
{
    constexpr std::array requested{"printer-name", "media-default"};
    ipp_t* request = cups().ippNewRequest(IPP_OP_CUPS_GET_PRINTERS);
    cups().ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", int{requested.size()},
                         nullptr, requested.data());
    const std::unique_ptr<ipp_t, decltype(cups().ippDelete)> reply(cups().cupsDoRequest(http, request, "/"),
                                                                   cups().ippDelete);
    std::map<QByteArray, QByteArray> media;
    QByteArray name;
    QByteArray paper;
    // Each queue is a group of attributes, in any order; a group ends with an attribute that has no name.
    for (ipp_attribute_t* attribute = cups().ippFirstAttribute(reply.get()); attribute != nullptr;
         attribute = cups().ippNextAttribute(reply.get())) {
        const QByteArray key(cups().ippGetName(attribute));
        if (key.isEmpty()) {
            media[name] = paper;
            name.clear();
            paper.clear();
        } else if (key == "printer-name") {
            name = cups().ippGetString(attribute, 0, nullptr);
        } else if (key == "media-default") {
            paper = cups().ippGetString(attribute, 0, nullptr);
        }
    }
    media[name] = paper;
    return media;
}

PrintQueue queueOf(const cups_dest_t& destination, const std::map<QByteArray, QByteArray>& media)
{
    const auto setting = [&destination](const char* name) {
        return QByteArray(cups().cupsGetOption(name, destination.num_options, destination.options));
    };
    PrintQueue queue;
    queue.name = QString::fromUtf8(destination.name);
    if (destination.instance != nullptr)
        queue.name += u'/' + QString::fromUtf8(destination.instance);
    queue.isDefault = destination.is_default != 0;
    // What the user has asked for comes before the queue's own.
    const auto own = media.find(destination.name);
    for (const QByteArray& name : {setting("PageSize"), setting("media"), own != media.end() ? own->second : ""}) {
        if (queue.paper.isEmpty()) {
            queue.media = name;
            queue.paper = paperNamed(name);
        }
    }
    const int orientation = setting("orientation-requested").toInt();
    const QByteArray landscape = setting("landscape").toLower();
    queue.landscape = orientation == IPP_ORIENT_LANDSCAPE || orientation == IPP_ORIENT_REVERSE_LANDSCAPE ||
                      landscape == "true" || landscape == "yes" || landscape == "on";
    for (const cups_option_t& option :
         std::span(destination.options, static_cast<std::size_t>(destination.num_options))) {
        if (std::ranges::find(placing, std::string_view(option.name)) == placing.end())
            queue.defaults.append(PrintOption{option.name, option.value});
    }
    return queue;
}

// A user who has settings for a queue, but no default of their own, has the server's: the list leaves that unsaid.
void markDefault(http_t* http, QList<PrintQueue>& queues)
{
    if (std::ranges::any_of(queues, &PrintQueue::isDefault))
        return;
    const QString name = QString::fromUtf8(cups().cupsGetDefault2(http));
    const auto queue = std::ranges::find(queues, name, &PrintQueue::name);
    if (queue != queues.end())
        queue->isDefault = true;
}

} // namespace

PrintServer::PrintServer(std::stop_token stop)
    : m_stop(std::move(stop))
{
}

std::expected<QList<PrintQueue>, Error> PrintServer::queues() const
{
    if (CupsLibrary::instance() == nullptr)
        return QList<PrintQueue>();
    const Connection connection(m_stop);
    QList<PrintQueue> queues;
    if (connection.http() == nullptr)
        return queues;
    const Destinations destinations(connection.http());
    if (connection.gaveUp())
        return std::unexpected(connection.failure(QString()));
    const std::map<QByteArray, QByteArray> media = defaultMedia(connection.http());
    for (const cups_dest_t& destination : destinations.all())
        queues.append(queueOf(destination, media));
    markDefault(connection.http(), queues);
    return queues;
}

std::expected<void, Error> PrintServer::print(const PrintJob& job) const
{
    if (CupsLibrary::instance() == nullptr)
        return std::unexpected(refusal(IPP_STATUS_ERROR_SERVICE_UNAVAILABLE, job.queue));
    const Connection connection(m_stop);
    if (connection.http() == nullptr)
        return std::unexpected(refusal(IPP_STATUS_ERROR_SERVICE_UNAVAILABLE, job.queue));

    // Found in the whole list: libcups looks a single queue up on a connection of its own, which would wait for ever.
    const Destinations destinations(connection.http());
    if (connection.gaveUp())
        return std::unexpected(connection.failure(job.queue));
    cups_dest_t* const queue = destinations.named(job.queue);
    if (queue == nullptr)
        return std::unexpected(refusal(IPP_STATUS_ERROR_NOT_FOUND, job.queue));

    Submission submission(connection.http(), queue);
    if (submission.start(job) && submission.send(job.pdf))
        return {};
    const Error error = connection.failure(job.queue);
    if (!connection.gaveUp())
        submission.cancel();
    return std::unexpected(error);
}

bool PrintServer::isSilent(const Error& error)
{
    return error.domain() == errorDomain && error.code() == silentServer;
}

QString PrintServer::statusName(const Error& error)
{
    if (CupsLibrary::instance() == nullptr)
        return u"absent"_s;
    return isSilent(error) ? u"silent"_s
                           : QString::fromUtf8(cups().ippErrorString(static_cast<ipp_status_t>(error.code())));
}

WithoutPrintServer::WithoutPrintServer()
{
    if (CupsLibrary::instance() != nullptr)
        cups().cupsSetServer("/nonexistent/cups.sock");
}

WithoutPrintServer::~WithoutPrintServer()
{
    if (CupsLibrary::instance() != nullptr)
        cups().cupsSetServer(nullptr);
}
