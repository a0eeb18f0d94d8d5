#include "platform/cups/CupsServer.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

#include <cups/cups.h>
#include <cups/pwg.h>

using namespace Qt::StringLiterals;

namespace {

// %1 is the queue, %2 the status.
QString sentenceOf(ipp_status_t status)
{
    switch (status) {
    case IPP_STATUS_ERROR_SERVICE_UNAVAILABLE:
        return u"Le serveur d’impression n’est pas joignable."_s;
    case IPP_STATUS_ERROR_NOT_FOUND:
    case IPP_STATUS_ERROR_GONE:
        return u"L’imprimante « %1 » n’existe plus."_s;
    case IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS:
        return u"L’imprimante « %1 » n’accepte plus de documents pour l’instant."_s;
    case IPP_STATUS_ERROR_FORBIDDEN:
    case IPP_STATUS_ERROR_NOT_AUTHENTICATED:
    case IPP_STATUS_ERROR_NOT_AUTHORIZED:
        return u"L’imprimante « %1 » ne vous est pas ouverte."_s;
    case IPP_STATUS_ERROR_CUPS_AUTHENTICATION_CANCELED:
        return u"L’imprimante « %1 » demande un mot de passe."_s;
    default:
        return u"L’imprimante « %1 » a refusé le document (%2)."_s;
    }
}

std::unexpected<Error> refusal(ipp_status_t status, const QString& queue)
{
    const QString sentence =
        sentenceOf(status).replace("%1"_L1, queue).replace("%2"_L1, QString::fromUtf8(ippErrorString(status)));
    return std::unexpected(Error(printErrorDomain.toString(), status, sentence));
}

// Without this, libcups would ask for a password at the terminal.
const char* noPassword(const char*, http_t*, const char*, const char*, void*)
{
    return nullptr;
}

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
        for (const auto lookUp : {pwgMediaForPPD, pwgMediaForPWG, pwgMediaForLegacy}) {
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
QHash<QByteArray, QByteArray> defaultMedia(http_t* http)
{
    constexpr std::array requested{"printer-name", "media-default"};
    ipp_t* request = ippNewRequest(IPP_OP_CUPS_GET_PRINTERS);
    ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", int{requested.size()}, nullptr,
                  requested.data());
    const std::unique_ptr<ipp_t, decltype(&ippDelete)> reply(cupsDoRequest(http, request, "/"), &ippDelete);
    QHash<QByteArray, QByteArray> media;
    QByteArray name;
    QByteArray paper;
    // Each queue is a group of attributes, in any order; a group ends with an attribute that has no name.
    for (ipp_attribute_t* attribute = ippFirstAttribute(reply.get()); attribute != nullptr;
         attribute = ippNextAttribute(reply.get())) {
        const QByteArray key(ippGetName(attribute));
        if (key.isEmpty()) {
            media[name] = paper;
            name.clear();
            paper.clear();
        } else if (key == "printer-name") {
            name = ippGetString(attribute, 0, nullptr);
        } else if (key == "media-default") {
            paper = ippGetString(attribute, 0, nullptr);
        }
    }
    media[name] = paper;
    return media;
}

PrintQueue queueOf(const cups_dest_t& destination, const QHash<QByteArray, QByteArray>& media)
{
    const auto setting = [&destination](const char* name) {
        return QByteArray(cupsGetOption(name, destination.num_options, destination.options));
    };
    PrintQueue queue;
    queue.name = QString::fromUtf8(destination.name);
    if (destination.instance != nullptr)
        queue.name += u'/' + QString::fromUtf8(destination.instance);
    queue.isDefault = destination.is_default != 0;
    // What the user has asked for comes before the queue's own.
    for (const QByteArray& name : {setting("PageSize"), setting("media"), media.value(destination.name)}) {
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

/// A connection to the server that the user prints to, with the queues that it tells.
struct Connection
{
    Connection()
    {
        constexpr int patience = 2000; // milliseconds: where nothing takes the connection there is no server
        cupsSetPasswordCB2(noPassword, nullptr);
        http = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1, patience, nullptr);
        if (http != nullptr)
            count = cupsGetDests2(http, &first);
    }
    ~Connection()
    {
        cupsFreeDests(count, first);
        httpClose(http);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    http_t* http = nullptr; // null where there is no server
    cups_dest_t* first = nullptr;
    int count = 0;
};

PrintAnswer print(const PrintJob& job, const Connection& server)
{
    if (server.http == nullptr)
        return refusal(IPP_STATUS_ERROR_SERVICE_UNAVAILABLE, job.queue);
    // An instance is the user's own set of settings for a queue.
    const QByteArray name = job.queue.section(u'/', 0, 0).toUtf8();
    const QByteArray instance = job.queue.section(u'/', 1).toUtf8();
    cups_dest_t* const queue =
        cupsGetDest(name.constData(), instance.isEmpty() ? nullptr : instance.constData(), server.count, server.first);
    if (queue == nullptr)
        return refusal(IPP_STATUS_ERROR_NOT_FOUND, job.queue);

    const std::unique_ptr<cups_dinfo_t, decltype(&cupsFreeDestInfo)> information(cupsCopyDestInfo(server.http, queue),
                                                                                 &cupsFreeDestInfo);
    cups_option_t* options = nullptr;
    int count = 0;
    for (const PrintOption& option : job.options)
        count = cupsAddOption(option.name.constData(), option.value.constData(), count, &options);
    const QByteArray title = job.title.toUtf8();
    int number = 0;
    const bool isStarted = information != nullptr &&
                           cupsCreateDestJob(server.http, queue, information.get(), &number, title.constData(), count,
                                             options) == IPP_STATUS_OK &&
                           cupsStartDestDocument(server.http, queue, information.get(), number, title.constData(),
                                                 CUPS_FORMAT_PDF, 0, nullptr, 1) == HTTP_STATUS_CONTINUE;
    cupsFreeOptions(count, options);
    const auto size = static_cast<std::size_t>(job.pdf.size());
    const bool isSent =
        isStarted && cupsWriteRequestData(server.http, job.pdf.constData(), size) == HTTP_STATUS_CONTINUE;
    if (isStarted && cupsFinishDestDocument(server.http, queue, information.get()) == IPP_STATUS_OK && isSent)
        return {};
    const ipp_status_t status = cupsLastError();
    // A job without its document would wait in the queue for ever.
    if (number != 0)
        cupsCancelDestJob(server.http, queue, number);
    return refusal(status, job.queue);
}

} // namespace

PrintAnswer askCupsServer(const PrintRequest& request)
{
    const Connection server;
    if (request)
        return print(*request, server);
    QList<PrintQueue> queues;
    if (server.count <= 0)
        return queues;
    const QHash<QByteArray, QByteArray> media = defaultMedia(server.http);
    for (const cups_dest_t& destination : std::span(server.first, static_cast<std::size_t>(server.count)))
        queues.append(queueOf(destination, media));
    // A user who has settings for a queue, but no default, has the server's: the list leaves that unsaid.
    if (std::ranges::none_of(queues, &PrintQueue::isDefault)) {
        const QString name = QString::fromUtf8(cupsGetDefault2(server.http));
        for (PrintQueue& queue : queues)
            queue.isDefault = queue.name == name;
    }
    return queues;
}
