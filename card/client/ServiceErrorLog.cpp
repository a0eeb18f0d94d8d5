#include "card/client/ServiceErrorLog.h"

#include "card/client/MessageLogText.h"
#include "support/MXLog.h"

#include <array>
#include <cerrno>

#include <unistd.h>

ServiceErrorLog::Reading ServiceErrorLog::read(int descriptor)
{
    std::array<char, 4096> slice{};
    const ssize_t count = ::read(descriptor, slice.data(), slice.size());
    if (count > 0) {
        append({slice.data(), count});
        return Reading::Some;
    }
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return Reading::Nothing;
    finish();
    return Reading::Ended;
}

void ServiceErrorLog::readLastWords(int descriptor, int maximumSlices)
{
    while (maximumSlices > 0 && read(descriptor) == Reading::Some)
        --maximumSlices;
    finish();
}

void ServiceErrorLog::append(QByteArrayView bytes)
{
    if (MXLog::defaultLogger().logLevel() < MXLog::Debug)
        return;
    for (const char byte : bytes) {
        if (byte == '\n') {
            writeLine();
        } else if (m_line.size() < maximumErrorLine) {
            m_line.append(byte);
        } else {
            m_isCut = true;
        }
    }
}

void ServiceErrorLog::writeLine()
{
    if (!m_line.isEmpty() && m_limit.admits())
        MXLog::logDebug("Card service: {}{}", printableText(QString::fromUtf8(m_line)), m_isCut ? "..." : "");
    m_line.clear();
    m_isCut = false;
}

void ServiceErrorLog::finish()
{
    writeLine();
    m_limit.tellLeftOut();
}
