#include "platform/print/PrintMessages.h"

#include <QCborArray>
#include <QCborMap>

namespace {

QCborArray itemOf(const QList<PrintOption>& options)
{
    QCborArray item;
    for (const PrintOption& option : options)
        item.append(QCborArray{option.name, option.value});
    return item;
}

QList<PrintOption> optionsIn(const QCborValue& item)
{
    QList<PrintOption> options;
    for (const QCborValue option : item.toArray())
        options.append({option[0].toByteArray(), option[1].toByteArray()});
    return options;
}

/// Undefined when the bytes are not one whole item.
QCborValue itemIn(const QByteArray& bytes)
{
    QCborParserError error;
    const QCborValue item = QCborValue::fromCbor(bytes, &error);
    return error.error == QCborError::NoError && error.offset == bytes.size() ? item : QCborValue();
}

} // namespace

QByteArray encodePrintRequest(const PrintRequest& request)
{
    if (!request)
        return QCborValue(nullptr).toCbor();
    return QCborValue(QCborArray{request->queue, request->title, request->pdf, itemOf(request->options)}).toCbor();
}

std::optional<PrintRequest> decodePrintRequest(const QByteArray& bytes)
{
    const QCborValue item = itemIn(bytes);
    if (item.isNull())
        return PrintRequest();
    if (!item.isArray())
        return std::nullopt;
    return PrintJob{item[0].toString(), item[1].toString(), item[2].toByteArray(), optionsIn(item[3])};
}

QByteArray encodePrintAnswer(const PrintAnswer& answer)
{
    if (!answer)
        return QCborValue(QCborMap{{0, answer.error().code()}, {1, answer.error().localizedDescription()}}).toCbor();
    QCborArray item;
    for (const PrintQueue& queue : *answer)
        item.append(QCborArray{queue.name, queue.isDefault, queue.media, queue.paper.width(), queue.paper.height(),
                               queue.landscape, itemOf(queue.defaults)});
    return QCborValue(item).toCbor();
}

std::optional<PrintAnswer> decodePrintAnswer(const QByteArray& bytes)
{
    const QCborValue item = itemIn(bytes);
    if (item.isMap())
        return std::unexpected(
            Error(printErrorDomain.toString(), static_cast<int>(item[0].toInteger()), item[1].toString()));
    if (!item.isArray())
        return std::nullopt;
    QList<PrintQueue> queues;
    for (const QCborValue queue : item.toArray())
        queues.append({queue[0].toString(), queue[1].toBool(), queue[2].toByteArray(),
                       QSizeF(queue[3].toDouble(), queue[4].toDouble()), queue[5].toBool(), optionsIn(queue[6])});
    return queues;
}
