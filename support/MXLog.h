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

/// The logger. A message of level L is written when the threshold is L or more; it is written whole, as one line of the
/// system log, and on standard error too when that is a terminal. Formats are checked when the program is compiled.
/// Logging is safe on any thread; threshold and writer are set before other threads log.
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

    /// Receives each line as formatted, with the level of its message.
    using LineWriter = std::function<void(Level level, std::string_view line)>;

    /// A logger with threshold 5 that writes to the system log.
    MXLog();

    /// The process-wide logger, made at first use; the static operations below go through it.
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
    /// Header line, then the bytes in hexadecimal and as characters, 16 a line, at debug level.
    template <typename... Args>
    static void logDump(const std::byte* bytes, std::size_t length, fmt::format_string<Args...> format, Args&&... args)
    {
        defaultLogger().dumpArguments(Debug, {bytes, length}, format, fmt::make_format_args(args...));
    }
    /// The same for a buffer object; nothing when there is none.
    template <typename... Args>
    static void logData(const std::optional<QByteArray>& data, fmt::format_string<Args...> format, Args&&... args)
    {
        if (data)
            defaultLogger().dumpArguments(Debug, std::as_bytes(std::span(*data)), format,
                                          fmt::make_format_args(args...));
    }

    [[nodiscard]] unsigned logLevel() const { return m_logLevel.load(std::memory_order_relaxed); }
    /// 0 silences everything; a value above 7 is stored as 0.
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
