#pragma once

#include "support/LogFormat.h"

#include <QByteArray>
#include <fmt/format.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

/// The logger. A message is written when its level is at most the threshold, as one line of the system log, and on
/// standard error when that is a terminal. Formats are checked at compile time. Logging is safe on any thread;
/// threshold and writer are set before other threads log.
class MXLog
{
public:
    enum Level : unsigned
    {
        Severe = 1,
        Error = 2,
        Warning = 3,
        Info = 4,
        Notice = 5,
        Debug = 6
    };

    using LineWriter = std::function<void(Level level, std::string_view line)>;

    /// A logger with threshold 5 that writes to the system log.
    MXLog();

    /// The process-wide logger, which the static operations use.
    [[nodiscard]] static MXLog& defaultLogger();

    template <typename... Args>
    static void logSevere(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Severe, format, fmt::make_format_args(args...));
    }
    template <typename... Args>
    static void logError(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Error, format, fmt::make_format_args(args...));
    }
    template <typename... Args>
    static void logWarning(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Warning, format, fmt::make_format_args(args...));
    }
    template <typename... Args>
    static void logInfo(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Info, format, fmt::make_format_args(args...));
    }
    template <typename... Args>
    static void logNotice(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Notice, format, fmt::make_format_args(args...));
    }
    template <typename... Args>
    static void logDebug(fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().logArguments(Debug, format, fmt::make_format_args(args...));
    }
    /// At debug level: a header line, then the bytes in hexadecimal and as characters, 16 a line.
    template <typename... Args>
    static void logDump(const std::byte* bytes, std::size_t length, fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().dumpArguments(Debug, {bytes, length}, format, fmt::make_format_args(args...));
    }
    /// The same; nothing when the data is absent.
    template <typename... Args>
    static void logData(const std::optional<QByteArray>& data, fmt::format_string<Args...> format, Args&&... args)
    {
        if (data)
            defaultLogger().dumpArguments(Debug, std::as_bytes(std::span(*data)), format,
                                          fmt::make_format_args(args...));
    }

    [[nodiscard]] unsigned logLevel() const { return m_logLevel.load(std::memory_order_relaxed); }
    /// 0 switches logging off; a value above 7 is stored as 0.
    void setLogLevel(unsigned level);

    /// Sends the lines elsewhere than to the system log.
    void setLineWriter(LineWriter writer);

    template <typename... Args>
    void log(Level level, fmt::format_string<Args...> format, Args&&... args)
    {
        logArguments(level, format, fmt::make_format_args(args...));
    }
    void logArguments(Level level, fmt::string_view format, fmt::format_args args);
    void dumpArguments(Level level, std::span<const std::byte> bytes, fmt::string_view format, fmt::format_args args);
    void logLine(Level level, std::string_view line);

private:
    std::atomic<unsigned> m_logLevel = Notice;
    LineWriter m_lineWriter;
};
