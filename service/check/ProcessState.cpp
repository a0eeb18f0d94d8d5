#include "service/check/ProcessState.h"

#include <QDir>

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

QStringList ProcessState::changes()
{
    QStringList found;
    for (std::size_t signal = 1; signal < m_signals.size(); ++signal) {
        struct sigaction action = {};
        // Fails for the signals that the C library keeps for itself.
        if (::sigaction(static_cast<int>(signal), nullptr, &action) != 0)
            continue;
        struct sigaction& known = m_signals.at(signal);
        if (action.sa_handler != known.sa_handler)
            found.append(u"change le traitement du signal %1"_s.arg(signal));
        known = action;
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): only asks
    if (const QByteArray locale = std::setlocale(LC_ALL, nullptr); locale != m_locale) {
        found.append(u"change la langue du processus"_s);
        m_locale = locale;
    }
    if (const QByteArray folder = QFile::encodeName(QDir::currentPath()); folder != m_folder) {
        found.append(u"change le dossier de travail (%1)"_s.arg(QFile::decodeName(folder)));
        m_folder = folder;
    }
    return found;
}

CapturedOutput::CapturedOutput()
    : m_file(::memfd_create("output", MFD_CLOEXEC))
{
    // The trial would mix with the report.
    if (m_file < 0 || ::dup2(m_file, STDOUT_FILENO) < 0 || ::dup2(m_file, STDERR_FILENO) < 0)
        ::_exit(EXIT_FAILURE);
}

QByteArray CapturedOutput::news()
{
    std::fflush(stdout);
    struct stat status = {};
    if (::fstat(m_file, &status) != 0 || status.st_size <= m_read)
        return {};
    QByteArray text(status.st_size - m_read, '\0');
    text.truncate(std::max(::pread(m_file, text.data(), static_cast<std::size_t>(text.size()), m_read), ssize_t{0}));
    m_read = status.st_size;
    return text;
}
