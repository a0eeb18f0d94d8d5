#include "support/MXLog.h"

#include "platform/SystemLog.h"

#include <algorithm>
#include <string>
#include <utility>

#include <syslog.h>

namespace {

constexpr unsigned maximumLevel = 7;
constexpr std::size_t bytesPerLine = 16;
constexpr std::size_t charactersPerByte = 3; // two digits and a space

int syslogPriority(MXLog::Level level)
{
    switch (level) {
    case MXLog::Severe:
        return LOG_CRIT;
    case MXLog::Error:
        return LOG_ERR;
    case MXLog::Warning:
        return LOG_WARNING;
    case MXLog::Info:
        return LOG_INFO;
    case MXLog::Notice:
        return LOG_NOTICE;
    case MXLog::Debug:
        return LOG_DEBUG;
    }
    std::unreachable();
}

void writeLine(MXLog::Level level, std::string_view line)
{
    writeToSystemLog(syslogPriority(level), std::string(line));
}

// Bytes from 32 to 128 are copied.
char dumpCharacter(unsigned char byte)
{
    return byte >= 32 && byte <= 128 ? static_cast<char>(byte) : '.';
}

std::string dumpLine(std::span<const std::byte> bytes)
{
    std::string hexadecimal;
    std::string characters;
    for (const std::byte value : bytes) {
        const auto byte = static_cast<unsigned char>(value);
        hexadecimal += fmt::format("{:02X} ", byte);
        characters += dumpCharacter(byte);
    }
    hexadecimal.resize(bytesPerLine * charactersPerByte, ' ');
    characters.resize(bytesPerLine, ' ');
    return '|' + hexadecimal + '|' + characters + "|\n";
}

} // namespace

MXLog::MXLog()
    : m_lineWriter(writeLine)
{
}

MXLog& MXLog::defaultLogger()
{
    static MXLog logger;
    return logger;
}

void MXLog::setLogLevel(unsigned level)
{
    m_logLevel.store(level > maximumLevel ? 0 : level, std::memory_order_relaxed);
}

void MXLog::setLineWriter(LineWriter writer)
{
    m_lineWriter = std::move(writer);
}

void MXLog::logArguments(Level level, fmt::string_view format, fmt::format_args args)
{
    if (logLevel() >= level)
        logLine(level, fmt::vformat(format, args));
}

void MXLog::dumpArguments(Level level, std::span<const std::byte> bytes, fmt::string_view format, fmt::format_args args)
{
    if (logLevel() < level)
        return;
    logArguments(level, format, args);
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), bytesPerLine);
        logLine(level, dumpLine(bytes.first(count)));
        bytes = bytes.subspan(count);
    }
}

void MXLog::logLine(Level level, std::string_view line)
{
    m_lineWriter(level, line);
}
